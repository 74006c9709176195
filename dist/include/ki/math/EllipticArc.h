#pragma once
// An arc of an ellipse, built from the SVG endpoint form (start, radii, x-axis rotation,
// large-arc and sweep flags, end) and kept in centre form for measuring and drawing.
//
// The point at angle theta is center + R(rotation) * (rx * cos(theta), ry * sin(theta)), with
// R the rotation by `rotation` degrees; the arc runs from the start angle over the signed
// sweep angle (radians). In a y-down frame a positive sweep turns clockwise on screen, which
// is what the SVG sweep flag 1 means.

#include <glm/vec2.hpp>
#include <string>

namespace ki::math {

class EllipticArc {
public:
    /// Chords the arc is cut into when measuring distances.
    static constexpr int DISTANCE_CHORDS = 48;

    EllipticArc() = default;
    /// Converts the SVG endpoint parametrisation like SVG renderers do: negative radii count
    /// by their absolute value, radii too small to span start-end are scaled up uniformly, and
    /// a zero radius makes the arc a straight line. Equal start and end give an empty arc.
    EllipticArc(glm::vec2 start, glm::vec2 radii, float xAxisRotationDegrees, bool largeArc, bool sweep,
                glm::vec2 end);
    /// An arc given in centre form; angles in radians.
    static EllipticArc from_center(glm::vec2 center, glm::vec2 radii, float xAxisRotationDegrees,
                                   float startAngle, float sweepAngle);

    glm::vec2 point_start() const { return start; }
    glm::vec2 point_end() const { return end; }
    glm::vec2 get_center() const { return center; }
    /// The radii actually used, after scaling up.
    glm::vec2 get_radii() const { return radii; }
    float get_x_axis_rotation() const { return rotation; }
    float get_start_angle() const { return startAngle; }
    float get_sweep_angle() const { return sweepAngle; }
    bool is_large_arc() const { return largeArc; }
    bool is_sweep() const { return sweep; }
    /// A zero radius (or equal ends) degrades the arc to the straight line start-end.
    bool is_line() const { return line; }

    /// The point at parameter t in [0, 1] (clamped), linear in the angle.
    glm::vec2 point_at(float t) const;
    /// The point at ellipse angle theta (radians), see the header comment.
    glm::vec2 point_at_angle(float theta) const;
    /// Arc length, integrated numerically (relative error well below 1e-4).
    float get_length() const;
    /// The point `length` along the arc, clamped to the ends.
    glm::vec2 point_at_length(float length) const;
    /// The first `length` of the arc as an arc of its own.
    EllipticArc split_at_length(float length) const;
    /// Distance to the arc flattened into DISTANCE_CHORDS chords.
    float distance_to_point(glm::vec2 p) const;

    std::string to_string() const;

    bool operator==(const EllipticArc&) const = default;

private:
    float parameter_at_length(float length) const;
    EllipticArc first_part(float t) const;

    glm::vec2 start{0.0f, 0.0f};
    glm::vec2 end{0.0f, 0.0f};
    glm::vec2 center{0.0f, 0.0f};
    glm::vec2 radii{0.0f, 0.0f};
    float rotation = 0.0f;
    float startAngle = 0.0f;
    float sweepAngle = 0.0f;
    bool largeArc = false;
    bool sweep = false;
    bool line = true;
};

}  // namespace ki::math
