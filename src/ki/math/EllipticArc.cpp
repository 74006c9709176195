#include <ki/math/EllipticArc.h>
#include <ki/math/Segment.h>
#include <ki/str/xprintF.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <glm/geometric.hpp>
#include <numbers>

#include "curve_measure.h"

namespace ki::math {

namespace {

// Signed angle from u to v.
double angle_between(double ux, double uy, double vx, double vy) {
    return std::atan2(ux * vy - uy * vx, ux * vx + uy * vy);
}

}  // namespace

EllipticArc::EllipticArc(glm::vec2 start_, glm::vec2 radii_, float xAxisRotationDegrees, bool largeArc_,
                         bool sweep_, glm::vec2 end_)
    : start(start_), end(end_), rotation(xAxisRotationDegrees), largeArc(largeArc_), sweep(sweep_) {
    center = 0.5f * (start + end);
    double rx = std::abs(double(radii_.x));
    double ry = std::abs(double(radii_.y));
    if (start == end || rx == 0.0 || ry == 0.0 || !std::isfinite(rx) || !std::isfinite(ry)) {
        line = true;
        return;
    }
    line = false;

    // Endpoint to centre conversion, done in double: the chord half-vector is rotated into the
    // ellipse's own frame, where the centre follows from the two radii.
    const double phi = double(rotation) * std::numbers::pi / 180.0;
    const double cosPhi = std::cos(phi);
    const double sinPhi = std::sin(phi);
    const double dx = 0.5 * (double(start.x) - end.x);
    const double dy = 0.5 * (double(start.y) - end.y);
    const double x1 = cosPhi * dx + sinPhi * dy;
    const double y1 = -sinPhi * dx + cosPhi * dy;

    // Radii too small to reach from start to end grow uniformly until they just do.
    const double lambda = (x1 * x1) / (rx * rx) + (y1 * y1) / (ry * ry);
    if (lambda > 1.0) {
        const double grow = std::sqrt(lambda);
        rx *= grow;
        ry *= grow;
    }

    const double rx2 = rx * rx, ry2 = ry * ry;
    const double denominator = rx2 * y1 * y1 + ry2 * x1 * x1;
    const double numerator = std::max(0.0, rx2 * ry2 - denominator);
    double coefficient = denominator > 0.0 ? std::sqrt(numerator / denominator) : 0.0;
    if (largeArc == sweep) coefficient = -coefficient;
    const double cx1 = coefficient * rx * y1 / ry;
    const double cy1 = -coefficient * ry * x1 / rx;

    center.x = float(cosPhi * cx1 - sinPhi * cy1 + 0.5 * (double(start.x) + end.x));
    center.y = float(sinPhi * cx1 + cosPhi * cy1 + 0.5 * (double(start.y) + end.y));
    radii = {float(rx), float(ry)};

    const double ux = (x1 - cx1) / rx, uy = (y1 - cy1) / ry;
    const double vx = (-x1 - cx1) / rx, vy = (-y1 - cy1) / ry;
    const double theta1 = angle_between(1.0, 0.0, ux, uy);
    double delta = angle_between(ux, uy, vx, vy);
    if (!sweep && delta > 0.0)
        delta -= 2.0 * std::numbers::pi;
    else if (sweep && delta < 0.0)
        delta += 2.0 * std::numbers::pi;
    startAngle = float(theta1);
    sweepAngle = float(delta);
}

EllipticArc EllipticArc::from_center(glm::vec2 center, glm::vec2 radii, float xAxisRotationDegrees,
                                     float startAngle, float sweepAngle) {
    EllipticArc arc;
    arc.center = center;
    arc.radii = glm::abs(radii);
    arc.rotation = xAxisRotationDegrees;
    arc.startAngle = startAngle;
    arc.sweepAngle = sweepAngle;
    arc.largeArc = std::abs(sweepAngle) > float(std::numbers::pi);
    arc.sweep = sweepAngle > 0.0f;
    arc.line = false;
    arc.start = arc.point_at_angle(startAngle);
    arc.end = arc.point_at_angle(startAngle + sweepAngle);
    if (arc.radii.x == 0.0f || arc.radii.y == 0.0f) arc.line = true;
    return arc;
}

glm::vec2 EllipticArc::point_at_angle(float theta) const {
    const double phi = double(rotation) * std::numbers::pi / 180.0;
    const double x = radii.x * std::cos(double(theta));
    const double y = radii.y * std::sin(double(theta));
    return {float(center.x + std::cos(phi) * x - std::sin(phi) * y),
            float(center.y + std::sin(phi) * x + std::cos(phi) * y)};
}

glm::vec2 EllipticArc::point_at(float t) const {
    t = std::clamp(t, 0.0f, 1.0f);
    if (line) return start + t * (end - start);
    if (t == 0.0f) return start;
    if (t == 1.0f) return end;
    return point_at_angle(startAngle + t * sweepAngle);
}

namespace {

// The speed over t in [0, 1], where the angle runs linearly over the sweep.
auto speed_of(glm::vec2 radii, float startAngle, float sweepAngle) {
    const double rx = radii.x, ry = radii.y, a0 = startAngle, da = sweepAngle;
    return [=](double t) {
        const double theta = a0 + t * da;
        const double x = rx * std::sin(theta);
        const double y = ry * std::cos(theta);
        return std::abs(da) * std::sqrt(x * x + y * y);
    };
}

}  // namespace

float EllipticArc::get_length() const {
    if (line) return glm::distance(start, end);
    return float(detail::integrate_speed(speed_of(radii, startAngle, sweepAngle), 0.0, 1.0));
}

float EllipticArc::parameter_at_length(float length) const {
    if (line) {
        const float total = glm::distance(start, end);
        return total > 0.0f ? std::clamp(length / total, 0.0f, 1.0f) : 0.0f;
    }
    const auto speed = speed_of(radii, startAngle, sweepAngle);
    return float(detail::parameter_at_length(speed, detail::integrate_speed(speed, 0.0, 1.0), length));
}

glm::vec2 EllipticArc::point_at_length(float length) const {
    return point_at(parameter_at_length(length));
}

EllipticArc EllipticArc::first_part(float t) const {
    if (t >= 1.0f) return *this;
    EllipticArc part = *this;
    part.end = point_at(t);
    if (!line) {
        part.sweepAngle = t * sweepAngle;
        part.largeArc = std::abs(part.sweepAngle) > float(std::numbers::pi);
    }
    return part;
}

EllipticArc EllipticArc::split_at_length(float length) const {
    if (!(length > 0.0f)) return first_part(0.0f);
    return first_part(parameter_at_length(length));
}

float EllipticArc::distance_to_point(glm::vec2 p) const {
    if (line) return distance_point_to_segment(p, start, end);
    float best = FLT_MAX;
    glm::vec2 a = start;
    for (int i = 1; i <= DISTANCE_CHORDS; ++i) {
        const glm::vec2 b = point_at(float(i) / DISTANCE_CHORDS);
        best = std::min(best, distance_point_to_segment(p, a, b));
        a = b;
    }
    return best;
}

std::string EllipticArc::to_string() const {
    if (line) return str::xprintF(0, "EllipticArc line {$} - {$}", start, end);
    return str::xprintF(0, "EllipticArc {$} - {$}, center:{$}, radii:{$}, rotation:$, start:$, sweep:$",
                        start, end, center, radii, rotation, startAngle, sweepAngle);
}

}  // namespace ki::math
