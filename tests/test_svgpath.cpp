#include <gtest/gtest.h>
#include <ki/math/Path.h>

#include <QString>
#include <QStringList>

using ki::math::Contour;
using ki::math::Path;

namespace {

QString num(float v) {
    return QString::number(v);
}
QString pt(glm::vec2 p) {
    return num(p.x) + ',' + num(p.y);
}

// The path written back as absolute SVG commands, arcs by their given flags and end point.
QString absolute_form(const Path& path) {
    QStringList parts;
    for (const Contour& contour : path.get_contours()) {
        parts << 'M' + pt(contour.start);
        for (const ki::math::Element& e : contour.elements) {
            if (const auto* s = std::get_if<ki::math::Segment>(&e)) parts << 'L' + pt(s->p1);
            if (const auto* q = std::get_if<ki::math::QuadraticBezier>(&e))
                parts << 'Q' + pt(q->p1) + ' ' + pt(q->p2);
            if (const auto* c = std::get_if<ki::math::CubicBezier>(&e))
                parts << 'C' + pt(c->p1) + ' ' + pt(c->p2) + ' ' + pt(c->p3);
            if (const auto* a = std::get_if<ki::math::EllipticArc>(&e))
                parts << QStringLiteral("A%1 %2 %3 %4 %5")
                             .arg(pt(a->get_radii()), num(a->get_x_axis_rotation()), num(a->is_large_arc()),
                                  num(a->is_sweep()), pt(a->point_end()));
        }
        if (contour.closed) parts << QStringLiteral("Z");
    }
    return parts.join(' ');
}

// Parses `data` as given and as Latin-1 text, which takes a road of its own: both must agree.
ki::GSysResult<Path> parse(const QString& data) {
    ki::GSysResult<Path> wide = Path::from_svg_path_data(data);
    const QByteArray latin1 = data.toLatin1();
    const ki::GSysResult<Path> narrow = Path::from_svg_path_data(QLatin1String(latin1));
    EXPECT_EQ(narrow.ok(), wide.ok());
    EXPECT_EQ(narrow.message, wide.message);
    EXPECT_EQ(narrow.value, wide.value);
    return wide;
}

}  // namespace

TEST(SvgPath, ErrorsNameReasonAndPosition) {
    struct Row {
        const char* name;
        QString data;
        const char* message;
    } rows[] = {
        {"empty data", "", "SVG path must begin with a command at position 0"},
        {"only blanks", "   ", "SVG path must begin with a command at position 3"},
        {"number before any command", "10 10", "SVG path must begin with a command at position 0"},
        {"unknown second command", "M0 0 X 5 5", "Unsupported SVG path command 'X' at position 5"},
        {"unknown first letter", "X 1 2", "Unsupported SVG path command 'X' at position 0"},
        {"garbage after a group", "M 0 0 #", "Unsupported SVG path command '#' at position 6"},
        {"line before move", "L 10 10", "Path segment encountered before M/m at position 0"},
        {"close before move", " z", "Path segment encountered before M/m at position 1"},
        {"command without numbers", "M 0 0 L", "Expected arguments for command 'L' at position 7"},
        {"command followed by command", "M 0 0 l L 1 1", "Expected arguments for command 'l' at position 8"},
        {"truncated pair", "M0 0L 1", "Unexpected end of SVG path data at position 7"},
        {"letter inside a group", "M0 0 L 1 x", "Expected number at position 9"},
        {"Latin-1 letter after L", "M0 0 L\u00e9 1", "Expected arguments for command 'L' at position 6"},
        {"Latin-1 letter as a command", "\u00e9", "Unsupported SVG path command '\u00e9' at position 0"},
        {"lonely sign", "M0 0 L - 5", "Invalid number '-' at position 8"},
        {"lonely dot", "M0 0 L . 5", "Invalid number '.' at position 8"},
        {"float overflow", "M 1e39 0", "Invalid number '1e39' at position 6"},
        {"exponent without digits", "M 1e 2", "Invalid exponent at position 4"},
        {"exponent sign at end", "M 1e-", "Invalid exponent at position 5"},
        {"arc flag 2", "M0 0 A 5 5 0 2 0 10 0", "Arc flag must be 0 or 1, found '2' at position 13"},
        {"arc flag missing", "M0 0 A 5 5 0 1", "Unexpected end while reading arc flag at position 14"},
        {"number after Z", "M0 0 L 1 1 Z 5 5", "Expected command after Z at position 13"},
        {"number after z and comma", "M0 0 L 1 1 z,5", "Expected command after Z at position 13"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto result = parse(row.data);
        EXPECT_FALSE(result.ok());
        EXPECT_EQ(result.get_message(), QString::fromUtf8(row.message));
        EXPECT_TRUE(result.value.is_empty()) << "no partial path after an error";
    }
}

TEST(SvgPath, CommandsBuildTheExpectedPath) {
    struct Row {
        const char* name;
        QString data;
        const char* absolute;
    } rows[] = {
        {"pairs after M are lines", "M0 0 10 0 10 10", "M0,0 L10,0 L10,10"},
        {"pairs after m are relative lines", "m1 1 2 0 0 2", "M1,1 L3,1 L3,3"},
        {"repeated L groups", "M0 0 L1 0 2 0 l1 1 1 1", "M0,0 L1,0 L2,0 L3,1 L4,2"},
        {"horizontal and vertical", "M1 1 H5 V7 h-2 v-3", "M1,1 L5,1 L5,7 L3,7 L3,4"},
        {"cubic absolute then relative", "M0 0 C1 2 3 4 5 6 c1 1 2 2 3 3", "M0,0 C1,2 3,4 5,6 C6,7 7,8 8,9"},
        {"S reflects the previous control", "M0 0 C0 10 10 10 10 0 S20 -10 20 0",
         "M0,0 C0,10 10,10 10,0 C10,-10 20,-10 20,0"},
        {"S after S reflects the second control of the S before", "M0 0 C0 10 10 10 10 0 S20 -10 20 0 S30 10 30 0",
         "M0,0 C0,10 10,10 10,0 C10,-10 20,-10 20,0 C20,10 30,10 30,0"},
        {"s relative reflects too", "M0 0 c0 10 10 10 10 0 s10 -10 10 0",
         "M0,0 C0,10 10,10 10,0 C10,-10 20,-10 20,0"},
        {"S after a line starts at the current point", "M0 0 L5 0 S10 5 10 0", "M0,0 L5,0 C5,0 10,5 10,0"},
        {"quadratic absolute then relative", "M0 0 Q1 2 3 4 q1 1 2 2", "M0,0 Q1,2 3,4 Q4,5 5,6"},
        {"T chains reflections", "M0 0 Q5 10 10 0 T20 0 t10 0", "M0,0 Q5,10 10,0 Q15,-10 20,0 Q25,10 30,0"},
        {"T after a cubic does not reflect", "M0 0 C1 1 2 1 4 0 T8 0", "M0,0 C1,1 2,1 4,0 Q4,0 8,0"},
        {"arc absolute then relative", "M0 0 A10 10 0 0 1 20 0 a5 5 30 1 0 10 0",
         "M0,0 A10,10 0 0 1 20,0 A5,5 30 1 0 30,0"},
        {"arc flags without separators", "M0 0 a10 10 0 1120 0", "M0,0 A10,10 0 1 1 20,0"},
        {"numbers in compact forms", "M.5.5-1-2 10-5 1e1,1E-1 +2.5e+1 0",
         "M0.5,0.5 L-1,-2 L10,-5 L10,0.1 L25,0"},
        {"every kind of separator", QString::fromUtf8("M0,0\tL\u00a010\u0085 0\r\n,l 0 , 5"),
         "M0,0 L10,0 L10,5"},
        {"close adds the line back", "M0 0 L10 0 L10 10 Z", "M0,0 L10,0 L10,10 L0,0 Z"},
        {"m after z is relative to the contour start", "M10 10 L20 10 z m5 5 l1 0",
         "M10,10 L20,10 L10,10 Z M15,15 L16,15"},
        {"line after z starts a new contour at the start", "M0 0 L10 0 L10 10 Z l5 0",
         "M0,0 L10,0 L10,10 L0,0 Z M0,0 L5,0"},
        {"no zero-length closing line at the start", "M20 20 L30 20 L20 20 z", "M20,20 L30,20 L20,20 Z"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto result = parse(row.data);
        ASSERT_TRUE(result.ok()) << result.to_string();
        EXPECT_EQ(absolute_form(result.value), row.absolute);
    }
}
