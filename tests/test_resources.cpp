// The compiled-in resource tree: recordings, fonts, themed icons and effect sounds, judged
// by the properties the program relies on rather than by their exact bytes.
#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFontDatabase>
#include <QImage>
#include <QPainter>
#include <QRawFont>
#include <QRegularExpression>
#include <QSvgRenderer>
#include <algorithm>
#include <cstdlib>
#include <set>

#include <ki/sound_module/PcmAudio.h>

#include "LoggedTest.h"
#include "app/ChinChar.h"
#include "app/Level.h"
#include "app/Recording.h"
#include "app/search/CharacterSearch.h"

namespace {

const QString kRoot = QStringLiteral(":/wb/shared-res");
const QString kToneMarked = QStringLiteral("āáǎàēéěèīíǐìōóǒòūúǔùǖǘǚǜ");

// The largest sample as a share of full scale.
double peak(const ki::qt::PcmAudio& audio) {
    int largest = 0;
    for (const int16_t sample : audio.samples) largest = std::max(largest, std::abs(int(sample)));
    return largest / 32768.0;
}

// The rows of every level, level after level.
std::vector<morvel::ChinChar> level_table() {
    std::vector<morvel::ChinChar> all;
    for (int n = 1; n <= morvel::prog2::Level::COUNT; ++n) {
        const auto rows = morvel::basic_table_from_file(kRoot + QStringLiteral("/zh/level_%1.txt").arg(n), 0);
        all.insert(all.end(), rows.begin(), rows.end());
    }
    return all;
}

// "zhōng" -> "zhong1", "lǜ" -> "lv4"; "" for a reading without a tone mark.
QString tone_numbered(const QString& pinyin) {
    const QString numbered = morvel::search::CharacterSearch::numbered_pinyin(pinyin);
    return !numbered.isEmpty() && numbered.back().isDigit() ? numbered : QString();
}

std::string missing_glyphs(const QRawFont& font, const QString& text) {
    QString missing;
    for (const char32_t c : text.toUcs4())
        if (!QChar::isSpace(c) && !font.supportsCharacter(c)) missing += QString::fromUcs4(&c, 1);
    return missing.toStdString();
}

}  // namespace

TEST(Resources, RecordingsForExactlyTheToneMarkedReadings) {
    // Which readings carry a tone mark is checked with the level data (Catalogue.ShippedLevels).
    const QDir dir(kRoot + "/zh/fono");
    int bad = -1;
    const auto index = morvel::prog2::Recording::parse_index(QString::fromUtf8(read_file(dir.filePath("index.txt"))), bad);
    EXPECT_EQ(bad, 0) << "every index line is readable";

    std::set<QString> used;
    QStringList wrong;
    qsizetype toned = 0;
    for (const auto& c : level_table()) {
        const QString syllable = tone_numbered(c.pinyin);
        const QString path = morvel::prog2::Recording::path(c.unicode);
        const QString want = syllable.isEmpty() ? QString() : dir.filePath(syllable + ".mp3");
        if (path != want || (!want.isEmpty() && !QFile::exists(want)))
            wrong << QStringLiteral("%1 %2 -> '%3'").arg(c.character(), c.pinyin, path);
        if (!syllable.isEmpty()) used.insert(syllable + ".mp3");
        toned += syllable.isEmpty() ? 0 : 1;
    }
    EXPECT_EQ(wrong.join(", ").toStdString(), "") << "a recording of its own toned syllable for every toned row";
    EXPECT_EQ(index.size(), toned) << "no index line for a toneless or unknown character";

    const QStringList files = dir.entryList({"*.mp3"}, QDir::Files, QDir::Name);
    QStringList unused;
    for (const QString& name : files)
        if (!used.count(name)) unused << name;
    EXPECT_EQ(unused.join(' ').toStdString(), "") << "recordings of no tone-marked reading";

    std::set<QByteArray> contents;
    for (const QString& name : files) {
        const QByteArray bytes = read_file(dir.filePath(name));
        EXPECT_TRUE(contents.insert(bytes).second) << name.toStdString() << ": the same bytes as another recording";
        // Decoded as the player decodes it (its refusals are tested with the decoder).
        const ki::qt::PcmResult mp3 = ki::qt::decode_mp3(bytes);
        ASSERT_TRUE(mp3.ok()) << name.toStdString() << ": " << mp3.error.toStdString();
        EXPECT_TRUE(mp3.audio.channels == 1 && (mp3.audio.rate == 22050 || mp3.audio.rate == 24000))
            << name.toStdString();
        EXPECT_TRUE(mp3.audio.seconds() >= 0.2 && mp3.audio.seconds() <= 1.5)
            << name.toStdString() << ": " << mp3.audio.seconds() << " s";
    }
}

TEST(Resources, RecordingIndexLines) {
    const struct {
        const char* name;
        const char* text;
        const char* entries;  // "code=file" in ascending code order
        int bad;
    } rows[] = {
        {"one line", "20013 zhong1", "20013=zhong1.mp3", 0},
        {"ü written as v", "32511 lv4\n", "32511=lv4.mp3", 0},
        {"blank lines and carriage returns", "\r\n20013 zhong1\r\n\n19968 yi1\r\n", "19968=yi1.mp3 20013=zhong1.mp3", 0},
        {"neutral tone number", "20102 le5", "", 1},
        {"no tone number", "20102 le", "", 1},
        {"tone mark instead of number", "20013 zhōng", "", 1},
        {"no code point", "zhong1\n20013 zhong1", "20013=zhong1.mp3", 1},
        {"two blanks", "20013  zhong1", "", 1},
        {"code point of eight digits", "12345678 a1", "", 1},
        {"a later line for the same code wins", "20013 zhong1\n20013 zhong4", "20013=zhong4.mp3", 0},
        {"empty text", "", "", 0},
    };
    for (const auto& row : rows) {
        int bad = -1;
        const auto index = morvel::prog2::Recording::parse_index(QString::fromUtf8(row.text), bad);
        QList<int> codes = index.keys();
        std::sort(codes.begin(), codes.end());
        QStringList entries;
        for (const int code : codes) entries << QStringLiteral("%1=%2").arg(code).arg(index.value(code));
        EXPECT_EQ(entries.join(' ').toStdString(), row.entries) << row.name;
        EXPECT_EQ(bad, row.bad) << row.name;
    }
}

TEST(Resources, EffectSounds) {
    const struct {
        const char* name;
        const char* wav;
        bool silent;
    } rows[] = {
        {"silent loop clip", "quiet.wav", true},
        {"stroke accepted", "Blop1.wav", false},
        {"character complete", "complete.wav", false},
        {"trace rejected", "error.wav", false},
    };
    for (const auto& row : rows) {
        // The player's own reader: 16-bit PCM or a refusal that names the encoding.
        const ki::qt::PcmResult wav = ki::qt::parse_wav(read_file(kRoot + "/sounds/" + row.wav));
        ASSERT_TRUE(wav.ok()) << row.name << ": " << wav.error.toStdString();
        EXPECT_LT(wav.audio.seconds(), 0.6) << row.name;
        const double loudest = peak(wav.audio);
        EXPECT_TRUE(row.silent ? loudest == 0.0 : loudest > 0.05 && loudest < 0.5)
            << row.name << ": silent, or audible but not loud";
    }
}

TEST(Resources, FontsLoadAndCoverEveryLevel) {
    for (const char* file : {"LXGWWenKai-Regular.ttf", "SourceCodePro-Regular.ttf"}) {
        const int id = QFontDatabase::addApplicationFont(kRoot + "/fonts/" + file);
        ASSERT_GE(id, 0) << file;
        EXPECT_FALSE(QFontDatabase::applicationFontFamilies(id).isEmpty()) << file;
        QFontDatabase::removeApplicationFont(id);
    }
    const QRawFont mono(read_file(kRoot + "/fonts/SourceCodePro-Regular.ttf"), 16);
    const auto advance = [&](const char* s) {
        return mono.advancesForGlyphIndexes(mono.glyphIndexesForString(s)).value(0).x();
    };
    EXPECT_EQ(advance("i"), advance("W")) << "monospace";

    QString hanzi, pinyin, translations, ascii;
    for (const auto& c : level_table()) {
        hanzi += c.character();
        pinyin += c.pinyin;
        translations += c.english + c.german + c.russian;
    }
    for (char c = 0x20; c < 0x7f; ++c) ascii += QLatin1Char(c);
    const QRawFont kai(read_file(kRoot + "/fonts/LXGWWenKai-Regular.ttf"), 16);
    ASSERT_TRUE(kai.isValid());
    const struct {
        const char* name;
        QString text;
    } rows[] = {
        {"every character of every level", hanzi},
        {"every pinyin of every level", pinyin},
        {"every tone-marked vowel", kToneMarked + QStringLiteral("üĀÁǍÀĒÉĚÈŌÓǑÒ")},
        {"every translation", translations},
        {"Basic Latin", ascii},
        {"Cyrillic alphabet",
         QStringLiteral("АБВГДЕЁЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯабвгдеёжзийклмнопрстуфхцчшщъыьэюя")},
        {"punctuation", QStringLiteral("，。、；：？！「」《》（）…—“”‘’·")},
    };
    for (const auto& row : rows) EXPECT_EQ(missing_glyphs(kai, row.text), "") << row.name;
}

TEST(Resources, IconsInEveryThemeAreVisible) {
    // Every name the sources look up and every icon shipped for the normal theme.
    std::set<QString> names;
    const QRegularExpression used(QStringLiteral(R"(\^icons/([\w.-]+\.(?:svg|png|ico))\b)"));
    QDirIterator sources(QStringLiteral(QUENLO_SOURCE_DIR "/src"), {"*.cpp", "*.h", "*.inc"}, QDir::Files,
                         QDirIterator::Subdirectories);
    while (sources.hasNext())
        for (auto it = used.globalMatch(QString::fromUtf8(read_file(sources.next()))); it.hasNext();)
            names.insert(it.next().captured(1));
    for (const QString& n : QDir(kRoot + "/icons").entryList(QDir::Files)) names.insert(n);

    const struct {
        const char* theme;
        QString folder;
        QColor window;
    } themes[] = {
        {"normal", "/icons/", QColor(239, 239, 239)},
        {"dark", "/icons/dark/", QColor(53, 53, 53)},
        {"green", "/icons/green/", QColor(30, 50, 30)},
    };
    for (const auto& t : themes) {
        for (const QString& name : names) {
            const QString path = kRoot + t.folder + name;
            const std::string what = std::string(t.theme) + " " + name.toStdString();
            ASSERT_TRUE(QFile::exists(path)) << what << ": missing";
            QImage img(32, 32, QImage::Format_ARGB32);
            img.fill(t.window);
            QPainter p(&img);
            if (name.endsWith(".svg")) {
                QSvgRenderer svg(path);
                ASSERT_TRUE(svg.isValid()) << what;
                svg.render(&p);
            } else {
                p.drawImage(img.rect(), QImage(path));
            }
            p.end();
            // A pixel counts as drawn when it stands out clearly from the window colour.
            int drawn = 0;
            for (int y = 0; y < img.height(); ++y)
                for (int x = 0; x < img.width(); ++x) {
                    const QColor c = img.pixelColor(x, y);
                    drawn +=
                        std::max({std::abs(c.red() - t.window.red()), std::abs(c.green() - t.window.green()),
                                  std::abs(c.blue() - t.window.blue())}) >= 80;
                }
            EXPECT_GE(drawn, 30) << what << ": too faint on the window colour";
            EXPECT_LT(drawn, 32 * 32) << what << ": covers the whole square";
        }
    }
}

TEST(Resources, TreeStaysSmall) {
    qint64 total = 0;
    for (QDirIterator it(kRoot, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
        total += QFileInfo(it.next()).size();
    // Seven levels, 2,663 characters: stroke files, shared recordings, the font subset.
    EXPECT_LT(total, 25 * 1024 * 1024);
}
