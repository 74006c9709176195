// Finding a character across the seven levels, over the shipped rows.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QLocale>

#include "app/search/CharacterSearch.h"

using morvel::search::CharacterSearch;
using morvel::search::Hit;

namespace {

const CharacterSearch& shipped() {
    static const CharacterSearch search = CharacterSearch::of_shipped_levels();
    return search;
}

QString characters(const std::vector<Hit>& hits) {
    QString text;
    for (const Hit& h : hits) text += h.row.character();
    return text;
}

}  // namespace

TEST(Search, FindsByCharacterPinyinAndMeaning) {
    const struct {
        const char* name;
        const char* query;
        QLocale::Language language;
        const char* first;     // the best hit, "" for none at all
        const char* includes;  // further characters among the hits
        const char* pinyin;    // when not empty: the toneless pinyin of every hit
    } rows[] = {
        {"the character itself", "雪", QLocale::English, "雪", "", "xue"},
        {"two characters, in level order", "雪中", QLocale::English, "中", "雪", ""},
        {"toneless pinyin finds every tone", "xue", QLocale::English, "学", "雪血", ""},
        {"tone mark", "xué", QLocale::English, "学", "", "xue"},
        {"tone number, upper case and blanks", "  XUE4 ", QLocale::German, "血", "", "xue"},
        {"ü typed as v", "lv4", QLocale::English, "绿", "律", "lv"},
        {"ü with its tone mark", "lǚ", QLocale::English, "旅", "", "lv"},
        {"English meaning word", "snow", QLocale::English, "雪", "", ""},
        {"German meaning word", "Schnee", QLocale::German, "雪", "", ""},
        {"Russian meaning word", "снег", QLocale::Russian, "雪", "", ""},
        {"German word found as a start of a word", "Schul", QLocale::German, "校", "", ""},
        {"a meaning of another language is no hit", "Schnee", QLocale::English, "", "", ""},
        {"a pinyin note is no meaning word", "xuexiao", QLocale::English, "", "", ""},
        {"nothing like it", "qqqq", QLocale::English, "", "", ""},
        {"blank query", "   ", QLocale::English, "", "", ""},
    };
    ASSERT_EQ(shipped().size(), 2663u);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::vector<Hit> hits = shipped().find(QString::fromUtf8(row.query), row.language);
        const QString found = characters(hits);
        EXPECT_EQ(found.left(1).toStdString(), row.first) << found.toStdString();
        for (const QChar c : QString::fromUtf8(row.includes)) EXPECT_TRUE(found.contains(c)) << QString(c).toStdString();
        if (*row.pinyin == '\0') continue;
        for (const Hit& h : hits) {
            QString toneless = CharacterSearch::numbered_pinyin(h.row.pinyin);
            if (toneless.back().isDigit()) toneless.chop(1);
            EXPECT_EQ(toneless.toStdString(), row.pinyin) << h.row.to_string();
        }
    }
}

TEST(Search, HitsComeInLevelOrderAndStopAtTheLimit) {
    const std::vector<Hit> hits = shipped().find(QStringLiteral("shi"), QLocale::English, 5);
    ASSERT_EQ(hits.size(), 5u);
    for (size_t i = 1; i < hits.size(); ++i) EXPECT_LE(hits[i - 1].level, hits[i].level) << "level order";
}

TEST(Search, NumberedPinyin) {
    const struct {
        const char* pinyin;
        const char* numbered;
    } rows[] = {{"zhōng", "zhong1"}, {"xué", "xue2"}, {"lǚ", "lv3"}, {"lǜ", "lv4"}, {"nǐ", "ni3"},
                {"le", "le"},        {"Ài", "ai4"},   {"lü", "lv"},  {"", ""}};
    for (const auto& row : rows)
        EXPECT_EQ(CharacterSearch::numbered_pinyin(QString::fromUtf8(row.pinyin)).toStdString(), row.numbered)
            << row.pinyin;
}

TEST(Search, EveryKeystrokeWithinFiveMilliseconds) {
    // As typed: every prefix of each query is one search over all 2,663 rows.
    const struct {
        const char* query;
        QLocale::Language language;
    } typed[] = {{"xue2", QLocale::English}, {"zhong", QLocale::English}, {"Schnee", QLocale::German},
                 {"снег", QLocale::Russian}, {"to study", QLocale::English}};
    const CharacterSearch& search = shipped();  // built before the clock starts
    QElapsedTimer clock;
    int keystrokes = 0;
    size_t hits = 0;
    clock.start();
    for (const auto& t : typed) {
        const QString query = QString::fromUtf8(t.query);
        for (qsizetype n = 1; n <= query.size(); ++n, ++keystrokes) hits += search.find(query.left(n), t.language).size();
    }
    const double perKeystroke = double(clock.nsecsElapsed()) / 1e6 / keystrokes;
    RecordProperty("ms_per_keystroke", QString::number(perKeystroke, 'f', 3).toStdString());
    EXPECT_GT(hits, 0u);
    EXPECT_LT(perKeystroke, 5.0);
}
