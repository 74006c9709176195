// Icons painted from stored renderings: the same pixels as the SVG drawn directly, SVG drawn
// only for what the store lacks, and a damaged or unwritable store costing nothing but time.
#include <ki/qt/guitools/GIconCache.h>

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <functional>

#include "LoggedTest.h"

namespace {

namespace icon_cache = ki::qt::icon_cache;

QByteArray svg_of(const char* colour) {
    return QByteArray("<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 24 24'>"
                      "<circle cx='12' cy='12' r='9' fill='") +
           colour + "'/><rect x='2' y='2' width='6' height='3' fill='black'/></svg>";
}

void write(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

QImage direct(const QString& path, QIcon::Mode mode) {
    return QIcon(path).pixmap(QSize(24, 24), 1.0, mode).toImage();
}

QImage cached(const QString& path, QIcon::Mode mode) {
    return icon_cache::make(path).pixmap(QSize(24, 24), 1.0, mode).toImage();
}

}  // namespace

class IconCacheTest : public LoggedTest {
protected:
    void TearDown() override {
        icon_cache::set_file(QString());
        LoggedTest::TearDown();
    }
    QTemporaryDir dir;
};

TEST_F(IconCacheTest, StoredRenderingsMatchTheDocumentAndOnlyWhatIsMissingIsDrawn) {
    const QString svg = dir.filePath("icon.svg");
    const QString store = dir.filePath("cache/icons.bin");
    write(svg, svg_of("red"));
    icon_cache::set_file(store);

    struct Step {
        const char* name;
        std::function<void()> before;
        QIcon::Mode mode;
        int renders;  // drawn from SVG in this step
        bool saved;
    };
    const Step steps[] = {
        {"first use draws the document and stores it", [] {}, QIcon::Normal, 1, true},
        {"the same icon again is served", [] {}, QIcon::Normal, 0, true},
        {"another mode is another rendering", [] {}, QIcon::Disabled, 1, true},
        {"a later start reads both from the file", [&] { icon_cache::set_file(store); }, QIcon::Disabled, 0, true},
        {"a changed document is drawn anew", [&] { write(svg, svg_of("blue")); }, QIcon::Normal, 1, true},
        {"a damaged file is drawn anew and written again",
         [&] {
             write(store, QByteArray("KIIC") + QByteArray(40, '\x7f'));
             icon_cache::set_file(store);
         },
         QIcon::Normal, 1, true},
        {"which the next start reads", [&] { icon_cache::set_file(store); }, QIcon::Normal, 0, true},
        {"an unwritable place only costs the drawing",
         [&] { icon_cache::set_file(svg + "/below-a-file/icons.bin"); }, QIcon::Normal, 1, false},
    };
    for (const Step& step : steps) {
        step.before();
        const int before = icon_cache::renders();
        const QImage image = cached(svg, step.mode);
        EXPECT_EQ(icon_cache::renders() - before, step.renders) << step.name;
        ASSERT_FALSE(image.isNull()) << step.name;
        EXPECT_EQ(image.convertToFormat(QImage::Format_ARGB32), direct(svg, step.mode).convertToFormat(QImage::Format_ARGB32))
            << step.name;
        EXPECT_EQ(icon_cache::save(), step.saved) << step.name;
    }
    // Blue now, and the disabled rendering is not the normal one.
    EXPECT_EQ(QColor(cached(svg, QIcon::Normal).pixel(12, 12)), QColor(Qt::blue));
    EXPECT_NE(cached(svg, QIcon::Normal), cached(svg, QIcon::Disabled));
    // A button shows no icon for a name without a file, however often it asks.
    const QIcon missing = icon_cache::make(dir.filePath("missing.svg"));
    for (int ask = 0; ask < 2; ++ask) {
        EXPECT_TRUE(missing.isNull()) << ask;
        EXPECT_FALSE(icon_cache::make(svg).isNull()) << ask;
    }
}
