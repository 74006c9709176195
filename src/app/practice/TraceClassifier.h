#pragma once
// Explains a trace in learn mode: why the judge rejected it, and the stricter rules of strict
// judging. Pure code over the stroke model and trace samples in character units, with the
// judge's own circles and corridor, so a classification never disagrees with a verdict.

#include <ki/math/Path.h>

#include <glm/vec2.hpp>
#include <span>
#include <vector>

#include "app/practice/Rejection.h"
#include "app/stroke/Anim.h"

namespace morvel::practice {

class TraceClassifier {
public:
    /// Strict judging: the trace must be at least this share of the centre line's length.
    static constexpr float MIN_SHARE_OF_LENGTH = 0.6f;
    /// Strict judging: the centre line is checked for cover at points this far apart.
    static constexpr float COVER_STEP = 20.0f;

    /// The samples of a trace as the judge saw them: the press, every move, then `release`.
    static std::vector<glm::vec2> samples_of(const ki::math::Path& trace, glm::vec2 release);

    /// Why the judge rejects `samples` (press, moves, release) as stroke `indexStroke` of
    /// `anim` at tolerance `rCircle`. The first that applies wins: the trace fits a later
    /// stroke, it runs backwards, the press misses the start circle, a move leaves the
    /// corridor, the release misses the end circle. NONE for an accepted trace, a click
    /// (shorter than the judge's minimum) and a stroke index out of range. Without
    /// `needStart` the press may lie anywhere.
    static Rejection classify(const Anim& anim, int indexStroke, std::span<const glm::vec2> samples,
                              int rCircle, bool needStart = true);

    /// The rules strict judging adds for a trace the judge accepted, checked in this order: a
    /// length of at least MIN_SHARE_OF_LENGTH of the centre line (else TOO_SHORT), the press
    /// nearer the centre line's start than its end and the release nearer its end, ties
    /// passing (else BACKWARDS), and every point of the centre line at COVER_STEP intervals,
    /// ends included, within `rCircle` of the trace (else MISSED_PART). NONE when all hold.
    static Rejection judge_strict(const Anim& anim, int indexStroke, std::span<const glm::vec2> samples,
                                  int rCircle);

    /// True when the judge accepts `samples` as `stroke`: press in the start circle, every move
    /// within `rCircle` of the centre line, release in the end circle. Length is not checked;
    /// without `needStart` neither is the press.
    static bool fits(const AnimStroke& stroke, std::span<const glm::vec2> samples, float rCircle,
                     bool needStart = true);
};

}  // namespace morvel::practice
