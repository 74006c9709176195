#pragma once
// A fast reader for the plain XML the program's own files are written in: ASCII elements,
// attributes and comments, an optional version 1.0 UTF-8 declaration, white space between
// elements, and the SVG namespace declared without a prefix. It reads them flat, as the very
// document that XNode::parse builds through QXmlStreamReader, and declines everything else
// (text, entities, CDATA, processing instructions, a document type, prefixes, any error), so
// that QXmlStreamReader alone decides every document outside that subset. Private to
// XFlatDocument and the tests.

#include <ki/xml/XFlatDocument.h>
#include <ki/xml/XNode.h>

#include <QByteArray>
#include <memory>
#include <string_view>

namespace ki::xml {

class XStrictReader {
public:
    /// The root of the document in `bytes`, or null when the document is outside the subset.
    static std::unique_ptr<XNode> read(const QByteArray& bytes);
    /// Fills the empty `document` from `bytes`; false, leaving it partly filled, when the
    /// document is outside the subset.
    static bool read(const QByteArray& bytes, XFlatDocument& document);

private:
    XStrictReader(const QByteArray& bytes, XFlatDocument& document)
        : p(bytes.constData()), end(bytes.constData() + bytes.size()), doc(document) {}

    bool read_document();
    bool read_declaration();
    /// White space and comments, as allowed before and after the root element.
    bool skip_misc();
    bool read_comment();
    /// A start tag after its '<', appended as the last element; `empty` tells an element
    /// closed by "/>".
    bool read_start_tag(bool& empty);
    bool read_end_tag(std::string_view open);
    bool read_name(std::string_view& name);
    bool read_quoted(std::string_view& value);
    /// Reads `name` = "value" of the declaration, white space before it included.
    bool read_pseudo_attribute(std::string_view name, std::string_view& value);

    bool at(std::string_view literal) const { return std::string_view(p, end - p).starts_with(literal); }
    void skip_spaces();

    const char* p;
    const char* end;
    XFlatDocument& doc;
};

}  // namespace ki::xml
