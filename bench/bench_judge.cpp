// Judging a trace in learn mode: one mouse move against the current centre line, and whole
// strokes (press, 50 moves, release), both through the judge alone and through the canvas's
// mouse handlers with the mapping from widget pixels.
#include <benchmark/benchmark.h>
#include <ki/math/Path.h>
#include <ki/math/Rect.h>

#include <QMouseEvent>
#include <QPointF>
#include <glm/mat3x3.hpp>
#include <glm/vec3.hpp>
#include <vector>

#include "app/stroke/Anim.h"
#include "app/stroke/CanvasHanzi.h"
#include "app/stroke/StrokeJudge.h"
#include "bench_level.h"

namespace {

using morvel::Anim;
using morvel::AnimStroke;

constexpr int MOVES_PER_STROKE = 50;
constexpr int R_CIRCLE = morvel::CanvasHanzi::R_CIRCLE_DEFAULT;

/// A learner's trace of one stroke: MOVES_PER_STROKE samples along its centre line, each a
/// little off it, as a hand is.
struct Trace {
    size_t anim = 0;
    int index = 0;
    const AnimStroke* stroke = nullptr;
    std::vector<glm::vec2> points;
};

const std::vector<Anim>& level_anims() {
    static const std::vector<Anim> anims = [] {
        std::vector<Anim> all;
        for (const QString& file : bench::level_files()) {
            ki::GSysResult<Anim> anim = Anim::build_from_file(file);
            if (anim.ok()) all.push_back(anim.take());
        }
        return all;
    }();
    return anims;
}

std::vector<Trace> level_traces() {
    std::vector<Trace> traces;
    const std::vector<Anim>& anims = level_anims();
    for (size_t a = 0; a < anims.size(); ++a) {
        for (size_t s = 0; s < anims[a].strokes.size(); ++s) {
            const AnimStroke& stroke = anims[a].strokes[s];
            Trace trace{a, static_cast<int>(s), &stroke, {}};
            const float length = stroke.pathAnim.get_length();
            for (int i = 0; i <= MOVES_PER_STROKE + 1; ++i) {
                const float wobble = (i % 2 == 0 ? 9.0f : -7.0f);
                trace.points.push_back(stroke.pathAnim.point_at_length(length * i / (MOVES_PER_STROKE + 1)) +
                                       glm::vec2(wobble, -wobble));
            }
            traces.push_back(std::move(trace));
        }
    }
    return traces;
}

void BM_Judge_OneMoveDistance(benchmark::State& state) {
    const std::vector<Trace> traces = level_traces();
    if (traces.empty()) {
        state.SkipWithError("no strokes in the level");
        return;
    }
    size_t t = 0;
    size_t p = 0;
    for (auto _ : state) {
        const Trace& trace = traces[t];
        benchmark::DoNotOptimize(trace.stroke->pathAnim.distance_to_point(trace.points[p]));
        if (++p == trace.points.size()) {
            p = 0;
            t = (t + 1) % traces.size();
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Judge_OneMoveDistance)->Unit(benchmark::kNanosecond);

/// One whole attempt per iteration, cycling through every stroke of the level.
void BM_Judge_WholeStroke(benchmark::State& state) {
    const std::vector<Trace> traces = level_traces();
    if (traces.empty()) {
        state.SkipWithError("no strokes in the level");
        return;
    }
    morvel::StrokeJudge judge;
    size_t t = 0;
    int64_t accepted = 0;
    for (auto _ : state) {
        const Trace& trace = traces[t];
        judge.press(trace.points.front(), *trace.stroke, R_CIRCLE);
        for (size_t i = 1; i + 1 < trace.points.size(); ++i)
            judge.move(trace.points[i], *trace.stroke, R_CIRCLE);
        accepted += judge.release(trace.points.back(), *trace.stroke, R_CIRCLE) ==
                    morvel::StrokeJudge::Verdict::ACCEPTED;
        t = (t + 1) % traces.size();
    }
    state.SetItemsProcessed(state.iterations());
    // A bench whose traces were all rejected would measure a different path through the judge.
    state.counters["accepted"] = benchmark::Counter(static_cast<double>(accepted) / state.iterations());
}
BENCHMARK(BM_Judge_WholeStroke)->Unit(benchmark::kMicrosecond);

/// The same attempts as mouse events on a 1024x750 canvas in learn mode: pixel mapping, judge
/// and repaint requests, as the user's hand produces them.
void BM_Judge_WholeStrokeThroughCanvas(benchmark::State& state) {
    const std::vector<Anim>& anims = level_anims();
    if (anims.empty()) {
        state.SkipWithError("no strokes in the level");
        return;
    }
    morvel::CanvasHanzi canvas;
    canvas.resize(1024, 750);
    canvas.own_lesson().set_mode_flags(morvel::prog2::MODE_LEARN);
    canvas.set_r_circle(R_CIRCLE);

    struct PixelTrace {
        size_t anim;
        int stroke;
        std::vector<QPointF> pixels;
    };
    std::vector<PixelTrace> traces;
    for (const Trace& trace : level_traces()) {
        const glm::mat3 m =
            ki::math::matrix_fit_rect(anims[trace.anim].viewBox, ki::math::Rect(0, 0, 1024, 750));
        PixelTrace pixels{trace.anim, trace.index, {}};
        for (glm::vec2 p : trace.points) {
            const glm::vec3 q = m * glm::vec3(p, 1.0f);
            pixels.pixels.emplace_back(q.x, q.y);
        }
        traces.push_back(std::move(pixels));
    }

    size_t t = 0;
    size_t shown = traces.size();
    int64_t learned = 0;
    canvas.listenerStrokeLearned += [&learned] { ++learned; };
    for (auto _ : state) {
        const PixelTrace& trace = traces[t];
        if (shown != trace.anim) {
            state.PauseTiming();
            canvas.set_anim(anims[trace.anim]);
            canvas.own_lesson().select(static_cast<int>(anims[trace.anim].strokes.size()));
            shown = trace.anim;
            state.ResumeTiming();
        }
        canvas.own_lesson().set_strokes_learned(trace.stroke);
        QMouseEvent press(QEvent::MouseButtonPress, trace.pixels.front(), trace.pixels.front(),
                          Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&canvas, &press);
        for (size_t i = 1; i + 1 < trace.pixels.size(); ++i) {
            QMouseEvent move(QEvent::MouseMove, trace.pixels[i], trace.pixels[i], Qt::NoButton,
                             Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(&canvas, &move);
        }
        QMouseEvent release(QEvent::MouseButtonRelease, trace.pixels.back(), trace.pixels.back(),
                            Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&canvas, &release);
        t = (t + 1) % traces.size();
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["accepted"] = benchmark::Counter(static_cast<double>(learned) / state.iterations());
}
BENCHMARK(BM_Judge_WholeStrokeThroughCanvas)->Unit(benchmark::kMicrosecond);

}  // namespace
