#include "app/review/GradeRule.h"

namespace morvel::review {

Rating GradeRule::grade(const RecallResult& result) {
    if (result.strokesShown > 0 || result.showMeUsed || result.misses > HARD_MISSES) return Rating::AGAIN;
    if (result.misses > 0) return Rating::HARD;
    // Without a median (the first recall of the character) nothing shows it came easily.
    const bool fast = result.medianMs && result.durationMs < *result.medianMs;
    return result.score >= EASY_SCORE && fast ? Rating::EASY : Rating::GOOD;
}

}  // namespace morvel::review
