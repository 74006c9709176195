// The painter context, judged by the pixels it paints.
#include <gtest/gtest.h>
#include <ki/qt/GPC.h>

#include <QImage>
#include <QPainter>
#include <functional>
#include <vector>

using ki::qt::GPC;

namespace {

QImage paint(int w, int h, const std::function<void(GPC&)>& body) {
    QImage image(w, h, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    GPC gpc(painter);
    body(gpc);
    return image;
}

bool painted(const QImage& image, glm::vec2 p) {
    return image.pixel(int(p.x), int(p.y)) != QColor(Qt::white).rgb();
}

}  // namespace

TEST(GpcPartialPath, DrawsTheLeadingShareOfTheLength) {
    // Two equal legs: right from (10,50) to (110,50), then down to (110,150).
    const char* corner = "M 10 50 L 110 50 L 110 150";
    const struct {
        const char* name;
        const char* path;
        float percent;
        std::vector<glm::vec2> inked;
        std::vector<glm::vec2> blank;
    } rows[] = {
        {"negative percent draws nothing", corner, -20.0f, {}, {}},
        {"100 percent draws the whole path", corner, 100.0f, {{15, 50}, {105, 50}, {110, 145}}, {}},
        {"above 100 percent draws the whole path", corner, 250.0f, {{110, 145}}, {{110, 160}}},
        {"50 percent is exactly the first leg", corner, 50.0f, {{15, 50}, {107, 50}}, {{110, 60}}},
        {"25 percent stops halfway along the first leg", corner, 25.0f, {{55, 50}}, {{70, 50}}},
        {"75 percent ends halfway down the second leg", corner, 75.0f, {{110, 95}}, {{110, 110}}},
        {"half a quadratic curve", "M 10 150 Q 100 150 190 150", 50.0f, {{90, 150}}, {{110, 150}}},
        {"half a cubic curve", "M 10 150 C 70 150 130 150 190 150", 50.0f, {{90, 150}}, {{110, 150}}},
        // Semicircle over the top, clockwise on screen: half of it is the left quarter.
        {"half an arc", "M 10 100 A 50 50 0 0 1 110 100", 50.0f, {{25, 65}}, {{95, 65}}},
        {"second contour after the first", "M 10 20 L 60 20 M 10 80 L 60 80", 75.0f, {{30, 80}}, {{45, 80}}},
    };
    const QPen pen = GPC::make_pen(Qt::black, 4.0f, Qt::SolidLine, ki::qt::LINE_MODE_COSMETIC);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto path = ki::math::Path::from_svg_path_data(QString::fromLatin1(row.path));
        ASSERT_TRUE(path.ok()) << path.to_string();
        const QImage image = paint(200, 200, [&](GPC& gpc) {
            gpc.draw_path(ki::qt::PATH_PLAIN, path.value, pen, Qt::NoBrush, row.percent);
        });
        EXPECT_EQ(image == paint(200, 200, [](GPC&) {}), row.inked.empty()) << "blank when nothing is inked";
        for (glm::vec2 p : row.inked) EXPECT_TRUE(painted(image, p)) << p.x << "," << p.y;
        for (glm::vec2 p : row.blank) EXPECT_FALSE(painted(image, p)) << p.x << "," << p.y;
    }
}

TEST(GpcPen, LineModeDecidesWhetherWidthScales) {
    const struct {
        const char* name;
        ki::qt::LINE_MODE mode;
        int thickness;
    } rows[] = {
        {"cosmetic pen keeps its pixel width under scale 10", ki::qt::LINE_MODE_COSMETIC, 2},
        {"geometric pen scales with the transform", ki::qt::LINE_MODE_GEOMETRIC, 20},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const QImage image = paint(100, 100, [&](GPC& gpc) {
            gpc.scale(10.0f);
            gpc.draw_line({1.0f, 5.0f}, {9.0f, 5.0f}, Qt::black, 2.0f, Qt::SolidLine, row.mode);
        });
        int rows_painted = 0;
        for (int y = 0; y < 100; ++y) rows_painted += painted(image, {50.0f, float(y)}) ? 1 : 0;
        EXPECT_EQ(rows_painted, row.thickness);
    }
}
