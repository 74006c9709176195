// The fast roads taken for speed must give exactly what the general code gives: the plain-XML
// reader the tree of QXmlStreamReader, the short-number conversion the double of
// QString::toDouble, the curve lengths (closed form, pieces cut at cusps) the integral of the
// curve's speed, the viewBox split the split at "\s+".
#include <gtest/gtest.h>
#include <ki/math/Path.h>
#include <ki/math/Rect.h>
#include <ki/xml/XFlatDocument.h>
#include <ki/xml/XNodeText.h>

#include <QDir>
#include <QRegularExpression>
#include <QStringList>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <cmath>
#include <cstring>
#include <glm/vec2.hpp>
#include <random>
#include <vector>

#include "LoggedTest.h"
#include "app/stroke/Anim.h"
#include "ki/xml/XStrictReader.h"

namespace {

using ki::xml::XNode;

// QXmlStreamReader's own view of a document, flattened: the oracle for the fast reader.
QStringList qt_tokens(const QByteArray& bytes) {
    QStringList tokens;
    QXmlStreamReader reader(bytes);
    while (!reader.atEnd()) {
        const auto type = reader.readNext();
        if (type == QXmlStreamReader::StartElement) {
            QString token = '<' + reader.qualifiedName().toString();
            for (const QXmlStreamAttribute& a : reader.attributes())
                token += ' ' + a.qualifiedName().toString() + '=' + a.value().toString();
            tokens << token;
        } else if (type == QXmlStreamReader::EndElement) {
            tokens << QStringLiteral(">");
        } else if (type == QXmlStreamReader::Characters && !reader.isWhitespace()) {
            tokens << "text:" + reader.text().toString();
        }
    }
    if (reader.hasError()) tokens << "error:" + reader.errorString();
    return tokens;
}

void flatten(const XNode& node, QStringList& tokens) {
    if (const auto* text = dynamic_cast<const ki::xml::XNodeText*>(&node)) {
        tokens << "text:" + text->text;
        return;
    }
    QString token = '<' + node.name;
    for (const auto& [key, value] : node.attributes) token += ' ' + key + '=' + value;
    tokens << token;
    for (const auto& child : node.children) flatten(*child, tokens);
    tokens << QStringLiteral(">");
}

// Reads `bytes` on the fast road into one document kept from call to call; when the road is
// taken, the tree must be the one Qt's reader sees, and a declined read leaves nothing behind.
bool fast_read_matches_qt(const QByteArray& bytes) {
    static ki::xml::XFlatDocument document;
    if (!document.read(bytes)) {
        EXPECT_TRUE(document.empty());
        return false;
    }
    QStringList tokens;
    flatten(*document.to_tree(), tokens);
    EXPECT_EQ(tokens, qt_tokens(bytes));
    for (const auto& element : document.elements()) {
        for (const auto& attribute : document.attributes(element))
            EXPECT_EQ(document.find_attribute(element, attribute.name), &attribute.value);
        EXPECT_EQ(document.find_attribute(element, QLatin1String("absent")), nullptr);
    }
    return true;
}

// What the regular expression makes of a viewBox: four numbers as QString::toFloat reads them,
// or the zero box.
ki::math::Rect expected_view_box(const QString& text) {
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    const QStringList parts = QString(text.trimmed()).replace(',', ' ').split(blanks, Qt::SkipEmptyParts);
    bool ok = parts.size() == 4;
    float v[4] = {};
    for (qsizetype i = 0; ok && i < 4; ++i) v[i] = parts[i].toFloat(&ok);
    return ok && std::isfinite(v[0] + v[1] + v[2] + v[3]) && v[2] > 0 && v[3] > 0
               ? ki::math::Rect{v[0], v[1], v[2], v[3]}
               : ki::math::Rect{};
}

}  // namespace

TEST(FastPaths, PlainXmlReaderBuildsTheTreeOfQXmlStreamReaderOrDeclines) {
    const struct Row {
        const char* name;
        const char* xml;
        bool plain;  // must take the fast road
    } rows[] = {
        {"stroke file shape",
         "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 1024 1024\">\n"
         "  <path id=\"s0\" d=\"M 1 2 Q 3 4 5 6 Z\"/>\n  <clipPath id=\"c0\"><use href=\"#s0\"/></clipPath>\n"
         "  <path clip-path=\"url(#c0)\" d=\"M 1 2 L 5 6\"/>\n</svg>\n",
         true},
        {"declaration, comments, single quotes",
         "<?xml version='1.0' encoding='UTF-8' standalone=\"no\"?>\n<!-- a -->"
         "<a x = 'say \"hi\"'><!--b--><b/></a><!-- c -->",
         true},
        {"nested groups, a sibling after them, a name that begins another, an empty value",
         "<g><g idx=\"1\" id=\"\"><g><path d=\"M0 0\"/></g></g><g/></g>", true},
        {"text content", "<a>x <b/> y</a>", false},
        {"entity in attribute", "<a t=\"&lt;\"/>", false},
        {"tab in attribute is normalised", "<a t=\"1\t2\"/>", false},
        {"prefixed attribute",
         "<svg xmlns:xlink=\"http://www.w3.org/1999/xlink\"><use xlink:href=\"#a\"/></svg>", false},
        {"other default namespace", "<a xmlns=\"urn:x\"/>", false},
        {"duplicate attribute", "<a x=\"1\" x=\"2\"/>", false},
        {"attributes without blank", "<a x=\"1\"y=\"2\"/>", false},
        {"mismatched end tag", "<a><b></a></b>", false},
        {"unclosed element", "<a><b/>", false},
        {"second root", "<a/><b/>", false},
        {"double dash in comment", "<a><!-- x -- y --></a>", false},
        {"declaration not at start", " <?xml version=\"1.0\"?><a/>", false},
        {"version 1.1", "<?xml version=\"1.1\"?><a/>", false},
        {"processing instruction", "<a><?pi x?></a>", false},
        {"cdata", "<a><![CDATA[x]]></a>", false},
        {"doctype", "<!DOCTYPE a><a/>", false},
        {"non-ASCII value", "<a t=\"\xe4\xb8\xad\"/>", false},
        {"lt in attribute", "<a t=\"<\"/>", false},
        {"empty document", "", false},
        {"truncated tag", "<a x=\"1", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(fast_read_matches_qt(row.xml), row.plain);
    }
    // Every stroke file shipped with the first level must take the fast road.
    const QString dir = QStringLiteral(":/wb/shared-res/zh/1");
    const QStringList files = QDir(dir).entryList({QStringLiteral("*.svg")}, QDir::Files);
    ASSERT_EQ(files.size(), 87);
    for (const QString& name : files) {
        SCOPED_TRACE(name.toStdString());
        EXPECT_TRUE(fast_read_matches_qt(read_file(dir + '/' + name)));
    }
}

TEST(FastPaths, PathNumbersConvertExactlyAsQStringToDouble) {
    // Signs, bare points, exponents, round-to-even cases and the float range's edges.
    QStringList texts = QStringLiteral(
                            "0 -0 +0 .5 5. -.5 1e1 1E-1 +2.5e+1 0.1 0.3 2.675 123456789012345 1234567890123456 "
                            "1e22 1e23 1e-22 1e-23 9007199254740993 3.4028234e38 3.4028236e38 1e-45 1e-46 007 "
                            "1e0001 0.000000000000001")
                            .split(' ');
    // And a deterministic sweep of the shapes path data takes: signs, fractions, exponents.
    std::mt19937 rng(20013);
    for (int i = 0; i < 20000; ++i) {
        QString t = rng() % 4 == 0 ? QStringLiteral("-") : QString();
        t += QString::number(rng() % 100000000);
        if (rng() % 2) t += '.' + QString::number(rng() % 1000000);
        if (rng() % 4 == 0) t += 'e' + QString::number(static_cast<int>(rng() % 50) - 25);
        texts << t;
    }
    for (const QString& text : texts) {
        SCOPED_TRACE(text.toStdString());
        bool ok = false;
        const double expected = text.toDouble(&ok);
        const QString data = "M" + text + " 0";
        const auto path = ki::math::Path::from_svg_path_data(data);
        EXPECT_EQ(ki::math::Path::from_svg_path_data(QLatin1String(data.toLatin1())).value, path.value)
            << "Latin-1 text reads as its UTF-16 form";
        if (!ok || std::abs(expected) > 3.4028234663852886e38) {
            EXPECT_FALSE(path.ok());
            continue;
        }
        ASSERT_TRUE(path.ok()) << path.message;
        const float got = path.value.point_start().x;
        const float want = static_cast<float>(expected);
        EXPECT_EQ(std::memcmp(&got, &want, sizeof got), 0) << got << " vs " << want;
    }
}

TEST(FastPaths, CurveLengthsMatchTheIntegralOfTheirSpeed) {
    const struct Row {
        const char* name;
        std::vector<glm::vec2> controls;  // three for a quadratic, four for a cubic
    } rows[] = {
        {"quadratic bend", {{0, 0}, {50, 80}, {100, 0}}},
        {"quadratic control beyond the end: speed touches zero", {{0, 0}, {300, 0}, {100, 0}}},
        {"quadratic collinear with a turn, slanted", {{10, 20}, {310, 420}, {-50, -60}}},
        {"quadratic control halfway: uniform speed", {{0, 0}, {50, 50}, {100, 100}}},
        {"quadratic control a hair off halfway", {{0, 0}, {50.0001f, 50}, {100, 100}}},
        {"quadratic control on the start", {{5, 5}, {5, 5}, {65, 85}}},
        {"quadratic nearly straight and long", {{0, 0}, {5000, 0.01f}, {10000, 0}}},
        {"quadratic tiny", {{0, 0}, {0.001f, 0.002f}, {0.003f, 0}}},
        {"cubic s-bend", {{0, 0}, {100, 200}, {200, -200}, {300, 0}}},
        {"cubic with a cusp", {{0, 0}, {100, 100}, {0, 100}, {100, 0}}},
        {"cubic with stalled ends, straight", {{0, 0}, {0, 0}, {30, 40}, {30, 40}}},
        {"cubic nearly a cusp",
         {{-178.514343f, 139.356323f},
          {-172.534058f, 140.073853f},
          {-1213.62207f, 15.1623993f},
          {18.3577576f, 162.977356f}}},
        {"cubic turning back twice on a line", {{0, 0}, {60, 0}, {-30, 0}, {30, 0}}},
        {"cubic loop", {{0, 0}, {200, 100}, {-100, 100}, {100, 0}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::vector<glm::vec2>& c = row.controls;
        const ki::math::Element curve =
            c.size() == 3 ? ki::math::Element(ki::math::QuadraticBezier(c[0], c[1], c[2]))
                          : ki::math::Element(ki::math::CubicBezier(c[0], c[1], c[2], c[3]));
        // |B'(t)| from the control differences, in double.
        const auto speed = [&c](double t) {
            std::vector<glm::dvec2> d;
            for (size_t i = 0; i + 1 < c.size(); ++i) d.push_back(glm::dvec2(c[i + 1]) - glm::dvec2(c[i]));
            while (d.size() > 1) {
                for (size_t i = 0; i + 1 < d.size(); ++i) d[i] = (1 - t) * d[i] + t * d[i + 1];
                d.pop_back();
            }
            return double(c.size() - 1) * std::sqrt(d[0].x * d[0].x + d[0].y * d[0].y);
        };
        // Composite Simpson, fine enough that a kink in the speed costs far below the tolerance.
        constexpr int STEPS = 200000;
        double sum = speed(0) + speed(1);
        for (int i = 1; i < STEPS; ++i) sum += (i % 2 ? 4 : 2) * speed(double(i) / STEPS);
        const double expected = sum / (3.0 * STEPS);
        EXPECT_NEAR(ki::math::element_length(curve), expected, expected * 2e-6);
    }
}

// Each text goes into a read tree by hand (white space other than blanks never survives the XML
// reader) and, where the XML reader keeps it as written, through a stroke file on disk.
TEST(FastPaths, ViewBoxReadsAsTheRegularExpressionSplitAndQStringToFloat) {
    const QStringList texts = {"0 0 1024 1024", "0\v0\f1024\r1024", "0\u00a00 1024 1024", "0\u20030 1024 1024",
                               " 0,0 , 1024\t1024 ", "0 0 1024", "0\x1c" "0 1024 1024", "-0 -12.25 0.125 3",
                               "01024 007 1e3 2.5E-1", "+1 .5 10. 7", "0 0 99999999999999999 5", "0 0 inf 5",
                               "0 0 5 1e39", "0 0 1234567890123456 1"};
    const auto svg = [](const QString& viewBox) {
        return "<svg xmlns='http://www.w3.org/2000/svg' viewBox='" + viewBox.toLatin1() +
               "'><path id='o' d='M0 0 L9 0 L9 9 Z'/><clipPath id='c'><use href='#o'/></clipPath>"
               "<path clip-path='url(#c)' d='M1 1 L8 8'/></svg>";
    };
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("view.svg"));
    for (const QString& text : texts) {
        SCOPED_TRACE(text.toStdString());
        const ki::math::Rect expected = expected_view_box(text);
        const std::unique_ptr<XNode> root = ki::xml::XStrictReader::read(svg(QStringLiteral("0 0 1 1")));
        ASSERT_NE(root, nullptr);
        *root->attributes.find(QStringLiteral("viewBox")) = text;
        const auto built = morvel::Anim::build_from_svg(root.get());
        ASSERT_TRUE(built.ok());
        EXPECT_EQ(built.value.viewBox, expected) << built.value.viewBox.to_string();

        static const QRegularExpression asWritten(QStringLiteral("^[\\x20-\\x7e]*$"));
        if (!asWritten.match(text).hasMatch()) continue;
        write_file(path, svg(text));
        morvel::Anim::clear_cache();
        const auto read = morvel::Anim::build_from_file(path);
        ASSERT_TRUE(read.ok()) << read.to_string();
        EXPECT_EQ(read.value.viewBox, expected) << read.value.viewBox.to_string();
    }
    morvel::Anim::clear_cache();
}
