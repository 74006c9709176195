#pragma once
// A cubic Bézier curve: start p0, controls p1 and p2, end p3.

#include <glm/vec2.hpp>
#include <string>
#include <utility>

namespace ki::math {

struct CubicBezier {
    glm::vec2 p0{0.0f, 0.0f};
    glm::vec2 p1{0.0f, 0.0f};
    glm::vec2 p2{0.0f, 0.0f};
    glm::vec2 p3{0.0f, 0.0f};

    constexpr CubicBezier() = default;
    constexpr CubicBezier(glm::vec2 a, glm::vec2 c1, glm::vec2 c2, glm::vec2 b)
        : p0(a), p1(c1), p2(c2), p3(b) {}

    /// Chords the curve is cut into when measuring distances.
    static constexpr int DISTANCE_CHORDS = 48;

    glm::vec2 point_start() const { return p0; }
    glm::vec2 point_end() const { return p3; }
    /// The point at curve parameter t in [0, 1] (clamped).
    glm::vec2 point_at(float t) const;
    /// Arc length, integrated numerically (relative error well below 1e-4).
    float get_length() const;
    /// The point `length` along the curve, clamped to the ends.
    glm::vec2 point_at_length(float length) const;
    /// The part of the curve before parameter t, and the part after it.
    std::pair<CubicBezier, CubicBezier> split_at(float t) const;
    /// The first `length` of the curve as a curve of its own.
    CubicBezier split_at_length(float length) const;
    /// Distance to the curve flattened into DISTANCE_CHORDS chords.
    float distance_to_point(glm::vec2 p) const;

    std::string to_string() const;

    bool operator==(const CubicBezier&) const = default;
};

}  // namespace ki::math
