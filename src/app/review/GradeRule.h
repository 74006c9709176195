#pragma once
// The grade a recall earns, proposed before the learner confirms or changes it.

#include <optional>

#include "app/review/Card.h"

namespace morvel::review {

/// What happened while the learner wrote one character from memory.
struct RecallResult {
    int misses = 0;               ///< Rejected traces over all strokes.
    int strokesShown = 0;         ///< Strokes shown after repeated misses.
    bool showMeUsed = false;      ///< The learner asked to see a stroke.
    int score = 0;                ///< 0 to 100.
    int durationMs = 0;           ///< From the prompt to the last stroke.
    std::optional<int> medianMs;  ///< The learner's median for this character, if there is one.
};

class GradeRule {
public:
    static constexpr int EASY_SCORE = 90;
    /// Misses that still count as HARD; more is AGAIN.
    static constexpr int HARD_MISSES = 2;

    /// AGAIN when a stroke had to be shown or "Show me" was used, HARD for 1 or 2 misses in all,
    /// EASY without a miss, a score of at least 90 and faster than the median, else GOOD.
    static Rating grade(const RecallResult& result);
};

}  // namespace morvel::review
