// Printed worksheets: the pages rendered back with poppler's pdftoppm and read as pixels, the
// guide grid painted into an image, and the command line's answers.
#include <gtest/gtest.h>
#include <ki/qt/GPC.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>

#include "app/worksheet/GuideGrid.h"
#include "app/worksheet/Worksheet.h"
#include "app/worksheet/WorksheetCli.h"

using namespace morvel;

namespace {

constexpr int DPI = 40;

QString run_tool(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(60000)) << program.toStdString();
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return QString::fromUtf8(process.readAllStandardOutput());
}

/// The pages of a PDF as grey images, first page first.
std::vector<QImage> render_pages(const QString& pdf, const QString& folder) {
    run_tool(QStringLiteral("pdftoppm"), {QStringLiteral("-r"), QString::number(DPI), QStringLiteral("-gray"),
                                          pdf, folder + QStringLiteral("/page")});
    std::vector<QImage> pages;
    for (const QString& name : QDir(folder).entryList({QStringLiteral("page*.pgm")}, QDir::Files, QDir::Name))
        pages.emplace_back(folder + '/' + name);
    return pages;
}

// Grey levels: the stroke order is printed in black and the accent colour, the character to
// trace in light grey; paper is white.
constexpr int DARK = 160;
constexpr int LIGHT = 235;

/// Pixels darker than `below` in `box` (millimetres) without the outer `share` of each side,
/// which keeps the frame out.
int ink(const QImage& page, const ki::math::Rect& box, float share, int below) {
    const float px = DPI / 25.4f;
    int count = 0;
    for (int y = int((box.y + box.h * share) * px); y < int((box.bottom() - box.h * share) * px); ++y)
        for (int x = int((box.x + box.w * share) * px); x < int((box.right() - box.w * share) * px); ++x)
            if (qGray(page.pixel(x, y)) < below) ++count;
    return count;
}

}  // namespace

TEST(Worksheet, PrintedPagesCarryInkWhereTheLayoutPutsIt) {
    const struct {
        const char* name;
        QString chars;  ///< "" for the whole level 1
        Paper paper;
        int rows;
        QSize pagePixels;
    } rows[] = {
        {"three characters on A4", QStringLiteral("中大我"), Paper::A4, 2, {331, 468}},
        {"three characters on Letter with one row", QStringLiteral("中大我"), Paper::LETTER, 1, {340, 440}},
        {"the whole level on A4", QString(), Paper::A4, 2, {331, 468}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const WorksheetSource source =
            row.chars.isEmpty() ? WorksheetSource::from_level(1) : WorksheetSource::from_text(row.chars);
        ASSERT_TRUE(source.missing.isEmpty());
        ASSERT_EQ(source.entries.size(), row.chars.isEmpty() ? 87u : 3u);
        // No grid: nothing but ink inside the squares.
        const WorksheetOptions options{GuideGrid::NONE, row.paper, row.rows};
        QTemporaryDir dir;
        const QString pdf = dir.filePath(QStringLiteral("sheet.pdf"));
        const ki::GSysResult<int> written = Worksheet::write_file(pdf, source.entries, options);
        ASSERT_TRUE(written.ok()) << written.to_string();

        std::vector<int> strokeCounts;
        for (const WorksheetEntry& entry : source.entries)
            strokeCounts.push_back(static_cast<int>(entry.anim.strokes.size()));
        const WorksheetLayout layout = WorksheetLayout::build(strokeCounts, options);
        const std::vector<QImage> pages = render_pages(pdf, dir.path());
        ASSERT_EQ(static_cast<int>(pages.size()), written.value);
        ASSERT_EQ(pages.size(), layout.pages.size());
        size_t blocks = 0;
        for (size_t p = 0; p < pages.size(); ++p) {
            EXPECT_NEAR(pages[p].width(), row.pagePixels.width(), 1);
            EXPECT_NEAR(pages[p].height(), row.pagePixels.height(), 1);
            EXPECT_GT(ink(pages[p], layout.footer(), 0.0f, DARK), 0) << "page number on page " << p + 1;
            for (const SheetBlock& block : layout.pages[p].blocks) {
                ++blocks;
                EXPECT_LE(block.practice.back().bottom(), layout.paper.h - WorksheetLayout::MARGIN);
                ASSERT_EQ(block.strip.size(),
                          source.entries[static_cast<size_t>(block.entry)].anim.strokes.size());
                for (size_t i = 0; i < block.strip.size(); ++i)
                    EXPECT_GT(ink(pages[p], block.strip[i], 0.1f, DARK), 0)
                        << "strip square " << i << " of block " << block.entry;
                ASSERT_EQ(block.traced, 3);
                for (size_t i = 0; i < block.practice.size(); ++i)
                    EXPECT_EQ(ink(pages[p], block.practice[i], 0.2f, LIGHT) > 0,
                              static_cast<int>(i) < block.traced)
                        << "practice square " << i << " of block " << block.entry;
            }
        }
        EXPECT_EQ(blocks, source.entries.size());
        const QStringList fonts =
            run_tool(QStringLiteral("pdffonts"), {pdf}).split('\n').filter(QStringLiteral("WenKai"));
        ASSERT_EQ(fonts.size(), 1) << "the writing font is used";
        EXPECT_EQ(fonts[0].split(' ', Qt::SkipEmptyParts).value(4), QStringLiteral("yes")) << "and embedded";
    }
}

TEST(Worksheet, GuideGridDrawsTheLinesOfItsKind) {
    const struct {
        const char* name;
        GuideGrid grid;
        bool cross, diagonals;
    } rows[] = {
        {"none frames the square only", GuideGrid::NONE, false, false},
        {"tian adds the cross", GuideGrid::TIAN, true, false},
        {"mi adds cross and diagonals", GuideGrid::MI, true, true},
    };
    const GuideGridStyle style{Qt::black, 2.0f, 2.0f, Qt::SolidLine};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QImage image(120, 120, QImage::Format_RGB32);
        image.fill(Qt::white);
        {
            QPainter painter(&image);
            ki::qt::GPC gpc(painter);
            draw_guide_grid(gpc, {10, 10, 100, 100}, row.grid, style);
        }
        const auto dark = [&](int x, int y) { return qGray(image.pixel(x, y)) < 128; };
        EXPECT_TRUE(dark(10, 35) && dark(110, 85) && dark(35, 10) && dark(85, 110)) << "frame";
        EXPECT_EQ(dark(35, 60) && dark(60, 85), row.cross);
        EXPECT_EQ(dark(35, 35) && dark(85, 35), row.diagonals);
        EXPECT_FALSE(dark(40, 20)) << "between the lines";
    }
}

TEST(WorksheetCli, ExitCodesAndMessages) {
    QTemporaryDir dir;
    const QString out = dir.filePath(QStringLiteral("out.pdf"));
    // Arguments after --worksheet, split at blanks; @out is the output file, @dir its folder.
    const auto fill = [&](QString text) { return text.replace("@out", out).replace("@dir", dir.path()); };
    using enum WorksheetCli::EXIT_CODE;
    const struct {
        const char* name;
        const char* arguments;
        int exitCode;
        const char* mentioned;
        bool written;
    } rows[] = {
        {"characters written", "中大我 --out @out --grid mi --paper letter --rows 3", EXIT_OK, "@out", true},
        {"a level written", "level:1 --out @out --rows 1", EXIT_OK, "87", true},
        {"no stroke file: listed, the rest written", "中x大 --out @out", EXIT_CHARS_MISSING, "'x'", true},
        {"only unknown characters write nothing", "xy --out @out", EXIT_CHARS_MISSING, "'y'", false},
        {"unwritable path", "中 --out @dir/no/such/a.pdf", EXIT_WRITE_FAILED, "@dir/no/such/a.pdf", false},
        {"folder as output", "中 --out @dir", EXIT_WRITE_FAILED, "@dir", false},
        {"no output named", "中", EXIT_BAD_ARGUMENTS, "--out", false},
        {"no characters named", "--out @out", EXIT_BAD_ARGUMENTS, "level:N", false},
        {"unknown grid", "中 --out @out --grid hex", EXIT_BAD_ARGUMENTS, "'hex'", false},
        {"unknown paper", "中 --out @out --paper a5", EXIT_BAD_ARGUMENTS, "'a5'", false},
        {"rows below range", "中 --out @out --rows 0", EXIT_BAD_ARGUMENTS, "'0'", false},
        {"rows not a number", "中 --out @out --rows many", EXIT_BAD_ARGUMENTS, "'many'", false},
        {"level that does not exist", "level:99 --out @out", EXIT_BAD_ARGUMENTS, "'99'", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QFile::remove(out);
        QStringList arguments{QStringLiteral("quenlo"), QStringLiteral("--worksheet")};
        for (const QString& argument : QString::fromUtf8(row.arguments).split(' '))
            arguments << fill(argument);
        const WorksheetCliResult result = WorksheetCli::run(arguments, QLocale::English);
        EXPECT_EQ(result.exitCode, row.exitCode) << result.message.toStdString();
        EXPECT_TRUE(result.message.contains(fill(row.mentioned))) << result.message.toStdString();
        EXPECT_EQ(QFile::exists(out), row.written);
    }
}
