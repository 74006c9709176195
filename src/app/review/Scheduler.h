#pragma once
// The FSRS-6 memory model on whole days: how a review changes a card's stability and
// difficulty, the chance of recall on a given day, and the next interval for a desired
// retention. Pure arithmetic; the caller supplies the days (LocalDay) and stores the cards.

#include <array>

#include "app/review/Card.h"

namespace morvel::review {

class Scheduler {
public:
    using Weights = std::array<double, 21>;
    /// The published default weights of FSRS-6.
    static constexpr Weights DEFAULT_WEIGHTS = {0.212,  1.2931, 2.3065, 8.2956, 6.4133, 0.8334, 3.0194,
                                                0.001,  1.8722, 0.1666, 0.796,  1.4835, 0.0614, 0.2629,
                                                1.6483, 0.6014, 1.8729, 0.5425, 0.0912, 0.0658, 0.1542};
    static constexpr double DEFAULT_RETENTION = 0.90;
    static constexpr int DEFAULT_MAXIMUM_INTERVAL = 36500;

    /// A retention outside (0, 1] or a maximum interval below 1 is logged and replaced by the
    /// default.
    explicit Scheduler(double retention = DEFAULT_RETENTION, int maximumInterval = DEFAULT_MAXIMUM_INTERVAL);

    double retention() const { return retention_; }
    int maximum_interval() const { return maximumInterval; }

    /// The card after a review on `day` rated `rating`. A day before the last review counts as
    /// the same day (a clock set back must not break the card).
    Card review(const Card& card, int day, Rating rating) const;
    /// Days until the next review if the card were rated `rating` on `day`.
    int interval(const Card& card, int day, Rating rating) const;
    /// The chance of recall on `day`, 0 for a NEW card.
    double retrievability(const Card& card, int day) const;

private:
    struct Memory {
        double stability;
        double difficulty;
    };
    Memory next_memory(const Card& card, double r, Rating rating) const;
    int next_interval(double stability) const;

    double retention_ = DEFAULT_RETENTION;
    int maximumInterval = DEFAULT_MAXIMUM_INTERVAL;
    double intervalModifier = 1.0;
};

}  // namespace morvel::review
