#include <ki/log/GLog.h>
#include <ki/qt/GPC.h>

#include <QFontMetricsF>
#include <QPainter>
#include <QPolygonF>
#include <algorithm>

namespace ki::qt {

namespace {

QPointF to_qpoint(glm::vec2 p) {
    return {p.x, p.y};
}

QRectF to_qrect(const math::Rect& r) {
    return {r.x, r.y, r.w, r.h};
}

QPolygonF to_polygon(const std::vector<glm::vec2>& points) {
    QPolygonF polygon;
    polygon.reserve(static_cast<qsizetype>(points.size()));
    for (const glm::vec2& p : points) polygon << to_qpoint(p);
    return polygon;
}

}  // namespace

GPC::GPC(QPainter& painter) : painter(painter) {}

QPen GPC::make_pen(const QColor& color, float width, Qt::PenStyle style, LINE_MODE mode) {
    QPen pen(QBrush(color), width, style, Qt::SquareCap, Qt::BevelJoin);
    pen.setCosmetic(mode == LINE_MODE_COSMETIC);
    return pen;
}

QTransform GPC::mat3_to_transform(const glm::mat3& m) {
    return QTransform(m[0][0], m[0][1], m[0][2], m[1][0], m[1][1], m[1][2], m[2][0], m[2][1], m[2][2]);
}

void GPC::set_anti_alias(bool on) {
    painter.setRenderHint(QPainter::Antialiasing, on);
}
void GPC::set_pen(const QPen& pen) {
    painter.setPen(pen);
}
void GPC::set_pen(const QColor& color, float width, Qt::PenStyle style, LINE_MODE mode) {
    painter.setPen(make_pen(color, width, style, mode));
}
void GPC::set_brush(const QBrush& brush) {
    painter.setBrush(brush);
}
QFont GPC::font() const {
    return painter.font();
}

void GPC::set_font_point_size(float size) {
    if (!(size > 0.0f)) {
        pp_warn("GPC::set_font_point_size, invalid size:$", size);
        return;
    }
    QFont f = painter.font();
    f.setPointSizeF(size);
    painter.setFont(f);
}

void GPC::save() {
    painter.save();
}
void GPC::restore() {
    painter.restore();
}

void GPC::translate(glm::vec2 v) {
    painter.translate(v.x, v.y);
}
void GPC::translate(float x, float y) {
    painter.translate(x, y);
}
void GPC::translate(QPoint p) {
    painter.translate(p);
}
void GPC::scale(float s) {
    painter.scale(s, s);
}
void GPC::scale(float sx, float sy) {
    painter.scale(sx, sy);
}
void GPC::shear(float sh, float sv) {
    painter.shear(sh, sv);
}
void GPC::rotate(float degrees) {
    painter.rotate(degrees);
}
void GPC::set_transformation(const QTransform& transform, bool combine) {
    painter.setTransform(transform, combine);
}
void GPC::set_matrix(const glm::mat3& m, bool combine) {
    painter.setTransform(mat3_to_transform(m), combine);
}
void GPC::reset_transform() {
    painter.resetTransform();
}
QTransform GPC::get_transform() const {
    return painter.transform();
}

void GPC::fill_rect(float x, float y, float w, float h, const QColor& color) {
    painter.fillRect(QRectF(x, y, w, h), color);
}

void GPC::fill_rect(const math::Rect& r, const QColor& color) {
    painter.fillRect(to_qrect(r), color);
}

void GPC::draw_rect(float x, float y, float w, float h, const QColor& color, float width, Qt::PenStyle style,
                    LINE_MODE mode) {
    draw_rect(math::Rect(x, y, w, h), color, width, style, mode);
}

void GPC::draw_rect(const math::Rect& r, const QColor& color, float width, Qt::PenStyle style,
                    LINE_MODE mode) {
    painter.setPen(make_pen(color, width, style, mode));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(to_qrect(r));
}

void GPC::draw_rect_special(const math::Rect& r, const QColor& color, int flags, float width,
                            Qt::PenStyle style, LINE_MODE mode) {
    const QRectF rect = to_qrect(r);
    QColor fill = color;
    fill.setAlphaF(color.alphaF() * 0.25f);
    painter.setPen(make_pen(color, width, style, mode));
    painter.setBrush((flags & RECT_FILL_LIGHT) != 0 ? QBrush(fill) : QBrush(Qt::NoBrush));
    if ((flags & RECT_ROUNDED) != 0) {
        const qreal radius = std::min(rect.width(), rect.height()) / 8.0;
        painter.drawRoundedRect(rect, radius, radius);
    } else {
        painter.drawRect(rect);
    }
    if ((flags & RECT_DIAGONALS) != 0) {
        painter.drawLine(rect.topLeft(), rect.bottomRight());
        painter.drawLine(rect.bottomLeft(), rect.topRight());
    }
}

void GPC::draw_line(glm::vec2 a, glm::vec2 b, const QColor& color, float width, Qt::PenStyle style,
                    LINE_MODE mode) {
    draw_line(a, b, make_pen(color, width, style, mode));
}

void GPC::draw_line(glm::vec2 a, glm::vec2 b, const QPen& pen) {
    painter.setPen(pen);
    painter.drawLine(to_qpoint(a), to_qpoint(b));
}

void GPC::draw_line(float x1, float y1, float x2, float y2, const QColor& color, float width,
                    Qt::PenStyle style, LINE_MODE mode) {
    draw_line(glm::vec2(x1, y1), glm::vec2(x2, y2), color, width, style, mode);
}

void GPC::draw_line(const math::Segment& s, const QColor& color, float width, Qt::PenStyle style,
                    LINE_MODE mode) {
    draw_line(s.p0, s.p1, color, width, style, mode);
}

void GPC::draw_line(const math::Segment& s, const QPen& pen) {
    draw_line(s.p0, s.p1, pen);
}

void GPC::draw_line_direct(glm::vec2 a, glm::vec2 b) {
    painter.drawLine(to_qpoint(a), to_qpoint(b));
}

void GPC::fill_circle(glm::vec2 c, float radius, const QColor& color) {
    fill_oval(c, radius, radius, color);
}

void GPC::fill_circle(float x, float y, float radius, const QColor& color) {
    fill_oval(glm::vec2(x, y), radius, radius, color);
}

void GPC::draw_circle(glm::vec2 c, float radius, const QColor& color, float width, Qt::PenStyle style,
                      LINE_MODE mode) {
    draw_oval(c, radius, radius, color, width, style, mode);
}

void GPC::draw_circle(float x, float y, float radius, const QColor& color, float width, Qt::PenStyle style,
                      LINE_MODE mode) {
    draw_oval(glm::vec2(x, y), radius, radius, color, width, style, mode);
}

void GPC::draw_circle(const math::Circle& circle, const QColor& color, float width, Qt::PenStyle style,
                      LINE_MODE mode) {
    if (log::is_level_active(log::LOG_TRACE)) {
        pp_trace("GPC::draw_circle, circle:$", circle);
        const math::Rect box(circle.center.x - circle.radius, circle.center.y - circle.radius,
                             2.0f * circle.radius, 2.0f * circle.radius);
        pp_trace("circle rect:$", box);
    }
    draw_oval(circle.center, circle.radius, circle.radius, color, width, style, mode);
}

void GPC::fill_oval(glm::vec2 c, float rx, float ry, const QColor& color) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(to_qpoint(c), rx, ry);
}

void GPC::draw_oval(glm::vec2 c, float rx, float ry, const QColor& color, float width, Qt::PenStyle style,
                    LINE_MODE mode) {
    painter.setPen(make_pen(color, width, style, mode));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(to_qpoint(c), rx, ry);
}

void GPC::fill_polygon(const std::vector<glm::vec2>& points, const QColor& color) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawPolygon(to_polygon(points));
}

void GPC::draw_polygon(const std::vector<glm::vec2>& points, const QColor& color, float width,
                       Qt::PenStyle style, LINE_MODE mode) {
    painter.setPen(make_pen(color, width, style, mode));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolygon(to_polygon(points));
}

void GPC::draw_text(glm::vec2 p, const QString& text, int size, const QColor& color, TextAlignY align) {
    if (size > 0) set_font_point_size(static_cast<float>(size));
    const QFontMetricsF metrics(painter.font(), painter.device());
    float y = p.y;
    switch (align) {
        case TextAlignY::TOP:
            y += static_cast<float>(metrics.ascent());
            break;
        case TextAlignY::CENTER:
            y += static_cast<float>((metrics.ascent() - metrics.descent()) / 2.0);
            break;
        case TextAlignY::BASELINE:
            break;
        case TextAlignY::BOTTOM:
            y -= static_cast<float>(metrics.descent());
            break;
    }
    painter.setPen(color);
    painter.drawText(QPointF(p.x, y), text);
}

void GPC::draw_text(float x, float y, const QString& text, int size, const QColor& color, TextAlignY align) {
    draw_text(glm::vec2(x, y), text, size, color, align);
}

void GPC::draw_string(glm::vec2 p, const QString& text) {
    painter.drawText(to_qpoint(p), text);
}

void GPC::draw_string(glm::vec2 p, const char* text) {
    if (text == nullptr) {
        pp_error("GPC::draw_string, text == NULL");
        return;
    }
    draw_string(p, QString::fromUtf8(text));
}

void GPC::draw_text_screen(glm::vec2 p, const QString& text, int size, const QColor& color,
                           TextAlignY align) {
    const QPointF pixel = painter.transform().map(to_qpoint(p));
    painter.save();
    painter.resetTransform();
    draw_text(glm::vec2(static_cast<float>(pixel.x()), static_cast<float>(pixel.y())), text, size, color,
              align);
    painter.restore();
}

glm::vec2 GPC::measure_string(const QString& text) const {
    const QFontMetricsF metrics(painter.font(), painter.device());
    return {static_cast<float>(metrics.horizontalAdvance(text)), static_cast<float>(metrics.height())};
}

math::Rect GPC::measure_string_bounds(const QString& text) const {
    const QRectF r = QFontMetricsF(painter.font(), painter.device()).tightBoundingRect(text);
    return {static_cast<float>(r.x()), static_cast<float>(r.y()), static_cast<float>(r.width()),
            static_cast<float>(r.height())};
}

float GPC::line_height() const {
    return static_cast<float>(QFontMetricsF(painter.font(), painter.device()).lineSpacing());
}

}  // namespace ki::qt
