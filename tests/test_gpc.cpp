// The painter context, judged by the pixels it paints.
#include <gtest/gtest.h>
#include <ki/qt/GPC.h>

#include <QImage>
#include <QPainter>
#include <functional>

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
