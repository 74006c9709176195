// Selecting every character of the level in turn through the main window, the way the list,
// the arrow buttons and the hotkeys do, with the stroke models built afresh and from the cache.
#include <benchmark/benchmark.h>

#if __has_include("app/Window.h")

#include <QCoreApplication>
#include <memory>

#include "app/AppData.h"
#include "app/Window.h"
#include "app/stroke/Anim.h"
#include "bench_level.h"

namespace {

using morvel::prog2::Window;

enum Cache { COLD, CACHED };

/// One pass over the level per iteration. Automatic playback is the program's default; with it
/// on, every selection also hands a recording to the media player.
void select_all(benchmark::State& state, Cache cache, bool autoPlay) {
    morvel::prog2::AppData data(bench::LEVEL_DIR);
    data.load();
    const int count = static_cast<int>(data.size());
    if (count == 0) {
        state.SkipWithError("empty catalogue");
        return;
    }
    auto window = std::make_unique<Window>(data);
    window->resize(1024, 750);
    window->setup();
    window->get_control().set_mode_bits(morvel::prog2::MODE_AUTO_PLAY, autoPlay);
    for (int i = 0; i < count; ++i) window->on_index(i);
    QCoreApplication::processEvents();
    for (auto _ : state) {
        if (cache == COLD) morvel::Anim::clear_cache();
        for (int i = 0; i < count; ++i) window->on_index(i);
    }
    state.SetItemsProcessed(state.iterations() * count);
    window.reset();
    QCoreApplication::processEvents();
}

BENCHMARK_CAPTURE(select_all, uncached, COLD, false)
    ->Name("BM_Window_SelectAll/uncached")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(select_all, cached, CACHED, false)
    ->Name("BM_Window_SelectAll/cached")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(select_all, cached_auto_play, CACHED, true)
    ->Name("BM_Window_SelectAll/cached_auto_play")
    ->Unit(benchmark::kMillisecond);

}  // namespace

#endif
