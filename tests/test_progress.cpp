// Practice history: mastery and review rules over an injected clock, migration of old files,
// durability when killed, faults of the file and the folder, CSV export, the list mark.
#include <gtest/gtest.h>
#include <ki/qt/themes.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QImage>
#include <QListWidget>
#include <QPainter>
#include <QProcess>
#include <QSqlQuery>
#include <QStandardItemModel>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <map>
#include <tuple>

#include "HistoryTest.h"
#include "app/progress/LessonRecorder.h"
#include "app/progress/ProgressCsv.h"
#include "app/progress/ProgressMark.h"
#include "app/progress/ProgressPanel.h"
#include "app/progress/ProgressRules.h"
#include "app/progress/ProgressSchema.h"
#include "app/progress/ProgressStore.h"

namespace {

using namespace morvel::progress;
using morvel::review::Card;
using morvel::review::CardState;
using morvel::review::Rating;
using morvel::review::Scheduler;

constexpr int CP = 0x4E2D;
constexpr int CP2 = 0x4EBA;
constexpr const char* ENV_KILL_DIR = "QUENLO_PROGRESS_KILL_DIR";

enum Kind { CLEAN, MISS, HINT, OUTLINE, TRACE_ONLY };
struct Session {
    int day;
    Kind kind;
};

/// Practises `cp` in `target`, a session per entry: two strokes and a completion, spoiled as the
/// kind says. Returns whether every record was written.
bool practise(ProgressStore& target, const std::vector<Session>& sessions, int cp = CP) {
    bool all = true;
    qint64 minute = 0;
    for (const auto [day, kind] : sessions) {
        const auto at = [&, day = day] { return BASE_MS + day * DAY_MS + 60'000 * ++minute; };
        const unsigned aids = AID_CIRCLES | (kind == OUTLINE ? AID_OUTLINE : 0u);
        if (kind == MISS || kind == TRACE_ONLY)
            all &= target.record_trace(TraceRecord{at(), 1, cp, 0, false, reason::STRAYED, 80, aids, false});
        if (kind == TRACE_ONLY) continue;
        for (int stroke : {0, 1})
            all &= target.record_trace(TraceRecord{at(), 1, cp, stroke, true, {}, 80, aids, kind == HINT});
        all &= target.record_completion(CompletionRecord{at(), 1, cp, 12.5, kind == MISS ? 1 : 0, 1});
    }
    return all;
}

using ProgressTest = HistoryTest;

/// A recall of `cp` graded on `day`.
struct Graded {
    int day;
    Rating rating;
};

// Due and known follow the character's card: the first completion starts it (GOOD, HARD after a
// hint), later completions leave it alone, graded recalls move it on. The card must equal the
// scheduler's own replay of the expected ratings, in memory and in the file.
TEST_F(ProgressTest, DueAndKnownFollowTheCard) {
    using M = Mastery;
    using R = Rating;
    const struct Row {
        const char* name;
        std::vector<Session> sessions;
        std::vector<Graded> recalls;
        std::vector<Graded> expectedReviews;
        Mastery mastery;
    } rows[] = {
        {"never practised is new", {}, {}, {}, M::NEW},
        {"a rejected trace alone: learning, never due", {{0, TRACE_ONLY}}, {}, {}, M::LEARNING},
        {"first completion starts the card good", {{0, CLEAN}}, {}, {{0, R::GOOD}}, M::LEARNING},
        {"a hint starts it hard", {{0, HINT}}, {}, {{0, R::HARD}}, M::LEARNING},
        {"the outline does not spoil the first", {{0, OUTLINE}}, {}, {{0, R::GOOD}}, M::LEARNING},
        {"later completions are no reviews", {{0, CLEAN}, {1, MISS}, {4, CLEAN}}, {}, {{0, R::GOOD}}, M::LEARNING},
        {"two good recalls make it known", {{0, CLEAN}}, {{2, R::GOOD}, {14, R::GOOD}},
         {{0, R::GOOD}, {2, R::GOOD}, {14, R::GOOD}}, M::KNOWN},
        {"a lapse makes it learning again", {{0, CLEAN}}, {{2, R::GOOD}, {14, R::GOOD}, {90, R::AGAIN}},
         {{0, R::GOOD}, {2, R::GOOD}, {14, R::GOOD}, {90, R::AGAIN}}, M::LEARNING},
    };
    const Scheduler scheduler;
    const int firstDay = ProgressRules::local_day_of(BASE_MS);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QTemporaryDir rowDir;
        ProgressStore live([this] { return nowMs; });
        ASSERT_EQ(live.open(rowDir.path()), ProgressStore::Status::WRITABLE);
        EXPECT_TRUE(practise(live, row.sessions));
        for (const Graded& g : row.recalls)
            EXPECT_TRUE(live.record_review(ReviewRecord{BASE_MS + g.day * DAY_MS + 3'600'000, CP, g.rating, 4000}));
        Card expected;
        for (const Graded& g : row.expectedReviews) expected = scheduler.review(expected, firstDay + g.day, g.rating);
        EXPECT_EQ(live.card(CP), expected);
        EXPECT_EQ(live.mastery(CP), row.mastery);
        const bool scheduled = expected.state != CardState::NEW;
        for (const int offset : {-1, 0}) {
            nowMs = BASE_MS + (expected.due - firstDay + offset) * DAY_MS + 3'600'000;
            EXPECT_EQ(live.due_among({CP2, CP}), scheduled && offset == 0 ? std::vector<int>{CP} : std::vector<int>{})
                << "day " << offset << " from due";
        }
        ProgressStore reread;
        reread.open(rowDir.path());
        EXPECT_EQ(reread.card(CP), expected) << "the file keeps what memory had";
    }
}

// Scores come with traces and completions; the panel reads average and best per character, the
// chart the day's average. A score out of range, or none, counts as none.
TEST_F(ProgressTest, ScoresPerCharacterAndPerDay) {
    ASSERT_EQ(store.open(dir.path()), ProgressStore::Status::WRITABLE);
    for (const auto& [cp, day, score] : {std::tuple{CP, 1, 60}, {CP, 3, 80}, {CP, 3, -1}, {CP, 3, 140}, {CP2, 3, 91}}) {
        set_day(day);
        TraceRecord trace{0, 1, cp, 0, true, {}, 80, 0, false};
        trace.score = score;
        ASSERT_TRUE(store.record_trace(trace));
        CompletionRecord done{0, 1, cp, 4.0, 0, 1};
        done.score = score;
        ASSERT_TRUE(store.record_completion(done));
    }
    const auto stats = store.score_stats();
    EXPECT_EQ(stats, (std::map<int, ScoreStats>{{CP, {70, 80, 2}}, {CP2, {91, 91, 1}}}));
    const std::vector<DayStats> days = store.last_days(3);
    EXPECT_EQ(std::vector<int>({days[0].score, days[1].score, days[2].score}), std::vector<int>({60, -1, 86}))
        << "no practice on the second day, no score";
    ProgressStore reread;
    reread.open(dir.path());
    EXPECT_EQ(reread.score_stats(), stats) << "kept in the file";
}

TEST_F(ProgressTest, ReviewNavigationSkipsCharactersNotDue) {
    const std::vector<int> level{0x4E00, CP, CP2, 0x5927};
    ASSERT_EQ(store.open(dir.path()), ProgressStore::Status::WRITABLE);
    practise(store, {{0, CLEAN}}, CP);
    practise(store, {{0, CLEAN}}, 0x5927);
    practise(store, {{1, CLEAN}}, CP2);
    // The first completion's card rests this many days.
    const int rest = Scheduler().review({}, 0, Rating::GOOD).interval;
    const struct {
        const char* name;
        int day, from, step, expected;
    } rows[] = {
        {"forward skips the one rested", rest, 1, 1, 3},
        {"forward wraps around", rest, 3, 1, 1},
        {"backward wraps around", rest, 1, -1, 3},
        {"nothing due before the interval", rest - 1, 0, 1, -1},
    };
    for (const auto& row : rows) {
        set_day(row.day);
        EXPECT_EQ(store.next_due_index(level, row.from, row.step), row.expected) << row.name;
    }
}

// Older layouts migrate to the summaries the live file keeps, and their completions come back as
// reviews: a character's first completion GOOD (HARD after a hint), then the first completion of
// each later day, GOOD when clean, else HARD. The old rows stay.
TEST_F(ProgressTest, OlderFilesMigrateToTheSameSummariesAndReplayedCards) {
    constexpr int CP3 = 0x5927;
    set_day(8);
    ASSERT_EQ(store.open(dir.path()), ProgressStore::Status::WRITABLE);
    ASSERT_TRUE(practise(store, {{0, CLEAN}, {1, HINT}, {1, CLEAN}, {2, CLEAN}, {3, CLEAN}, {5, MISS}, {6, OUTLINE}}));
    ASSERT_TRUE(practise(store, {{4, TRACE_ONLY}, {4, MISS}}, CP2));
    ASSERT_TRUE(practise(store, {{2, HINT}}, CP3));
    const Rating G = Rating::GOOD, H = Rating::HARD;
    const std::map<int, std::vector<Graded>> replayed = {
        {CP, {{0, G}, {1, H}, {2, G}, {3, G}, {5, H}, {6, H}}},
        {CP2, {{4, G}}},
        {CP3, {{2, H}}},
    };
    const int firstDay = ProgressRules::local_day_of(BASE_MS);
    for (int version = 1; version < ProgressSchema::VERSION; ++version) {
        SCOPED_TRACE(version);
        // The history as each layout has kept it; from the second on with what it derived.
        QString traces = "time_ms, level, code_point, stroke_index, accepted, reason, tolerance, aids, hint",
                completions = "time_ms, level, code_point, seconds, misses, round";
        QStringList derived;
        if (version >= 2) {
            traces += ", day";
            completions += ", day, clean";
            derived = {"INSERT INTO summary SELECT * FROM live.summary",
                       "INSERT INTO days SELECT * FROM live.days"};
        }
        QTemporaryDir oldDir;
        const QString oldFile = oldDir.filePath(ProgressStore::FILE_NAME);
        {
            SqlitePeer old(oldFile);
            ASSERT_EQ(ProgressSchema::migrate(old.database(), version), QString());
            for (const QString& sql :
                 QStringList{"ATTACH DATABASE '" + file() + "' AS live",
                             QString("INSERT INTO traces(%1) SELECT %1 FROM live.traces").arg(traces),
                             QString("INSERT INTO completions(%1) SELECT %1 FROM live.completions").arg(completions)} +
                     derived)
                ASSERT_TRUE(old.exec(sql)) << sql.toStdString();
        }
        ProgressStore migrated([this] { return nowMs; });
        ASSERT_EQ(migrated.open(oldDir.path()), ProgressStore::Status::WRITABLE);
        for (const auto& [cp, ratings] : replayed) {
            EXPECT_EQ(migrated.summary(cp), store.summary(cp));
            Card expected;
            for (const Graded& g : ratings) expected = Scheduler().review(expected, firstDay + g.day, g.rating);
            EXPECT_EQ(migrated.card(cp), expected) << cp;
        }
        EXPECT_EQ(migrated.last_days(10), store.last_days(10));
        SqlitePeer check(oldFile);
        EXPECT_EQ(check.value("SELECT COUNT(*) FROM reviews"), 8);
        EXPECT_EQ(check.value("SELECT COUNT(*) FROM completions"), 9) << "the completions stay";
        EXPECT_EQ(check.value("SELECT COUNT(*) FROM reviews WHERE state = 0 AND duration_ms = 12500"), 3)
            << "one first review per character, with its time";
        EXPECT_EQ(check.value("PRAGMA user_version"), ProgressSchema::VERSION);
    }
}

// What the daily session and the progress panel ask of the history, on an injected clock.
TEST_F(ProgressTest, SessionAndPanelQueries) {
    ASSERT_EQ(store.open(dir.path()), ProgressStore::Status::WRITABLE);
    const int first = ProgressRules::local_day_of(BASE_MS);
    const auto review = [&](int day, int cp, Rating rating, int ms = 4000) {
        ASSERT_TRUE(store.record_review(ReviewRecord{BASE_MS + day * DAY_MS + 3'600'000, cp, rating, ms}));
    };
    practise(store, {{0, CLEAN}}, CP);  // a first review from learn mode: no recall
    review(0, CP2, Rating::AGAIN, 9000);
    review(2, CP, Rating::AGAIN, 1000);
    review(3, CP, Rating::GOOD, 3000);
    review(3, CP2, Rating::GOOD, 5000);
    review(40, CP, Rating::GOOD, 4000);

    EXPECT_EQ(store.introduced_on(first), (std::vector<int>{CP, CP2})) << "the characters, in order";
    EXPECT_EQ(store.introduced_on(first + 3), std::vector<int>{});
    EXPECT_EQ(store.reviews_on(first + 3), 2);
    EXPECT_EQ(store.median_recall_ms(CP), 3000) << "learn mode's first completion is no recall";
    EXPECT_EQ(store.median_recall_ms(CP2), 7000) << "an even count takes the middle two";
    EXPECT_EQ(store.median_recall_ms(0x5927), std::nullopt);

    // First sights, an again and a month without reviews are read through the panel's retention
    // label (PanelTest); the window's edge is this one.
    set_day(45);
    EXPECT_EQ(store.measured_retention(), 1.0) << "thirty days back only: day 2's again is forgotten";

    set_day(200);
    std::vector<int> overdue(30, 0);
    overdue[0] = 2;
    EXPECT_EQ(store.due_forecast(), overdue) << "overdue counts today";
    set_day(40);
    const std::vector<int> ahead = store.due_forecast();
    const int inDays = store.card(CP).due - store.local_today();
    ASSERT_GT(inDays, 0) << "just reviewed";
    ASSERT_LT(inDays, 30);
    EXPECT_EQ(ahead[0], 1) << "the other, overdue";
    EXPECT_EQ(ahead[static_cast<size_t>(inDays)], 1);

    const struct {
        const char* name;
        std::vector<int> sessionDays;
        int today, streak;
    } streaks[] = {
        {"no session", {}, 10, 0},
        {"up to yesterday still holds", {8, 9}, 10, 2},
        {"a gap ends it", {5, 7, 8, 9, 10}, 10, 4},
        {"two days ago is broken", {7, 8}, 10, 0},
        {"two sessions on a day count once", {9, 9, 10}, 10, 2},
    };
    for (const auto& row : streaks) {
        QTemporaryDir rowDir;
        ProgressStore sessions([this] { return nowMs; });
        ASSERT_EQ(sessions.open(rowDir.path()), ProgressStore::Status::WRITABLE);
        for (int day : row.sessionDays)
            ASSERT_TRUE(sessions.record_session_finished(SessionRecord{BASE_MS + day * DAY_MS + 3'600'000}));
        set_day(row.today);
        EXPECT_EQ(sessions.streak(), row.streak) << row.name;
    }
}

// Not run on its own: the durability test below starts it in a child process.
TEST(ProgressChild, DISABLED_RecordThenKilled) {
    ProgressStore child;
    ASSERT_EQ(child.open(qEnvironmentVariable(ENV_KILL_DIR)), ProgressStore::Status::WRITABLE);
    for (int stroke = 0; stroke < 5; ++stroke)
        child.record_trace(TraceRecord{0, 1, CP, stroke, stroke != 2, {}, 80, 0, false});
    child.record_completion(CompletionRecord{0, 1, CP, 3.0, 1, 1});
    child.record_review(ReviewRecord{0, CP2, Rating::HARD, 2500});
    ::kill(::getpid(), SIGKILL);
}

// A kill right after recording loses no judged trace, and the next start finds the file sound.
TEST_F(ProgressTest, JudgedTracesSurviveAKill) {
    QProcess child;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QString::fromLatin1(ENV_KILL_DIR), dir.path());
    child.setProcessEnvironment(env);
    child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--gtest_also_run_disabled_tests"),
                                                          QStringLiteral("--gtest_filter=ProgressChild.*")});
    ASSERT_TRUE(child.waitForFinished(60'000));
    ASSERT_EQ(child.exitStatus(), QProcess::CrashExit) << child.readAll().toStdString();

    nowMs = QDateTime::currentMSecsSinceEpoch();
    ASSERT_EQ(store.open(dir.path()), ProgressStore::Status::WRITABLE);
    EXPECT_EQ(store.last_days(1).back().traces, 5) << "in the file it left, not in a fresh one";
    EXPECT_EQ(store.summary(CP).completions, 1);
    EXPECT_EQ(store.summary(CP).misses, 1);
    EXPECT_EQ(store.card(CP).reps, 1) << "the first completion's review";
    EXPECT_EQ(store.median_recall_ms(CP2), 2500) << "the graded recall";
}

TEST_F(ProgressTest, FaultsLeaveANoticeAndPracticeGoesOn) {
    // The files to spoil: 200 days of practice, and one of a newer layout.
    {
        ProgressStore filler;
        filler.open(dir.path());
        std::vector<Session> many;
        for (int day = 0; day < 200; ++day) many.push_back({day, day % 3 ? CLEAN : MISS});
        practise(filler, many);
        SqlitePeer newer(dir.filePath("newer"));
        newer.exec("PRAGMA user_version = 99");
        newer.exec("CREATE TABLE future(x)");
    }
    const QByteArray filled = read_file(file()), newer = read_file(dir.filePath("newer"));
    using S = ProgressStore::Status;
    using N = ProgressStore::Notice;
    const struct {
        const char* name;
        QByteArray content;
        S status;
        N notice;
        bool movedAside;
    } rows[] = {
        {"not a database", QByteArray("no tables here\n").repeated(300), S::WRITABLE, N::DAMAGED_MOVED_ASIDE,
         true},
        {"truncated", filled.left(filled.size() / 2), S::WRITABLE, N::DAMAGED_MOVED_ASIDE, true},
        {"pages overwritten", QByteArray(filled).replace(4096 * 3, 8192, QByteArray(8192, 'Z')), S::WRITABLE,
         N::DAMAGED_MOVED_ASIDE, true},
        {"newer layout is only read", newer, S::READ_ONLY, N::NEWER_VERSION, false},
        {"folder below a file cannot be written", "x", S::UNAVAILABLE, N::NOT_WRITABLE, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        for (const QString& name : QDir(dir.path()).entryList(QDir::Files)) QFile::remove(dir.filePath(name));
        write_file(file(), row.content);
        EXPECT_EQ(store.open(row.status == S::UNAVAILABLE ? file() + "/sub" : dir.path()), row.status);
        EXPECT_EQ(store.take_notice(), row.notice);
        EXPECT_EQ(store.take_notice(), N::NONE) << "a notice is shown once";
        EXPECT_EQ(store.record_trace(TraceRecord{0, 1, CP, 0, true, {}, 80, 0, false}),
                  row.status == S::WRITABLE);
        EXPECT_EQ(store.moved_aside_path().isEmpty(), !row.movedAside);
        EXPECT_EQ(read_file(store.moved_aside_path()), row.movedAside ? row.content : QByteArray());
        EXPECT_TRUE(row.status == S::WRITABLE || read_file(file()) == row.content) << "never altered";
        store.close();
    }
}

// The export as written, byte for byte: a field with a comma, a quote or a line break is quoted.
TEST_F(ProgressTest, CsvExportHoldsTracesAndCompletionsWithTextQuoted) {
    ASSERT_EQ(store.open(dir.path()), ProgressStore::Status::WRITABLE);
    const struct {
        const char* name;
        QString reason, written;
    } texts[] = {
        {"a known reason", QString::fromLatin1(reason::STRAYED), QString::fromLatin1(reason::STRAYED)},
        {"a comma", "left, then right", "\"left, then right\""},
        {"double quotes", "said \"no\"", "\"said \"\"no\"\"\""},
        {"a line break", "two\nlines", "\"two\nlines\""},
        {"empty", "", ""},
    };
    const auto time = [](qint64 ms) {
        return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC).toString(Qt::ISODateWithMs);
    };
    QString expected = ProgressCsv::header() + '\n';
    qint64 at = BASE_MS;
    for (const auto& text : texts) {
        const TraceRecord t{
            at += 1000, 2, CP2, 1, text.reason.isEmpty(), text.reason, 60, AID_OUTLINE | AID_GRID, true};
        ASSERT_TRUE(store.record_trace(t)) << text.name;
        expected += QString("trace,%1,2,20154,人,1,%2,%3,60,%4,1,,,\n")
                        .arg(time(t.timeMs), t.accepted ? "1" : "0", text.written, QString::number(t.aids));
    }
    const CompletionRecord done{at += 1000, 2, CP2, 12.25, 3, 2};
    ASSERT_TRUE(store.record_completion(done));
    expected += "completion," + time(done.timeMs) + ",2,20154,人,,,,,,,12.25,3,2\n";
    const ReviewRecord recall{at += 1000, CP2, Rating::AGAIN, 1234};
    ASSERT_TRUE(store.record_review(recall));
    const QString csv = dir.filePath("out.csv");
    ASSERT_EQ(ProgressCsv::write(store.file_path(), csv), QString());
    EXPECT_EQ(QString::fromUtf8(read_file(csv)), expected);
    // The review log beside it: the completion (a hint was shown: hard, new) and the recall.
    EXPECT_EQ(QString::fromUtf8(read_file(dir.filePath("out-reviews.csv"))),
              QString("%1\n20154,%2,2,0,12250\n20154,%3,1,2,1234\n")
                  .arg(ProgressCsv::reviews_header(), QString::number(done.timeMs),
                       QString::number(recall.timeMs)));
}

// Each round counts its own misses and hints: a fault that carried round 1's misses into round 2
// made every later round look unclean.
TEST_F(ProgressTest, RecorderStartsEachRoundAndCharacterAfresh) {
    enum Step { MISS_ONE, ACCEPT, HINT, DONE, NEXT_CHARACTER };
    const struct {
        const char* name;
        std::vector<Step> steps;
        std::vector<std::pair<int, bool>> completions;  ///< misses and clean, per completion
    } rows[] = {
        {"a clean round", {ACCEPT, DONE}, {{0, true}}},
        {"a miss spoils its own round only", {MISS_ONE, ACCEPT, DONE, ACCEPT, DONE}, {{1, false}, {0, true}}},
        {"misses of round 2 are its own",
         {MISS_ONE, DONE, MISS_ONE, MISS_ONE, DONE},
         {{1, false}, {2, false}}},
        {"a hint spoils its own round only", {HINT, ACCEPT, DONE, ACCEPT, DONE}, {{0, false}, {0, true}}},
        {"a new character starts without misses", {MISS_ONE, NEXT_CHARACTER, ACCEPT, DONE}, {{0, true}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QTemporaryDir folder;
        LessonRecorder recorder;
        recorder.open(folder.path());
        recorder.character_started(1, CP);
        int round = 1;
        for (const Step step : row.steps) {
            if (step == MISS_ONE) recorder.trace(0, false, reason::STRAYED, 80, 0);
            if (step == ACCEPT) recorder.trace(0, true, {}, 80, 0);
            if (step == HINT) recorder.hint_shown();
            if (step == DONE) recorder.completed(round++);
            if (step == NEXT_CHARACTER) recorder.character_started(1, CP);
        }
        recorder.store()->close();
        std::vector<std::pair<int, bool>> written;
        SqlitePeer file(QDir(folder.path()).filePath(ProgressStore::FILE_NAME));
        QSqlQuery query(QStringLiteral("SELECT misses, clean FROM completions ORDER BY id"), file.database());
        while (query.next()) written.emplace_back(query.value(0).toInt(), query.value(1).toBool());
        EXPECT_EQ(written, row.completions);
    }
}

TEST_F(ProgressTest, PanelClicksSelectTheCharacterShown) {
    ASSERT_EQ(store.open(dir.path()), ProgressStore::Status::WRITABLE);
    practise(store, {{0, MISS}}, CP2);
    practise(store, {{0, MISS}, {1, MISS}}, CP);
    ProgressPanel panel(store, morvel::create_basic_table());
    panel.show();
    std::vector<int> selected;
    panel.liSelect += [&](const int& cp) { selected.push_back(cp); };
    // Sorted by misses, most first: the click must follow the sorted row, not the level order.
    panel.table()->sortByColumn(ProgressPanel::COL_MISSES, Qt::DescendingOrder);
    QTableView* table = panel.table();
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      table->visualRect(table->model()->index(1, 0)).center());
    QListWidget* missed = panel.missed_list();
    ASSERT_EQ(missed->count(), 2);
    QTest::mouseClick(missed->viewport(), Qt::LeftButton, {},
                      missed->visualItemRect(missed->item(0)).center());
    EXPECT_EQ(selected, (std::vector<int>{CP2, CP}));

    // The window hands over its theme's palette after building the panel: the table is read again,
    // in the order the learner sorted it, with marks in the new colours.
    const QPalette dark = ki::qt::themes::get_palette(ki::qt::themes::THEME_DARK);
    panel.setPalette(dark);
    const auto* rows = static_cast<const QStandardItemModel*>(table->model());
    const QImage mark = rows->item(0, ProgressPanel::COL_STATE)->icon().pixmap(16, 16).toImage();
    bool inked = false;
    for (int y = 0; y < mark.height(); ++y)
        for (int x = 0; x < mark.width(); ++x)
            inked |= mark.pixelColor(x, y).rgb() == dark.color(QPalette::Text).rgb();
    EXPECT_TRUE(inked) << "the most missed row keeps its place and its mark takes the dark text colour";
}

TEST(ProgressMarkTest, StatesDrawnLegiblyInEveryTheme) {
    const struct {
        const char* name;
        Mastery mastery;
        bool due, centre, ring;
    } rows[] = {
        {"new draws nothing", Mastery::NEW, false, false, false},
        {"learning is a hollow dot", Mastery::LEARNING, false, false, true},
        {"known is a filled dot", Mastery::KNOWN, false, true, true},
        {"due known in the accent", Mastery::KNOWN, true, true, true},
    };

    for (unsigned theme :
         {ki::qt::themes::THEME_NORMAL, ki::qt::themes::THEME_DARK, ki::qt::themes::THEME_GREEN}) {
        const QPalette palette = ki::qt::themes::get_palette(theme);
        const QColor background = palette.color(QPalette::Base);
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::Message() << row.name << ", theme " << theme);
            QImage image(40, 40, QImage::Format_RGB32);
            image.fill(background);
            QPainter painter(&image);
            ProgressMark::paint(painter, QRectF(0, 0, 40, 40), row.mastery, row.due, palette);
            painter.end();
            const QColor expected = row.due ? ProgressMark::accent(palette) : palette.color(QPalette::Text);
            EXPECT_EQ(image.pixelColor(20, 20) == expected, row.centre);
            EXPECT_EQ(image.pixelColor(11, 20) == expected, row.ring);  // on the left edge of the dot
            EXPECT_EQ(image.pixelColor(2, 2), background) << "stays inside its rectangle";
            EXPECT_GE(contrast_ratio(expected, background), 3.0);
        }
    }
}

}  // namespace
