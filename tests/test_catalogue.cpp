#include <gtest/gtest.h>

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <map>

#include "LoggedTest.h"
#include "app/AppData.h"
#include "app/ChinChar.h"

using morvel::ChinChar;
using morvel::prog2::AppData;
using morvel::prog2::Level;

namespace {

// The refused names are logged as errors: `capture` keeps them, none is printed.
using CatalogueTest = LoggedTest;

}  // namespace

TEST(Catalogue, LevelLineParsing) {
    struct Row {
        const char* name;
        const char16_t* line;
        const char* parsed;
    } rows[] = {
        {"shipped form", u"20013 = { 中 | zhōng | middle; centre | Mitte; Zentrum | середина; центр }",
         "中 | zhōng | middle; centre | Mitte; Zentrum | середина; центр"},
        {"first field never checked", u"20013 = { X | a | b | c | d }", "中 | a | b | c | d"},
        {"blanks insignificant", u"  19971 ={a|b|c|d|e}  ", "七 | b | c | d | e"},
        {"empty fields kept", u"19971 = { | | | | }", "七 |  |  |  | "},
        {"four fields", u"20013 = { 中 | zhōng | middle | Mitte }", "NO-VALID"},
        {"six fields", u"20013 = { 中 | zhōng | a | b | c | d }", "NO-VALID"},
        {"text instead of number", u"abc = { 中 | zhōng | a | b | c }", "NO-VALID"},
        {"no equals sign", u"20013 { 中 | zhōng | a | b | c }", "NO-VALID"},
        {"closing brace first", u"20013 = } 中 | zhōng | a | b | c {", "NO-VALID"},
        {"empty line", u"", "NO-VALID"},
    };
    for (const Row& r : rows)
        EXPECT_EQ(ChinChar::from_string(QString::fromUtf16(r.line)).to_string(), r.parsed) << r.name;
}

TEST(Catalogue, LevelFromTheCommandLine) {
    const struct Row {
        QStringList arguments;
        int level;
        const char* error;  // a part of the message, empty for none
    } rows[] = {
        {{"quenlo", "--lang", "--level", "1"}, 1, ""},
        {{"quenlo", "--level", "8"}, 0, "not '8'"},
        {{"quenlo", "--level", "0"}, 0, "not '0'"},
        {{"quenlo", "--level", "two"}, 0, "not 'two'"},
        {{"quenlo", "--level"}, 0, "needs a level from 1 to 7"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments.join(' ').toStdString());
        QString error;
        EXPECT_EQ(Level::from_arguments(row.arguments, error), row.level);
        EXPECT_EQ(error.isEmpty(), *row.error == '\0');
        EXPECT_TRUE(error.contains(QString::fromLatin1(row.error))) << error.toStdString();
    }
}

TEST_F(CatalogueTest, OrderingAndRejectionOfOddNames) {
    QTemporaryDir dir;
    for (const char* name : {"10.svg", "9.svg", "abc.svg", "20013.SVG", "3", "99999999999.svg", "b.txt"}) {
        write_file(dir.filePath(name), "<svg/>");
    }
    AppData data(dir.path());
    data.load();
    std::vector<std::pair<QString, int>> got;
    for (unsigned i = 0; i < data.size(); ++i)
        got.emplace_back(data.appObject_at(i).fileName, data.unicode_at(i));
    const std::vector<std::pair<QString, int>> want = {
        {"3", 3}, {"9.svg", 9}, {"10.svg", 10}, {"20013.SVG", 20013}};
    EXPECT_EQ(got, want) << "numbers by value, upper-case suffix kept, names that are not numbers skipped";
    EXPECT_EQ(data.svg_file_path_at(2), dir.path() + "/10.svg");
    EXPECT_EQ(data.appObject_at(3).chinChar.pinyin, QStringLiteral("zhōng")) << "joined with its level row";
    EXPECT_TRUE(data.appObject_at(0).chinChar.pinyin.isEmpty()) << "no level row: empty record";

    data.load();
    EXPECT_EQ(data.size(), 4u) << "a second load changes nothing";

    EXPECT_TRUE(data.appObject_at(data.size()).fileName.isEmpty());
    EXPECT_EQ(data.unicode_at(data.size()), -1);
    EXPECT_EQ(data.svg_file_path_at(data.size()), QString());

    // An odd mix of names must not upset the sort, however the comparisons fall.
    QTemporaryDir mixed;
    for (const char* name : {"2.svg", "10.svg", "1a.svg", "-5.svg", "!.svg", "0.svg", "z", "1a0.svg"}) {
        write_file(mixed.filePath(name), "");
    }
    AppData odd(mixed.path());
    odd.load();
    EXPECT_EQ(odd.size(), 4u);
}

TEST(Catalogue, ShippedLevels) {
    // One syllable with its tone mark; only particles are toneless.
    const QRegularExpression toned(QStringLiteral("^[a-zü]*[āáǎàēéěèīíǐìōóǒòūúǔùǖǘǚǜ][a-zü]*$"));
    const QString particles = QStringLiteral("么了们吗吧呀呢啊得的着啦嘛");
    // 2,663 characters in all: every character of HSK 1-6, each in one level only.
    const struct {
        int level;
        unsigned count;
        int hsk;
    } rows[] = {{1, 87, 1}, {2, 95, 1}, {3, 167, 2}, {4, 269, 3}, {5, 446, 4}, {6, 621, 5}, {7, 978, 6}};
    ASSERT_EQ(std::size(rows), size_t(Level::COUNT));
    std::map<int, int> levelOf;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.level);
        const Level level = Level::shipped(row.level);
        EXPECT_EQ(level.size(), int(row.count)) << "counted without loading";
        EXPECT_EQ(Level::hsk(row.level), row.hsk);
        const auto table = morvel::basic_table_from_file(level.file, -1);
        ASSERT_EQ(table.size(), row.count) << "every line of the level file parses";
        AppData data(level);
        data.load();
        ASSERT_EQ(data.size(), row.count);
        for (unsigned i = 0; i < data.size(); ++i) {
            const auto& obj = data.appObject_at(i);
            const ChinChar& c = obj.chinChar;
            SCOPED_TRACE(obj.to_string());
            EXPECT_EQ(obj.fileName, QString::number(table[i].unicode) + ".svg") << "one stroke file per row";
            EXPECT_TRUE(toned.match(c.pinyin).hasMatch() || particles.contains(c.character()));
            EXPECT_FALSE(c.english.isEmpty() || c.german.isEmpty() || c.russian.isEmpty());
            const auto [it, fresh] = levelOf.emplace(obj.unicode, row.level);
            EXPECT_TRUE(fresh) << "also in level " << it->second;
        }
    }
    EXPECT_FALSE(Level::shipped(0).is_valid());
    EXPECT_FALSE(Level::shipped(Level::COUNT + 1).is_valid());
    EXPECT_EQ(Level::shipped(Level::COUNT + 1).size(), 0);

    const auto table = morvel::basic_table_from_file(Level::shipped(1).file, -1);
    EXPECT_EQ(morvel::create_basic_table(), table) << "compiled-in table equals the level file";
    const auto quoted = morvel::from_unicode(table, 39277);
    EXPECT_EQ(quoted.to_string(), "饭 | fàn | meal; cooked rice | Essen; gekochter Reis | еда; варёный рис");
}

TEST(Catalogue, GeneratedFilesMatchThePackageData) {
    // The committed level files and stroke files must be exactly what the generators make
    // from the pinned packages, so nobody edits them by hand.
    for (const char* script : {"tools/resgen/levels.mjs", "tools/resgen/strokes.mjs"}) {
        QProcess gen;
        gen.setWorkingDirectory(QUENLO_SOURCE_DIR);
        gen.start("node", {script, "--check"});
        ASSERT_TRUE(gen.waitForFinished(60000)) << "node must be installed (scripts/setup.sh does it)";
        EXPECT_EQ(gen.exitCode(), 0) << script << ": " << gen.readAllStandardError().toStdString()
                                     << gen.readAllStandardOutput().toStdString();
    }
}
