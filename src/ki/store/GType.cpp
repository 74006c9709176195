#include <ki/log/GLog.h>
#include <ki/log/LogConfig.h>
#include <ki/store/BuiltinTypes.h>
#include <ki/store/GType.h>

#include <cstddef>

namespace ki::store {

template <>
bool record_bytes_valid<ki::log::LogConfig>(const QByteArray& bytes) {
    const auto flag = static_cast<unsigned char>(bytes.at(offsetof(ki::log::LogConfig, autoScrollHorz)));
    return flag <= 1;
}

std::string GType::to_string() const {
    std::string out = str::xprintF(0, "GType{id:$, size:$}", id, size);
    const auto& formats = format_registry();
    auto it = formats.find(id);
    if (it == formats.end()) {
        pp_warn("GType::to_string - formatter id:$ not found", id);
        return out;
    }
    return out + ", " + it->second(data);
}

QVariant GType::create() const {
    const auto& creators = create_registry();
    auto it = creators.find(id);
    if (it == creators.end()) {
        pp_warn("GType::create, id:$ not registered", id);
        return {};
    }
    return it->second(data);
}

QDataStream& operator<<(QDataStream& out, const GType& value) {
    return out << quint32(value.id) << quint32(value.size) << value.data;
}

QDataStream& operator>>(QDataStream& in, GType& value) {
    quint32 id = 0;
    quint32 size = 0;
    QByteArray data;
    in >> id >> size >> data;
    if (in.status() != QDataStream::Ok) return in;
    if (data.size() != static_cast<qsizetype>(size)) {
        in.setStatus(QDataStream::ReadCorruptData);
        return in;
    }
    value.id = id;
    value.size = size;
    value.data = std::move(data);
    return in;
}

std::map<unsigned int, CreateFunction>& create_registry() {
    static std::map<unsigned int, CreateFunction> registry;
    return registry;
}

std::map<unsigned int, FormatFunction>& format_registry() {
    static std::map<unsigned int, FormatFunction> registry;
    return registry;
}

void register_gtype_meta_type() {
    qRegisterMetaType<GType>();
    qRegisterMetaType<GType>("kir::store::GType");
}

namespace {
// At static initialisation, so that a node shown or read before any settings are used
// already knows the framework's records.
[[maybe_unused]] const bool builtinTypesRegistered = (register_builtin_types(), true);
}  // namespace

}  // namespace ki::store
