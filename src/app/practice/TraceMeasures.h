#pragma once
// How a trace compares with the centre line of its stroke: distance, placement, smoothness and
// shape. Pure functions over points in character units; both lines are resampled by arc length
// to the same number of points, so the number and spacing of mouse samples never matter.
// Distances are shares of the character box's larger side.

#include <ki/math/Path.h>
#include <ki/math/Rect.h>

#include <glm/vec2.hpp>
#include <span>
#include <vector>

namespace morvel::practice {

/// A place where the centre line changes direction sharply.
struct Bend {
    /// Where along the line, as a share of its length (0 .. 1).
    float at = 0.0f;
    /// Signed turn in radians (positive: clockwise on screen, y down).
    float angle = 0.0f;
    /// A bend in the last part of the line: a hook.
    bool hook = false;
    /// The point of the resampled line where it turns most, and its index there.
    glm::vec2 point{0.0f, 0.0f};
    int index = 0;
};

struct TraceMeasures {
    /// Discrete Fréchet distance between trace and centre line, share of the box.
    float frechet = 0.0f;
    /// Trace centroid minus centre-line centroid, in character units.
    glm::vec2 offset{0.0f, 0.0f};
    /// |offset| as a share of the box.
    float offsetShare = 0.0f;
    /// Trace extent over the centre line's (diagonals of the bounding boxes, with a floor so a
    /// dot has a size).
    float extentRatio = 1.0f;
    /// Trace length over centre-line length.
    float lengthRatio = 1.0f;
    /// Total absolute turning of the trace minus the centre line's, in radians.
    float turningExcess = 0.0f;
    /// Over the centre line's bends, the smallest share of the bend's turn that the trace makes
    /// the same way near the same place; 1 without bends.
    float bendKept = 1.0f;
    /// The bend behind bendKept; -1 without bends.
    int weakestBend = -1;
    std::vector<Bend> bends;
    /// The trace's centroid and where along the trace it turns most: for markers.
    glm::vec2 centroid{0.0f, 0.0f};
    glm::vec2 sharpestTurn{0.0f, 0.0f};

    /// The missed bend is a hook (else a turn); false without bends.
    bool weakest_is_hook() const { return weakestBend >= 0 && bends[static_cast<size_t>(weakestBend)].hook; }
};

namespace measures {

/// Points per resampled line.
inline constexpr int RESAMPLE_COUNT = 32;
/// A bend turns at least this much (radians) within BEND_WINDOW points of the resampled line.
inline constexpr float BEND_MIN_ANGLE = 1.05f;
inline constexpr int BEND_WINDOW = 2;
/// The trace may make a bend this many resampled points before or after the point matched
/// with the centre line's bend.
inline constexpr int BEND_SEARCH = 3;
/// Bends past this share of the length are hooks.
inline constexpr float HOOK_FROM = 0.72f;
/// Both arms of a turn, and the arm of a hook, are at least this share of the box: a shorter
/// one is the serif of a brush stroke's start or end, which nobody traces.
inline constexpr float MIN_TURN_ARM = 0.1f;
inline constexpr float MIN_HOOK_ARM = 0.06f;
/// The floor of an extent, in character units: dots are about this big.
inline constexpr float EXTENT_FLOOR = 60.0f;
/// Turning is measured over points at least this share of the box apart, so that the pixel
/// steps of a short trace do not count as turns.
inline constexpr float TURNING_STEP = 0.015f;

/// `count` points spaced evenly by arc length from the first point to the last; a line without
/// length repeats its first point. Empty for empty input or a count below 2.
std::vector<glm::vec2> resample(std::span<const glm::vec2> points, int count = RESAMPLE_COUNT);
std::vector<glm::vec2> resample(const ki::math::Path& path, int count = RESAMPLE_COUNT);

float polyline_length(std::span<const glm::vec2> points);
/// Discrete Fréchet distance; 0 when either side is empty.
float frechet(std::span<const glm::vec2> a, std::span<const glm::vec2> b);
glm::vec2 centroid(std::span<const glm::vec2> points);
/// Diagonal of the bounding box, at least EXTENT_FLOOR.
float extent(std::span<const glm::vec2> points);
/// Signed turn at every inner point (size - 2 values), radians.
std::vector<float> turns(std::span<const glm::vec2> points);
/// Sum of absolute turns of `points` resampled at most RESAMPLE_COUNT points no closer than
/// TURNING_STEP of `side`, after a light smoothing that removes the jitter of single samples.
float total_turning(std::span<const glm::vec2> points, float side);
/// The bends of a resampled centre line in a box of side `side`.
std::vector<Bend> bends(std::span<const glm::vec2> centre, float side);
/// For every point of `b`, the index of the point of `a` that dynamic time warping pairs it
/// with (the last of several); empty when either side is empty.
std::vector<int> matching(std::span<const glm::vec2> a, std::span<const glm::vec2> b);
/// The share of `bend` (0 .. 1) that a resampled trace turns the same way within BEND_SEARCH
/// points of its point `near`.
float bend_kept(std::span<const glm::vec2> trace, const Bend& bend, int near);
/// The share of hook `bend` of a resampled centre line (0 .. 1) that a resampled trace keeps:
/// how close the direction of the trace's last part, about as long as the hook, comes to the
/// hook's direction, against the turn of the hook.
float hook_kept(std::span<const glm::vec2> trace, std::span<const glm::vec2> centre, const Bend& bend);

/// Every measure of `samples` against `centre` within `box`.
TraceMeasures measure(const ki::math::Path& centre, std::span<const glm::vec2> samples,
                      const ki::math::Rect& box);

}  // namespace measures

}  // namespace morvel::practice
