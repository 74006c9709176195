#pragma once
// A value tree of settings: typed attributes and named child nodes. Components save their
// configuration into a node; the settings store keeps a whole node as one Base64 text.

#include <ki/GError.h>
#include <ki/store/GAttributes.h>

#include <QByteArray>
#include <QDataStream>
#include <QString>
#include <map>
#include <string>

namespace ki::store {

class GNode {
public:
    GAttributes attributes;
    std::map<QString, GNode> children;

    /// The child of that name, created empty when missing.
    GNode& operator[](const QString& name) { return children[name]; }
    GNode& ensure_node(const QString& name) { return children[name]; }
    bool has_node(const QString& name) const { return children.contains(name); }
    /// Read-only access: the child of that name, or a shared empty node when missing.
    const GNode& get_node(const QString& name) const;

    template <typename T>
    T get(const QString& key, const T& default_value) const {
        return attributes.get<T>(key, default_value);
    }
    void set(const QString& key, const QVariant& value) { attributes.set(key, value); }

    bool is_empty() const { return attributes.is_empty() && children.empty(); }
    void clear();

    bool equals(const GNode& other) const;
    bool operator==(const GNode& other) const { return equals(other); }

    /// Attributes, then int32 child count and each child's name and stream, in name order.
    bool to_stream(QDataStream& out) const;
    /// Reads into a temporary and replaces this node only on success; logs why it failed.
    bool from_stream(QDataStream& in);

    /// Base64 of: int32 magic "GNOD", int16 format version 1, the node's stream.
    static QString to_qstring(const GNode& node);
    /// The node back, or the reason (also logged) why the text was refused.
    static GSysResult<GNode> from_qstring(const QString& text);
    QString to_base_64_string() const { return to_qstring(*this); }
    /// from_qstring that answers a refused text with an empty node.
    static GNode from_base_64_string(const QString& text);
    static int get_base64_length(const GNode& node);

    /// MD5 over the node's stream, for change detection.
    QByteArray get_md5() const;
    /// The first `length` hex digits of get_md5 (all 32 when length is out of 1..32).
    QString get_md5_string(int length = 32) const;
    static QByteArray to_md5(const QByteArray& bytes);

    /// Logs the tree, each child as a "{...}" block under its name.
    void show(unsigned int indent = 0) const;
    /// "GNode{attributes:$, children:$}".
    std::string to_string() const;

    static constexpr qint32 MAGIC = 0x474E4F44;
    static constexpr qint16 FORMAT_VERSION = 1;
    /// Deeper trees are refused on reading: a hostile stream must not exhaust the stack.
    static constexpr int MAX_DEPTH = 64;

private:
    bool read_stream(QDataStream& in, int depth);
};

}  // namespace ki::store
