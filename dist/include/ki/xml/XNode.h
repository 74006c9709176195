#pragma once
// The read-only XML document model: element nodes with ordered attributes and text children,
// read in one pass with QXmlStreamReader. Nothing is ever written back as XML.

#include <ki/GError.h>
#include <ki/algo/GOrderedMap.h>

#include <QString>
#include <memory>
#include <vector>

class QIODevice;

namespace ki::xml {

class XNode;

/// A parsed document: on success the result owns the root element and with it the whole tree;
/// on failure it holds no tree at all. A document without any element fails with code 0 in
/// class EC_XML, so success is judged by ok() here, which also asks for the root.
struct XNodeResult : GSysResult<std::unique_ptr<XNode>> {
    using GSysResult::GSysResult;
    static XNodeResult failure(unsigned int cls, int code, const QString& message) {
        XNodeResult result;
        result.set_error(cls, code, message);
        return result;
    }
    bool ok() const { return error == 0 && value != nullptr; }
    explicit operator bool() const { return ok(); }
};

/// One element. Names are kept exactly as written: a namespace prefix is part of the element's
/// and the attribute's name, and no namespace processing takes place.
class XNode {
public:
    XNode() = default;
    explicit XNode(const QString& name) : name(name) {}
    XNode(const XNode&) = delete;
    XNode& operator=(const XNode&) = delete;
    /// Destroys the subtree without recursion, so that any depth of nesting is safe.
    virtual ~XNode();

    /// "name" or "name: a=v, b=v" with every value elided, so that path data does not flood
    /// the log.
    virtual QString to_string() const;
    /// Logs this node at debug level, indented by `indent`, and every descendant 4 columns
    /// further in per level.
    void dump(unsigned indent) const;

    /// The value of the attribute written exactly as `name` (prefix included), otherwise
    /// `defaultValue`.
    QString get_attrib_string(const QString& name, const QString& defaultValue = QString()) const;
    /// Whether the attribute is present; an empty value counts as present.
    bool has_attrib(const QString& name) const;

    /// Adds `child` as the last child and makes this node its parent. Returns the child.
    XNode* append_child(std::unique_ptr<XNode> child);

    /// Reads a whole document from a device that is already open for reading. Character data
    /// that is only white space is dropped; every other run becomes one text node as read.
    /// Errors: class EC_KIR code 10 for a closed or unreadable device, class EC_XML with the
    /// reader's error code for malformed XML and code 0 for a document without an element.
    static XNodeResult parse(QIODevice& device);
    /// Opens the file and parses it. Errors besides those of parse(): EC_IO code 10 when the
    /// file does not exist, EC_QT_CORE with QFile's error code when it cannot be opened.
    static XNodeResult parse_file(const QString& fileName);

    XNode* parent = nullptr;
    QString name;
    algo::GOrderedMap<QString, QString> attributes;
    std::vector<std::unique_ptr<XNode>> children;
};

}  // namespace ki::xml
