#include <gtest/gtest.h>
#include <ki/xml/XNode.h>
#include <ki/xml/XNodeText.h>

#include <QBuffer>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include "LoggedTest.h"

using ki::xml::XNode;
using ki::xml::XNodeResult;
using ki::xml::XNodeText;

namespace {

XNodeResult parse_text(const QByteArray& xml) {
    QByteArray data = xml;
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    return XNode::parse(buffer);
}

// The tree as "name[key=value,...](child,'text')", with "!" after any child whose parent link is
// wrong.
QString shape(const XNode* node) {
    if (const auto* text = dynamic_cast<const XNodeText*>(node)) return "'" + text->text + "'";
    QStringList attributes, parts;
    for (const auto& [key, value] : node->attributes) attributes << key + "=" + value;
    for (const auto& child : node->children) parts << shape(child.get()) + (child->parent == node ? "" : "!");
    const QString head = attributes.isEmpty() ? node->name : node->name + "[" + attributes.join(",") + "]";
    return parts.isEmpty() ? head : head + "(" + parts.join(",") + ")";
}

}  // namespace

TEST(XmlParse, DocumentsBecomeTreesOrFailWithAReason) {
    const QString noRoot = "XNode::parse: XML document has no root element";
    QTemporaryDir dir;
    const QString missing = dir.filePath("missing.svg");
    const struct {
        const char* name;
        XNodeResult result;
        QString tree;  // empty: the parse must fail
        unsigned errorClass = 0;
        int code = 0;
        QString message = {};  // empty: any message
    } rows[] = {
        {"nested elements keep document order", parse_text("<a><b><c/></b><d/></a>"), "a(b(c),d)"},
        {"whitespace between elements makes no text node", parse_text("<a>\n  <b/>\n\t</a>"), "a(b)"},
        {"text run is kept untrimmed", parse_text("<a> x </a>"), "a(' x ')"},
        {"text and elements interleave", parse_text("<a>1<b/>2</a>"), "a('1',b,'2')"},
        {"entities are resolved", parse_text("<a>&lt;&amp;</a>"), "a('<&')"},
        {"CDATA is a text run", parse_text("<a><![CDATA[ p{fill:red} ]]></a>"), "a(' p{fill:red} ')"},
        {"comments and processing instructions are skipped",
         parse_text("<?xml version='1.0'?><!--c--><a><?pi x?><!--d--><b/></a><!--e-->"), "a(b)"},
        {"attributes in document order under their written names, empty ones kept",
         parse_text("<svg xmlns:xlink='urn:l' id='i' empty=''><use xlink:href='#o'/></svg>"),
         "svg[id=i,empty=](use[xlink:href=#o])"},
        {"prefixed element keeps its prefix", parse_text("<s:svg xmlns:s='urn:x'><s:g/></s:svg>"),
         "s:svg(s:g)"},
        {"comment-only document has no root", parse_text("<!-- only -->"), "", ki::EC_XML, 0, noRoot},
        {"unclosed tag", parse_text("<a><b></a>"), "", ki::EC_XML, QXmlStreamReader::NotWellFormedError},
        {"truncated document", parse_text("<a><b>"), "", ki::EC_XML,
         QXmlStreamReader::PrematureEndOfDocumentError},
        {"second root element", parse_text("<a/><b/>"), "", ki::EC_XML, QXmlStreamReader::NotWellFormedError},
        {"missing file", XNode::parse_file(missing), "", ki::EC_IO, 10, "\"" + missing + "\" does not exist"},
        // A folder opens with no error code of its own; 0 would read as success.
        {"a folder", XNode::parse_file(dir.path()), "", ki::EC_QT_CORE, QFileDevice::OpenError},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const XNodeResult& result = row.result;
        if (!row.tree.isEmpty()) {
            ASSERT_TRUE(result.ok()) << result.to_string();
            EXPECT_EQ(result.value->parent, nullptr);
            EXPECT_EQ(shape(result.value.get()), row.tree);
            continue;
        }
        EXPECT_FALSE(result.ok());
        EXPECT_EQ(result.value, nullptr);
        EXPECT_EQ(result.error_class, row.errorClass);
        EXPECT_EQ(result.error, row.code);
        EXPECT_TRUE(row.message.isEmpty() || result.get_message() == row.message) << result.to_string();
        EXPECT_FALSE(result.message.empty());
    }
}

// Hostile input: recursion in the parser or in the destructor would overflow this small stack.
TEST(XmlParse, HundredThousandLevelsParseAndDestroyOnASmallStack) {
    constexpr int levels = 100000;
    const QByteArray xml = QByteArray("<a>").repeated(levels) + QByteArray("</a>").repeated(levels);
    int depth = -1;
    on_small_stack(256 * 1024, [&] {
        const XNodeResult doc = parse_text(xml);
        if (!doc.ok()) return;
        depth = 0;
        for (const XNode* node = doc.value.get(); !node->children.empty(); node = node->children[0].get())
            ++depth;
    });
    EXPECT_EQ(depth, levels - 1);
}
