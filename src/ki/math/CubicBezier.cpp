#include <ki/math/CubicBezier.h>
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

// The speed |B'(t)| in double: B'(t) = 3 ((1-t)^2 (p1-p0) + 2 (1-t) t (p2-p1) + t^2 (p3-p2)).
auto speed_of(const CubicBezier& c) {
    const double ax = 3.0 * (double(c.p1.x) - c.p0.x), ay = 3.0 * (double(c.p1.y) - c.p0.y);
    const double bx = 3.0 * (double(c.p2.x) - c.p1.x), by = 3.0 * (double(c.p2.y) - c.p1.y);
    const double cx = 3.0 * (double(c.p3.x) - c.p2.x), cy = 3.0 * (double(c.p3.y) - c.p2.y);
    return [=](double t) {
        const double u = 1.0 - t;
        const double x = u * u * ax + 2.0 * u * t * bx + t * t * cx;
        const double y = u * u * ay + 2.0 * u * t * by + t * t * cy;
        return std::sqrt(x * x + y * y);
    };
}

}  // namespace

glm::vec2 CubicBezier::point_at(float t) const {
    t = std::clamp(t, 0.0f, 1.0f);
    const float u = 1.0f - t;
    return u * u * u * p0 + 3.0f * u * u * t * p1 + 3.0f * u * t * t * p2 + t * t * t * p3;
}

float CubicBezier::get_length() const {
    return float(detail::integrate_speed(speed_of(*this), 0.0, 1.0));
}

glm::vec2 CubicBezier::point_at_length(float length) const {
    if (!(length > 0.0f)) return p0;
    const auto speed = speed_of(*this);
    const double total = detail::integrate_speed(speed, 0.0, 1.0);
    if (length >= total) return p3;
    return point_at(float(detail::parameter_at_length(speed, total, length)));
}

std::pair<CubicBezier, CubicBezier> CubicBezier::split_at(float t) const {
    t = std::clamp(t, 0.0f, 1.0f);
    const glm::vec2 a = lerp(p0, p1, t);
    const glm::vec2 b = lerp(p1, p2, t);
    const glm::vec2 c = lerp(p2, p3, t);
    const glm::vec2 ab = lerp(a, b, t);
    const glm::vec2 bc = lerp(b, c, t);
    const glm::vec2 m = lerp(ab, bc, t);
    return {{p0, a, ab, m}, {m, bc, c, p3}};
}

CubicBezier CubicBezier::split_at_length(float length) const {
    if (!(length > 0.0f)) return {p0, p0, p0, p0};
    const auto speed = speed_of(*this);
    const double total = detail::integrate_speed(speed, 0.0, 1.0);
    if (length >= total) return *this;
    return split_at(float(detail::parameter_at_length(speed, total, length))).first;
}

float CubicBezier::distance_to_point(glm::vec2 p) const {
    float best = FLT_MAX;
    glm::vec2 a = p0;
    for (int i = 1; i <= DISTANCE_CHORDS; ++i) {
        const glm::vec2 b = point_at(float(i) / DISTANCE_CHORDS);
        best = std::min(best, distance_point_to_segment(p, a, b));
        a = b;
    }
    return best;
}

std::string CubicBezier::to_string() const {
    return str::xprintF(0, "CubicBezier {$} {$} {$} {$}", p0, p1, p2, p3);
}

}  // namespace ki::math
