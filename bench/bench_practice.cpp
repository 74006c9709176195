// Explaining a rejected trace: 50 samples classified against a character of 20 strokes, so
// that every later stroke is tried as the one the learner may have meant.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

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

}  // namespace
