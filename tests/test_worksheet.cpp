// Printed worksheets: the pages rendered back with poppler's pdftoppm and read as pixels, the
// guide grid painted into an image, and the command line's answers, in-process and from the
// program itself.
#include <gtest/gtest.h>
#include <ki/qt/GPC.h>
#include <sys/resource.h>

#include <QAbstractButton>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QMessageBox>
#include <QPainter>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QUrl>
#include <csignal>

#include "LoggedTest.h"
#include "app/worksheet/GuideGrid.h"
#include "app/worksheet/Worksheet.h"
#include "app/worksheet/WorksheetCli.h"
#include "app/worksheet/WorksheetDialog.h"

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
    QDir(dir.path()).mkdir(QStringLiteral("folder.pdf"));
    QString many;  // private-use characters: none has a stroke file
    for (char32_t c = 0xE000; c < 0xE000 + 1000; ++c) many += QString::fromUcs4(&c, 1);
    const auto fill = [&](QString text) {
        return text.replace("@out", out).replace("@dir", dir.path()).replace("@many", many);
    };
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
        {"unwritable path", "中 --out @dir/no/such/a.pdf", EXIT_WRITE_FAILED, "@dir/no/such/a.pdf", false},
        {"folder as output", "中 --out @dir/folder.pdf", EXIT_WRITE_FAILED, "it is a folder", false},
        {"no output named", "中", EXIT_BAD_ARGUMENTS, "--out", false},
        {"no characters named", "--out @out", EXIT_BAD_ARGUMENTS, "level:N", false},
        {"unknown grid", "中 --out @out --grid hex", EXIT_BAD_ARGUMENTS, "'hex'", false},
        {"unknown paper", "中 --out @out --paper a5", EXIT_BAD_ARGUMENTS, "'a5'", false},
        {"rows below range", "中 --out @out --rows 0", EXIT_BAD_ARGUMENTS, "'0'", false},
        {"rows not a number", "中 --out @out --rows many", EXIT_BAD_ARGUMENTS, "'many'", false},
        {"level that does not exist", "level:99 --out @out", EXIT_BAD_ARGUMENTS, "'99'", false},
        {"a name without .pdf is refused", "中 --out @dir/sheet.txt", EXIT_BAD_ARGUMENTS, "'@dir/sheet.txt'",
         false},
        {"control characters are shown escaped", "中 --out @out --grid \x1b[2Jhex\x07", EXIT_BAD_ARGUMENTS,
         "'\\x1b[2Jhex\\x07'", false},
        {"a long list of unknown characters is cut", "@many --out @out", EXIT_CHARS_MISSING, "… and 980 more",
         false},
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
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), row.written ? 1 : 0)
            << "no other file, no temporary one left";
        EXPECT_LT(result.message.size(), 1000);
        for (const QChar c : result.message)
            EXPECT_TRUE(c == '\n' || c.category() != QChar::Other_Control) << "raw control character";
    }
}

// The program as a user runs it, without a display: a headless command prints its result once
// (errors on standard error) and nothing else; a full disk, played by a file size limit on the
// child process, is an error that keeps the file that was there.
TEST(WorksheetCli, ProgramPrintsOneLineAndKeepsTheOldFileOnAFullDisk) {
    const QString program = QCoreApplication::applicationDirPath() + QStringLiteral("/quenlo");
    if (!QFile::exists(program)) GTEST_SKIP() << "the command line needs the quenlo target built";
    const QByteArray old("the file from before\n");
    const struct {
        const char* name;
        const char* arguments;  ///< split at blanks; @dir is the working folder
        qint64 sizeLimit;       ///< bytes a file may grow to; -1 no limit
        bool brokenHistory;     ///< the practice history file is 2,000 bytes of garbage
        int exitCode;
        int lines;  ///< on the one stream written to; -1: more than one, with the log
        const char* mentioned;
    } rows[] = {
        {"a worksheet", "--worksheet 中 --out @dir/a.pdf", -1, false, 0, 1, "a.pdf"},
        {"skipped characters", "--worksheet 中x --out @dir/a.pdf", -1, false, 3, 1, "'x'"},
        {"the log only when asked", "--worksheet 中 --out @dir/a.pdf -__log_level debug", -1, false, 0, -1,
         "a.pdf"},
        {"a look-alike option", "--worksheets 中", -1, false, 2, 5, "unknown option '--worksheets'"},
        {"the usage", "--help", -1, false, 0, 6, "usage: quenlo [--level N]"},
        {"the version", "--version", -1, false, 0, 1, "quenlo 0.9.8"},
        {"an export names both files", "-export-progress @dir/a.csv", -1, false, 0, 1, "a.csv' and '"},
        {"an export of an unreadable history", "--export-progress @dir/a.csv", -1, true, 1, 1,
         "not a database"},
        {"a full disk while writing a worksheet", "--worksheet level:1 --out @dir/old.pdf", 40'000, false, 1,
         1, "old.pdf"},
        {"a full disk at the last flush of an export", "--export-progress @dir/old.csv", 60, false, 1, 1,
         "old.csv"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QTemporaryDir dir;
        write_file(dir.filePath("old.pdf"), old);
        write_file(dir.filePath("old.csv"), old);
        if (row.brokenHistory) {
            QDir().mkpath(dir.filePath("data/qlo.de/quenlo"));
            write_file(dir.filePath("data/qlo.de/quenlo/progress.sqlite"), QByteArray(2000, 'x'));
        }
        QProcess cli;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_DATA_HOME", dir.filePath("data"));
        env.insert("XDG_CONFIG_HOME", dir.filePath("config"));
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) env.remove(name);
        cli.setProcessEnvironment(env);
        if (row.sizeLimit >= 0) {
            const rlim_t limit = static_cast<rlim_t>(row.sizeLimit);
            cli.setChildProcessModifier([limit] {
                const rlimit size{limit, limit};
                ::setrlimit(RLIMIT_FSIZE, &size);
                ::signal(SIGXFSZ, SIG_IGN);  // a write past the limit fails instead of ending the process
            });
        }
        QStringList arguments = QString::fromUtf8(row.arguments).split(' ');
        arguments.replaceInStrings("@dir", dir.path());
        cli.start(program, arguments);
        ASSERT_TRUE(cli.waitForFinished(60'000));
        const QString out = QString::fromLocal8Bit(cli.readAllStandardOutput());
        const QString err = QString::fromLocal8Bit(cli.readAllStandardError());
        EXPECT_EQ(cli.exitCode(), row.exitCode) << err.toStdString();
        const QString& written = row.exitCode == 0 ? out : err;
        if (row.lines > 0) {
            EXPECT_TRUE((row.exitCode == 0 ? err : out).isEmpty()) << "the other stream stays empty";
        }
        const qsizetype lines = written.split('\n', Qt::SkipEmptyParts).size();
        if (row.lines < 0) {
            EXPECT_GT(lines, 1) << written.toStdString();
        } else {
            EXPECT_EQ(lines, row.lines) << written.toStdString();
        }
        EXPECT_TRUE(written.contains(QString::fromUtf8(row.mentioned))) << written.toStdString();
        EXPECT_EQ(read_file(dir.filePath("old.pdf")), old);
        EXPECT_EQ(read_file(dir.filePath("old.csv")), old);
        // Only a command that names a file here writes one.
        const bool wrote =
            (row.exitCode == 0 || row.exitCode == 3) && QString::fromUtf8(row.arguments).contains("@dir");
        // An export writes the review log beside the history.
        const int made = !wrote ? 0 : QString::fromUtf8(row.arguments).contains("export-progress") ? 2 : 1;
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 2 + made)
            << "a failed command leaves no file behind";
    }
}

// From the menu: the save dialog starts in the Documents folder (made when missing, else the
// dialog opens in the working directory), and the saved path is confirmed with a way to its folder.
TEST(WorksheetDialog, StartsInDocumentsAndConfirmsWithTheFolder) {
    QTemporaryDir dir;
    const QString documents = dir.filePath(QStringLiteral("Documents of the test"));
    const QString userDirs = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                             QStringLiteral("/user-dirs.dirs");
    ASSERT_FALSE(QFile::exists(userDirs));
    QDir().mkpath(QFileInfo(userDirs).absolutePath());
    write_file(userDirs, "XDG_DOCUMENTS_DIR=\"" + documents.toUtf8() + "\"\n");
    const QString start = WorksheetDialog::start_path(QStringLiteral("中"), 1, false);
    QFile::remove(userDirs);
    EXPECT_EQ(QFileInfo(start).absolutePath(), documents);
    EXPECT_TRUE(QFileInfo(documents).isDir());

    std::vector<QUrl> opened;
    const auto opener =
        std::exchange(WorksheetDialog::folder_opener(), [&](const QUrl& url) { opened.push_back(url); });
    const QString saved = documents + QStringLiteral("/sheet.pdf");
    const std::unique_ptr<QMessageBox> box(
        WorksheetDialog::confirmation(nullptr, saved, QStringLiteral("'x'")));
    EXPECT_TRUE(box->text().contains(saved) && box->text().contains(QStringLiteral("'x'")))
        << box->text().toStdString();
    for (QAbstractButton* button : box->buttons())
        if (box->buttonRole(button) == QMessageBox::ActionRole) button->click();
    WorksheetDialog::folder_opener() = opener;
    EXPECT_EQ(opened, std::vector<QUrl>{QUrl::fromLocalFile(documents)});
}
