// Practice history under pressure: backups never replaced, two writers on one file, a second
// start, a busy file, a full disk, a clock set back, damage found after opening.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "HistoryTest.h"
#include "app/SingleInstance.h"
#include "app/progress/LessonRecorder.h"
#include "app/progress/ProgressStore.h"

namespace {

using namespace morvel::progress;
using Notice = ProgressStore::Notice;

constexpr int CP = 0x4E00;

TraceRecord trace(bool accepted, unsigned aids = 0, bool hint = false) {
    return TraceRecord{0, 1, CP, 0, accepted, accepted ? QString() : reason::STRAYED, 80, aids, hint};
}

CompletionRecord completion(int misses = 0) {
    return CompletionRecord{0, 1, CP, 4.0, misses, 1};
}

using HistoryWritesTest = HistoryTest;

// A reset removed the backup of that name first, and names carried local time to the second:
// two resets within a second, or across the end of daylight saving, left one backup.
TEST_F(HistoryWritesTest, EarlierBackupsAreNeverReplaced) {
    const QByteArray savedZone = qgetenv("TZ");
    qputenv("TZ", "Europe/Berlin");
    tzset();
    // 02:30 local time twice: summer time, then an hour later standard time.
    const qint64 fallBack = QDateTime(QDate(2026, 10, 25), QTime(0, 30), Qt::UTC).toMSecsSinceEpoch();
    enum Step { RESET, DAMAGE };
    const struct {
        const char* name;
        Step step;
        qint64 first, second;
    } rows[] = {
        {"two resets within one second", RESET, BASE_MS, BASE_MS + 400},
        {"two resets at the same local time around the end of summer time", RESET, fallBack,
         fallBack + 3'600'000},
        {"a damaged file moved aside twice within one second", DAMAGE, BASE_MS, BASE_MS + 400},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QTemporaryDir rowDir;
        const QString path = rowDir.filePath(ProgressStore::FILE_NAME);
        std::vector<QByteArray> made, kept;
        int traces = 0;
        for (const qint64 at : {row.first, row.second}) {
            nowMs = at;
            if (row.step == DAMAGE) {
                const QByteArray junk = QByteArray("not a history ").repeated(100 + traces++);
                write_file(path, junk);
                made.push_back(QByteArray::number(junk.size()));
            }
            ASSERT_EQ(store.open(rowDir.path()), ProgressStore::Status::WRITABLE);
            if (row.step == RESET) {
                for (int i = 0; i <= traces; ++i) store.record_trace(trace(true));
                made.push_back(QByteArray::number(++traces));
                ASSERT_FALSE(store.reset().isEmpty());
            }
            store.close();
        }
        const QString prefix = row.step == RESET ? ".backup-*" : ".damaged-*";
        for (const QString& name : QDir(rowDir.path()).entryList({ProgressStore::FILE_NAME + prefix}))
            kept.push_back(
                row.step == DAMAGE
                    ? QByteArray::number(read_file(rowDir.filePath(name)).size())
                    : QByteArray::number(SqlitePeer(rowDir.filePath(name)).value("SELECT COUNT(*) FROM traces")));
        std::sort(kept.begin(), kept.end());
        std::sort(made.begin(), made.end());
        EXPECT_EQ(kept, made);
    }
    savedZone.isNull() ? qunsetenv("TZ") : qputenv("TZ", savedZone);
    tzset();
}

// Each instance rewrote whole summary rows from memory: two windows alternating on one
// character counted half the completions and misses.
TEST_F(HistoryWritesTest, TwoWritersKeepEachOthersCounts) {
    ProgressStore first, second;
    ASSERT_EQ(first.open(dir.path()), ProgressStore::Status::WRITABLE);
    ASSERT_EQ(second.open(dir.path()), ProgressStore::Status::WRITABLE);
    for (int i = 0; i < 12; ++i) {  // attempt by attempt, in turn
        ProgressStore& writer = i % 2 ? second : first;
        writer.record_trace(trace(false));
        writer.record_trace(trace(true));
        writer.record_completion(completion(1));
    }
    ASSERT_EQ(first.unwritten() + second.unwritten(), 0);
    first.close();
    second.close();
    ProgressStore reader;
    reader.open(dir.path(), true);
    EXPECT_EQ(reader.summary(CP).completions, 12);
    EXPECT_EQ(reader.summary(CP).misses, 12);
    EXPECT_EQ(reader.last_days(1).back().traces, 24) << "the day's counts too";
}

// Two windows on one home overwrote each other's history; a second start now raises the first
// window, while the headless commands still run beside it.
TEST_F(HistoryWritesTest, SecondStartRaisesTheFirst) {
    morvel::SingleInstance running(dir.path()), later(dir.path());
    std::atomic<int> raised = 0;
    running.onRaise = [&raised] { ++raised; };
    ASSERT_TRUE(running.claim());
    EXPECT_FALSE(later.claim()) << "the lock is taken";
    // The holder names itself in the file; a start that found the lock taken leaves it alone.
    running.name_holder();
    later.name_holder();
    EXPECT_EQ(read_file(dir.filePath("quenlo.lock")), QByteArray::number(QCoreApplication::applicationPid()) + '\n');
    // The asking side blocks on its socket; the running side answers from this event loop. A
    // level named by the later start goes to the running window, after the raise.
    std::vector<int> levels;
    running.onLevel = [&](int level) { levels.push_back(raised * 10 + level); };
    for (const int level : {0, 3, 0}) {
        SCOPED_TRACE(level);
        std::atomic<int> answered = -1;
        std::thread asker([&] { answered = later.ask_to_raise(5000, level) ? 1 : 0; });
        EXPECT_TRUE(QTest::qWaitFor([&] { return answered >= 0; }, 8000));
        asker.join();
        EXPECT_EQ(answered, 1);
    }
    EXPECT_EQ(raised, 3);
    EXPECT_EQ(levels, std::vector<int>{23}) << "level 3, once, with the second raise";

    const QString program = QCoreApplication::applicationDirPath() + "/quenlo";
    if (!QFile::exists(program)) GTEST_SKIP() << "the program itself needs the quenlo target built";
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    QTemporaryDir home;
    for (const char* key : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
        env.insert(key, home.filePath(key));
    env.insert("QT_QPA_PLATFORM", "offscreen");
    const auto run = [&](QProcess& process, const QStringList& arguments) {
        process.setProcessEnvironment(env);
        process.start(program, arguments);
        return process.waitForStarted(10'000);
    };
    const QString lock = home.filePath("XDG_DATA_HOME") + "/qlo.de/quenlo/quenlo.lock";
    const auto holds = [&](const QProcess& process) {
        return QTest::qWaitFor(
            [&] { return read_file(lock).split('\n').value(0) == QByteArray::number(process.processId()); },
            30'000);
    };
    QProcess window;
    ASSERT_TRUE(run(window, {}));
    ASSERT_TRUE(holds(window));
    const struct {
        const char* name;
        QStringList arguments;
        QString output;
        int times;
    } starts[] = {
        // Handing over at once, a start used to tear fontconfig down while its thread still
        // loaded it: under the address sanitizer one in eight such starts failed.
        {"second starts hand over", {}, home.filePath("none"), 8},
        {"a progress export runs beside the window",
         {"--export-progress", home.filePath("p.csv")},
         home.filePath("p.csv"),
         1},
        {"a worksheet is written beside the window",
         {"--worksheet", "一", "--out", home.filePath("w.pdf")},
         home.filePath("w.pdf"),
         1},
    };
    for (const auto& start : starts) {
        for (int time = 0; time < start.times; ++time) {
            SCOPED_TRACE(std::string(start.name) + " #" + std::to_string(time));
            QProcess second;
            ASSERT_TRUE(run(second, start.arguments));
            EXPECT_TRUE(second.waitForFinished(30'000));
            EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
            EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
            EXPECT_EQ(QFile::exists(start.output), start.arguments.size() > 0);
        }
    }
    EXPECT_EQ(window.state(), QProcess::Running) << "the first window stays";
    // A killed window leaves its lock behind; the next start takes it over.
    window.kill();
    window.waitForFinished();
    QProcess next;
    ASSERT_TRUE(run(next, {}));
    EXPECT_TRUE(holds(next));
    next.kill();
    next.waitForFinished();
}

// A held write lock froze the window for 2 s per trace, and the trace was then dropped.
TEST_F(HistoryWritesTest, BusyFileNeitherBlocksNorDrops) {
    ASSERT_EQ(store.open(dir.path()), ProgressStore::Status::WRITABLE);
    SqlitePeer other(file());
    ASSERT_TRUE(other.exec("BEGIN IMMEDIATE"));
    QElapsedTimer took;
    took.start();
    for (bool accepted : {false, true}) store.record_trace(trace(accepted));
    store.record_completion(completion(1));
    EXPECT_LT(took.elapsed(), 200);
    EXPECT_EQ(other.value("SELECT COUNT(*) FROM traces"), 0);
    QTest::qWait(300);
    ASSERT_TRUE(other.exec("COMMIT"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return other.value("SELECT COUNT(*) FROM completions") == 1; }, 5000));
    EXPECT_EQ(other.value("SELECT accepted FROM traces ORDER BY id LIMIT 1"), 0) << "in their order";
    EXPECT_EQ(store.summary(CP).misses, 1);
}

// On a full disk traces were dropped with a log line only.
TEST_F(HistoryWritesTest, FullDiskIsToldOnceAndCaughtUp) {
    // Through the window's recorder: what it hears is what the notice area shows.
    LessonRecorder recorder;
    std::vector<LessonRecorder::Notice> heard;
    recorder.liNotice += [&heard](const LessonRecorder::Notice& notice) { heard.push_back(notice); };
    EXPECT_EQ(recorder.open(dir.path()), QString());
    ProgressStore& history = *recorder.store();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !history.is_checking(); }, 10'000));
    recorder.character_started(1, CP);
    history.limit_growth(0);
    int made = 0, completed = 0;
    while (heard.empty() && made < 5000) {
        recorder.trace(0, ++made % 3 != 0, {}, 80, 0);
        if (made % 4 == 0) recorder.completed(++completed);
    }
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_TRUE(heard[0].lasting) << "shown until saving works again";
    EXPECT_TRUE(heard[0].text.contains("database or disk is full")) << heard[0].text.toStdString();
    for (int i = 0; i < 20; ++i) recorder.trace(0, true, {}, 80, 0);
    made += 20;
    EXPECT_GT(history.unwritten(), 20);
    EXPECT_EQ(heard.size(), 1u) << "told once, not per stroke";
    history.limit_growth(-1);
    EXPECT_TRUE(QTest::qWaitFor([&] { return heard.size() == 2; }, 10'000));
    EXPECT_FALSE(heard.back().lasting) << "saved again: shown for a while";
    EXPECT_EQ(history.unwritten(), 0);
    EXPECT_EQ(count("SELECT COUNT(*) FROM traces"), made);
    EXPECT_EQ(count("SELECT COUNT(*) FROM completions"), completed);
}

// Aids were looked for in traces timed after the last completion: with the clock set back
// an aided attempt counted as clean, or a clean one as aided.
TEST_F(HistoryWritesTest, AnAttemptIsJudgedByItsOwnTraces) {
    constexpr qint64 HOUR = 3'600'000;
    enum What { CLEAN_TRACE, OUTLINE_TRACE, HINT_TRACE, COMPLETE, NEW_ATTEMPT };
    const struct {
        const char* name;
        bool lastClean;
        std::vector<std::pair<qint64, What>> steps;  // the clock, and what happens then
    } rows[] = {
        // clang-format off
        {"clock set back after a completion: the outline still counts", false,
         {{0, CLEAN_TRACE}, {0, COMPLETE}, {-2 * HOUR, OUTLINE_TRACE}, {-2 * HOUR, COMPLETE}}},
        {"a hint timed after the next completion belongs to the attempt before", true,
         {{2 * HOUR, HINT_TRACE}, {0, COMPLETE}, {HOUR, CLEAN_TRACE}, {HOUR, COMPLETE}}},
        {"an abandoned attempt's outline does not count", true,
         {{0, OUTLINE_TRACE}, {0, NEW_ATTEMPT}, {0, CLEAN_TRACE}, {0, COMPLETE}}},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QTemporaryDir rowDir;
        ASSERT_EQ(store.open(rowDir.path()), ProgressStore::Status::WRITABLE);
        for (const auto& [clock, what] : row.steps) {
            nowMs = BASE_MS + clock;
            if (what == COMPLETE)
                store.record_completion(completion());
            else if (what == NEW_ATTEMPT)
                store.begin_attempt(CP);
            else
                store.record_trace(trace(true, what == OUTLINE_TRACE ? AID_OUTLINE : 0u, what == HINT_TRACE));
        }
        store.close();
        EXPECT_EQ(SqlitePeer(rowDir.filePath(ProgressStore::FILE_NAME))
                      .value("SELECT clean FROM completions ORDER BY id DESC"),
                  row.lastClean ? 1 : 0);
    }
}

// The integrity check ran on the window's thread at every start. Now the window's open returns
// before the check; what is recorded meanwhile waits, and goes to the new file when the old one
// turns out damaged, which stays as it was.
TEST_F(HistoryWritesTest, DamageFoundBesidePracticeLosesNothing) {
    ASSERT_EQ(store.open(dir.path()), ProgressStore::Status::WRITABLE);
    for (int i = 0; i < 3000; ++i) store.record_trace(trace(i % 4 != 0));
    store.close();
    QByteArray damaged = read_file(file());
    damaged.replace(damaged.size() / 2, 8192, QByteArray(8192, 'Z'));
    write_file(file(), damaged);

    std::vector<Notice> heard;
    store.liNotice += [&heard](const Notice& notice) { heard.push_back(notice); };
    ASSERT_EQ(store.open(dir.path(), false, ProgressStore::Check::IN_BACKGROUND),
              ProgressStore::Status::WRITABLE);
    EXPECT_TRUE(store.is_checking());
    for (bool accepted : {true, false}) store.record_trace(trace(accepted));
    EXPECT_TRUE(read_file(file()) == damaged) << "nothing written before the check";
    EXPECT_TRUE(QTest::qWaitFor([&] { return !heard.empty(); }, 10'000));
    EXPECT_EQ(heard, std::vector<Notice>{Notice::DAMAGED_MOVED_ASIDE});
    EXPECT_TRUE(read_file(store.moved_aside_path()) == damaged) << "moved aside as it was";
    EXPECT_EQ(count("SELECT COUNT(*) FROM traces"), 2);
    EXPECT_EQ(store.summary(CP).misses, 1);
}

}  // namespace
