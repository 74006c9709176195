#include <ki/math/CubicBezier.h>
#include <ki/math/Segment.h>
#include <ki/str/xprintF.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <glm/geometric.hpp>
#include <utility>

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

// Appends to `out` the parameters in (0, 1) where one coordinate's derivative vanishes:
// B'(t) / 3 = (a - 2b + c) t^2 + 2 (b - a) t + a with a, b, c the control differences.
int add_roots_inside(double v0, double v1, double v2, double v3, double* out, int count) {
    const double a = v1 - v0, b = v2 - v1, c = v3 - v2;
    const double qa = a - 2.0 * b + c, qb = 2.0 * (b - a), qc = a;
    const auto add = [&](double t) {
        if (t > 0.0 && t < 1.0) out[count++] = t;
    };
    const double scale = std::abs(qa) + std::abs(qb) + std::abs(qc);
    if (!(scale > 0.0)) return count;
    if (std::abs(qa) <= 1e-12 * scale) {
        if (std::abs(qb) > 1e-12 * scale) add(-qc / qb);
        return count;
    }
    const double disc = qb * qb - 4.0 * qa * qc;
    if (disc < 0.0) return count;
    // The stable pair of formulas: no difference of nearly equal numbers.
    const double q = -0.5 * (qb + std::copysign(std::sqrt(disc), qb));
    add(q / qa);
    if (q != 0.0) add(qc / q);
    return count;
}

}  // namespace

glm::vec2 CubicBezier::point_at(float t) const {
    t = std::clamp(t, 0.0f, 1.0f);
    const float u = 1.0f - t;
    return u * u * u * p0 + 3.0f * u * u * t * p1 + 3.0f * u * t * t * p2 + t * t * t * p3;
}

float CubicBezier::get_length() const {
    // The speed can have a kink only where B'(t) = 0, which is a root of x'(t) and of y'(t).
    double breaks[4];
    int count = 0;
    count = add_roots_inside(p0.x, p1.x, p2.x, p3.x, breaks, count);
    count = add_roots_inside(p0.y, p1.y, p2.y, p3.y, breaks, count);
    for (int i = 1; i < count; ++i)
        for (int j = i; j > 0 && breaks[j] < breaks[j - 1]; --j) std::swap(breaks[j], breaks[j - 1]);
    return float(detail::integrate_speed_pieces(speed_of(*this), breaks, count));
}

glm::vec2 CubicBezier::point_at_length(float length) const {
    const float t = detail::parameter_for_length(speed_of(*this), length);
    return t <= 0.0f ? p0 : t >= 1.0f ? p3 : point_at(t);
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
    const float t = detail::parameter_for_length(speed_of(*this), length);
    if (t <= 0.0f) return {p0, p0, p0, p0};
    return t >= 1.0f ? *this : split_at(t).first;
}

float CubicBezier::distance_to_point(glm::vec2 p) const {
    return detail::chord_distance(*this, p, DISTANCE_CHORDS);
}

std::string CubicBezier::to_string() const {
    return str::xprintF(0, "CubicBezier {$} {$} {$} {$}", p0, p1, p2, p3);
}

}  // namespace ki::math
