#pragma once
// The verdict on one traced stroke: a trace must start within rCircle of the centre line's
// start, never stray more than rCircle from the centre line at a sampled point, be at least
// MIN_TRACE_LENGTH long and end within rCircle of the centre line's end. Pure code over points
// in the character's frame; the canvas maps mouse positions and hands them on.

#include <ki/math/Path.h>

#include <glm/vec2.hpp>

#include "app/stroke/Anim.h"

namespace morvel {

class StrokeJudge {
public:
    /// Shorter traces are clicks: dropped without a fault.
    static constexpr float MIN_TRACE_LENGTH = 20.0f;
    /// Slack of the start and end circles, so a point on their rim counts as inside.
    static constexpr float CIRCLE_TOLERANCE = 1e-05f;

    enum class Verdict { IGNORED, CLICK, ACCEPTED, REJECTED };

    /// Starts an attempt at `point`; with `needStart`, a start outside the start circle spoils it.
    void press(glm::vec2 point, const AnimStroke& stroke, int rCircle, bool needStart = true);
    /// Extends the trace; a point farther than rCircle from the centre line is a fault.
    void move(glm::vec2 point, const AnimStroke& stroke, int rCircle);
    /// Ends the attempt. ACCEPTED only for a clean trace ending in the end circle. The trace
    /// stays for display unless it was a click. A release without a press is IGNORED.
    Verdict release(glm::vec2 point, const AnimStroke& stroke, int rCircle);

    /// Forgets the trace and the attempt.
    void clear();

    const ki::math::Path& get_path() const { return pathMouse; }
    int get_errors() const { return nErrors; }
    bool is_attempt_open() const { return attemptOpen; }

private:
    ki::math::Path pathMouse;
    int nErrors = 0;
    bool attemptOpen = false;
};

}  // namespace morvel
