#include <ki/algo/Visitor.h>
#include <ki/log/GLog.h>
#include <ki/str/format.h>
#include <ki/xml/XFlatDocument.h>
#include <ki/xml/XNode.h>
#include <ki/xml/XNodeText.h>

#include <QFile>
#include <QIODevice>
#include <QStringList>
#include <QXmlStreamReader>

namespace ki::xml {

namespace {

struct ChildAccess {
    static std::size_t child_count(const XNode* node) { return node->children.size(); }
    static const XNode* child_at(const XNode* node, std::size_t index) { return node->children[index].get(); }
};

}  // namespace

XNode::~XNode() {
    // Detach the grandchildren before each child dies, so no destructor ever recurses.
    std::vector<std::unique_ptr<XNode>> pending = std::move(children);
    while (!pending.empty()) {
        std::unique_ptr<XNode> node = std::move(pending.back());
        pending.pop_back();
        for (std::unique_ptr<XNode>& child : node->children) pending.push_back(std::move(child));
        node->children.clear();
    }
}

QString XNode::to_string() const {
    if (attributes.empty()) return name;
    QStringList pairs;
    pairs.reserve(static_cast<qsizetype>(attributes.size()));
    for (const auto& [key, value] : attributes) pairs << key + "=" + str::get_elided_text(value, 5, 3);
    return name + ": " + pairs.join(", ");
}

void XNode::dump(unsigned indent) const {
    algo::tree::Visitor<ChildAccess, const XNode*> visitor;
    visitor.set_callback([&visitor, indent](const XNode* node) {
        const unsigned columns = indent + 4 * static_cast<unsigned>(visitor.depth());
        log::log_string(log::LOG_DEBUG, str::xprintF(columns, "$", node->to_string()));
    });
    visitor.walk_dfs(this);
}

QString XNode::get_attrib_string(const QString& name, const QString& defaultValue) const {
    return attributes.value(name, defaultValue);
}

bool XNode::has_attrib(const QString& name) const {
    return attributes.contains(name);
}

XNode* XNode::append_child(std::unique_ptr<XNode> child) {
    child->parent = this;
    children.push_back(std::move(child));
    return children.back().get();
}

XNodeResult XNode::parse(QIODevice& device) {
    if (!device.isOpen())
        return XNodeResult::failure(EC_KIR, 10,
                                    "QIODevice must be opened for reading before calling XNode::parse().");
    if (!device.isReadable())
        return XNodeResult::failure(EC_KIR, 10, "QIODevice must readable before calling XNode::parse().");

    const QByteArray bytes = device.readAll();
    // The program's own files take the fast road; the full reader decides everything else.
    if (XFlatDocument plain; plain.read(bytes)) return XNodeResult(plain.to_tree());

    QXmlStreamReader reader(bytes);
    std::unique_ptr<XNode> root;
    // Open elements, innermost last. The nodes are owned by `root`'s tree; their addresses
    // stay put because children are held by pointer.
    std::vector<XNode*> open;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
            case QXmlStreamReader::StartElement: {
                // A second top-level element: the reader reports it as an error on its own.
                if (open.empty() && root) break;
                auto node = std::make_unique<XNode>(reader.qualifiedName().toString());
                const QXmlStreamAttributes attributes = reader.attributes();
                node->attributes.reserve(static_cast<std::size_t>(attributes.size()));
                for (const QXmlStreamAttribute& attribute : attributes)
                    node->attributes.insert(attribute.qualifiedName().toString(),
                                            attribute.value().toString());
                if (open.empty()) {
                    root = std::move(node);
                    open.push_back(root.get());
                } else {
                    open.push_back(open.back()->append_child(std::move(node)));
                }
                break;
            }
            case QXmlStreamReader::EndElement:
                if (!open.empty()) open.pop_back();
                break;
            case QXmlStreamReader::Characters:
                if (!open.empty() && !reader.isWhitespace())
                    open.back()->append_child(std::make_unique<XNodeText>(reader.text().toString()));
                break;
            default:
                break;
        }
    }

    // QXmlStreamReader calls a document without any element "premature end"; it is reported as
    // the missing root it really is.
    if (!root && (!reader.hasError() || reader.error() == QXmlStreamReader::PrematureEndOfDocumentError))
        return XNodeResult::failure(EC_XML, 0, "XNode::parse: XML document has no root element");
    if (reader.hasError())
        return XNodeResult::failure(EC_XML, static_cast<int>(reader.error()), reader.errorString());
    return XNodeResult(std::move(root));
}

XNodeResult XNode::parse_file(const QString& fileName) {
    QFile file(fileName);
    // Asked only when the open fails: a lookup of its own costs as much as the open.
    if (!file.open(QIODevice::ReadOnly)) {
        if (!file.exists())
            return XNodeResult::failure(EC_IO, 10, str::qprintF("\"$\" does not exist", fileName));
        // A directory fails to open without an error code; a code of 0 would read as success.
        const int code = file.error() == QFileDevice::NoError ? QFileDevice::OpenError : file.error();
        return XNodeResult::failure(EC_QT_CORE, code, str::qprintF("err str:$", file.errorString()));
    }
    return parse(file);
}

}  // namespace ki::xml
