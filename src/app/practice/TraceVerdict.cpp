#include "app/practice/TraceVerdict.h"

#include <algorithm>
#include <cmath>

#include "app/practice/TraceClassifier.h"

namespace morvel::practice {

namespace {

/// 1 at `value` 0 falling to 0 at `zero`.
float falling(float value, float zero) {
    return 1.0f - std::clamp(value / zero, 0.0f, 1.0f);
}

/// A Fréchet distance of this share of the box scores nothing for closeness.
constexpr float FRECHET_ZERO = 0.16f;

}  // namespace

ki::math::Rect TraceVerdict::box_of(const Anim& anim) {
    return anim.viewBox.is_valid() ? anim.viewBox : ki::math::Rect{0.0f, 0.0f, 1024.0f, 1024.0f};
}

Rejection TraceVerdict::shape_rules(int indexStroke, const TraceMeasures& m) {
    Rejection r;
    r.indexStroke = indexStroke;
    if (m.turningExcess > MAX_TURNING_EXCESS) {
        r.reason = Reason::NOT_SMOOTH;
        r.point = m.sharpestTurn;
    } else if (m.extentRatio > MAX_EXTENT_RATIO) {
        r.reason = Reason::TOO_LONG;
    } else if (m.extentRatio < MIN_EXTENT_RATIO) {
        r.reason = Reason::TOO_SHORT;
    } else if (m.weakestBend >= 0 && m.bendKept < MIN_BEND_KEPT) {
        // Before placement: a corner cut short moves the trace's centre too, and the missing
        // corner is what the learner has to change.
        r.reason = m.weakest_is_hook() ? Reason::HOOK_MISSING : Reason::TURN_MISSING;
        r.expected = m.bends[static_cast<size_t>(m.weakestBend)].point;
    } else if (m.offsetShare > MAX_OFFSET) {
        r.reason = Reason::OFF_PLACE;
        r.point = m.centroid;
        r.expected = m.centroid - m.offset;
    }
    return r.reason == Reason::NONE ? Rejection{} : r;
}

int TraceVerdict::score(const TraceMeasures& m) {
    const float closeness = falling(m.frechet, FRECHET_ZERO);
    const float placement = falling(m.offsetShare, MAX_OFFSET);
    // Too small counts like too large by the same factor.
    const float size =
        falling(std::abs(std::log(std::max(m.extentRatio, 1e-3f))), std::log(MAX_EXTENT_RATIO));
    const float smoothness = falling(std::max(0.0f, m.turningExcess), MAX_TURNING_EXCESS);
    const float shape = std::clamp((m.bendKept - MIN_BEND_KEPT) / (1.0f - MIN_BEND_KEPT), 0.0f, 1.0f);
    const float total =
        0.3f * closeness + 0.25f * placement + 0.15f * size + 0.15f * smoothness + 0.15f * shape;
    return static_cast<int>(std::lround(100.0f * total));
}

Judgement TraceVerdict::judge(const Anim& anim, int indexStroke, std::span<const glm::vec2> samples,
                              int rCircle, bool strict, bool judgeAccepted, bool needStart) {
    Judgement j;
    if (indexStroke < 0 || indexStroke >= static_cast<int>(anim.strokes.size()) || samples.size() < 2)
        return j;
    j.measures =
        measures::measure(anim.strokes[static_cast<size_t>(indexStroke)].pathAnim, samples, box_of(anim));
    j.score = score(j.measures);
    if (!judgeAccepted) {
        j.rejection = TraceClassifier::classify(anim, indexStroke, samples, rCircle, needStart);
        return j;
    }
    if (strict) {
        j.rejection = TraceClassifier::judge_strict(anim, indexStroke, samples, rCircle);
        if (!j.rejection.is_rejected()) j.rejection = shape_rules(indexStroke, j.measures);
    }
    j.accepted = !j.rejection.is_rejected();
    return j;
}

}  // namespace morvel::practice
