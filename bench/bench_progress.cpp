// Practice history: recording one judged trace (committed at once), opening the file and
// opening the progress panel over a long history.
//
// With QUENLO_PROGRESS_SHOTS=<folder> the panel benchmark also saves the panel over the seeded
// history in each theme as progress-<theme>.png, and in Russian as progress-green-ru.png.
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
    ki::qt::lang::set_lang(language);
}

/// From nothing on screen to the panel's first frame, over the seeded history in an open store.
void BM_Progress_OpenPanel(benchmark::State& state) {
    ProgressStore store;
    store.open(seeded_folder());
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
BENCHMARK(BM_Progress_OpenPanel)->Unit(benchmark::kMillisecond);

}  // namespace
