#pragma once
// A fast reader for the plain XML the program's own files are written in: ASCII elements,
// attributes and comments, an optional version 1.0 UTF-8 declaration, white space between
// elements, and the SVG namespace declared without a prefix. It builds the very tree that
// XNode::parse builds through QXmlStreamReader and declines everything else (text, entities,
// CDATA, processing instructions, a document type, prefixes, any error), so that
// QXmlStreamReader alone decides every document outside that subset. Private to XNode::parse.

#include <ki/xml/XNode.h>

#include <QByteArray>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace ki::xml {

class XStrictReader {
public:
    /// The root of the document in `bytes`, or null when the document is outside the subset.
    static std::unique_ptr<XNode> read(const QByteArray& bytes);

private:
    explicit XStrictReader(const QByteArray& bytes)
        : p(bytes.constData()), end(bytes.constData() + bytes.size()) {}

    std::unique_ptr<XNode> read_document();
    bool read_declaration();
    /// White space and comments, as allowed before and after the root element.
    bool skip_misc();
    bool read_comment();
    /// A start tag after its '<'; `empty` tells an element closed by "/>".
    std::unique_ptr<XNode> read_start_tag(bool& empty);
    bool read_end_tag(const XNode& open);
    bool read_name(std::string_view& name);
    bool read_quoted(std::string_view& value);
    /// Reads `name` = "value" of the declaration, white space before it included.
    bool read_pseudo_attribute(std::string_view name, std::string_view& value);

    /// The same QString for every occurrence of a name, so repeated element and attribute
    /// names share one allocation.
    const QString& intern(std::string_view name);

    bool at(std::string_view literal) const { return std::string_view(p, end - p).starts_with(literal); }
    void skip_spaces();

    const char* p;
    const char* end;
    std::vector<std::pair<std::string_view, QString>> names;
};

}  // namespace ki::xml
