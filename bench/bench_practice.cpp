// Explaining a rejected trace: 50 samples classified against a character of 20 strokes, so
// that every later stroke is tried as the one the learner may have meant.
#include <benchmark/benchmark.h>
#include <ki/qt/GPC.h>

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <vector>

#include "app/practice/PracticeMarkers.h"
#include "app/practice/PracticeTexts.h"
#include "app/practice/TraceClassifier.h"
#include "app/stroke/Anim.h"
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

}  // namespace
