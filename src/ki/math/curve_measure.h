#pragma once
// Arc length of parametric curves over t in [0, 1]: adaptive Gauss-Legendre quadrature of the
// speed |B'(t)|, and its inverse (the parameter at which a given length is reached).
// Shared by the curve elements of this folder only.

#include <ki/math/Segment.h>

#include <glm/vec2.hpp>

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace ki::math::detail {

/// Distance from `p` to a curve flattened into `chords` chords between its points at
/// t = i / chords; the Béziers' and the arc's distance share it.
template <typename Curve>
float chord_distance(const Curve& curve, glm::vec2 p, int chords) {
    float best = FLT_MAX;
    glm::vec2 a = curve.point_start();
    for (int i = 1; i <= chords; ++i) {
        const glm::vec2 b = curve.point_at(float(i) / float(chords));
        best = std::min(best, distance_point_to_segment(p, a, b));
        a = b;
    }
    return best;
}

template <typename Speed>
double gauss5(const Speed& speed, double a, double b) {
    static constexpr double X[5] = {0.0, -0.5384693101056831, 0.5384693101056831, -0.9061798459386640,
                                    0.9061798459386640};
    static constexpr double W[5] = {0.5688888888888889, 0.4786286704993665, 0.4786286704993665,
                                    0.2369268850561891, 0.2369268850561891};
    const double half = 0.5 * (b - a);
    const double mid = 0.5 * (a + b);
    double sum = 0.0;
    for (int i = 0; i < 5; ++i) sum += W[i] * speed(mid + half * X[i]);
    return sum * half;
}

template <typename Speed>
double integrate_adaptive(const Speed& speed, double a, double b, double whole, double tolerance, int depth) {
    const double m = 0.5 * (a + b);
    const double left = gauss5(speed, a, m);
    const double right = gauss5(speed, m, b);
    const double both = left + right;
    // Written so that a NaN (coordinates near the float limit) ends the recursion too.
    if (depth <= 0 || !(std::abs(both - whole) > tolerance)) return both;
    return integrate_adaptive(speed, a, m, left, 0.5 * tolerance, depth - 1) +
           integrate_adaptive(speed, m, b, right, 0.5 * tolerance, depth - 1);
}

/// The integral of `speed` over [a, b]. Starts from several pieces so that a cusp, where the
/// speed has a kink, cannot hide between the nodes of a single rule.
template <typename Speed>
double integrate_speed(const Speed& speed, double a, double b) {
    if (!(b > a)) return 0.0;
    constexpr int PIECES = 8;
    double pieces[PIECES];
    double rough = 0.0;
    const double step = (b - a) / PIECES;
    for (int i = 0; i < PIECES; ++i) {
        pieces[i] = gauss5(speed, a + i * step, a + (i + 1) * step);
        rough += pieces[i];
    }
    const double tolerance = std::max(std::abs(rough) * 1e-9, 1e-15) / PIECES;
    double sum = 0.0;
    for (int i = 0; i < PIECES; ++i)
        sum += integrate_adaptive(speed, a + i * step, a + (i + 1) * step, pieces[i], tolerance, 24);
    return sum;
}

/// The integral of `speed` over [0, 1] for a speed that may have a kink only at one of
/// `breaks` (sorted, inside (0, 1)): the quarters of [0, 1] cut further at the breaks, so no
/// kink lies inside a piece. Cheaper than integrate_speed for a smooth curve, and closer where
/// a kink would otherwise fall between its pieces' nodes.
template <typename Speed>
double integrate_speed_pieces(const Speed& speed, const double* breaks, int count) {
    constexpr int QUARTERS = 4;
    constexpr int MAX_BREAKS = 4;
    double edges[QUARTERS + MAX_BREAKS + 1];
    int pieces = 0;
    edges[0] = 0.0;
    int next = 0;
    for (int q = 1; q <= QUARTERS; ++q) {
        const double quarter = double(q) / QUARTERS;
        for (; next < count && next < MAX_BREAKS && breaks[next] < quarter; ++next)
            if (breaks[next] > edges[pieces]) edges[++pieces] = breaks[next];
        if (quarter > edges[pieces]) edges[++pieces] = quarter;
    }
    double whole[QUARTERS + MAX_BREAKS];
    double rough = 0.0;
    for (int i = 0; i < pieces; ++i) {
        whole[i] = gauss5(speed, edges[i], edges[i + 1]);
        rough += whole[i];
    }
    // The sum of two halves is far closer than the difference tested between it and the whole
    // (a 5-point rule errs with the 10th power of the width); the lengths are kept as float.
    const double tolerance = std::max(std::abs(rough) * 5e-8, 1e-15) / pieces;
    double sum = 0.0;
    for (int i = 0; i < pieces; ++i)
        sum += integrate_adaptive(speed, edges[i], edges[i + 1], whole[i], tolerance, 24);
    return sum;
}

/// The parameter t in [0, 1] at which the length from 0 reaches `length`; `total` is the
/// length over [0, 1]. Newton steps kept inside a shrinking bracket, bisection when a step
/// would leave it (the speed may vanish at a cusp).
template <typename Speed>
double parameter_at_length(const Speed& speed, double total, double length) {
    if (!(length > 0.0) || !(total > 0.0)) return 0.0;
    if (length >= total) return 1.0;
    double lo = 0.0;
    double hi = 1.0;
    double t = length / total;
    const double tolerance = total * 1e-8;
    for (int i = 0; i < 60; ++i) {
        const double f = integrate_speed(speed, 0.0, t) - length;
        if (std::abs(f) <= tolerance) break;
        if (f > 0.0)
            hi = t;
        else
            lo = t;
        const double d = speed(t);
        double next = d > 0.0 ? t - f / d : -1.0;
        if (!(next > lo && next < hi)) next = 0.5 * (lo + hi);
        t = next;
    }
    return t;
}

/// The parameter at which `length` along a curve is reached: 0 for a length of 0 or less, 1 at
/// or past the end (callers return their exact end points then).
template <typename Speed>
float parameter_for_length(const Speed& speed, float length) {
    if (!(length > 0.0f)) return 0.0f;
    const double total = integrate_speed(speed, 0.0, 1.0);
    if (length >= total) return 1.0f;
    return float(parameter_at_length(speed, total, length));
}

}  // namespace ki::math::detail
