#include <ki/math/QuadraticBezier.h>
#include <ki/math/Segment.h>
#include <ki/str/xprintF.h>

#include <algorithm>
#include <cfloat>
#include <glm/geometric.hpp>

#include "curve_measure.h"

namespace ki::math {

namespace {

glm::vec2 lerp(glm::vec2 a, glm::vec2 b, float t) {
    return a + t * (b - a);
}

// The speed |B'(t)| in double: B'(t) = 2 (1 - t) (p1 - p0) + 2 t (p2 - p1).
auto speed_of(const QuadraticBezier& q) {
    const double ax = 2.0 * (double(q.p1.x) - q.p0.x), ay = 2.0 * (double(q.p1.y) - q.p0.y);
    const double bx = 2.0 * (double(q.p2.x) - q.p1.x), by = 2.0 * (double(q.p2.y) - q.p1.y);
    return [=](double t) {
        const double x = (1.0 - t) * ax + t * bx;
        const double y = (1.0 - t) * ay + t * by;
        return std::sqrt(x * x + y * y);
    };
}

}  // namespace

glm::vec2 QuadraticBezier::point_at(float t) const {
    t = std::clamp(t, 0.0f, 1.0f);
    const float u = 1.0f - t;
    return u * u * p0 + 2.0f * u * t * p1 + t * t * p2;
}

float QuadraticBezier::get_length() const {
    return float(detail::integrate_speed(speed_of(*this), 0.0, 1.0));
}

glm::vec2 QuadraticBezier::point_at_length(float length) const {
    if (!(length > 0.0f)) return p0;
    const auto speed = speed_of(*this);
    const double total = detail::integrate_speed(speed, 0.0, 1.0);
    if (length >= total) return p2;
    return point_at(float(detail::parameter_at_length(speed, total, length)));
}

std::pair<QuadraticBezier, QuadraticBezier> QuadraticBezier::split_at(float t) const {
    t = std::clamp(t, 0.0f, 1.0f);
    const glm::vec2 a = lerp(p0, p1, t);
    const glm::vec2 b = lerp(p1, p2, t);
    const glm::vec2 m = lerp(a, b, t);
    return {{p0, a, m}, {m, b, p2}};
}

QuadraticBezier QuadraticBezier::split_at_length(float length) const {
    if (!(length > 0.0f)) return {p0, p0, p0};
    const auto speed = speed_of(*this);
    const double total = detail::integrate_speed(speed, 0.0, 1.0);
    if (length >= total) return *this;
    return split_at(float(detail::parameter_at_length(speed, total, length))).first;
}

float QuadraticBezier::distance_to_point(glm::vec2 p) const {
    float best = FLT_MAX;
    glm::vec2 a = p0;
    for (int i = 1; i <= DISTANCE_CHORDS; ++i) {
        const glm::vec2 b = point_at(float(i) / DISTANCE_CHORDS);
        best = std::min(best, distance_point_to_segment(p, a, b));
        a = b;
    }
    return best;
}

std::string QuadraticBezier::to_string() const {
    return str::xprintF(0, "QuadraticBezier {$} {$} {$}", p0, p1, p2);
}

}  // namespace ki::math
