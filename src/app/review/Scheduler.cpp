#include "app/review/Scheduler.h"

#include <ki/log/GLog.h>

#include <algorithm>
#include <cmath>

namespace morvel::review {

namespace {

constexpr const Scheduler::Weights& W = Scheduler::DEFAULT_WEIGHTS;
constexpr double S_MIN = 0.001;
constexpr double S_MAX = 36500.0;

/// Halves round up, towards +infinity, also below zero (std::round would round them away from
/// zero and move a difficulty by 1e-8).
double round_half_up(double x) {
    const double down = std::floor(x);
    return x - down >= 0.5 ? down + 1.0 : down;
}

/// The model keeps every intermediate value to 8 decimals; the intervals depend on it.
double round8(double x) {
    return round_half_up(x * 1e8) / 1e8;
}

double decay() {
    return -W[20];
}

/// The curve's factor, chosen so that recall is 90 % after `stability` days.
double curve_factor() {
    static const double factor = round8(std::exp(1.0 / decay() * std::log(0.9)) - 1.0);
    return factor;
}

double forgetting_curve(int elapsed, double stability) {
    return round8(std::pow(1.0 + curve_factor() * elapsed / stability, decay()));
}

double init_difficulty(int g) {
    return round8(W[4] - std::exp((g - 1) * W[5]) + 1.0);
}

double next_difficulty(double d, int g) {
    const double delta = -W[6] * (g - 3);
    // Damped so that difficulty approaches 10 ever more slowly.
    const double next = d + round8(delta * (10.0 - d) / 9.0);
    return std::clamp(round8(W[7] * init_difficulty(4) + (1.0 - W[7]) * next), 1.0, 10.0);
}

double recall_stability(double d, double s, double r, int g) {
    const double hardPenalty = g == 2 ? W[15] : 1.0;
    const double easyBonus = g == 4 ? W[16] : 1.0;
    return round8(std::clamp(s * (1.0 + std::exp(W[8]) * (11.0 - d) * std::pow(s, -W[9]) *
                                            (std::exp((1.0 - r) * W[10]) - 1.0) * hardPenalty * easyBonus),
                             S_MIN, S_MAX));
}

double forget_stability(double d, double s, double r) {
    const double afterFail = round8(std::clamp(
        W[11] * std::pow(d, -W[12]) * (std::pow(s + 1.0, W[13]) - 1.0) * std::exp((1.0 - r) * W[14]), S_MIN,
        S_MAX));
    // A lapse never raises stability.
    return std::min(std::max(round8(s), S_MIN), afterFail);
}

bool usable(const Card& card) {
    return std::isfinite(card.stability) && std::isfinite(card.difficulty) && card.stability >= S_MIN &&
           card.difficulty >= 1.0;
}

}  // namespace

Scheduler::Scheduler(double retention, int maximumInterval) {
    if (!(retention > 0.0 && retention <= 1.0)) {
        ki::pp_warn("Scheduler::Scheduler, retention $ outside (0, 1], using $", retention,
                    DEFAULT_RETENTION);
        retention = DEFAULT_RETENTION;
    }
    if (maximumInterval < 1) {
        ki::pp_warn("Scheduler::Scheduler, maximum interval $ below 1, using $", maximumInterval,
                    DEFAULT_MAXIMUM_INTERVAL);
        maximumInterval = DEFAULT_MAXIMUM_INTERVAL;
    }
    retention_ = retention;
    this->maximumInterval = maximumInterval;
    intervalModifier = round8((std::pow(retention, 1.0 / decay()) - 1.0) / curve_factor());
}

double Scheduler::retrievability(const Card& card, int day) const {
    if (card.state == CardState::NEW || !usable(card)) return 0.0;
    return forgetting_curve(std::max(0, day - card.lastReview), card.stability);
}

Scheduler::Memory Scheduler::next_memory(const Card& card, double r, Rating rating) const {
    const int g = static_cast<int>(rating);
    // A card whose stored state cannot be used starts over, as a NEW card would.
    if (card.state == CardState::NEW || !usable(card))
        return {std::max(W[g - 1], 0.1), std::clamp(init_difficulty(g), 1.0, 10.0)};
    const double s = g == 1 ? forget_stability(card.difficulty, card.stability, r)
                            : recall_stability(card.difficulty, card.stability, r, g);
    return {s, next_difficulty(card.difficulty, g)};
}

int Scheduler::next_interval(double stability) const {
    const double days = std::max(1.0, round_half_up(stability * intervalModifier));
    return static_cast<int>(std::min(days, static_cast<double>(maximumInterval)));
}

Card Scheduler::review(const Card& card, int day, Rating rating) const {
    const int g = std::clamp(static_cast<int>(rating), 1, 4);
    const bool fresh = card.state == CardState::NEW || !usable(card);
    const int elapsed = fresh ? 0 : std::max(0, day - card.lastReview);
    const double r = fresh ? 0.0 : forgetting_curve(elapsed, card.stability);

    // All four answers are planned together: a better answer always waits at least a day
    // longer than a worse one.
    std::array<Memory, 4> memory{};
    std::array<int, 4> days{};
    for (int i = 0; i < 4; ++i) {
        memory[i] = next_memory(card, r, static_cast<Rating>(i + 1));
        days[i] = next_interval(memory[i].stability);
    }
    days[0] = std::min(days[0], days[1]);
    for (int i = 1; i < 4; ++i) days[i] = std::max(days[i], days[i - 1] + 1);

    Card next = card;
    next.stability = memory[g - 1].stability;
    next.difficulty = memory[g - 1].difficulty;
    next.interval = days[g - 1];
    next.due = day + next.interval;
    next.lastReview = day;
    next.reps = card.reps + 1;
    if (g == 1 && !fresh) ++next.lapses;
    next.state = CardState::REVIEW;
    return next;
}

int Scheduler::interval(const Card& card, int day, Rating rating) const {
    return review(card, day, rating).interval;
}

}  // namespace morvel::review
