#include "app/stroke/StrokeJudge.h"

#include <ki/log/GLog.h>
#include <ki/math/Circle.h>

namespace morvel {

void StrokeJudge::press(glm::vec2 point, const AnimStroke& stroke, int rCircle, bool needStart) {
    nErrors = 0;
    attemptOpen = true;
    ki::pp("ptMouseAnim:$", point);
    pathMouse.clear();
    pathMouse.move_to(point);
    const glm::vec2 ptStart = stroke.pathAnim.point_start();
    // "[0]" is part of the message text, whatever stroke is being traced. Asked first: the
    // stroke's text form is built even when the message is dropped.
    if (ki::log::is_level_active(ki::log::LOG_DEBUG))
        ki::pp("stroke[0]:{$}, ptStart:$", stroke.to_string(), ptStart);
    const ki::math::Circle circleStart{ptStart, static_cast<float>(rCircle)};
    if (needStart && !circleStart.contains(point, CIRCLE_TOLERANCE)) {
        ki::pp("NO");
        ++nErrors;
    }
}

void StrokeJudge::move(glm::vec2 point, const AnimStroke& stroke, int rCircle) {
    if (!attemptOpen) return;
    ki::pp("ptMouseAnim:$", point);
    pathMouse.line_to(point);
    const float dist = stroke.pathAnim.distance_to_point(point);
    if (dist > static_cast<float>(rCircle)) ++nErrors;
    ki::pp("dist:$", dist);
}

StrokeJudge::Verdict StrokeJudge::release(glm::vec2 point, const AnimStroke& stroke, int rCircle) {
    if (!attemptOpen) return Verdict::IGNORED;
    attemptOpen = false;
    if (!pathMouse.is_empty() && pathMouse.get_length() < MIN_TRACE_LENGTH) {
        pathMouse.clear();
        return Verdict::CLICK;
    }
    const ki::math::Circle circleEnd{stroke.pathAnim.point_end(), static_cast<float>(rCircle)};
    if (circleEnd.contains(point, CIRCLE_TOLERANCE) && nErrors == 0) return Verdict::ACCEPTED;
    ki::pp("NO");
    ++nErrors;
    return Verdict::REJECTED;
}

void StrokeJudge::clear() {
    pathMouse.clear();
    nErrors = 0;
    attemptOpen = false;
}

}  // namespace morvel
