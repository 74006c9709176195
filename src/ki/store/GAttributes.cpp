#include <ki/log/GLog.h>
#include <ki/store/GAttributes.h>

#include <QBitArray>
#include <QDataStream>
#include <QIODevice>
#include <QStringList>
#include <algorithm>

namespace ki::store {

namespace {

// A QVariant header of a user type carries its name; both names of GType are accepted.
constexpr const char* GTYPE_NAME = "ki::store::GType";
constexpr const char* GTYPE_ALIAS = "kir::store::GType";
// Lists and maps nested deeper than this are refused, long before the reader's stack is at risk.
constexpr int MAX_NESTING = 32;

// Types whose Qt reader allocates only what the stream really holds: fixed-size values, and
// texts and byte arrays (JSON included) that Qt reads in chunks.
bool is_read_by_qt(int type_id) {
    switch (type_id) {
        case QMetaType::Bool:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Double:
        case QMetaType::Float:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Long:
        case QMetaType::ULong:
        case QMetaType::Char:
        case QMetaType::SChar:
        case QMetaType::UChar:
        case QMetaType::Char16:
        case QMetaType::Char32:
        case QMetaType::QChar:
        case QMetaType::QCborSimpleType:
        case QMetaType::QString:
        case QMetaType::QByteArray:
        case QMetaType::QUrl:
        case QMetaType::QUuid:
        case QMetaType::QLocale:
        case QMetaType::QRegularExpression:
        case QMetaType::QDate:
        case QMetaType::QTime:
        case QMetaType::QDateTime:
        case QMetaType::QPoint:
        case QMetaType::QPointF:
        case QMetaType::QSize:
        case QMetaType::QSizeF:
        case QMetaType::QRect:
        case QMetaType::QRectF:
        case QMetaType::QLine:
        case QMetaType::QLineF:
        case QMetaType::QJsonValue:
        case QMetaType::QJsonObject:
        case QMetaType::QJsonArray:
        case QMetaType::QJsonDocument:
        // Types of the GUI module: valid only where it is loaded.
        case QMetaType::QColor:
        case QMetaType::QKeySequence:
        case QMetaType::QTransform:
        case QMetaType::QMatrix4x4:
        case QMetaType::QVector2D:
        case QMetaType::QVector3D:
        case QMetaType::QVector4D:
        case QMetaType::QQuaternion:
        case QMetaType::QTextLength:
            return true;
        default:
            return false;
    }
}

// Containers are read here: Qt's readers reserve whatever count a stream claims and nest
// without a limit. Other types (images, brushes, fonts, CBOR, ...) carry containers that
// Qt reads the same way, so they are neither written nor read.
bool is_container(int type_id) {
    switch (type_id) {
        case QMetaType::QStringList:
        case QMetaType::QByteArrayList:
        case QMetaType::QVariantList:
        case QMetaType::QVariantMap:
        case QMetaType::QVariantHash:
        case QMetaType::QVariantPair:
        case QMetaType::QBitArray:
            return true;
        default:
            return false;
    }
}

bool is_gtype(QMetaType type) {
    return type == QMetaType::fromType<GType>();
}

bool is_writable(const QVariant& value, int depth) {
    const QMetaType type = value.metaType();
    const int id = type.id();
    if (id == QMetaType::UnknownType || is_gtype(type)) return true;
    if (is_read_by_qt(id)) return type.hasRegisteredDataStreamOperators();
    if (!is_container(id) || depth > MAX_NESTING) return false;
    auto all = [depth](const auto& values) {
        return std::all_of(values.begin(), values.end(),
                           [depth](const QVariant& v) { return is_writable(v, depth + 1); });
    };
    switch (id) {
        case QMetaType::QVariantList:
            return all(value.toList());
        case QMetaType::QVariantMap:
            return all(value.toMap());
        case QMetaType::QVariantHash:
            return all(value.toHash());
        case QMetaType::QVariantPair: {
            const auto pair = value.value<QVariantPair>();
            return is_writable(pair.first, depth + 1) && is_writable(pair.second, depth + 1);
        }
        default:
            return true;
    }
}

void write_variant(QDataStream& out, const QVariant& value) {
    const int id = value.metaType().id();
    if (id != QMetaType::QVariantList && id != QMetaType::QVariantMap && id != QMetaType::QVariantHash &&
        id != QMetaType::QVariantPair) {
        out << value;
        return;
    }
    // QVariant's own layout, written here so that nested hashes come out sorted: equal nodes
    // must give equal bytes (and MD5s) whatever order their hashes were filled in.
    out << quint32(id) << qint8(value.isNull());
    if (id == QMetaType::QVariantList) {
        const QVariantList list = value.toList();
        out << quint32(list.size());
        for (const QVariant& item : list) write_variant(out, item);
    } else if (id == QMetaType::QVariantMap) {
        const QVariantMap map = value.toMap();
        out << quint32(map.size());
        for (auto it = map.begin(); it != map.end(); ++it) {
            out << it.key();
            write_variant(out, it.value());
        }
    } else if (id == QMetaType::QVariantHash) {
        const QVariantHash hash = value.toHash();
        QStringList keys = hash.keys();
        keys.sort();
        out << quint32(keys.size());
        for (const QString& key : keys) {
            out << key;
            write_variant(out, hash.value(key));
        }
    } else {
        const auto pair = value.value<QVariantPair>();
        write_variant(out, pair.first);
        write_variant(out, pair.second);
    }
}

bool read_variant(QDataStream& in, QVariant& out, int depth);

// A count is believed only as far as the stream really holds elements: nothing is reserved,
// and every element takes at least four bytes of the stream.
template <typename ReadOne>
bool read_elements(QDataStream& in, ReadOne read_one) {
    quint32 count = 0;
    in >> count;
    for (quint32 i = 0; i < count && in.status() == QDataStream::Ok; ++i)
        if (!read_one()) return false;
    return in.status() == QDataStream::Ok;
}

template <typename T>
bool read_list(QDataStream& in, QList<T>& list) {
    return read_elements(in, [&] {
        T item;
        in >> item;
        list.append(std::move(item));
        return in.status() == QDataStream::Ok;
    });
}

template <typename Map>
bool read_map(QDataStream& in, Map& map, int depth) {
    return read_elements(in, [&] {
        QString key;
        QVariant item;
        in >> key;
        if (in.status() != QDataStream::Ok || !read_variant(in, item, depth + 1)) return false;
        map.insert(key, std::move(item));
        return true;
    });
}

bool read_bit_array(QDataStream& in, QBitArray& bits) {
    quint64 count = 0;
    in >> count;
    // A stream this long cannot be a settings node; the check also keeps count + 7 in range.
    if (in.status() != QDataStream::Ok || count > (quint64(1) << 40)) return false;
    QByteArray bytes;
    for (quint64 left = (count + 7) / 8; left > 0;) {
        const qsizetype chunk = qsizetype(std::min<quint64>(left, 64 * 1024));
        const qsizetype done = bytes.size();
        bytes.resize(done + chunk);
        if (in.readRawData(bytes.data() + done, int(chunk)) != chunk) return false;
        left -= quint64(chunk);
    }
    bits = QBitArray::fromBits(bytes.constData(), qsizetype(count));
    return true;
}

bool read_container(QDataStream& in, int type_id, QVariant& value, int depth) {
    if (depth > MAX_NESTING) {
        pp_warn("GAttributes::from_stream, values nested deeper than $ levels", MAX_NESTING);
        return false;
    }
    switch (type_id) {
        case QMetaType::QStringList: {
            QStringList list;
            if (!read_list(in, list)) return false;
            value = list;
            return true;
        }
        case QMetaType::QByteArrayList: {
            QByteArrayList list;
            if (!read_list(in, list)) return false;
            value = QVariant::fromValue(list);
            return true;
        }
        case QMetaType::QVariantList: {
            QVariantList list;
            if (!read_elements(in, [&] {
                    QVariant item;
                    if (!read_variant(in, item, depth + 1)) return false;
                    list.append(std::move(item));
                    return true;
                }))
                return false;
            value = list;
            return true;
        }
        case QMetaType::QVariantMap: {
            QVariantMap map;
            if (!read_map(in, map, depth)) return false;
            value = map;
            return true;
        }
        case QMetaType::QVariantHash: {
            QVariantHash hash;
            if (!read_map(in, hash, depth)) return false;
            value = hash;
            return true;
        }
        case QMetaType::QVariantPair: {
            QVariantPair pair;
            if (!read_variant(in, pair.first, depth + 1) || !read_variant(in, pair.second, depth + 1))
                return false;
            value = QVariant::fromValue(pair);
            return true;
        }
        case QMetaType::QBitArray: {
            QBitArray bits;
            if (!read_bit_array(in, bits)) return false;
            value = bits;
            return true;
        }
        default:
            return false;
    }
}

// A kind of time Qt does not know (a damaged or hostile file) reads as a date-time that Qt writes
// as an offset of zero but reads back as UTC, so the node's text changed with every save. The
// value is kept as Qt reads its own writing of it, which writes the same text every time.
void settle(QVariant& value, QMetaType type, int version) {
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(version);
    if (!type.save(out, value.constData())) return;
    QDataStream back(bytes);
    back.setVersion(version);
    QVariant settled(type);
    if (type.load(back, settled.data()) && back.status() == QDataStream::Ok) value = std::move(settled);
}

// Mirrors QVariant's stream layout (type id, null flag, name of a user type, value) but
// refuses every type that could make Qt's reader allocate more than the stream holds.
bool read_variant(QDataStream& in, QVariant& out, int depth) {
    quint32 type_id = 0;
    qint8 is_null = 0;
    in >> type_id >> is_null;
    if (in.status() != QDataStream::Ok) return false;

    QVariant value;
    if (type_id == QMetaType::UnknownType) {
        out = QVariant();
        return true;
    }
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
        GType record;
        in >> record;
        value = QVariant::fromValue(record);
    } else if (is_container(int(type_id))) {
        if (!read_container(in, int(type_id), value, depth)) {
            if (in.status() == QDataStream::Ok) in.setStatus(QDataStream::ReadCorruptData);
            return false;
        }
    } else if (is_read_by_qt(int(type_id))) {
        const QMetaType type{int(type_id)};
        // GUI types in a program that does not load the GUI module.
        if (!type.isValid() || !type.hasRegisteredDataStreamOperators()) {
            in.setStatus(QDataStream::ReadCorruptData);
            return false;
        }
        value = QVariant(type);
        if (!type.load(in, value.data())) {
            if (in.status() == QDataStream::Ok) in.setStatus(QDataStream::ReadCorruptData);
            return false;
        }
        if (type_id == QMetaType::QDateTime) settle(value, type, in.version());
    } else {
        pp_warn("GAttributes::from_stream, type id:$ refused", type_id);
        in.setStatus(QDataStream::ReadCorruptData);
        return false;
    }
    if (in.status() != QDataStream::Ok) return false;
    out = is_null ? QVariant(value.metaType()) : std::move(value);
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
        if (is_writable(value, 0))
            ++count;
        else
            pp_error("GAttributes::to_stream, key:'$', type '$' cannot be stored, skipped", key,
                     value.typeName());
    }
    out << count;
    for (const auto& [key, value] : values) {
        if (is_writable(value, 0)) {
            out << key;
            write_variant(out, value);
        }
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
        if (!read_variant(in, value, 0)) {
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
