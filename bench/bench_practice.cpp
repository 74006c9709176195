// Explaining a rejected trace: 50 samples classified against a character of 20 strokes, so
// that every later stroke is tried as the one the learner may have meant. Judging a trace with
// every shape measure, and a learn frame with the learner's ink over all 20 strokes.
#include <benchmark/benchmark.h>
#include <ki/qt/GPC.h>

#include <QCoreApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <vector>

#include "app/practice/PracticeMarkers.h"
#include "app/practice/PracticeTexts.h"
#include "app/practice/TraceClassifier.h"
#include "app/practice/TraceGenerator.h"
#include "app/practice/TraceMeasures.h"
#include "app/practice/TraceVerdict.h"
#include "app/stroke/Anim.h"
#include "app/stroke/CanvasHanzi.h"
#include "app/stroke/StrokeJudge.h"
#include "bench_level.h"

namespace {

using morvel::Anim;

constexpr int STROKES = 20;
constexpr int SAMPLES = 50;
constexpr int R_CIRCLE = 140;

/// The strokes of the level's largest characters, one after another, up to STROKES: no level-1
/// character has that many.
Anim twenty_strokes() {
    std::vector<Anim> anims;
    for (const QString& file : bench::level_files()) {
        ki::GSysResult<Anim> anim = Anim::build_from_file(file);
        if (anim.ok()) anims.push_back(anim.take());
    }
    std::sort(anims.begin(), anims.end(),
              [](const Anim& a, const Anim& b) { return a.strokes.size() > b.strokes.size(); });
    Anim joined;
    joined.viewBox = {0, 0, 1024, 1024};
    for (const Anim& anim : anims)
        for (const morvel::AnimStroke& stroke : anim.strokes)
            if (joined.strokes.size() < STROKES) joined.strokes.push_back(stroke);
    return joined;
}

void BM_Practice_ClassifyRejectedTrace(benchmark::State& state) {
    const Anim anim = twenty_strokes();
    if (anim.strokes.size() < STROKES) {
        state.SkipWithError("fewer than 20 strokes in the level");
        return;
    }
    // Per stroke, a trace along its centre line that is released well past its end: the
    // classifier tries every later stroke, walks the whole corridor and ends at the end circle.
    std::vector<std::vector<glm::vec2>> traces;
    for (const morvel::AnimStroke& stroke : anim.strokes) {
        const float length = stroke.pathAnim.get_length();
        std::vector<glm::vec2> samples;
        for (int i = 0; i < SAMPLES - 1; ++i)
            samples.push_back(stroke.pathAnim.point_at_length(length * i / (SAMPLES - 2)) +
                              glm::vec2(6.0f, -4.0f));
        samples.push_back(stroke.pathAnim.point_end() + glm::vec2(0.0f, 3.0f * R_CIRCLE));
        traces.push_back(std::move(samples));
    }
    size_t t = 0;
    int64_t rejected = 0;
    for (auto _ : state) {
        const morvel::practice::Rejection r =
            morvel::practice::TraceClassifier::classify(anim, static_cast<int>(t), traces[t], R_CIRCLE);
        rejected += r.is_rejected();
        benchmark::DoNotOptimize(r);
        t = (t + 1) % traces.size();
    }
    state.SetItemsProcessed(state.iterations());
    // Every trace must be rejected, or the figure measures the short path of an accepted one.
    state.counters["rejected"] = benchmark::Counter(static_cast<double>(rejected) / state.iterations());
}
BENCHMARK(BM_Practice_ClassifyRejectedTrace)->Unit(benchmark::kMicrosecond);

/// What a learn-mode frame adds for a rejected trace: the marker of the slowest kind (the
/// wrong stroke's outline and two numbers) and the reason in a corner, on a 1024x750 image.
void BM_Practice_PaintMarkerAndReason(benchmark::State& state) {
    const Anim anim = twenty_strokes();
    if (anim.strokes.size() < STROKES) {
        state.SkipWithError("fewer than 20 strokes in the level");
        return;
    }
    morvel::practice::Rejection rejection;
    rejection.reason = morvel::practice::Reason::WRONG_STROKE;
    rejection.indexStroke = 0;
    rejection.otherStroke = STROKES - 1;
    const QString text = morvel::practice::reason_text(rejection);
    const morvel::CanvasColors colors = morvel::CanvasColors::dark();
    QImage image(1024, 750, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        QPainter painter(&image);
        ki::qt::GPC gpc(painter);
        gpc.save();
        gpc.set_matrix(ki::math::matrix_fit_rect(anim.viewBox, {0, 0, 1024, 750}), false);
        morvel::practice::PracticeMarkers::paint_rejection(gpc, anim, rejection, colors, R_CIRCLE);
        gpc.restore();
        morvel::practice::PracticeMarkers::paint_caption(
            gpc, {0, 0, 1024, 750}, text, colors, morvel::practice::PracticeMarkers::Corner::BOTTOM_LEFT);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Practice_PaintMarkerAndReason)->Unit(benchmark::kMicrosecond);

/// A whole attempt with strict judging, as the canvas makes it: the judge takes press, 50 moves
/// and release, then every measure and the strict rules give verdict and score. The traces are
/// careful ones from the generator, so most pass every rule (the slow path).
void BM_Practice_JudgeWithEveryMeasure(benchmark::State& state) {
    const Anim anim = twenty_strokes();
    if (anim.strokes.size() < STROKES) {
        state.SkipWithError("fewer than 20 strokes in the level");
        return;
    }
    morvel::practice::TraceGenerator generator(20);
    std::vector<std::vector<glm::vec2>> traces;
    for (const morvel::AnimStroke& stroke : anim.strokes)
        traces.push_back(morvel::practice::measures::resample(
            generator.trace(stroke, morvel::practice::TraceKind::CAREFUL), SAMPLES + 2));
    morvel::StrokeJudge judge;
    size_t t = 0;
    int64_t accepted = 0;
    for (auto _ : state) {
        const std::vector<glm::vec2>& trace = traces[t];
        const morvel::AnimStroke& stroke = anim.strokes[t];
        judge.press(trace.front(), stroke, R_CIRCLE);
        for (size_t i = 1; i + 1 < trace.size(); ++i) judge.move(trace[i], stroke, R_CIRCLE);
        const bool lenient =
            judge.release(trace.back(), stroke, R_CIRCLE) == morvel::StrokeJudge::Verdict::ACCEPTED;
        const morvel::practice::Judgement j =
            morvel::practice::TraceVerdict::judge(anim, static_cast<int>(t), trace, R_CIRCLE, true, lenient);
        accepted += j.accepted;
        benchmark::DoNotOptimize(j.score);
        t = (t + 1) % traces.size();
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["accepted"] = benchmark::Counter(static_cast<double>(accepted) / state.iterations());
}
BENCHMARK(BM_Practice_JudgeWithEveryMeasure)->Unit(benchmark::kMicrosecond);

/// A learn-mode frame of the finished 20-stroke character on a 1024x750 canvas: green strokes,
/// the learner's ink of every stroke over them, the weakest stroke marked, captions on. The ink
/// layer is kept as an image between accepted strokes, as in use: only the frame right after an
/// accepted stroke paints it anew.
void BM_Practice_LearnFrameWithInk(benchmark::State& state) {
    const Anim anim = twenty_strokes();
    if (anim.strokes.size() < STROKES) {
        state.SkipWithError("fewer than 20 strokes in the level");
        return;
    }
    constexpr int width = 1024, height = 750;
    morvel::CanvasHanzi canvas;
    canvas.resize(width, height);
    canvas.on_change_theme(0);
    canvas.set_captions(true);
    canvas.set_anim(anim);
    canvas.own_lesson().set_mode_flags(morvel::prog2::MODE_LEARN);
    canvas.own_lesson().select(static_cast<int>(anim.strokes.size()));
    canvas.set_r_circle(R_CIRCLE);
    canvas.listenerStrokeLearned += [&canvas] { canvas.own_lesson().stroke_accepted(); };
    const glm::mat3 m = ki::math::matrix_fit_rect(anim.viewBox, ki::math::Rect(0, 0, width, height));
    for (const morvel::AnimStroke& stroke : anim.strokes) {
        const float length = stroke.pathAnim.get_length();
        for (int i = 0; i <= SAMPLES + 1; ++i) {
            const glm::vec3 q =
                m * glm::vec3(stroke.pathAnim.point_at_length(length * i / (SAMPLES + 1)), 1.0f);
            const QEvent::Type type = i == 0             ? QEvent::MouseButtonPress
                                      : i == SAMPLES + 1 ? QEvent::MouseButtonRelease
                                                         : QEvent::MouseMove;
            QMouseEvent ev(type, QPointF(q.x, q.y), QPointF(q.x, q.y),
                           type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                           type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                           Qt::NoModifier);
            QCoreApplication::sendEvent(&canvas, &ev);
        }
    }
    if (!canvas.get_score_card().is_finished()) {
        state.SkipWithError("the character was not finished");
        return;
    }
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    const ki::qt::ViewPort viewport{static_cast<float>(width), static_cast<float>(height)};
    for (auto _ : state) {
        QPainter painter(&image);
        canvas.paint_to(painter, viewport);
        painter.end();
        benchmark::DoNotOptimize(image.constBits());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Practice_LearnFrameWithInk)->Unit(benchmark::kMillisecond);

}  // namespace
