#include "app/practice/PracticeMarkers.h"

#include <ki/qt/GPC.h>

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>

namespace morvel::practice {

namespace {

using ki::qt::GPC;

/// Extra width on each side of a marker line, in the background colour, so markers stand out
/// over outline, ink and traced strokes alike.
constexpr float HALO = 7.0f;
constexpr float ARROW_LENGTH = 80.0f;
constexpr float ARROW_HALF_WIDTH = 44.0f;

QPen round_pen(const QColor& color, float width, Qt::PenStyle style = Qt::SolidLine) {
    return QPen(QBrush(color), width, style, Qt::RoundCap, Qt::RoundJoin);
}

QColor opaque(QColor color) {
    color.setAlpha(255);
    return color;
}

const QColor& halo_color(const CanvasColors& colors) {
    return colors.colorBackground[0];
}

void haloed_path(GPC& gpc, const QPainterPath& path, const QColor& color, float width,
                 const CanvasColors& colors, Qt::PenStyle style = Qt::SolidLine) {
    gpc.stroke_path(path, round_pen(halo_color(colors), width + 2.0f * HALO));
    gpc.stroke_path(path, round_pen(color, width, style));
}

void haloed_line(GPC& gpc, glm::vec2 a, glm::vec2 b, const QColor& color, float width,
                 const CanvasColors& colors, Qt::PenStyle style = Qt::SolidLine) {
    QPainterPath path({a.x, a.y});
    path.lineTo(b.x, b.y);
    haloed_path(gpc, path, color, width, colors, style);
}

void haloed_ring(GPC& gpc, glm::vec2 c, float radius, const QColor& color, float width,
                 const CanvasColors& colors) {
    QPainterPath path;
    path.addEllipse(QPointF(c.x, c.y), radius, radius);
    haloed_path(gpc, path, color, width, colors);
}

/// A cross on `p`: the learner's own point that was off.
void cross(GPC& gpc, glm::vec2 p, const CanvasColors& colors) {
    const float d = PracticeMarkers::MARK_SIZE * 0.7071f;
    QPainterPath path({p.x - d, p.y - d});
    path.lineTo(p.x + d, p.y + d);
    path.moveTo(p.x + d, p.y - d);
    path.lineTo(p.x - d, p.y + d);
    haloed_path(gpc, path, opaque(colors.colorTraceBad), PracticeMarkers::MARK_WIDTH, colors);
}

/// The centre line with an arrow head at its end: the way the stroke runs.
void arrow(GPC& gpc, const ki::math::Path& centre, const CanvasColors& colors) {
    const float length = centre.get_length();
    if (length <= 0.0f) return;
    const QColor color = opaque(colors.colorTraceGood);
    const glm::vec2 tip = centre.point_end();
    const glm::vec2 before = centre.point_at_length(std::max(0.0f, length - ARROW_LENGTH));
    const glm::vec2 dir =
        glm::distance(tip, before) > 0.0f ? glm::normalize(tip - before) : glm::vec2(1.0f, 0.0f);
    const glm::vec2 normal(-dir.y, dir.x);
    const glm::vec2 base = tip - dir * ARROW_LENGTH;
    // The shaft stops inside the head, so its round cap does not poke through the tip.
    const ki::math::Path shaft = centre.prefix_to_length(std::max(0.0f, length - ARROW_LENGTH * 0.5f));
    const QPainterPath line = GPC::math_path_to_painter_path(shaft);
    QPainterPath head({tip.x, tip.y});
    const glm::vec2 left = base + normal * ARROW_HALF_WIDTH;
    const glm::vec2 right = base - normal * ARROW_HALF_WIDTH;
    head.lineTo(left.x, left.y);
    head.lineTo(right.x, right.y);
    head.closeSubpath();
    // Both halos first: the head's must not cut across the shaft.
    gpc.stroke_path(line, round_pen(halo_color(colors), PracticeMarkers::MARK_WIDTH + 2.0f * HALO));
    gpc.stroke_path(head, round_pen(halo_color(colors), 2.0f * HALO));
    gpc.stroke_path(line, round_pen(color, PracticeMarkers::MARK_WIDTH));
    gpc.fill_path(head, color);
}

/// A straight arrow from `from` to `to`: where the trace should move.
void straight_arrow(GPC& gpc, glm::vec2 from, glm::vec2 to, const CanvasColors& colors) {
    if (glm::distance(from, to) <= ARROW_LENGTH)
        from = to - (to == from ? glm::vec2(ARROW_LENGTH, 0.0f) : glm::normalize(to - from) * ARROW_LENGTH);
    ki::math::Path line;
    line.move_to(from);
    line.line_to(to);
    arrow(gpc, line, colors);
}

void faint_centre_line(GPC& gpc, const ki::math::Path& centre, const CanvasColors& colors) {
    QColor color = opaque(colors.colorHelperLines);
    color.setAlpha(150);
    gpc.stroke_path(GPC::math_path_to_painter_path(centre), round_pen(color, PracticeMarkers::MARK_WIDTH));
}

void number_disc(GPC& gpc, glm::vec2 c, int number, const QColor& color, const CanvasColors& colors) {
    const float r = PracticeMarkers::NUMBER_RADIUS;
    gpc.fill_circle(c, r + HALO, halo_color(colors));
    gpc.draw_circle(c, r, color, 8.0f, Qt::SolidLine, ki::qt::LINE_MODE_GEOMETRIC);
    QPainter& painter = gpc.get_painter();
    QFont font = painter.font();
    font.setPixelSize(static_cast<int>(r * 1.3f));
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(QRectF(c.x - r, c.y - r, 2.0f * r, 2.0f * r), Qt::AlignCenter, QString::number(number));
}

}  // namespace

void PracticeMarkers::paint_rejection(GPC& gpc, const Anim& anim, const Rejection& rejection,
                                      const CanvasColors& colors, int rCircle) {
    const int count = static_cast<int>(anim.strokes.size());
    if (!rejection.is_rejected() || rejection.indexStroke < 0 || rejection.indexStroke >= count) return;
    const ki::math::Path& centre = anim.strokes[static_cast<size_t>(rejection.indexStroke)].pathAnim;
    const float ring = static_cast<float>(rCircle / 4);
    gpc.save();
    gpc.set_anti_alias(true);
    switch (rejection.reason) {
        case Reason::NONE:
            break;
        case Reason::WRONG_STROKE: {
            if (rejection.otherStroke < 0 || rejection.otherStroke >= count) break;
            const AnimStroke& other = anim.strokes[static_cast<size_t>(rejection.otherStroke)];
            const QPainterPath outline = GPC::math_path_to_painter_path(other.pathOutline);
            QColor fill = opaque(colors.colorTraceBad);
            fill.setAlpha(110);
            gpc.fill_path(outline, fill);
            gpc.stroke_path(outline, round_pen(opaque(colors.colorTraceBad), 8.0f));
            number_disc(gpc, other.pathAnim.point_start(), rejection.otherStroke + 1,
                        opaque(colors.colorTraceBad), colors);
            number_disc(gpc, centre.point_start(), rejection.indexStroke + 1, colors.colorCircleStart,
                        colors);
            break;
        }
        case Reason::BACKWARDS:
        case Reason::TOO_SHORT:
        case Reason::TOO_LONG:
            arrow(gpc, centre, colors);
            break;
        case Reason::NOT_SMOOTH:
            faint_centre_line(gpc, centre, colors);
            cross(gpc, rejection.point, colors);
            break;
        case Reason::OFF_PLACE:
            faint_centre_line(gpc, centre, colors);
            straight_arrow(gpc, rejection.point, rejection.expected, colors);
            break;
        case Reason::HOOK_MISSING:
        case Reason::TURN_MISSING:
            faint_centre_line(gpc, centre, colors);
            haloed_ring(gpc, rejection.expected, ring, colors.colorCircleStart, MARK_WIDTH, colors);
            break;
        case Reason::START:
            haloed_line(gpc, rejection.point, rejection.expected, colors.colorCircleStart, 8.0f, colors,
                        Qt::DashLine);
            haloed_ring(gpc, rejection.expected, ring, colors.colorCircleStart, MARK_WIDTH, colors);
            gpc.fill_circle(rejection.expected, static_cast<float>(rCircle / 10), colors.colorCircleStart);
            cross(gpc, rejection.point, colors);
            break;
        case Reason::STRAYED:
            faint_centre_line(gpc, centre, colors);
            cross(gpc, rejection.point, colors);
            break;
        case Reason::END:
            haloed_line(gpc, rejection.point, rejection.expected, colors.colorCircleEnd, 8.0f, colors,
                        Qt::DashLine);
            haloed_ring(gpc, rejection.expected, ring, colors.colorCircleEnd, MARK_WIDTH, colors);
            cross(gpc, rejection.point, colors);
            break;
        case Reason::MISSED_PART:
            faint_centre_line(gpc, centre, colors);
            haloed_ring(gpc, rejection.expected, ring, colors.colorCircleEnd, MARK_WIDTH, colors);
            break;
    }
    gpc.restore();
}

void PracticeMarkers::paint_stroke_numbers(GPC& gpc, const Anim& anim, const CanvasColors& colors,
                                           int count) {
    gpc.save();
    gpc.set_anti_alias(true);
    const size_t n = std::min(anim.strokes.size(), static_cast<size_t>(std::max(0, count)));
    for (size_t i = 0; i < n; ++i)
        number_disc(gpc, anim.strokes[i].pathAnim.point_start(), static_cast<int>(i) + 1,
                    colors.colorCircleStart, colors);
    gpc.restore();
}

void PracticeMarkers::paint_number_beside(GPC& gpc, const Anim& anim, int index, const CanvasColors& colors,
                                          float clearance) {
    if (index < 0 || index >= static_cast<int>(anim.strokes.size())) return;
    const ki::math::Path& centre = anim.strokes[static_cast<size_t>(index)].pathAnim;
    const glm::vec2 start = centre.point_start();
    const glm::vec2 ahead = centre.point_at_length(std::min(centre.get_length(), ARROW_LENGTH));
    const glm::vec2 dir =
        glm::distance(start, ahead) > 0.0f ? glm::normalize(ahead - start) : glm::vec2(1.0f, 0.0f);
    const glm::vec2 side(-dir.y, dir.x);
    const float away = clearance + NUMBER_RADIUS + HALO;
    const glm::vec2 candidates[] = {start - dir * away, start + side * away, start - side * away};
    // Strokes often start where an earlier one did: its number must stay readable.
    const auto free = [&](glm::vec2 c) {
        for (int i = 0; i < index; ++i)
            if (glm::distance(c, anim.strokes[static_cast<size_t>(i)].pathAnim.point_start()) <
                2.0f * (NUMBER_RADIUS + HALO))
                return false;
        return true;
    };
    glm::vec2 place = candidates[0];
    for (const glm::vec2 c : candidates)
        if (free(c)) {
            place = c;
            break;
        }
    gpc.save();
    gpc.set_anti_alias(true);
    number_disc(gpc, place, index + 1, colors.colorCircleStart, colors);
    gpc.restore();
}

void PracticeMarkers::paint_helper_circles(GPC& gpc, const AnimStroke& stroke, const CanvasColors& colors,
                                           int rCircle, int widthCircle) {
    const float radius = static_cast<float>(rCircle / 4);
    const float dot = static_cast<float>(rCircle / 10);
    const float width = static_cast<float>(widthCircle);
    const glm::vec2 start = stroke.pathAnim.point_start();
    const glm::vec2 end = stroke.pathAnim.point_end();
    gpc.save();
    gpc.set_anti_alias(true);
    haloed_ring(gpc, start, radius, colors.colorCircleStart, width, colors);
    gpc.fill_circle(start, dot + HALO, halo_color(colors));
    gpc.fill_circle(start, dot, colors.colorCircleStart);
    haloed_ring(gpc, end, radius, colors.colorCircleEnd, width, colors);
    gpc.restore();
}

void PracticeMarkers::paint_caption(GPC& gpc, const ki::math::Rect& rect, const QString& text,
                                    const CanvasColors& colors, Corner corner) {
    if (text.isEmpty() || rect.w <= 0.0f || rect.h <= 0.0f) return;
    QPainter& painter = gpc.get_painter();
    painter.save();
    painter.resetTransform();
    painter.setRenderHint(QPainter::Antialiasing, true);
    QFont font = painter.font();
    // Grows with the canvas, within what reads well on a small window and a large screen.
    font.setPixelSize(static_cast<int>(std::clamp(std::min(rect.w, rect.h) / 24.0f, 13.0f, 28.0f)));
    painter.setFont(font);
    const QFontMetricsF metrics(font, painter.device());
    const qreal pad = metrics.height() * 0.35;
    // A sentence wider than the canvas wraps rather than losing its end.
    const qreal widest = rect.w - 4 * pad;
    const QRectF textBox = metrics.boundingRect(QRectF(0, 0, widest, rect.h), Qt::TextWordWrap, text);
    // Whole pixels and some slack: laid out again in a box measured to the fraction, the last
    // word may wrap out of sight.
    const QSizeF plate(std::min(std::ceil(textBox.width()) + 0.25 * pad, widest) + 2 * pad,
                       textBox.height() + 2 * pad);
    const bool left = corner == Corner::TOP_LEFT || corner == Corner::BOTTOM_LEFT;
    const bool top = corner == Corner::TOP_LEFT || corner == Corner::TOP_RIGHT;
    const qreal x = left ? rect.x + pad : rect.x + rect.w - pad - plate.width();
    const qreal y = top ? rect.y + pad : rect.y + rect.h - pad - plate.height();
    const QRectF box(QPointF(x, y), plate);
    QColor back = colors.colorBackground[0];
    back.setAlpha(225);
    painter.setPen(QPen(colors.colorOutline, 1.0));
    painter.setBrush(back);
    painter.drawRoundedRect(box, pad, pad);
    painter.setPen(opaque(colors.colorAnim));
    painter.drawText(box.adjusted(pad, pad, -pad, -pad), Qt::TextWordWrap | Qt::AlignLeft | Qt::AlignVCenter,
                     text);
    painter.restore();
}

}  // namespace morvel::practice
