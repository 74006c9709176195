// Selecting every character of the level in turn through the main window, the way the list,
// the arrow buttons and the hotkeys do, with the stroke models built afresh and from the cache.
#include <benchmark/benchmark.h>

#if __has_include("app/Window.h")

#include <QCoreApplication>
#include <memory>

#include <ki/store/GNode.h>
#include <ki/tools/GSettings.h>

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

/// Switching between level 1 and level `state.range(0)` (level 7: 978 characters), through the
/// Level submenu's path: the catalogue loaded, list rebuilt, the level's selected character
/// shown. Two switches per iteration.
void BM_Window_SwitchLevel(benchmark::State& state) {
    const int level = static_cast<int>(state.range(0));
    morvel::prog2::AppData data(bench::LEVEL_DIR);
    data.load();
    auto window = std::make_unique<Window>(data);
    window->resize(1024, 750);
    window->setup();
    window->get_control().set_mode_bits(morvel::prog2::MODE_AUTO_PLAY, false);
    QCoreApplication::processEvents();
    for (auto _ : state) {
        if (!window->on_level(level) || !window->on_level(1)) {
            state.SkipWithError("a level could not be loaded");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * 2);
    window.reset();
    QCoreApplication::processEvents();
}
BENCHMARK(BM_Window_SwitchLevel)->Arg(4)->Arg(7)->Unit(benchmark::kMillisecond);

/// The window's part of start-up with level `state.range(0)` stored: catalogue, window, first
/// frame. What the program does before (application object, fonts) is the same for every level.
void BM_Window_StartupWithLevel(benchmark::State& state) {
    const int level = static_cast<int>(state.range(0));
    ki::store::GNode node;
    node.set(QStringLiteral("level"), level);
    node.set(QStringLiteral("ControlAnim.modeFlags"), 0x13u);  // learn mode without auto play
    for (auto _ : state) {
        ki::qt::GSettings::instance().set_window_node(node, QStringLiteral("WinHanzi_0"));
        morvel::prog2::AppData data(morvel::prog2::Level::shipped(level));
        data.load();
        auto window = std::make_unique<Window>(data);
        window->resize(1024, 750);
        window->setup();
        window->show();
        window->grab();  // the first frame, painted
        window.reset();
        QCoreApplication::processEvents();
    }
}
BENCHMARK(BM_Window_StartupWithLevel)->Arg(1)->Arg(4)->Arg(7)->Unit(benchmark::kMillisecond);

}  // namespace

#endif
