#include <ki/log/GLog.h>
#include <ki/qt/GPC.h>

#include <QPainter>
#include <cmath>
#include <numbers>
#include <variant>

namespace ki::qt {

namespace {

QPointF to_qpoint(glm::vec2 p) {
    return {p.x, p.y};
}

// Cubic pieces of at most a quarter turn each: the usual k = 4/3 tan(delta/4) handles stay
// within a few 1e-4 of the radius, far below a pixel at any size the program draws.
void append_arc(QPainterPath& out, const math::EllipticArc& arc) {
    if (arc.is_line()) {
        out.lineTo(to_qpoint(arc.point_end()));
        return;
    }
    const float sweep = arc.get_sweep_angle();
    if (sweep == 0.0f) return;
    const glm::vec2 radii = arc.get_radii();
    const float phi = arc.get_x_axis_rotation() * std::numbers::pi_v<float> / 180.0f;
    const float cosPhi = std::cos(phi);
    const float sinPhi = std::sin(phi);
    auto derivative = [&](float theta) {
        const glm::vec2 d(-radii.x * std::sin(theta), radii.y * std::cos(theta));
        return glm::vec2(cosPhi * d.x - sinPhi * d.y, sinPhi * d.x + cosPhi * d.y);
    };
    const int pieces =
        std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / (std::numbers::pi_v<float> / 2.0f))));
    const float delta = sweep / static_cast<float>(pieces);
    const float k = 4.0f / 3.0f * std::tan(delta / 4.0f);
    float theta = arc.get_start_angle();
    for (int i = 0; i < pieces; ++i) {
        const float next = theta + delta;
        const glm::vec2 p0 = arc.point_at_angle(theta);
        // The last piece ends exactly on the arc's end point, not on a recomputed one.
        const glm::vec2 p3 = i + 1 == pieces ? arc.point_end() : arc.point_at_angle(next);
        const glm::vec2 c1 = p0 + k * derivative(theta);
        const glm::vec2 c2 = p3 - k * derivative(next);
        out.cubicTo(to_qpoint(c1), to_qpoint(c2), to_qpoint(p3));
        theta = next;
    }
}

void append_element(QPainterPath& out, const math::Element& element) {
    std::visit(
        [&out](const auto& e) {
            using E = std::decay_t<decltype(e)>;
            if constexpr (std::is_same_v<E, math::Segment>) {
                out.lineTo(to_qpoint(e.p1));
            } else if constexpr (std::is_same_v<E, math::QuadraticBezier>) {
                out.quadTo(to_qpoint(e.p1), to_qpoint(e.p2));
            } else if constexpr (std::is_same_v<E, math::CubicBezier>) {
                out.cubicTo(to_qpoint(e.p1), to_qpoint(e.p2), to_qpoint(e.p3));
            } else {
                append_arc(out, e);
            }
        },
        element);
}

QPainterPath to_painter_path(const math::Path& path, bool closeAll) {
    QPainterPath out;
    out.setFillRule(Qt::WindingFill);
    for (const math::Contour& contour : path.get_contours()) {
        out.moveTo(to_qpoint(contour.start));
        for (const math::Element& element : contour.elements) append_element(out, element);
        if (closeAll || contour.closed) out.closeSubpath();
    }
    return out;
}

}  // namespace

QPainterPath GPC::math_path_to_painter_path(const math::Path& path) {
    return to_painter_path(path, false);
}

QPainterPath GPC::element_to_painter_path(const math::Element& e) {
    QPainterPath out;
    out.moveTo(to_qpoint(math::element_start(e)));
    append_element(out, e);
    return out;
}

void GPC::draw_bezier_quadratic(const math::QuadraticBezier& q, const QPen& pen) {
    painter.strokePath(element_to_painter_path(q), pen);
}

void GPC::draw_bezier_quadratic(const math::QuadraticBezier& q, const QColor& color, float width,
                                Qt::PenStyle style, LINE_MODE mode) {
    draw_bezier_quadratic(q, make_pen(color, width, style, mode));
}

void GPC::draw_bezier_cubic(const math::CubicBezier& c, const QPen& pen) {
    painter.strokePath(element_to_painter_path(c), pen);
}

void GPC::draw_bezier_cubic(const math::CubicBezier& c, const QColor& color, float width, Qt::PenStyle style,
                            LINE_MODE mode) {
    draw_bezier_cubic(c, make_pen(color, width, style, mode));
}

void GPC::draw_arc(const math::EllipticArc& a, const QPen& pen) {
    painter.strokePath(element_to_painter_path(a), pen);
}

void GPC::draw_arc(const math::EllipticArc& a, const QColor& color, float width, Qt::PenStyle style,
                   LINE_MODE mode) {
    draw_arc(a, make_pen(color, width, style, mode));
}

void GPC::draw_path(const math::Path& path, const QColor& color, float width, Qt::PenStyle style,
                    LINE_MODE mode) {
    draw_path(PATH_PLAIN, path, make_pen(color, width, style, mode), QBrush(Qt::NoBrush));
}

void GPC::fill_path(const math::Path& path, const QColor& color) {
    painter.fillPath(math_path_to_painter_path(path), color);
}

void GPC::fill_path(const QPainterPath& path, const QColor& color) {
    painter.fillPath(path, color);
}

void GPC::stroke_path(const QPainterPath& path, const QPen& pen) {
    painter.strokePath(path, pen);
}

void GPC::clip_path(const math::Path& path) {
    clip_path(math_path_to_painter_path(path));
}

void GPC::clip_path(const QPainterPath& path) {
    // Nested clips narrow each other; the first one of a pass simply sets the clip.
    painter.setClipPath(path, painter.hasClipping() ? Qt::IntersectClip : Qt::ReplaceClip);
}

void GPC::draw_path(unsigned int flags, const math::Path& path, const QPen& pen, const QBrush& brush) {
    if (log::is_level_active(log::LOG_TRACE)) pp_trace("GPC::draw_path, path:$", path);
    if (path.is_empty()) return;
    const QPainterPath qpath = to_painter_path(path, (flags & PATH_CLOSE_CONTOURS) != 0);
    painter.setPen(pen);
    painter.setBrush(brush);
    painter.drawPath(qpath);
}

}  // namespace ki::qt
