#pragma once
// An axis-aligned rectangle in float coordinates: the view box of a drawing and the area
// handed to painting.

#include <glm/mat3x3.hpp>
#include <glm/vec2.hpp>
#include <string>

namespace ki::math {

struct Rect {
    float x = 0.0f;
    float y = 0.0f;
    float w = 0.0f;
    float h = 0.0f;

    constexpr Rect() = default;
    constexpr Rect(float x_, float y_, float w_, float h_) : x(x_), y(y_), w(w_), h(h_) {}

    constexpr float width() const { return w; }
    constexpr float height() const { return h; }
    constexpr float left() const { return x; }
    constexpr float top() const { return y; }
    constexpr float right() const { return x + w; }
    constexpr float bottom() const { return y + h; }
    constexpr glm::vec2 center() const { return {x + w * 0.5f, y + h * 0.5f}; }
    /// True when both sides are strictly positive.
    constexpr bool is_valid() const { return w > 0.0f && h > 0.0f; }
    /// Edges count as inside.
    constexpr bool contains(glm::vec2 p) const {
        return p.x >= x && p.x <= x + w && p.y >= y && p.y <= y + h;
    }

    /// "x:$, y:$, w:$, h:$"
    std::string to_string() const;

    constexpr bool operator==(const Rect&) const = default;
};

/// The uniform scale plus translation that fits `from` into `to`, centred, keeping the aspect
/// ratio: the scale is min(to.w / from.w, to.h / from.h) and the centre of `from` lands on the
/// centre of `to`. The matrix follows glm's column-major convention: m[2][0], m[2][1] hold the
/// translation and a point maps as m * vec3(p, 1). For a QTransform take
/// QTransform(m[0][0], m[0][1], m[0][2], m[1][0], m[1][1], m[1][2], m[2][0], m[2][1], m[2][2]).
/// A `from` without area (or a `to` with a negative side) gives the identity, logged.
glm::mat3 matrix_fit_rect(const Rect& from, const Rect& to);

/// Applies a 2D affine matrix in the convention above to a point.
glm::vec2 transform_point(const glm::mat3& m, glm::vec2 p);

}  // namespace ki::math
