#pragma once
// Traces as learners make them, careful or wrong in one known way, over any stroke: the data
// the thresholds of strict judging are chosen on, and the load of the judging benchmarks. A
// seed gives the same traces on every machine (no library distributions are used).

#include <cstdint>
#include <glm/vec2.hpp>
#include <vector>

#include "app/stroke/Anim.h"

namespace morvel::practice {

enum class TraceKind {
    CAREFUL,       ///< smooth wobble, a little offset, size and end-point error, varied speed
    ZIGZAG,        ///< back and forth across the stroke
    SCRIBBLE,      ///< loops along the stroke
    OFF_PLACE,     ///< a careful trace about a ninth of the box beside its place
    HOOK_MISSING,  ///< the hook written straight (strokes with a hook)
    TURN_MISSING,  ///< start to end in a straight line (strokes with a bend)
    REVERSED,      ///< from the end to the start
    HALF_LENGTH,   ///< stopped about half way
    TOO_LONG,      ///< about twice the stroke's size
};

inline constexpr TraceKind TRACE_KINDS[] = {
    TraceKind::CAREFUL,   TraceKind::ZIGZAG,       TraceKind::SCRIBBLE,
    TraceKind::OFF_PLACE, TraceKind::HOOK_MISSING, TraceKind::TURN_MISSING,
    TraceKind::REVERSED,  TraceKind::HALF_LENGTH,  TraceKind::TOO_LONG};

/// "careful", "zigzag", ...
const char* kind_name(TraceKind kind);

class TraceGenerator {
public:
    explicit TraceGenerator(std::uint64_t seed) : state(seed) {}

    /// Whether `kind` can be made of `stroke`: a missing hook needs a hook, a missing turn a
    /// bend that is no hook, in a box of side `side`.
    static bool applies(TraceKind kind, const AnimStroke& stroke, float side = 1024.0f);

    /// The samples of one trace (press, moves, release) of `stroke` in a box of side `side`;
    /// empty when the kind does not apply.
    std::vector<glm::vec2> trace(const AnimStroke& stroke, TraceKind kind, float side = 1024.0f);

private:
    /// Uniform in [lo, hi), from a splitmix64 sequence.
    float uniform(float lo, float hi);

    std::uint64_t state = 0;
};

}  // namespace morvel::practice
