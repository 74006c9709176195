#include <ki/log/GLog.h>
#include <ki/store/GNode.h>

#include <QCryptographicHash>
#include <QIODevice>

namespace ki::store {

namespace {

// Fixed, so that text written by one build reads the same in a build with a newer Qt.
constexpr QDataStream::Version STREAM_VERSION = QDataStream::Qt_6_0;

GSysResult<GNode> refuse(const std::string& message) {
    pp_error(message);
    GSysResult<GNode> result;
    result.set_error(EC_KIR, 1, QString::fromStdString(message));
    return result;
}

}  // namespace

void GNode::clear() {
    attributes.clear();
    children.clear();
}

const GNode& GNode::get_node(const QString& name) const {
    static const GNode empty;
    auto it = children.find(name);
    return it == children.end() ? empty : it->second;
}

bool GNode::equals(const GNode& other) const {
    return attributes == other.attributes && children == other.children;
}

bool GNode::to_stream(QDataStream& out) const {
    if (!attributes.to_stream(out)) return false;
    out << static_cast<qint32>(children.size());
    for (const auto& [name, child] : children) {
        out << name;
        if (!child.to_stream(out)) return false;
    }
    return out.status() == QDataStream::Ok;
}

bool GNode::from_stream(QDataStream& in) {
    GNode read;
    if (!read.read_stream(in, 0)) return false;
    *this = std::move(read);
    return true;
}

bool GNode::read_stream(QDataStream& in, int depth) {
    if (depth > MAX_DEPTH) {
        pp_error("GNode::from_stream, nesting deeper than $ levels", MAX_DEPTH);
        in.setStatus(QDataStream::ReadCorruptData);
        return false;
    }
    if (!attributes.from_stream(in)) return false;
    qint32 count = 0;
    in >> count;
    if (in.status() != QDataStream::Ok || count < 0) {
        pp_error("GNode::from_stream, child count read error!");
        return false;
    }
    for (qint32 i = 0; i < count; ++i) {
        QString name;
        in >> name;
        if (in.status() != QDataStream::Ok) {
            pp_error("GNode::from_stream, name read error!, at index:$", i);
            return false;
        }
        GNode child;
        if (!child.read_stream(in, depth + 1)) return false;
        children.insert_or_assign(std::move(name), std::move(child));
    }
    return true;
}

QString GNode::to_qstring(const GNode& node) {
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(STREAM_VERSION);
    out << MAGIC << FORMAT_VERSION;
    if (!node.to_stream(out)) {
        pp_error("to_qstring, node serialization failed");
        return {};
    }
    return QString::fromLatin1(bytes.toBase64());
}

GSysResult<GNode> GNode::from_qstring(const QString& text) {
    if (text.isEmpty()) return refuse("from_qstring, empty string");
    auto decoded = QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    // toLatin1 turns characters outside Latin-1 into '?', which the decoder refuses.
    if (!decoded) return refuse("from_qstring, base64 decode failed");

    QDataStream in(decoded.decoded);
    in.setVersion(STREAM_VERSION);
    qint32 magic = 0;
    in >> magic;
    if (in.status() != QDataStream::Ok) return refuse("from_qstring, failed to read magic");
    if (magic != MAGIC) return refuse(str::xprintF(0, "from_qstring, wrong magic:$", magic));
    qint16 version = 0;
    in >> version;
    if (in.status() != QDataStream::Ok) return refuse("from_qstring, failed to read version");
    if (version != FORMAT_VERSION)
        return refuse(str::xprintF(0, "from_qstring, unsupported version:$", version));

    GNode node;
    if (!node.from_stream(in)) return refuse("from_qstring, node deserialization failed");
    if (in.status() != QDataStream::Ok) return refuse("from_qstring, stream ended with non-ok status");
    return GSysResult<GNode>(std::move(node));
}

GNode GNode::from_base_64_string(const QString& text) {
    GSysResult<GNode> result = from_qstring(text);
    return result.ok() ? result.take() : GNode{};
}

int GNode::get_base64_length(const GNode& node) {
    return static_cast<int>(to_qstring(node).size());
}

QByteArray GNode::to_md5(const QByteArray& bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Md5);
}

QByteArray GNode::get_md5() const {
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(STREAM_VERSION);
    to_stream(out);
    return to_md5(bytes);
}

QString GNode::get_md5_string(int length) const {
    const QString hex = QString::fromLatin1(get_md5().toHex());
    return length >= 1 && length < hex.size() ? hex.left(length) : hex;
}

void GNode::show(unsigned int indent) const {
    attributes.show(indent);
    for (const auto& [name, child] : children) {
        pp(str::xprintF(indent, "$", name));
        pp(str::xprintF(indent, "{"));
        child.show(indent + 3);
        pp(str::xprintF(indent, "}"));
    }
}

std::string GNode::to_string() const {
    return str::xprintF(0, "GNode{attributes:$, children:$}",
                        static_cast<unsigned long long>(attributes.size()),
                        static_cast<unsigned long long>(children.size()));
}

}  // namespace ki::store
