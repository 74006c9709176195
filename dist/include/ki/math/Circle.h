#pragma once
// A circle as a value: the acceptance zone around a stroke's start and end point.

#include <glm/vec2.hpp>
#include <string>

namespace ki::math {

struct Circle {
    glm::vec2 center{0.0f, 0.0f};
    float radius = 0.0f;

    /// True when `point` lies inside or on the circle, allowing `tolerance` beyond the radius.
    /// A point on the rim counts as inside at every angle, although float coordinates put it
    /// a rounding step off the rim.
    bool contains(glm::vec2 point, float tolerance) const;

    /// "center:$, radius:$"
    std::string to_string() const;

    bool operator==(const Circle&) const = default;
};

}  // namespace ki::math
