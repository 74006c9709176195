// The painter context and the canvas base, judged by the pixels they paint.
#include <gtest/gtest.h>
#include <ki/qt/GCanvas.h>
#include <ki/qt/GPC.h>

#include <QImage>
#include <QPainter>
#include <cmath>
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

// A canvas that paints one logical 10 x 10 square at the origin.
class SquareCanvas : public ki::qt::GCanvas {
public:
    void draw(GPC& gpc, const ki::math::Rect&) override { gpc.fill_rect(0.0f, 0.0f, 10.0f, 10.0f, Qt::red); }
};

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

TEST(GCanvasCoordinates, EachSystemMapsLogicalPointsToItsPixelsAndPaintsThere) {
    // A 400 x 200 widget throughout. Only CARTESIAN takes a view size, and only a usable one: a
    // 100 x 100 view gives scale 2, the default 2 x 2 view scale 100, origin (200,100) for both.
    // `square` is where the logical square (0..10, 0..10) lands, cut to the widget.
    using enum ki::qt::coord_system::Type;
    const float nan = std::nanf("");
    const struct {
        const char* name;
        ki::qt::coord_system::Type type;
        glm::vec2 view;  // asked for
        glm::vec2 kept;  // view size afterwards
        glm::vec2 logical;
        glm::vec2 pixel;
        QRect square;
    } rows[] = {
        {"pixels", SCREEN, {50, 20}, {2, 2}, {10, 10}, {10, 10}, {0, 0, 10, 10}},
        {"origin at the centre", CARTESIAN, {100, 100}, {100, 100}, {0, 0}, {200, 100}, {200, 80, 20, 20}},
        {"scale 2 with y up", CARTESIAN, {100, 100}, {100, 100}, {10, 10}, {220, 80}, {200, 80, 20, 20}},
        {"zero width refused", CARTESIAN, {0, 10}, {2, 2}, {0.5f, 0.5f}, {250, 50}, {200, 0, 200, 100}},
        {"NaN refused", CARTESIAN, {nan, 10}, {2, 2}, {0.5f, 0.5f}, {250, 50}, {200, 0, 200, 100}},
        {"unit is half the shorter side", NDC, {50, 20}, {2, 2}, {0.5f, 0.5f}, {250, 50}, {200, 0, 200, 100}},
        {"spans each side, y down", UV, {50, 20}, {2, 2}, {0.25f, 0.25f}, {100, 50}, {0, 0, 400, 200}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(ki::qt::coord_system::to_string(row.type) + ": " + row.name);
        SquareCanvas canvas;
        canvas.resize(400, 200);
        canvas.set_coord_system(row.type);
        canvas.set_view_size(row.view.x, row.view.y);
        EXPECT_EQ(canvas.get_view_size(), row.kept);
        const glm::vec2 pixel = canvas.convert_from_coord_system(row.logical);
        EXPECT_NEAR(pixel.x, row.pixel.x, 1e-3);
        EXPECT_NEAR(pixel.y, row.pixel.y, 1e-3);
        const glm::vec2 back = canvas.convert_to_coord_system(row.pixel);
        EXPECT_NEAR(back.x, row.logical.x, 1e-4);
        EXPECT_NEAR(back.y, row.logical.y, 1e-4);

        QImage image(400, 200, QImage::Format_RGB32);
        image.fill(Qt::white);
        canvas.render(&image);
        int red = 0;
        QRect box;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixelColor(x, y) == QColor(Qt::red)) {
                    ++red;
                    box |= QRect(x, y, 1, 1);
                }
        EXPECT_EQ(box, row.square);
        EXPECT_EQ(red, row.square.width() * row.square.height()) << "painted solid";
    }
}
