#pragma once
// Why a trace was not accepted, with what a marker on the canvas needs to show it: the points
// are in character units, the stroke indices count from 0.

#include <QString>
#include <glm/vec2.hpp>

namespace morvel::practice {

enum class Reason {
    NONE,          ///< accepted, a click, or nothing to judge
    WRONG_STROKE,  ///< the trace fits a later stroke
    BACKWARDS,     ///< drawn from the end towards the start
    START,         ///< pressed outside the start circle
    STRAYED,       ///< a sample left the corridor around the centre line
    END,           ///< released outside the end circle
    TOO_SHORT,     ///< strict judging: shorter than most of the centre line
    MISSED_PART,   ///< strict judging: part of the centre line not covered
    NOT_SMOOTH,    ///< strict judging: a zigzag or scribble, turning far more than the stroke
    OFF_PLACE,     ///< strict judging: the right shape away from the stroke's place
    HOOK_MISSING,  ///< strict judging: the stroke's hook was written straight
    TURN_MISSING,  ///< strict judging: a bend of the stroke was written straight
    TOO_LONG,      ///< strict judging: far larger than the stroke
};

/// The stable text key of a reason ("wrong_stroke", ...), as stored with the progress; empty
/// for NONE.
QString reason_key(Reason reason);
/// The reason of a stored key; NONE for an unknown or empty key.
Reason reason_from_key(const QString& key);

struct Rejection {
    Reason reason = Reason::NONE;
    /// The stroke that was to be traced.
    int indexStroke = -1;
    /// WRONG_STROKE: the later stroke the trace matches.
    int otherStroke = -1;
    /// The trace sample `point` is: 0 for START, the first sample outside for STRAYED, the
    /// release for END; -1 otherwise.
    int indexSample = -1;
    /// The press (START), first sample outside (STRAYED), release (END), the trace's centre
    /// (OFF_PLACE), where it turns most (NOT_SMOOTH).
    glm::vec2 point{0.0f, 0.0f};
    /// Where the trace should have been: the centre line's start (START), its end (END), the
    /// first centre-line point the trace did not cover (MISSED_PART), the centre line's centre
    /// (OFF_PLACE), the bend left out (HOOK_MISSING, TURN_MISSING).
    glm::vec2 expected{0.0f, 0.0f};

    bool is_rejected() const { return reason != Reason::NONE; }
    bool operator==(const Rejection&) const = default;
};

}  // namespace morvel::practice
