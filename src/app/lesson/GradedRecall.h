#pragma once
// One character written from memory and graded by the learner.

#include "app/review/Card.h"

namespace morvel::prog2 {

struct GradedRecall {
    int codePoint = 0;
    morvel::review::Rating rating = morvel::review::Rating::GOOD;
    /// From the prompt to the last stroke.
    int durationMs = 0;
};

}  // namespace morvel::prog2
