#pragma once
// The one place where the measures of a trace turn into a verdict and a score: every threshold
// of strict judging's shape rules is named here. The lenient judge's verdict is never changed;
// strict judging adds its rules to a trace that judge accepted.

#include <glm/vec2.hpp>
#include <span>

#include "app/practice/Rejection.h"
#include "app/practice/TraceMeasures.h"
#include "app/stroke/Anim.h"

namespace morvel::practice {

struct Judgement {
    bool accepted = false;
    /// Why not accepted; NONE also when the lenient judge's rejection has no explanation.
    Rejection rejection;
    /// 0 .. 100, from the measures, whatever the verdict.
    int score = 0;
    TraceMeasures measures;
};

class TraceVerdict {
public:
    /// Radians a trace may turn beyond what its stroke turns.
    static constexpr float MAX_TURNING_EXCESS = 2.2f;
    /// How far the trace's centre may lie from the stroke's, share of the box (a ninth is 0.111).
    static constexpr float MAX_OFFSET = 0.07f;
    /// The trace's extent over the stroke's beyond which it is far too long, and below which
    /// it is too short.
    static constexpr float MAX_EXTENT_RATIO = 1.45f;
    static constexpr float MIN_EXTENT_RATIO = 0.7f;
    /// The share of a bend's turn a trace must make near the same place.
    static constexpr float MIN_BEND_KEPT = 0.66f;

    /// The box the measures are relative to: the viewBox, or the 1024-unit frame of the
    /// shipped stroke files when it is invalid.
    static ki::math::Rect box_of(const Anim& anim);

    /// The shape rules, checked in this order after the length, direction and coverage rules
    /// of TraceClassifier::judge_strict: smoothness (NOT_SMOOTH), size (TOO_LONG, TOO_SHORT), the
    /// bends (HOOK_MISSING or TURN_MISSING), then placement (OFF_PLACE). NONE when all hold.
    static Rejection shape_rules(int indexStroke, const TraceMeasures& m);

    /// 0 .. 100: closeness, placement, size, smoothness and bends, each scaled so that a
    /// trace at a strict threshold loses that part's whole weight.
    static int score(const TraceMeasures& m);

    /// The verdict on `samples` (press, moves, release) as stroke `indexStroke` of `anim`, when
    /// the lenient judge gave `judgeAccepted`: its rejection explained, or with `strict` the
    /// strict rules applied to an accepted trace. The score comes with it either way. An index
    /// out of range or a trace of fewer than two samples gives NONE and score 0. Without
    /// `needStart` a press outside the start circle is no reason.
    static Judgement judge(const Anim& anim, int indexStroke, std::span<const glm::vec2> samples, int rCircle,
                           bool strict, bool judgeAccepted, bool needStart = true);
};

}  // namespace morvel::practice
