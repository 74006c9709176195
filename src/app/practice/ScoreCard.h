#pragma once
// The scores of one pass over a character: each stroke's accepted trace, the misses and the time
// from the first press to the last accepted stroke. Pure bookkeeping; the canvas feeds it.

#include <cstdint>
#include <vector>

namespace morvel::practice {

class ScoreCard {
public:
    /// A new pass over a character of `strokeCount` strokes.
    void reset(int strokeCount);
    /// A press at `ms` (any steady clock); the first one starts the time.
    void press(std::int64_t ms);
    /// Stroke `index` accepted with `score` at `ms`; an index out of range is ignored.
    void accepted(int index, int score, std::int64_t ms);
    void missed() { ++nMisses; }

    /// Every stroke has an accepted trace.
    bool is_finished() const;
    bool has_accepted() const;
    /// The mean of the stroke scores, rounded; -1 before any stroke is accepted.
    int character_score() const;
    /// The stroke with the lowest score (the first of equals); -1 before any is accepted and for
    /// a character of one stroke.
    int weakest_stroke() const;
    int stroke_score(int index) const;
    int misses() const { return nMisses; }
    /// From the first press to the last accepted stroke.
    double seconds() const;

private:
    std::vector<int> scores;
    int nMisses = 0;
    std::int64_t startMs = -1;
    std::int64_t endMs = -1;
};

}  // namespace morvel::practice
