// The day's session over a large collection: choosing the next card among 3,000 (a tenth of
// them new, the given percentage due) and one review through the scheduler.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "app/review/Scheduler.h"
#include "app/review/SessionPlan.h"

namespace {

using namespace morvel::review;

constexpr int CARDS = 3000;
constexpr int TODAY = 20000;

/// Cards reviewed over the past year with random ratings; `duePercent` of them are due today,
/// one in ten is still new, the rest wait for later.
std::vector<PlanCard> collection(const Scheduler& scheduler, int duePercent) {
    std::mt19937 random(7);
    std::vector<PlanCard> cards;
    for (int i = 0; i < CARDS; ++i) {
        PlanCard c{static_cast<char32_t>(0x4e00 + i), i, {}};
        if (i % 10 != 9) {
            int day = TODAY - 365 + static_cast<int>(random() % 30);
            while (day < TODAY) {
                c.card = scheduler.review(c.card, day, static_cast<Rating>(1 + random() % 4));
                day = c.card.due + static_cast<int>(random() % 3);
            }
            c.card.due = static_cast<int>(random() % 100) < duePercent ? std::min(c.card.due, TODAY)
                                                                       : std::max(c.card.due, TODAY + 1);
        }
        cards.push_back(c);
    }
    return cards;
}

void BM_Review_NextOf3000(benchmark::State& state) {
    const Scheduler scheduler;
    SessionPlan plan(
        scheduler, [] { return TODAY; }, collection(scheduler, static_cast<int>(state.range(0))),
        SessionPlan::DEFAULT_NEW_LIMIT);
    if (plan.next().kind != PlanStep::Kind::REVIEW) {
        state.SkipWithError("no card due in the collection");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(plan.next());
}
BENCHMARK(BM_Review_NextOf3000)->Arg(10)->Arg(100)->Unit(benchmark::kMicrosecond);

void BM_Review_SchedulerReview(benchmark::State& state) {
    const Scheduler scheduler;
    Card card = scheduler.review(Card{}, TODAY - 40, Rating::GOOD);
    card = scheduler.review(card, TODAY - 30, Rating::HARD);
    int rating = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(scheduler.review(card, TODAY, static_cast<Rating>(1 + rating)));
        rating = (rating + 1) % 4;
    }
}
BENCHMARK(BM_Review_SchedulerReview)->Unit(benchmark::kNanosecond);

}  // namespace
