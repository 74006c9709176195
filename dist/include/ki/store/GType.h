#pragma once
// The stored form of a plain-old-data record (a log configuration, a matrix): a type id, the
// record's size and its bytes, so that records can live as attributes of a settings node.
//
// Layout: the record's bytes exactly as they are in memory (native byte order). A record
// spells out its padding as zeroed fields, so that equal records give equal bytes. A record
// whose size changed between builds is refused on reading, not misread.

#include <ki/GError.h>
#include <ki/log/GLog.h>

#include <QByteArray>
#include <QDataStream>
#include <QMetaType>
#include <QVariant>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <type_traits>

namespace ki::log {
struct LogConfig;
}

namespace ki::store {

/// Tells the store a record's type id and name; every record type gets its own version of it
/// (the framework's own records below). The default id 0 marks a type that cannot be stored.
template <typename T>
struct GTypeInfo {
    static constexpr unsigned int id = 0;
    static constexpr const char* name = "";
};

/// Ids of the framework's records. Ids are stored in settings: never reuse or renumber one.
template <>
struct GTypeInfo<ki::log::LogConfig> {
    static constexpr unsigned int id = 1;
    static constexpr const char* name = "LogConfig";
};

template <typename T>
concept StorableRecord = std::is_trivially_copyable_v<T> && std::is_default_constructible_v<T>;

/// Whether bytes of a record's size hold a value of T that may be read. The bytes come from a
/// settings file and may be anything, while some fields take only some bit patterns (a bool
/// only 0 and 1): records with such fields specialise this.
template <typename T>
bool record_bytes_valid(const QByteArray&) {
    return true;
}
template <>
bool record_bytes_valid<ki::log::LogConfig>(const QByteArray& bytes);

/// The record in `bytes`, or nothing when the size does not fit T or the bytes hold no valid T.
template <StorableRecord T>
std::optional<T> record_from_bytes(const QByteArray& bytes) {
    if (bytes.size() != static_cast<qsizetype>(sizeof(T)) || !record_bytes_valid<T>(bytes))
        return std::nullopt;
    T record{};
    std::memcpy(&record, bytes.constData(), sizeof(T));
    return record;
}

struct GType {
    unsigned int id = 0;
    unsigned int size = 0;
    QByteArray data;

    bool operator==(const GType&) const = default;

    /// "GType{id:$, size:$}", followed by ", " and the record's text when a formatter is
    /// registered for the id.
    std::string to_string() const;
    /// The record as a QVariant, built by the create registry; invalid when the id is unknown.
    QVariant create() const;

    template <StorableRecord T>
    static GType from_record(const T& record) {
        GType out;
        out.id = GTypeInfo<T>::id;
        out.size = sizeof(T);
        out.data = QByteArray(reinterpret_cast<const char*>(&record), sizeof(T));
        return out;
    }

    /// The record back; fails when id or size do not fit T.
    template <StorableRecord T>
    GSysResult<T> to_record() const {
        if (id != GTypeInfo<T>::id || id == 0) {
            return GSysResult<T>::from_error(EC_KIR, 1,
                                             str::qprintF("GType::to_record, id:$, expected:$ ($)", id,
                                                          GTypeInfo<T>::id, GTypeInfo<T>::name));
        }
        if (size != sizeof(T) || data.size() != static_cast<qsizetype>(sizeof(T))) {
            return GSysResult<T>::from_error(
                EC_KIR, 2,
                str::qprintF("GType::to_record, $ size:$, bytes:$, expected:$", GTypeInfo<T>::name, size,
                             static_cast<long long>(data.size()), static_cast<unsigned>(sizeof(T))));
        }
        const std::optional<T> record = record_from_bytes<T>(data);
        if (!record)
            return GSysResult<T>::from_error(
                EC_KIR, 3,
                str::qprintF("GType::to_record, $ bytes hold no valid record", GTypeInfo<T>::name));
        return GSysResult<T>(*record);
    }
};

/// id, size and bytes. Reading checks that size and byte count agree.
QDataStream& operator<<(QDataStream& out, const GType& value);
QDataStream& operator>>(QDataStream& in, GType& value);

using CreateFunction = std::function<QVariant(const QByteArray&)>;
using FormatFunction = std::function<std::string(const QByteArray&)>;

/// Type id to the function that builds the record (inside a QVariant) from its bytes.
std::map<unsigned int, CreateFunction>& create_registry();
/// Type id to the function that renders the record as text.
std::map<unsigned int, FormatFunction>& format_registry();

/// Registers GType with Qt's meta-type system under "kir::store::GType" as well as its own
/// name, so that it can travel in a QVariant and through a QDataStream. Idempotent.
void register_gtype_meta_type();

/// Makes a record type buildable from its bytes (create registry only). Returns false and logs
/// for a type without an id.
template <StorableRecord T>
bool register_type() {
    constexpr unsigned int id = GTypeInfo<T>::id;
    if (id == 0) {
        ki::pp_error("register_type, id == 0");
        return false;
    }
    create_registry()[id] = [](const QByteArray& bytes) -> QVariant {
        const std::optional<T> record = record_from_bytes<T>(bytes);
        return record ? QVariant::fromValue(*record) : QVariant();
    };
    return true;
}

/// register_type and the format registry too, for records with a text form (a to_string
/// member, or their own ki::obj_to_stream).
template <StorableRecord T>
bool register_gtype() {
    if (!register_type<T>()) return false;
    format_registry()[GTypeInfo<T>::id] = [](const QByteArray& bytes) -> std::string {
        if (bytes.size() != static_cast<qsizetype>(sizeof(T))) return "<size mismatch>";
        const std::optional<T> record = record_from_bytes<T>(bytes);
        return record ? str::xprintF(0, "$", *record) : std::string("<invalid record>");
    };
    return true;
}

}  // namespace ki::store

Q_DECLARE_METATYPE(ki::store::GType)
