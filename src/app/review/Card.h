#pragma once
// One character's memory state as the scheduler keeps it. Days are whole days in the learner's
// local calendar, counted from 1970-01-01 (see LocalDay).

namespace morvel::review {

/// The learner's answer to a review, worst to best.
enum class Rating { AGAIN = 1, HARD = 2, GOOD = 3, EASY = 4 };

/// NEW until the first review; every review after that leaves the card in REVIEW (the
/// scheduler plans whole days only, so there are no learning steps in between).
enum class CardState { NEW = 0, REVIEW = 2 };

struct Card {
    double stability = 0.0;   ///< Days until the chance of recall falls to 90 %.
    double difficulty = 0.0;  ///< 1 (easy) to 10 (hard); 0 while NEW.
    int due = 0;              ///< Day of the next review.
    int lastReview = 0;       ///< Day of the last review; meaningless while NEW.
    int interval = 0;         ///< Days from the last review to `due`.
    int reps = 0;
    int lapses = 0;  ///< Reviews answered AGAIN after the first.
    CardState state = CardState::NEW;

    /// Known: held for three weeks at 90 % recall.
    static constexpr double KNOWN_STABILITY = 21.0;
    bool known() const { return state != CardState::NEW && stability >= KNOWN_STABILITY; }

    bool operator==(const Card&) const = default;
};

}  // namespace morvel::review
