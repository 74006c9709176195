// One frame of the character canvas painted into a 1024x750 image, in watch mode half and
// fully drawn and in learn mode with every aid and a trace, cycling through the level.
#include <benchmark/benchmark.h>
#include <ki/math/Rect.h>

#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <glm/mat3x3.hpp>
#include <glm/vec3.hpp>
#include <memory>
#include <vector>

#include "app/stroke/Anim.h"
#include "app/stroke/CanvasHanzi.h"
#include "bench_level.h"

namespace {

using morvel::Anim;
using morvel::CanvasHanzi;

constexpr int WIDTH = 1024;
constexpr int HEIGHT = 750;

enum Mode { WATCH_HALF, WATCH_FULL, LEARN_ALL_AIDS };

/// Leaves a trace on the canvas: the current stroke's centre line from its start to 60 % of its
/// length, pressed and moved as a learner would, button still held.
void trace_current_stroke(CanvasHanzi& canvas, const Anim& anim, int stroke) {
    const ki::math::Path& centre = anim.strokes[static_cast<size_t>(stroke)].pathAnim;
    const glm::mat3 m = ki::math::matrix_fit_rect(canvas.get_view_box(), ki::math::Rect(0, 0, WIDTH, HEIGHT));
    const auto pixel = [&](float length) {
        const glm::vec3 q = m * glm::vec3(centre.point_at_length(length), 1.0f);
        return QPointF(q.x, q.y);
    };
    const float length = centre.get_length();
    QMouseEvent press(QEvent::MouseButtonPress, pixel(0.0f), pixel(0.0f), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(&canvas, &press);
    for (int i = 1; i <= 30; ++i) {
        const QPointF p = pixel(length * 0.6f * i / 30);
        QMouseEvent move(QEvent::MouseMove, p, p, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&canvas, &move);
    }
}

/// One canvas per character, set up for `mode`, so that a frame measures painting only.
std::vector<std::unique_ptr<CanvasHanzi>> level_canvases(Mode mode) {
    std::vector<std::unique_ptr<CanvasHanzi>> canvases;
    for (const QString& file : bench::level_files()) {
        ki::GSysResult<Anim> anim = Anim::build_from_file(file);
        if (!anim.ok()) continue;
        auto canvas = std::make_unique<CanvasHanzi>();
        canvas->resize(WIDTH, HEIGHT);
        canvas->on_change_theme(0);
        canvas->set_anim(anim.value);
        if (mode == LEARN_ALL_AIDS) {
            canvas->own_lesson().set_mode_flags(morvel::prog2::MODE_LEARN);
            canvas->own_lesson().select(static_cast<int>(anim.value.strokes.size()));
            canvas->set_draw_config(CanvasHanzi::DRAW_OUTLINE | CanvasHanzi::DRAW_HELPER_CIRCLES |
                                    CanvasHanzi::DRAW_HELPER_LINES);
            canvas->set_r_circle(CanvasHanzi::R_CIRCLE_DEFAULT);
            // Half the strokes done, so the learned ones are filled too.
            const int current = static_cast<int>(anim.value.strokes.size()) / 2;
            canvas->own_lesson().set_strokes_learned(current);
            trace_current_stroke(*canvas, anim.value, current);
        } else {
            canvas->own_lesson().set_progress(mode == WATCH_HALF ? 50.0f : 100.0f);
        }
        canvases.push_back(std::move(canvas));
    }
    return canvases;
}

void BM_Paint_Frame(benchmark::State& state, Mode mode) {
    const std::vector<std::unique_ptr<CanvasHanzi>> canvases = level_canvases(mode);
    if (canvases.empty()) {
        state.SkipWithError("no characters in the level");
        return;
    }
    // The format of the raster backing store on the desktop platforms.
    QImage image(WIDTH, HEIGHT, QImage::Format_ARGB32_Premultiplied);
    const ki::qt::ViewPort viewport{static_cast<float>(WIDTH), static_cast<float>(HEIGHT)};
    // A first frame per canvas outside the timing: the cached background is built once per
    // size in real use too.
    for (const auto& canvas : canvases) {
        QPainter painter(&image);
        canvas->paint_to(painter, viewport);
    }
    size_t i = 0;
    for (auto _ : state) {
        QPainter painter(&image);
        canvases[i]->paint_to(painter, viewport);
        painter.end();
        benchmark::DoNotOptimize(image.constBits());
        i = (i + 1) % canvases.size();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(BM_Paint_Frame, watch_50, WATCH_HALF)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Paint_Frame, watch_100, WATCH_FULL)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Paint_Frame, learn_all_aids_trace, LEARN_ALL_AIDS)->Unit(benchmark::kMillisecond);

/// The first frame after the widget's size changed: background and grid built anew.
void BM_Paint_FrameAfterResize(benchmark::State& state) {
    std::vector<std::unique_ptr<CanvasHanzi>> canvases = level_canvases(WATCH_FULL);
    if (canvases.empty()) {
        state.SkipWithError("no characters in the level");
        return;
    }
    QImage image(WIDTH, HEIGHT, QImage::Format_ARGB32_Premultiplied);
    size_t i = 0;
    int grow = 0;
    for (auto _ : state) {
        // One pixel narrower or wider on every pass through the level: each frame meets a size
        // its canvas has not painted last time.
        if (i == 0) grow ^= 1;
        const ki::qt::ViewPort viewport{static_cast<float>(WIDTH - grow), static_cast<float>(HEIGHT)};
        QPainter painter(&image);
        canvases[i]->paint_to(painter, viewport);
        painter.end();
        benchmark::DoNotOptimize(image.constBits());
        i = (i + 1) % canvases.size();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Paint_FrameAfterResize)->Unit(benchmark::kMillisecond);

}  // namespace
