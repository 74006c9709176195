#include <ki/log/GLog.h>
#include <ki/store/GAttributes.h>

#include <QStringList>

namespace ki::store {

namespace {

// A QVariant header of a user type carries its name; both names of GType are accepted.
constexpr const char* GTYPE_NAME = "ki::store::GType";
constexpr const char* GTYPE_ALIAS = "kir::store::GType";

// The value types a node may hold. Each one reads back with a bounded allocation: fixed-size
// values, or texts that Qt reads in chunks. Qt's own reader of containers reserves whatever
// count the stream claims, so nothing else is let through from a stream.
bool is_storable(int type_id) {
    switch (type_id) {
        case QMetaType::UnknownType:
        case QMetaType::Bool:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Double:
        case QMetaType::Float:
        case QMetaType::QChar:
        case QMetaType::QString:
        case QMetaType::QByteArray:
        case QMetaType::QStringList:
        case QMetaType::QPoint:
        case QMetaType::QPointF:
        case QMetaType::QSize:
        case QMetaType::QSizeF:
        case QMetaType::QRect:
        case QMetaType::QRectF:
        case QMetaType::QColor:
            return true;
        default:
            return type_id == QMetaType::fromType<GType>().id();
    }
}

bool read_string_list(QDataStream& in, QStringList& list) {
    quint32 count = 0;
    in >> count;
    // No reserve: the count is only believed as far as the stream really holds strings.
    for (quint32 i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        QString text;
        in >> text;
        if (in.status() == QDataStream::Ok) list.append(text);
    }
    return in.status() == QDataStream::Ok;
}

// Mirrors QVariant's stream layout (type id, null flag, name of a user type, value) but
// refuses every type that is_storable does not know.
bool read_variant(QDataStream& in, QVariant& out) {
    quint32 type_id = 0;
    qint8 is_null = 0;
    in >> type_id >> is_null;
    if (in.status() != QDataStream::Ok) return false;

    QMetaType type;
    if (type_id == QMetaType::User) {
        QByteArray name;
        in >> name;
        if (in.status() != QDataStream::Ok) return false;
        // Qt writes the name as a C string, terminating zero included.
        if (name.endsWith('\0')) name.chop(1);
        if (name != GTYPE_NAME && name != GTYPE_ALIAS) {
            pp_warn("GAttributes::from_stream, unknown user type:'$'", name.left(64));
            in.setStatus(QDataStream::ReadCorruptData);
            return false;
        }
        type = QMetaType::fromType<GType>();
    } else if (type_id == QMetaType::UnknownType) {
        out = QVariant();
        return true;
    } else if (type_id > static_cast<quint32>(QMetaType::HighestInternalId) || !is_storable(int(type_id))) {
        pp_warn("GAttributes::from_stream, type id:$ refused", type_id);
        in.setStatus(QDataStream::ReadCorruptData);
        return false;
    } else {
        type = QMetaType(int(type_id));
        // QColor needs the GUI module, which a core-only program does not load.
        if (!type.isValid()) {
            in.setStatus(QDataStream::ReadCorruptData);
            return false;
        }
    }

    QVariant value(type);
    if (type.id() == QMetaType::QStringList) {
        QStringList list;
        if (!read_string_list(in, list)) return false;
        value = QVariant(list);
    } else if (!type.load(in, value.data())) {
        if (in.status() == QDataStream::Ok) in.setStatus(QDataStream::ReadCorruptData);
        return false;
    }
    if (in.status() != QDataStream::Ok) return false;
    out = is_null ? QVariant(type) : std::move(value);
    return true;
}

}  // namespace

QVariant GAttributes::value(const QString& key) const {
    auto it = values.find(key);
    return it == values.end() ? QVariant() : it->second;
}

const QVariant* GAttributes::lookup(const QString& key, QMetaType wanted) const {
    auto it = values.find(key);
    if (it == values.end()) {
        pp_warn("GAttributes::get, '$' not found", key);
        return nullptr;
    }
    const QVariant& stored = it->second;
    if (!stored.isValid() || stored.isNull()) {
        pp_error("GAttributes::get, invalid or null value, key:'$'", key);
        return nullptr;
    }
    if (stored.metaType() != wanted) {
        pp_error("GAttributes::get, incompatible type, key:'$', stored:'$', requested:'$'", key,
                 stored.typeName(), wanted.name());
        return nullptr;
    }
    return &stored;
}

bool GAttributes::operator==(const GAttributes& other) const {
    if (values.size() != other.values.size()) return false;
    auto mine = values.begin();
    for (auto theirs = other.values.begin(); theirs != other.values.end(); ++theirs, ++mine) {
        if (mine->first != theirs->first) return false;
        if (mine->second.metaType() != theirs->second.metaType()) return false;
        if (mine->second != theirs->second) return false;
    }
    return true;
}

bool GAttributes::to_stream(QDataStream& out) const {
    if (out.version() < QDataStream::Qt_6_0) {
        pp_error("GAttributes::to_stream, stream version:$ not supported", out.version());
        return false;
    }
    qint32 count = 0;
    for (const auto& [key, value] : values) {
        if (is_storable(value.metaType().id()))
            ++count;
        else
            pp_error("GAttributes::to_stream, key:'$', type '$' cannot be stored, skipped", key,
                     value.typeName());
    }
    out << count;
    for (const auto& [key, value] : values) {
        if (is_storable(value.metaType().id())) out << key << value;
    }
    return out.status() == QDataStream::Ok;
}

bool GAttributes::from_stream(QDataStream& in) {
    if (in.version() < QDataStream::Qt_6_0) {
        pp_error("GAttributes::from_stream, stream version:$ not supported", in.version());
        return false;
    }
    qint32 count = 0;
    in >> count;
    if (in.status() != QDataStream::Ok || count < 0) {
        pp_error("GAttributes::from_stream, read error!");
        return false;
    }
    std::map<QString, QVariant> read;
    // No reserve: a hostile count must not allocate; the stream runs dry long before.
    for (qint32 i = 0; i < count; ++i) {
        QString key;
        in >> key;
        if (in.status() != QDataStream::Ok) {
            pp_error("GAttributes::from_stream, key read error!, at index:$", i);
            return false;
        }
        QVariant value;
        if (!read_variant(in, value)) {
            pp_error("GAttributes::from_stream, val read error!, at index:$", i);
            return false;
        }
        read.insert_or_assign(std::move(key), std::move(value));
    }
    values = std::move(read);
    return true;
}

QString GAttributes::value_to_string(const QVariant& value) {
    if (!value.isValid()) return QStringLiteral("<invalid>");
    if (value.metaType() == QMetaType::fromType<GType>())
        return QString::fromStdString(value.value<GType>().to_string());
    switch (value.metaType().id()) {
        case QMetaType::QByteArray:
            return str::qprintF("QByteArray[$]", value.toByteArray().size());
        case QMetaType::QStringList:
            return value.toStringList().join(QStringLiteral(", "));
        default:
            break;
    }
    if (value.canConvert<QString>()) return value.toString();
    return str::qprintF("<$>", value.typeName());
}

void GAttributes::show(unsigned int indent) const {
    for (const auto& [key, value] : values) {
        pp(str::xprintF(indent, "$:'$' ($)", key, value_to_string(value), value.typeName()));
    }
}

}  // namespace ki::store
