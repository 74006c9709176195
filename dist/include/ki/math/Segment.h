#pragma once
// A straight line segment from p0 to p1; the simplest element of a Path.

#include <glm/vec2.hpp>
#include <string>

namespace ki::math {

struct Segment {
    glm::vec2 p0{0.0f, 0.0f};
    glm::vec2 p1{0.0f, 0.0f};

    constexpr Segment() = default;
    constexpr Segment(glm::vec2 a, glm::vec2 b) : p0(a), p1(b) {}

    glm::vec2 point_start() const { return p0; }
    glm::vec2 point_end() const { return p1; }
    float get_length() const;
    /// The point at parameter t in [0, 1] (clamped).
    glm::vec2 point_at(float t) const;
    /// The point `length` along the segment from p0, clamped to the ends.
    glm::vec2 point_at_length(float length) const;
    /// The first `length` of the segment (clamped to [0, get_length()]).
    Segment split_at_length(float length) const;
    /// Distance to the closest point of the segment; a zero-length segment measures to p0.
    float distance_to_point(glm::vec2 p) const;

    std::string to_string() const;

    bool operator==(const Segment&) const = default;
};

/// Distance from `p` to the segment a-b, the projection clamped to the segment.
float distance_point_to_segment(glm::vec2 p, glm::vec2 a, glm::vec2 b);

}  // namespace ki::math
