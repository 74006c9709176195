// Practice history: recording one judged trace (committed at once), opening the file and
// opening the progress panel over a long history.
//
// With QUENLO_PROGRESS_SHOTS=<folder> the panel benchmark also saves the panel over the seeded
// history in each theme as progress-<theme>.png.
#include <benchmark/benchmark.h>
#include <ki/qt/themes.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QTemporaryDir>

#include <memory>
#include <random>

#include "app/ChinChar.h"
#include "app/progress/ProgressPanel.h"
#include "app/progress/ProgressStore.h"

namespace {

using namespace morvel::progress;

constexpr int SEEDED_TRACES = 100'000;
constexpr qint64 DAY_MS = 86'400'000;

/// A history of SEEDED_TRACES traces over the level's characters in the last 60 days: most
/// strokes accepted, a completion after every fourth trace. Made once per run.
const QString& seeded_folder() {
    static QTemporaryDir folder;
    static const bool seeded = [] {
        const std::vector<morvel::ChinChar> level = morvel::create_basic_table();
        const qint64 start = QDateTime::currentMSecsSinceEpoch() - 60 * DAY_MS;
        ProgressStore store;
        store.open(folder.path());
        std::mt19937 random(18);
        for (int i = 0; i < SEEDED_TRACES; ++i) {
            // Earlier characters of the level are practised more, as a learner goes front to back.
            const size_t pick = std::min(random() % level.size(), random() % level.size());
            const int cp = level[pick].unicode;
            const qint64 at = start + 60 * DAY_MS * i / SEEDED_TRACES;
            const bool accepted = random() % 100 < 80 + pick % 15;
            store.record_trace(TraceRecord{at, 1, cp, i % 4, accepted, accepted ? QString() : reason::STRAYED, 80,
                                           AID_CIRCLES, false});
            if (i % 4 == 3) store.record_completion(CompletionRecord{at + 1, 1, cp, 9.0, accepted ? 0 : 1, 1});
        }
        return true;
    }();
    (void)seeded;
    return folder.path();
}

void BM_Progress_RecordTrace(benchmark::State& state) {
    QTemporaryDir folder;
    ProgressStore store;
    store.open(folder.path());
    int i = 0;
    for (auto _ : state) {
        const bool written = store.record_trace(
            TraceRecord{0, 1, 0x4E00 + i % 500, i % 8, i % 5 != 0, i % 5 != 0 ? QString() : reason::END, 80, 0, false});
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
    for (unsigned theme : {ki::qt::themes::THEME_NORMAL, ki::qt::themes::THEME_DARK, ki::qt::themes::THEME_GREEN}) {
        ki::qt::themes::apply_the_theme(theme);
        ProgressPanel panel(store, level);
        panel.show();
        QCoreApplication::processEvents();
        panel.grab().save(QStringLiteral("%1/progress-%2.png").arg(target, ki::qt::themes::theme_to_string(theme)));
    }
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
