#include <gtest/gtest.h>
#include <ki/math/Circle.h>
#include <ki/math/Path.h>
#include <ki/math/Rect.h>

#include <QElapsedTimer>
#include <cmath>
#include <numbers>

using namespace ki::math;

namespace {

constexpr float PI = std::numbers::pi_v<float>;

// Straight cubic with zero speed at both ends: (0,0) to (30,40), length 50.
const CubicBezier STRAIGHT_CUBIC({0, 0}, {0, 0}, {30, 40}, {30, 40});
// The parabola y = x^2 for x in [0, 2].
const QuadraticBezier PARABOLA({0, 0}, {1, 0}, {2, 4});
// y = x^2 / 100 for x in [0, 200]; T_MID lies halfway between two of its 32 chord ends.
const QuadraticBezier WIDE_PARABOLA({0, 0}, {100, 0}, {200, 400});
constexpr float T_MID = 0.5f + 1.0f / 64;
const glm::vec2 WIDE_NORMAL = glm::vec2(4 * T_MID, -1) / std::sqrt(1 + 16 * T_MID * T_MID);
// The upper half circle of radius 10 around (10,0), and a cubic arch from (0,0) to (20,0).
const EllipticArc HALF_CIRCLE({0, 0}, {10, 10}, 0, false, true, {20, 0});
const CubicBezier ARCH({0, 0}, {0, -20}, {20, -20}, {20, 0});
// Radii too small for the chord are scaled up uniformly: (1,2) becomes (10,20) over (0,0)-(20,0).
const EllipticArc SCALED_ARC({0, 0}, {1, 2}, 0, false, true, {20, 0});
// Major axis turned upright: the half ellipse from (0,0) to (0,40) bulges by the minor radius.
const EllipticArc UPRIGHT_ARC({0, 0}, {20, 10}, 90, false, true, {0, 40});
// Arc length of y = x^2 from 0 to x.
double parabola_length(double x) {
    return x / 2 * std::sqrt(1 + 4 * x * x) + std::asinh(2 * x) / 4;
}
// Half the perimeter of an ellipse with semi-axes 20 and 10 (Ramanujan's second formula).
double half_ellipse_length() {
    const double a = 20, b = 10, h = (a - b) * (a - b) / ((a + b) * (a + b));
    return std::numbers::pi * (a + b) * (1 + 3 * h / (10 + std::sqrt(4 - 3 * h))) / 2;
}

void expect_near_point(glm::vec2 got, glm::vec2 want, float tolerance) {
    EXPECT_NEAR(got.x, want.x, tolerance);
    EXPECT_NEAR(got.y, want.y, tolerance);
}

}  // namespace

// Bézier lengths, turning points included, are checked against the integral of their speed in
// test_fast_paths; here the arcs, the degenerate cases and the elements' dispatch.
TEST(Math, CurveLengthsMatchClosedForms) {
    struct Row {
        const char* name;
        Element element;
        double length;
    } rows[] = {
        {"quarter circle arc", EllipticArc({50, 0}, {50, 50}, 0, false, true, {0, 50}), 25 * PI},
        {"small arc over one radius", EllipticArc({0, 0}, {10, 10}, 0, false, true, {10, 0}), 10 * PI / 3},
        {"large arc over one radius", EllipticArc({0, 0}, {10, 10}, 0, true, true, {10, 0}), 50 * PI / 3},
        {"zero radius arc is a line", EllipticArc({0, 0}, {0, 10}, 0, true, true, {30, 40}), 50},
        {"equal ends draw nothing", EllipticArc({3, 3}, {5, 5}, 0, false, true, {3, 3}), 0},
        {"scaled radii keep their ratio", SCALED_ARC, half_ellipse_length()},
        {"rotated ellipse", UPRIGHT_ARC, half_ellipse_length()},
        {"segment", Segment({1, 1}, {4, 5}), 5},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_NEAR(element_length(row.element), row.length, row.length * 1e-4);
    }
}

TEST(Math, PointAndSplitAtLength) {
    struct Row {
        const char* name;
        Element element;
        float length;
        glm::vec2 point;
    } rows[] = {
        {"segment inside", Segment({0, 0}, {10, 0}), 3, {3, 0}},
        {"segment beyond its end clamps", Segment({0, 0}, {10, 0}), 12, {10, 0}},
        {"negative length clamps to start", Segment({2, 2}, {10, 2}), -1, {2, 2}},
        {"parabola to x = 1", PARABOLA, float(parabola_length(1)), {1, 1}},
        {"straight cubic at 10", STRAIGHT_CUBIC, 10, {6, 8}},
        {"straight cubic at 45", STRAIGHT_CUBIC, 45, {27, 36}},
        {"half circle at a quarter",
         HALF_CIRCLE,
         2.5f * PI,
         {10 - 10 * std::sqrt(0.5f), -10 * std::sqrt(0.5f)}},
        {"zero radius arc", EllipticArc({0, 0}, {0, 0}, 0, false, false, {0, 8}), 2, {0, 2}},
        // With y down, sweep 1 turns clockwise on screen: from the left end over the top.
        {"sweep 0 passes below", EllipticArc({0, 0}, {10, 10}, 0, false, false, {20, 0}), 5 * PI, {10, 10}},
        {"scaled arc at its middle", SCALED_ARC, SCALED_ARC.get_length() / 2, {10, -20}},
        {"rotated ellipse at its middle", UPRIGHT_ARC, UPRIGHT_ARC.get_length() / 2, {10, 20}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        expect_near_point(element_point_at_length(row.element, row.length), row.point, 2e-3f);
        const Element part = element_split_at_length(row.element, row.length);
        EXPECT_EQ(part.index(), row.element.index()) << "split keeps the element kind";
        expect_near_point(element_start(part), element_start(row.element), 1e-5f);
        expect_near_point(element_end(part), row.point, 2e-3f);
        const float whole = element_length(row.element);
        EXPECT_NEAR(element_length(part), std::clamp(row.length, 0.0f, whole), whole * 1e-4f);
    }
}

TEST(Math, DistanceToEachElementKind) {
    struct Row {
        const char* name;
        Element element;
        glm::vec2 point;
        float distance;
        float tolerance;
    } rows[] = {
        {"segment past its end", Segment({0, 0}, {10, 0}), {13, 4}, 5, 1e-5f},
        {"zero-length segment", Segment({2, 2}, {2, 2}), {5, 6}, 5, 1e-5f},
        // 3 off the curve between two chord ends; a chord of a quadratic is parallel to the
        // tangent at its middle and sags there by B'' dt^2 / 8 with dt = 1 / 32.
        {"wide parabola between chord ends", WIDE_PARABOLA,
         WIDE_PARABOLA.point_at(T_MID) + 3.0f * WIDE_NORMAL, 3 + 800.f / (8 * 32 * 32) * -WIDE_NORMAL.y,
         1e-3f},
        {"straight cubic beside its middle", STRAIGHT_CUBIC, {23, 14}, 10, 1e-4f},
        {"arch cubic above its top", ARCH, {10, -25}, 10, 1e-4f},
        // The 48 chords of a half circle lie r cos(pi / 96) from its centre.
        {"half circle from its centre", HALF_CIRCLE, {10, 0}, 10 * std::cos(PI / 96), 1e-4f},
        {"zero radius arc as a line", EllipticArc({0, 0}, {0, 5}, 0, false, true, {10, 0}), {5, 5}, 5, 1e-5f},
        // Next to the end point only the last chord of the flattening is near.
        {"wide parabola next to its end", WIDE_PARABOLA,
         glm::vec2(200, 400) + 3.0f * glm::vec2(-800, 200) / std::sqrt(800.f * 800 + 200 * 200), 3, 0.1f},
        {"arch cubic next to its end", ARCH, {23, -0.5f}, 3, 0.02f},
        {"half circle next to its end", HALF_CIRCLE, {23, 0}, 3, 1e-4f},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_NEAR(element_distance_to_point(row.element, row.point), row.distance, row.tolerance);
    }
    const Path twoContours = Path::from_svg_path_data("M100 100 L200 100 M0 0 A10 10 0 0 1 20 0").value;
    EXPECT_NEAR(twoContours.distance_to_point({10, -30}), 20, 1e-4f) << "nearest over every contour";
    EXPECT_NEAR(twoContours.distance_to_point({150, 103}), 3, 1e-4f);
    EXPECT_EQ(Path().distance_to_point({0, 0}), 3.4028235e+38f) << "empty path is infinitely far";
}

TEST(Math, PathPrefixSpansContours) {
    // 10 + 10 in the first contour, 10 in the second
    const Path path = Path::from_svg_path_data("M 0 0 L 10 0 L 10 10 M 20 0 L 30 0").value;
    ASSERT_FLOAT_EQ(path.get_length(), 30);
    struct Row {
        const char* name;
        float length;
        size_t contours;
        glm::vec2 end;
    } rows[] = {
        {"inside the first element", 5, 1, {5, 0}},
        {"into the second element", 15, 1, {10, 5}},
        {"exactly the first contour", 20, 1, {10, 10}},
        {"into the second contour", 25, 2, {25, 0}},
        {"beyond the end", 40, 2, {30, 0}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Path prefix = path.prefix_to_length(row.length);
        EXPECT_EQ(prefix.contour_count(), row.contours);
        EXPECT_FLOAT_EQ(prefix.get_length(), std::min(row.length, 30.f));
        expect_near_point(prefix.point_end(), row.end, 1e-5f);
        expect_near_point(path.point_at_length(row.length), row.end, 1e-5f);
    }
    EXPECT_TRUE(path.prefix_to_length(0).is_empty());
    // A rounding step past a whole contour once added a sliver of the next one.
    EXPECT_EQ(path.prefix_to_length(std::nextafter(20.f, 30.f)).contour_count(), 1u);
}

TEST(Math, FitRectCentresWithoutDistortion) {
    struct Row {
        const char* name;
        Rect from;
        Rect to;
        glm::vec2 point;
        glm::vec2 mapped;
    } rows[] = {
        {"square into wide: top left", Rect(0, 0, 1024, 1024), Rect(0, 0, 400, 200), {0, 0}, {100, 0}},
        {"square into tall: centre", Rect(0, 0, 1024, 1024), Rect(0, 0, 200, 400), {512, 512}, {100, 200}},
        {"offset source and target", Rect(-50, 100, 100, 50), Rect(10, 20, 100, 400), {-50, 100}, {10, 195}},
        {"source without area maps unchanged", Rect(0, 0, 0, 0), Rect(0, 0, 400, 200), {7, 9}, {7, 9}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const glm::mat3 m = matrix_fit_rect(row.from, row.to);
        expect_near_point(transform_point(m, row.point), row.mapped, 1e-3f);
        EXPECT_FLOAT_EQ(m[0][0], m[1][1]) << "same scale on both axes";
    }
}

TEST(Math, CircleContainsWithTolerance) {
    const Circle small{{10, 10}, 5};
    EXPECT_TRUE(small.contains({13, 14}, 0)) << "on the rim";
    EXPECT_TRUE(small.contains({10, 15.5f}, 1)) << "outside by less than the tolerance";
    EXPECT_FALSE(small.contains({10, 15.5f}, 1e-5f));
    // Rim points in float lie up to half a float step off the rim; inside still, at every angle.
    for (const Circle circle :
         {Circle{{256, 256}, 256}, Circle{{1024, 768}, 1024}, Circle{{700, 300}, 512}}) {
        SCOPED_TRACE(circle.to_string());
        int failures = 0;
        for (int step = 0; step < 3600; ++step) {
            const double angle = step * std::numbers::pi / 1800;
            const auto at = [&](double r) {
                return glm::vec2(float(circle.center.x + r * std::cos(angle)),
                                 float(circle.center.y + r * std::sin(angle)));
            };
            failures += !circle.contains(at(circle.radius), 0) + circle.contains(at(circle.radius + 0.01), 0);
        }
        EXPECT_EQ(failures, 0);
    }
}

// Regression: a NaN coordinate (a mouse point mapped through a singular matrix) made the
// length integration of a curve subdivide without end.
TEST(Math, NanCurveIsMeasuredWithoutHanging) {
    QElapsedTimer timer;
    timer.start();
    Path path;
    path.move_to({0, 0});
    path.cubic_to({std::nanf(""), 0}, {1, 1}, {2, 2});
    path.line_to({12, 2});
    EXPECT_LT(timer.elapsed(), 1000) << "took seconds before the fix";
    EXPECT_TRUE(std::isnan(path.get_length()));
    EXPECT_NEAR(path.distance_to_point({7, 5}), 3, 1e-5f) << "the sound segment is still found";
}
