#include <ki/log/GLog.h>
#include <ki/qt/GPC.h>

#include <QPainter>
#include <variant>

namespace ki::qt {

namespace {

// The length of `e` that `percent` asks for, or a negative value when nothing is to be drawn.
template <typename E>
float length_for_percent(const E& e, float percent) {
    if (!(percent > 0.0f)) return -1.0f;
    const float length = e.get_length();
    return percent >= 100.0f ? length : length * percent / 100.0f;
}

}  // namespace

void GPC::draw_geometry_percent(const math::Segment& s, const QPen& pen, const QBrush&, float percent) {
    const float length = length_for_percent(s, percent);
    if (length < 0.0f) return;
    // A line has no inside: the brush is deliberately not used.
    const glm::vec2 end = s.point_at_length(length);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawLine(QPointF(s.p0.x, s.p0.y), QPointF(end.x, end.y));
}

void GPC::draw_geometry_percent(const math::QuadraticBezier& q, const QPen& pen, const QBrush& brush,
                                float percent) {
    draw_bezier_quadratic(q, pen, brush, percent);
}

void GPC::draw_geometry_percent(const math::CubicBezier& c, const QPen& pen, const QBrush& brush,
                                float percent) {
    draw_bezier_cubic(c, pen, brush, percent);
}

void GPC::draw_geometry_percent(const math::EllipticArc& a, const QPen& pen, const QBrush& brush,
                                float percent) {
    draw_arc(a, pen, brush, percent);
}

void GPC::draw_geometry_percent(const math::Element& e, const QPen& pen, const QBrush& brush, float percent) {
    std::visit([&](const auto& element) { draw_geometry_percent(element, pen, brush, percent); }, e);
}

void GPC::draw_bezier_quadratic(const math::QuadraticBezier& q, const QPen& pen, const QBrush& brush,
                                float percent) {
    const float length = length_for_percent(q, percent);
    if (length < 0.0f) return;
    draw_element(percent >= 100.0f ? q : q.split_at_length(length), pen, brush);
}

void GPC::draw_bezier_cubic(const math::CubicBezier& c, const QPen& pen, const QBrush& brush, float percent) {
    const float length = length_for_percent(c, percent);
    if (length < 0.0f) return;
    draw_element(percent >= 100.0f ? c : c.split_at_length(length), pen, brush);
}

void GPC::draw_arc(const math::EllipticArc& a, const QPen& pen, const QBrush& brush, float percent) {
    const float length = length_for_percent(a, percent);
    if (length < 0.0f) return;
    draw_element(percent >= 100.0f ? a : a.split_at_length(length), pen, brush);
}

void GPC::draw_element(const math::Element& e, const QPen& pen, const QBrush& brush) {
    painter.setPen(pen);
    painter.setBrush(brush);
    painter.drawPath(element_to_painter_path(e));
}

void GPC::draw_path(unsigned int flags, const math::Path& path, const QPen& pen, const QBrush& brush,
                    float percent) {
    if (path.is_empty() || !(percent > 0.0f)) return;
    if (percent >= 100.0f) {
        draw_path(flags, path, pen, brush);
        return;
    }
    path.walk_prefix(percent / 100.0f * path.get_length(),
                     [&](const math::Contour& contour, size_t i, float part) {
                         const float length = contour.lengths[i];
                         draw_geometry_percent(contour.elements[i], pen, brush,
                                               part >= length ? 100.0f : part / length * 100.0f);
                     });
}

}  // namespace ki::qt
