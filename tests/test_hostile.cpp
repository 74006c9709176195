// Hostile input: broken, huge, deeply nested or garbled files and settings. Each must end in a
// clear message and a neutral value, never in a crash. Rows named after a fuzzer are inputs
// that once crashed the program.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <ki/log/LogConfig.h>
#include <ki/store/GNode.h>
#include <ki/tools/GSettings.h>
#include <ki/tools/file.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstddef>
#include <optional>
#include <random>
#include <vector>

#include "LoggedTest.h"
#include "app/ChinChar.h"
#include "app/stroke/Anim.h"

using ki::qt::GSettings;
using ki::store::GNode;
using morvel::Anim;

namespace {

QByteArray garbage(qsizetype size, unsigned seed) {
    std::mt19937 random(seed);
    QByteArray bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

// Some cases log thousands of refused lines: `capture` keeps them, none is printed.
using HostileInput = LoggedTest;

}  // namespace

TEST_F(HostileInput, StrokeFileRefusedWithAClearMessage) {
    QTemporaryDir dir;
    const QByteArray shipped = read_file(QStringLiteral(":/wb/shared-res/zh/1/20013.svg"));
    ASSERT_GT(shipped.size(), 1000);
    QByteArray deep = "<svg viewBox='0 0 1024 1024'>";
    for (int i = 0; i < 100000; ++i) deep += "<g>";
    for (int i = 0; i < 100000; ++i) deep += "</g>";
    deep += "</svg>";
    const struct Row {
        const char* name;
        QByteArray content;
        qint64 size = 0;  // written as a sparse file of this size instead of `content`
        unsigned errorClass;
        QString message;
    } rows[] = {
        {"empty file", "", 0, ki::EC_XML, "XML document has no root element"},
        {"truncated inside a tag", shipped.left(shipped.indexOf("clip-path") + 4), 0, ki::EC_XML,
         "Premature end of document"},
        {"garbage after a valid start", shipped.left(500) + garbage(4096, 8), 0, ki::EC_XML, ""},
        {"50 MB", "", 50LL * 1024 * 1024, ki::EC_KIR, "a stroke file may have at most"},
        {"nested 100,000 levels deep", deep, 0, ki::EC_KIR, "no animation strokes found"},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        const Row& row = rows[i];
        SCOPED_TRACE(row.name);
        const QString path = dir.filePath(QString::number(i) + ".svg");
        write_file(path, row.content);
        if (row.size > 0) {
            ASSERT_TRUE(QFile::resize(path, row.size));
        }
        std::optional<ki::GSysResult<Anim>> result;
        on_small_stack(1024 * 1024, [&] { result = Anim::build_from_file(path); });
        ASSERT_TRUE(result.has_value());
        EXPECT_FALSE(result->ok());
        EXPECT_EQ(result->error_class, row.errorClass) << result->to_string();
        EXPECT_FALSE(result->message.empty());
        EXPECT_TRUE(result->get_message().contains(row.message)) << result->message;
        EXPECT_TRUE(row.size == 0 || result->get_message().contains(path)) << "a refused size names the file";
        EXPECT_TRUE(result->value.strokes.empty()) << "nothing half-built";
    }
    Anim::clear_cache();
}

TEST_F(HostileInput, LevelFileLoadsWhatIsValid) {
    const QByteArray one = "19968 = { 一 | yī | one | eins | один }";
    const QByteArray seven = "19971 = { 七 | qī | seven | sieben | семь }";
    // A byte-order mark, CRLF line ends and invalid lines among valid ones.
    const QByteArray mixed =
        "\xEF\xBB\xBF"
        "1 = { a | p1 | e1 | g1 | r1 }\r\ngarbage\r\n"
        "2 = { b | p2 | e2 | g2 | r2 }\n\n3 = { c | p3 | e3 | g3 | r3 }\n";
    QByteArray manyLines;
    for (int i = 0; i < 100000; ++i) {
        manyLines += QByteArray::number(1 + i % 65535) + " = { x | p | e | g | r }\n";
        if (i % 10 == 9) manyLines += "not a row\n";
    }
    const struct Row {
        const char* name;
        QByteArray content;
        size_t rows;
        QString russianOfFirst;
    } rows[] = {
        {"byte-order mark and carriage returns are no part of the fields", mixed, 3, "r1"},
        {"invalid UTF-8 inside a field", "19968 = { 一 | y\xff\xfe | one | eins | один }\n" + seven, 2,
         "один"},
        {"truncated multi-byte sequence before the line end", one + "\xe4\xb8\n" + seven, 2, ""},
        {"zero bytes among the text", one + "\n" + QByteArray("\0\0\0\n", 4) + seven, 2, "один"},
        {"100,000 lines with every tenth broken", manyLines, 100000, "r"},
        {"binary garbage", garbage(100000, 3), 0, ""},
    };
    QTemporaryDir dir;
    const QString path = dir.filePath("level.txt");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        write_file(path, row.content);
        const std::vector<morvel::ChinChar> table = morvel::basic_table_from_file(path, -1);
        ASSERT_EQ(table.size(), row.rows);
        for (const morvel::ChinChar& c : table) ASSERT_TRUE(c.is_valid());
        if (!row.russianOfFirst.isEmpty()) {
            EXPECT_EQ(table.front().russian, row.russianOfFirst);
        }
    }
    const QString missing = dir.filePath("missing.txt");
    EXPECT_TRUE(morvel::basic_table_from_file(missing, -1).empty());
    EXPECT_NE(ki::io::file::read_lines(missing).to_string().find("missing.txt"), std::string::npos);
}

namespace {

class HostileSettings : public SettingsTest {
protected:
    void TearDown() override {
        remove_copies();
        SettingsTest::TearDown();
        // A refused write stays in the store's status; the next case must see its own.
        GSettings::reopen_for_tests();
    }
    static QString damaged() { return GSettings::instance().fileName() + ".damaged"; }
    // The kept copies of the store beside it, oldest name first.
    static QStringList copies() {
        const QFileInfo store(GSettings::instance().fileName());
        return store.dir().entryList({store.fileName() + ".damaged*"}, QDir::Files, QDir::Name);
    }
    static void remove_copies() {
        const QDir dir = QFileInfo(GSettings::instance().fileName()).dir();
        for (const QString& name : copies()) QFile::remove(dir.filePath(name));
    }
};

GNode window_node() {
    GNode node;
    node.set("fontSize", 13);
    node["DRAW_CONFIG"].set("rCircle", 140);
    return node;
}

// The file as the program writes it: a theme, a window node and a colour.
QByteArray program_file() {
    GSettings& settings = GSettings::instance();
    settings.clear_config();
    settings.set_theme(2);
    settings.set_window_node(window_node(), "WinHanzi");
    settings.set("color", Qt::darkGreen);
    settings.sync();
    const QByteArray bytes = read_file(settings.fileName());
    settings.clear_config();
    return bytes;
}

}  // namespace

// A damaged file is moved aside at the start, one whose values cannot be read is copied before
// the first save: beside any older copy, which is never replaced. Either way the program starts on
// defaults and the next save writes a fresh file.
TEST_F(HostileSettings, DamagedFileIsKeptBesideOlderCopiesAndTheProgramStartsOnDefaults) {
    const QByteArray good = program_file();
    ASSERT_TRUE(good.contains("@Variant(")) << "the colour is stored as a binary value";
    const QString node = GNode::to_qstring(window_node());
    const QByteArray cutNode = node.left(node.size() / 8 * 4).toLatin1();
    // Found by fuzz_settings: Qt reserved the claimed four billion list entries and the program
    // ended at its first read of the store.
    const QByteArray hugeList = "[General]\ncolor=@Variant(\\0\\0\\0\\v\\xff\\xff\\xff\\xf0)\n";
    enum State { GOOD, DAMAGED, UNREADABLE };
    const struct Row {
        const char* name;
        QByteArray content;
        State state;
        const char* reason = "";  // in the log line of a damaged file
        bool older = true;        // an older copy is there already
    } rows[] = {
        {"file written by the program", good, GOOD},
        {"garbage bytes", garbage(4000, 11), DAMAGED, "format error", false},
        {"section header without its bracket", "[Window\nWinHanzi=x\n", DAMAGED, "format error"},
        {"fuzz_settings: string list claiming four billion entries", hugeList, DAMAGED, "type 11", false},
        {"variant list hidden in a quoted list element",
         "[x]\nk=\"a\", @Variant(\\0\\0\\0\\t\\xff\\xff\\xff\\xff)\n", DAMAGED, "type 9", false},
        {"variant list behind a hex escape", "[General]\nk=\\x40Variant(\\0\\0\\0\\t\\xff\\xff\\xff\\xff)\n",
         DAMAGED, "type 9", false},
        {"date-time stream holding a list", "[General]\nk=@DateTime(\\0\\0\\0\\b\\0\\xff\\xff\\xff\\xff)\n",
         DAMAGED, "type 8", false},
        {"window node cut short", "[Window]\nWinHanzi=" + cutNode + "\n", UNREADABLE},
        {"configuration version beyond any integer", "[config]\nversion=99999999999999999999999\n", UNREADABLE},
        {"30 MB value in place of a node", "[Window]\nWinHanzi=" + QByteArray(30'000'000, 'A') + "\n", UNREADABLE},
        {"binary file", "\x7f" "ELF\x02\x01\x01" + QByteArray(9, '\0') + garbage(2000, 31), DAMAGED, "", false},
    };
    const QByteArray older = "[ui]\ntheme=1\n";
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        GSettings::reopen_for_tests();
        remove_copies();
        capture->clear();
        QDir().mkpath(QFileInfo(damaged()).path());
        if (row.older) write_file(damaged(), older);
        write_file(GSettings::instance().fileName(), row.content);
        // What a start does: check the file, read the stored values, save.
        EXPECT_EQ(GSettings::set_aside_damaged_file(GSettings::instance().fileName()), row.state != DAMAGED);
        GSettings& settings = GSettings::instance();
        settings.sync();
        EXPECT_EQ(settings.get_theme(), row.state == GOOD ? 2u : 0u);
        EXPECT_EQ(settings.get_window_node("WinHanzi"), row.state == GOOD ? window_node() : GNode());
        EXPECT_EQ(settings.get_config_version(), 0u);
        settings.set_theme(1);
        settings.sync();
        EXPECT_TRUE(read_file(settings.fileName()).contains("theme=1")) << "the next save writes a fresh file";
        settings.clear_config();
        const QStringList kept = copies();
        ASSERT_EQ(kept.size(), int(row.older) + int(row.state != GOOD)) << kept.join(' ').toStdString();
        EXPECT_TRUE(!row.older || read_file(damaged()) == older) << "an older copy is never replaced";
        if (row.state == GOOD) continue;
        EXPECT_EQ(read_file(QFileInfo(damaged()).dir().filePath(kept.last())), row.content)
            << "the file is kept for the user as it was";
        EXPECT_EQ(capture->count(row.state == DAMAGED ? "is damaged" : "cannot be read"), 1) << capture->text();
        EXPECT_TRUE(*row.reason == '\0' || capture->contains(row.reason)) << capture->text();
    }
}

TEST_F(HostileSettings, ReadOnlyFileKeepsTheProgramRunningAndIsNotTouched) {
    GSettings& settings = GSettings::instance();
    settings.set_theme(2);
    settings.set_window_node(window_node(), "WinHanzi");
    settings.sync();
    const QString path = settings.fileName();
    const QByteArray before = read_file(path);
    ASSERT_FALSE(before.isEmpty());

    // Permissions do not stop the superuser; the immutable flag does.
    QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
    const int fd = ::open(path.toLocal8Bit().constData(), O_RDONLY);
    int flags = 0;
    bool immutable = false;
    if (geteuid() == 0 && fd >= 0 && ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0) {
        int set = flags | FS_IMMUTABLE_FL;
        immutable = ::ioctl(fd, FS_IOC_SETFLAGS, &set) == 0;
    }
    const auto restore = [&] {
        if (immutable) ::ioctl(fd, FS_IOC_SETFLAGS, &flags);
        if (fd >= 0) ::close(fd);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    };
    if (geteuid() == 0 && !immutable) {
        restore();
        GTEST_SKIP() << "running as root without the right to make a file immutable";
    }

    EXPECT_TRUE(GSettings::set_aside_damaged_file(path)) << "a read-only file is readable, not damaged";
    GNode changed = window_node();
    changed.set("fontSize", 20);
    settings.set_window_node(changed, "WinHanzi");
    settings.set_theme(1);
    settings.sync();
    settings.sync();
    const QByteArray after = read_file(path);
    restore();

    EXPECT_EQ(settings.status(), QSettings::AccessError);
    EXPECT_EQ(after, before) << "nothing written, not even in part";
    EXPECT_EQ(settings.get_theme(), 1u) << "the run goes on with the values it holds";
    EXPECT_EQ(settings.get_window_node("WinHanzi"), changed);
}

TEST_F(HostileInput, RecordCrashInputsOfTheFuzzersStayHarmless) {
    ki::log::LogConfig config;
    config.ini();
    GNode node;
    node.attributes.set_pod("log", config);
    ki::store::GType broken = node.attributes.get_values().at("log").value<ki::store::GType>();
    // Found by fuzz_gnode: a flag byte of 181 was read as a bool, undefined behaviour.
    broken.data[offsetof(ki::log::LogConfig, autoScrollHorz)] = char(181);
    node.attributes.set("log", broken);

    const ki::GSysResult<GNode> read = GNode::from_qstring(GNode::to_qstring(node));
    ASSERT_TRUE(read.ok()) << read.to_string();
    ki::log::LogConfig fallback;
    fallback.fontSize = 99;
    EXPECT_EQ(read.value.attributes.get_pod("log", fallback), fallback);
    EXPECT_TRUE(ki::store::GAttributes::value_to_string(read.value.attributes.value("log"))
                    .contains("<invalid record>"));

    broken.data[offsetof(ki::log::LogConfig, autoScrollHorz)] = 1;
    node.attributes.set("log", broken);
    EXPECT_TRUE(node.attributes.get_pod("log", fallback).autoScrollHorz) << "a valid flag still reads";
}
