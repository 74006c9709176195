#pragma once
// What the learner has done so far while writing the shown character from memory, as the
// lesson flow counts it and the canvas shows it.

#include <algorithm>
#include <vector>

#include "app/review/Card.h"

namespace morvel::prog2 {

struct RecallState {
    /// Writing from memory: nothing of the character is shown until it is written.
    bool active = false;
    int codePoint = 0;
    /// Rejected traces over all strokes.
    int misses = 0;
    /// Strokes shown after repeated misses or on request; they stay as a faint outline.
    std::vector<int> shownStrokes;
    bool showMeUsed = false;
    long long startMs = 0;
    int durationMs = 0;
    int score = 0;
    /// Every stroke written: the grade is proposed and waits for the learner.
    bool grading = false;
    review::Rating proposed = review::Rating::GOOD;
    review::Rating chosen = review::Rating::GOOD;

    bool is_shown(int stroke) const {
        return std::find(shownStrokes.begin(), shownStrokes.end(), stroke) != shownStrokes.end();
    }
    void mark_shown(int stroke) {
        if (!is_shown(stroke)) shownStrokes.push_back(stroke);
    }
};

}  // namespace morvel::prog2
