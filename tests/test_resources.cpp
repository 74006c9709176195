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
#include <QtEndian>
#include <algorithm>
#include <cstdlib>
#include <optional>
#include <set>

#include "LoggedTest.h"
#include "app/ChinChar.h"
#include "app/Level.h"
#include "app/Recording.h"
#include "app/search/CharacterSearch.h"

namespace {

const QString kRoot = QStringLiteral(":/wb/shared-res");
const QString kToneMarked = QStringLiteral("āáǎàēéěèīíǐìōóǒòūúǔùǖǘǚǜ");

quint32 be32(const QByteArray& b, qsizetype at) {
    return qFromBigEndian<quint32>(b.constData() + at);
}
quint32 le32(const QByteArray& b, qsizetype at) {
    return qFromLittleEndian<quint32>(b.constData() + at);
}
quint16 le16(const QByteArray& b, qsizetype at) {
    return qFromLittleEndian<quint16>(b.constData() + at);
}

struct Mp3Info {
    double seconds = 0;
    int sampleRate = 0;
    bool mono = false;
    std::vector<qsizetype> frameStarts;
};

// Walks the chain of MPEG layer III frame headers from the first byte to the last; a break in
// the chain, a cut-off last frame or a Xing/Info frame count that disagrees with it fails.
std::optional<Mp3Info> parse_mp3(const QByteArray& b) {
    static const int kKbpsV1[16] = {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0};
    static const int kKbpsV2[16] = {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0};
    static const int kRate[3][3] = {{44100, 48000, 32000}, {22050, 24000, 16000}, {11025, 12000, 8000}};
    Mp3Info info;
    long frames = 0, tagFrames = -1;
    for (qsizetype pos = 0; pos < b.size(); ++frames) {
        if (b.size() - pos < 4) return std::nullopt;
        const quint32 h = be32(b, pos);
        // version 3 is MPEG-1, 2 MPEG-2, 0 MPEG-2.5; layer 1 is layer III.
        const unsigned version = (h >> 19) & 3, rateIndex = (h >> 10) & 3;
        if ((h >> 21) != 0x7ff || version == 1 || ((h >> 17) & 3) != 1 || rateIndex == 3) return std::nullopt;
        const bool v1 = version == 3, mono = ((h >> 6) & 3) == 3;
        const int kbps = (v1 ? kKbpsV1 : kKbpsV2)[(h >> 12) & 15];
        const int rate = kRate[v1 ? 0 : (version == 2 ? 1 : 2)][rateIndex];
        if (kbps == 0 || (frames > 0 && (rate != info.sampleRate || mono != info.mono))) return std::nullopt;
        info.sampleRate = rate;
        info.mono = mono;
        info.frameStarts.push_back(pos);
        const qsizetype length = (v1 ? 144 : 72) * kbps * 1000 / rate + ((h >> 9) & 1);
        if (pos + length > b.size()) return std::nullopt;
        const qsizetype tag = pos + 4 + (v1 ? (mono ? 17 : 32) : (mono ? 9 : 17));
        const QByteArray id = b.mid(tag, 4);
        if (frames == 0 && (id == "Xing" || id == "Info") && (be32(b, tag + 4) & 1))
            tagFrames = long(be32(b, tag + 8));
        pos += length;
    }
    // The Xing/Info frame itself carries no audio.
    const long audio = tagFrames >= 0 ? frames - 1 : frames;
    if (audio <= 0 || (tagFrames >= 0 && tagFrames != audio && tagFrames != frames)) return std::nullopt;
    info.seconds = double(audio) * (info.sampleRate >= 32000 ? 1152 : 576) / info.sampleRate;
    return info;
}

struct Wav {
    int format = 0, channels = 0, rate = 0, bits = 0;
    QByteArray data;
    double seconds() const { return double(data.size()) / (channels * bits / 8 * rate); }
    double peak() const {  // largest 16-bit sample as a share of full scale
        int peak = 0;
        for (qsizetype i = 0; bits == 16 && i + 1 < data.size(); i += 2)
            peak = std::max(peak, std::abs(int(qint16(le16(data, i)))));
        return peak / 32768.0;
    }
};

// The canonical 44-byte header that every player reads: RIFF, WAVE, a 16-byte "fmt ", "data".
std::optional<Wav> parse_wav(const QByteArray& b) {
    if (b.size() < 44 || !b.startsWith("RIFF") || le32(b, 4) != quint32(b.size() - 8) ||
        b.mid(8, 8) != "WAVEfmt " || le32(b, 16) != 16 || b.mid(36, 4) != "data" ||
        le32(b, 40) != quint32(b.size() - 44))
        return std::nullopt;
    return Wav{le16(b, 20), le16(b, 22), int(le32(b, 24)), le16(b, 34), b.mid(44)};
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
        const auto mp3 = parse_mp3(bytes);
        ASSERT_TRUE(mp3.has_value()) << name.toStdString() << ": not a clean MPEG layer III stream";
        EXPECT_TRUE(mp3->mono && (mp3->sampleRate == 22050 || mp3->sampleRate == 24000))
            << name.toStdString();
        EXPECT_TRUE(mp3->seconds >= 0.2 && mp3->seconds <= 1.5)
            << name.toStdString() << ": " << mp3->seconds << " s";
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

TEST(Resources, FrameWalkRejectsBrokenMp3) {
    // Without this the recording checks above could pass on anything.
    const QByteArray good = read_file(morvel::prog2::Recording::path(20013));
    const auto info = parse_mp3(good);
    ASSERT_TRUE(info.has_value());
    const struct {
        const char* name;
        QByteArray bytes;
    } rows[] = {
        {"last frame cut short", good.left(good.size() - 10)},
        {"whole frames missing at the end", good.left(info->frameStarts[info->frameStarts.size() / 2])},
        {"garbage between frames", good.left(600) + QByteArray(7, 'x') + good.mid(600)},
        {"a WAV file", read_file(kRoot + "/sounds/quiet.wav")},
    };
    for (const auto& row : rows) EXPECT_FALSE(parse_mp3(row.bytes).has_value()) << row.name;
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
        const auto wav = parse_wav(read_file(kRoot + "/sounds/" + row.wav));
        ASSERT_TRUE(wav.has_value()) << row.name;
        EXPECT_TRUE(wav->format == 1 && wav->bits == 16) << row.name << ": 16-bit PCM";
        EXPECT_LT(wav->seconds(), 0.6) << row.name;
        EXPECT_TRUE(row.silent ? wav->peak() == 0.0 : wav->peak() > 0.05 && wav->peak() < 0.5)
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
