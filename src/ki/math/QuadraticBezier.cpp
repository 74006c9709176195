#include <ki/math/QuadraticBezier.h>
#include <ki/math/Segment.h>
#include <ki/str/xprintF.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
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

// The integral of sqrt(a t^2 + b t + c) over [0, 1], a > 0, in closed form. The logarithm is
// taken of 2 sqrt(a) sqrt(q) + u (u = 2 a t + b), which cancels where u < 0; there the identity
// (2 sqrt(a) sqrt(q) + u) (2 sqrt(a) sqrt(q) - u) = 4 a c - b^2 gives it without cancelling,
// and a speed that touches zero (4 a c - b^2 = 0) leaves no logarithmic term at all.
double quadratic_speed_integral(double a, double b, double c) {
    const double sa = std::sqrt(a);
    const double disc = std::max(4.0 * a * c - b * b, 0.0);
    // At t: the algebraic part of the antiderivative, and the argument of its logarithm.
    const auto at = [&](double t, double& logArgument) {
        const double root = std::sqrt(std::max((a * t + b) * t + c, 0.0));
        const double u = 2.0 * a * t + b;
        const double r = 2.0 * sa * root;
        logArgument = u >= 0.0 ? r + u : disc / (r - u);
        return u * root / (4.0 * a);
    };
    double log0 = 0.0;
    double log1 = 0.0;
    const double algebraic = at(1.0, log1) - at(0.0, log0);
    if (!(disc > 0.0)) return algebraic;
    // One logarithm of the ratio instead of two.
    return algebraic + disc / (8.0 * a * sa) * std::log(log1 / log0);
}

}  // namespace

glm::vec2 QuadraticBezier::point_at(float t) const {
    t = std::clamp(t, 0.0f, 1.0f);
    const float u = 1.0f - t;
    return u * u * p0 + 2.0f * u * t * p1 + t * t * p2;
}

float QuadraticBezier::get_length() const {
    // |B'(t)|^2 = a t^2 + b t + c with B'(t) = d + t e.
    const double dx = 2.0 * (double(p1.x) - p0.x), dy = 2.0 * (double(p1.y) - p0.y);
    const double ex = 2.0 * (double(p2.x) - 2.0 * p1.x + p0.x), ey = 2.0 * (double(p2.y) - 2.0 * p1.y + p0.y);
    const double a = ex * ex + ey * ey;
    const double b = 2.0 * (dx * ex + dy * ey);
    const double c = dx * dx + dy * dy;
    // A control point (almost) halfway between the ends: the speed hardly changes and the
    // closed form below would divide by almost nothing.
    if (!(a > 1e-12 * (a + std::abs(b) + c)) || !std::isfinite(a + b + c))
        return float(detail::integrate_speed(speed_of(*this), 0.0, 1.0));
    return float(quadratic_speed_integral(a, b, c));
}

glm::vec2 QuadraticBezier::point_at_length(float length) const {
    const float t = detail::parameter_for_length(speed_of(*this), length);
    return t <= 0.0f ? p0 : t >= 1.0f ? p2 : point_at(t);
}

std::pair<QuadraticBezier, QuadraticBezier> QuadraticBezier::split_at(float t) const {
    t = std::clamp(t, 0.0f, 1.0f);
    const glm::vec2 a = lerp(p0, p1, t);
    const glm::vec2 b = lerp(p1, p2, t);
    const glm::vec2 m = lerp(a, b, t);
    return {{p0, a, m}, {m, b, p2}};
}

QuadraticBezier QuadraticBezier::split_at_length(float length) const {
    const float t = detail::parameter_for_length(speed_of(*this), length);
    if (t <= 0.0f) return {p0, p0, p0};
    return t >= 1.0f ? *this : split_at(t).first;
}

float QuadraticBezier::distance_to_point(glm::vec2 p) const {
    return detail::chord_distance(*this, p, DISTANCE_CHORDS);
}

std::string QuadraticBezier::to_string() const {
    return str::xprintF(0, "QuadraticBezier {$} {$} {$}", p0, p1, p2);
}

}  // namespace ki::math
