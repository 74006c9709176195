#pragma once
// The plan of one day's session: due reviews first, the least likely to be recalled first,
// then new characters in level order up to a daily limit. It is told what happened (a card
// graded, a new character introduced) and says what comes next. Rebuilt after a restart from
// the same inputs, it carries on where the last run stopped.

#include <array>
#include <functional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "app/review/Card.h"

namespace morvel::review {

class Scheduler;

/// A character in the plan: its code point, its place in level order and its card.
struct PlanCard {
    char32_t codePoint = 0;
    int order = 0;
    Card card;
};

/// What comes next: a due review, a new character, or nothing for today.
struct PlanStep {
    enum class Kind { REVIEW, NEW, DONE };
    Kind kind = Kind::DONE;
    char32_t codePoint = 0;
    bool operator==(const PlanStep&) const = default;
};

/// Today's counts as the progress line shows them: reviews done, new characters introduced,
/// steps left.
struct PlanProgress {
    int reviews = 0;
    int fresh = 0;
    int left = 0;
    bool operator==(const PlanProgress&) const = default;
};

class SessionPlan {
public:
    static constexpr std::array<int, 4> NEW_LIMITS = {5, 10, 20, 40};
    static constexpr int DEFAULT_NEW_LIMIT = 10;

    /// `today` answers the learner's current local day (LocalDay over the clock and time zone).
    /// `introducedToday` (the characters) and `reviewedToday` are what the stored history holds
    /// for that day, so that the daily limit holds across restarts: a character introduced before
    /// a restart and still new comes next, and counts once. A new limit not in NEW_LIMITS is
    /// logged and replaced by the default.
    SessionPlan(const Scheduler& scheduler, std::function<int()> today, std::vector<PlanCard> cards,
                int newLimit, std::vector<char32_t> introducedToday = {}, int reviewedToday = 0);

    /// The next step. A new character introduced and not yet graded stays the next step.
    PlanStep next();
    /// A new character has been shown to the learner; it counts against today's limit.
    void introduced(char32_t codePoint);
    /// The card after grading `codePoint` today, for the caller to store. A card never
    /// introduced through the plan counts as introduced now. An unknown code point is logged
    /// and gives an empty card.
    Card graded(char32_t codePoint, Rating rating);
    PlanProgress progress();

    int new_limit() const { return newLimit; }
    const std::vector<PlanCard>& cards() const { return cards_; }

private:
    /// Starts the counts afresh when local midnight has passed since the last call.
    int roll_day();
    PlanCard* find(char32_t codePoint);

    const Scheduler* scheduler;  ///< Not owned; outlives the plan.
    std::function<int()> today;
    std::vector<PlanCard> cards_;  ///< In level order.
    std::unordered_map<char32_t, size_t> indexOf;
    int newLimit = DEFAULT_NEW_LIMIT;
    int day = 0;
    std::unordered_set<char32_t> introducedToday;
    int reviewedToday = 0;
    char32_t pending = 0;  ///< Introduced, not yet graded.
};

}  // namespace morvel::review
