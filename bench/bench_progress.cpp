// Practice history: recording one judged trace and one graded review (each committed at once),
// opening the file, the panel's review queries over 100,000 reviews, and opening the progress
// panel over a long history and over 100,000 reviews.
//
// With QUENLO_PROGRESS_SHOTS=<folder> the panel benchmarks also save the panel over their seeded
// history in each theme as progress-<theme>.png, in German as progress-dark-de.png and in
// Russian as progress-green-ru.png; the one over the reviews comes last and stays.
#include <benchmark/benchmark.h>
#include <ki/qt/lang.h>
#include <ki/qt/themes.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <cstdio>
#include <memory>
#include <random>

#include "app/ChinChar.h"
#include "app/progress/ProgressPanel.h"
#include "app/progress/ProgressSchema.h"
#include "app/progress/ProgressRules.h"
#include "app/progress/ProgressStore.h"

namespace {

using namespace morvel::progress;

constexpr int SEEDED_TRACES = 100'000;
constexpr qint64 DAY_MS = 86'400'000;

/// A history of SEEDED_TRACES traces over the level's characters in the last 60 days: most
/// strokes accepted, a completion after every fourth trace, a part of the level never begun and a
/// part left long enough to be due. Written once per run in the first layout in one transaction (recording
/// them one by one would take minutes), so the store's first open also derives the summaries from it as a
/// migration does.
QString seeded_folder() {
    static QTemporaryDir folder;
    static const bool seeded = [] {
        const std::vector<morvel::ChinChar> level = morvel::create_basic_table();
        const qint64 start = QDateTime::currentMSecsSinceEpoch() - 60 * DAY_MS;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("seed"));
            db.setDatabaseName(QDir(folder.path()).filePath(ProgressStore::FILE_NAME));
            db.open();
            ProgressSchema::migrate(db, 1);
            db.transaction();
            QSqlQuery trace(db);
            trace.prepare(
                QStringLiteral("INSERT INTO traces(time_ms, level, code_point, stroke_index, accepted,"
                               " reason, tolerance, aids, hint) VALUES(?, 1, ?, ?, ?, ?, 80, 2, 0)"));
            QSqlQuery completion(db);
            completion.prepare(
                QStringLiteral("INSERT INTO completions(time_ms, level, code_point, seconds, misses,"
                               " round) VALUES(?, 1, ?, 9.0, ?, 1)"));
            std::mt19937 random(18);
            for (int i = 0; i < SEEDED_TRACES; ++i) {
                // Earlier characters of the level are practised more, as a learner goes front to back.
                // Two thirds of the level are begun; every fifth of those was left six weeks ago, every
                // seventh is never done without a miss.
                const size_t begun = level.size() * 2 / 3;
                const size_t pick = std::min(random() % begun, random() % begun);
                const int cp = level[pick].unicode;
                const qint64 at = start + (pick % 5 == 4 ? 19 : 60) * DAY_MS * i / SEEDED_TRACES;
                const bool accepted = random() % 100 < 80 + pick % 15;
                for (const QVariant& value :
                     {QVariant(at), QVariant(cp), QVariant(i % 4), QVariant(accepted ? 1 : 0),
                      QVariant(QString::fromLatin1(accepted ? "" : reason::STRAYED))})
                    trace.addBindValue(value);
                trace.exec();
                if (i % 4 != 3) continue;
                completion.addBindValue(at + 1);
                completion.addBindValue(cp);
                completion.addBindValue(accepted && pick % 7 != 6 ? 0 : 1);
                completion.exec();
            }
            db.commit();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("seed"));
        ProgressStore migrated;
        return migrated.open(folder.path()) == ProgressStore::Status::WRITABLE;
    }();
    if (!seeded) std::fprintf(stderr, "quenlo_bench: the seeded progress file cannot be opened\n");
    return folder.path();
}

void BM_Progress_RecordTrace(benchmark::State& state) {
    QTemporaryDir folder;
    ProgressStore store;
    store.open(folder.path());
    int i = 0;
    for (auto _ : state) {
        const bool written = store.record_trace(TraceRecord{
            0, 1, 0x4E00 + i % 500, i % 8, i % 5 != 0, i % 5 != 0 ? QString() : reason::END, 80, 0, false});
        if (!written) state.SkipWithError("trace not recorded");
        ++i;
    }
}
BENCHMARK(BM_Progress_RecordTrace)->Unit(benchmark::kMicrosecond)->Repetitions(5)->ReportAggregatesOnly(true);

void BM_Progress_RecordReview(benchmark::State& state) {
    QTemporaryDir folder;
    ProgressStore store;
    store.open(folder.path());
    int i = 0;
    for (auto _ : state) {
        const auto rating = static_cast<morvel::review::Rating>(1 + i % 4);
        if (!store.record_review(ReviewRecord{0, 0x4E00 + i % 500, rating, 3000 + i % 2000}))
            state.SkipWithError("review not recorded");
        ++i;
    }
}
BENCHMARK(BM_Progress_RecordReview)->Unit(benchmark::kMicrosecond)->Repetitions(5)->ReportAggregatesOnly(true);

constexpr int SEEDED_REVIEWS = 100'000;
constexpr int SEEDED_CARDS = 3'000;

/// SEEDED_REVIEWS reviews of SEEDED_CARDS characters over the last year, with their cards due
/// from a month ago to two months ahead, and a session on most days. Written in one transaction.
QString seeded_reviews_folder() {
    static QTemporaryDir folder;
    static const bool seeded = [] {
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        const int today = ProgressRules::local_day_of(now);
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("reviews"));
            db.setDatabaseName(QDir(folder.path()).filePath(ProgressStore::FILE_NAME));
            db.open();
            ProgressSchema::migrate(db);
            db.transaction();
            QSqlQuery insert(db);
            insert.prepare(QStringLiteral(
                "INSERT INTO reviews(code_point, time_ms, day, rating, state, duration_ms, recall, stability,"
                " difficulty, due_day) VALUES(?, ?, ?, ?, 2, ?, 1, 5.0, 5.0, ?)"));
            std::mt19937 random(28);
            for (int i = 0; i < SEEDED_REVIEWS; ++i) {
                const int ago = 365 - static_cast<int>(365LL * i / SEEDED_REVIEWS);
                for (const QVariant& value :
                     {QVariant(0x4E00 + static_cast<int>(random() % SEEDED_CARDS)), QVariant(now - ago * DAY_MS),
                      QVariant(today - ago), QVariant(1 + static_cast<int>(random() % 4)),
                      QVariant(2000 + static_cast<int>(random() % 8000)), QVariant(today - ago + 3)})
                    insert.addBindValue(value);
                insert.exec();
            }
            insert.prepare(QStringLiteral(
                "INSERT INTO cards(code_point, state, stability, difficulty, due_day, last_review_day, interval,"
                " reps, lapses) VALUES(?, 2, ?, 5.0, ?, ?, 10, 30, 2)"));
            for (int i = 0; i < SEEDED_CARDS; ++i) {
                const int due = today - 30 + static_cast<int>(random() % 90);
                for (const QVariant& value : {QVariant(0x4E00 + i), QVariant(1.0 + random() % 100),
                                              QVariant(due), QVariant(due - 10)})
                    insert.addBindValue(value);
                insert.exec();
            }
            insert.prepare(QStringLiteral("INSERT INTO sessions(time_ms, day) VALUES(?, ?)"));
            for (int ago = 0; ago < 365; ++ago) {
                if (ago % 9 == 8) continue;
                insert.addBindValue(now - ago * DAY_MS);
                insert.addBindValue(today - ago);
                insert.exec();
            }
            db.commit();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("reviews"));
        ProgressStore opened;
        return opened.open(folder.path()) == ProgressStore::Status::WRITABLE;
    }();
    if (!seeded) std::fprintf(stderr, "quenlo_bench: the seeded review file cannot be opened\n");
    return folder.path();
}

/// What the progress panel and the day's summary ask: the forecast, the measured retention,
/// every card, the streak and today's counts.
void BM_Progress_PanelQueries100kReviews(benchmark::State& state) {
    ProgressStore store;
    store.open(seeded_reviews_folder());
    for (auto _ : state) {
        benchmark::DoNotOptimize(store.due_forecast());
        benchmark::DoNotOptimize(store.measured_retention());
        benchmark::DoNotOptimize(store.cards());
        benchmark::DoNotOptimize(store.streak());
        benchmark::DoNotOptimize(store.introduced_on(store.local_today()));
        benchmark::DoNotOptimize(store.reviews_on(store.local_today()));
    }
}
BENCHMARK(BM_Progress_PanelQueries100kReviews)->Unit(benchmark::kMillisecond);

void BM_Progress_OpenStore(benchmark::State& state) {
    const QString folder = seeded_folder();
    for (auto _ : state) {
        ProgressStore store;
        if (store.open(folder) != ProgressStore::Status::WRITABLE) state.SkipWithError("store not writable");
    }
}
BENCHMARK(BM_Progress_OpenStore)->Unit(benchmark::kMillisecond);

void save_shots(ProgressStore& store, const std::vector<morvel::ChinChar>& level, const QString& target) {
    const auto save = [&](const QString& name) {
        ProgressPanel panel(store, level);
        panel.show();
        QCoreApplication::processEvents();
        panel.grab().save(QStringLiteral("%1/progress-%2.png").arg(target, name));
    };
    for (unsigned theme :
         {ki::qt::themes::THEME_NORMAL, ki::qt::themes::THEME_DARK, ki::qt::themes::THEME_GREEN}) {
        ki::qt::themes::apply_the_theme(theme);
        save(ki::qt::themes::theme_to_string(theme));
    }
    // The longest texts, for the layout.
    const QLocale::Language language = ki::qt::lang::get_lang();
    ki::qt::lang::set_lang(QLocale::Russian);
    save(QStringLiteral("green-ru"));
    ki::qt::themes::apply_the_theme(ki::qt::themes::THEME_DARK);
    ki::qt::lang::set_lang(QLocale::German);
    save(QStringLiteral("dark-de"));
    ki::qt::lang::set_lang(language);
}

/// From nothing on screen to the panel's first frame, over the history in `folder` in an open store.
void open_panel(benchmark::State& state, const QString& folder) {
    ProgressStore store;
    store.open(folder);
    const std::vector<morvel::ChinChar> level = morvel::create_basic_table();
    for (auto _ : state) {
        auto panel = std::make_unique<ProgressPanel>(store, level);
        panel->show();
        panel->repaint();
        state.PauseTiming();
        panel.reset();
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
    const QString shots = qEnvironmentVariable("QUENLO_PROGRESS_SHOTS");
    if (!shots.isEmpty()) save_shots(store, level, shots);
}

void BM_Progress_OpenPanel(benchmark::State& state) {
    open_panel(state, seeded_folder());
}
BENCHMARK(BM_Progress_OpenPanel)->Unit(benchmark::kMillisecond);

/// The same over SEEDED_REVIEWS reviews: the forecast, the retention and every card's columns.
void BM_Progress_OpenPanel100kReviews(benchmark::State& state) {
    open_panel(state, seeded_reviews_folder());
}
BENCHMARK(BM_Progress_OpenPanel100kReviews)->Unit(benchmark::kMillisecond);

}  // namespace
