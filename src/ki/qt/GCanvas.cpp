#include <ki/log/GLog.h>
#include <ki/qt/GCanvas.h>
#include <ki/str/xprintF.h>

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace ki::qt {

std::string coord_system::to_string(Type type) {
    switch (type) {
        case SCREEN:
            return "SCREEN";
        case CARTESIAN:
            return "CARTESIAN";
        case NDC:
            return "NDC";
        case UV:
            return "UV";
    }
    return str::xprintF(0, "COORDINATE_SYSTEM:$", static_cast<int>(type));
}

std::string ViewPort::to_string() const {
    return str::xprintF(0, "width:$, height:$", width, height);
}

GCanvas::GCanvas(QWidget* parent) : GWidget(parent) {}

void GCanvas::draw(GPC&, const math::Rect&) {}

void GCanvas::do_layout(LayoutEvent&) {}

void GCanvas::set_view_size(float w, float h) {
    if (!is_coord_CARTESIAN()) {
        pp_warn("GCanvas::set_view_size, w:$, h:$ only valid for CARTESIAN, current system:'$'", w, h,
                coord_system::to_string(coordSystem));
        return;
    }
    if (!(w > 0.0f && h > 0.0f)) {
        pp_warn("GCanvas::set_view_size, invalid size, w:$, h:$", w, h);
        return;
    }
    viewWidth = w;
    viewHeight = h;
    pp("GCanvas::set_view_size, $x$", w, h);
}

ViewPort GCanvas::get_viewport() const {
    return {static_cast<float>(width()), static_cast<float>(height())};
}

std::optional<QTransform> GCanvas::transform_for(const ViewPort& viewport) const {
    const qreal w = viewport.width;
    const qreal h = viewport.height;
    QTransform t;
    switch (coordSystem) {
        case coord_system::SCREEN:
            return t;
        case coord_system::CARTESIAN: {
            const qreal s = std::min(w / viewWidth, h / viewHeight);
            t.translate(w / 2.0, h / 2.0);
            t.scale(s, -s);
            return t;
        }
        case coord_system::NDC: {
            const qreal s = 0.5 * std::min(w, h);
            t.translate(w / 2.0, h / 2.0);
            t.scale(s, -s);
            return t;
        }
        case coord_system::UV:
            t.scale(w, h);
            return t;
    }
    return std::nullopt;
}

float GCanvas::logical_scale(const ViewPort& viewport) const {
    const std::optional<QTransform> t = transform_for(viewport);
    if (!t) return 1.0f;
    const double scale = std::sqrt(std::abs(t->determinant()));
    return scale > 0.0 ? static_cast<float>(scale) : 1.0f;
}

void GCanvas::setup_transform(GPC& gpc, const ViewPort& viewport) const {
    gpc.reset_transform();
    const std::optional<QTransform> t = transform_for(viewport);
    if (!t) {
        pp_warn("GCanvas::setup_transform, unknown coordSystem:$", static_cast<int>(coordSystem));
        return;
    }
    gpc.set_transformation(*t, false);
}

math::Rect GCanvas::get_view_rect(const ViewPort& viewport) const {
    const float w = viewport.width;
    const float h = viewport.height;
    switch (coordSystem) {
        case coord_system::SCREEN:
            return {0.0f, 0.0f, w, h};
        case coord_system::CARTESIAN:
        case coord_system::NDC: {
            const float s = logical_scale(viewport);
            return {-w / (2.0f * s), -h / (2.0f * s), w / s, h / s};
        }
        case coord_system::UV:
            return {0.0f, 0.0f, 1.0f, 1.0f};
    }
    pp_warn("GCanvas::get_view_rect, unknown coordSystem:$", static_cast<int>(coordSystem));
    return {0.0f, 0.0f, w, h};
}

glm::vec2 GCanvas::convert_to_coord_system(glm::vec2 pixel) const {
    const std::optional<QTransform> t = transform_for(get_viewport());
    if (!t) {
        pp_warn("GCanvas::convert_to_coord_system, unknown coordSystem:$", static_cast<int>(coordSystem));
        return pixel;
    }
    bool invertible = false;
    const QPointF p = t->inverted(&invertible).map(QPointF(pixel.x, pixel.y));
    // A widget without area has no logical plane; the pixel is the least surprising answer.
    if (!invertible) return pixel;
    return {static_cast<float>(p.x()), static_cast<float>(p.y())};
}

glm::vec2 GCanvas::convert_from_coord_system(glm::vec2 logical) const {
    const std::optional<QTransform> t = transform_for(get_viewport());
    if (!t) {
        pp_warn("GCanvas::convert_from_coord_system, unknown coordSystem:$", static_cast<int>(coordSystem));
        return logical;
    }
    const QPointF p = t->map(QPointF(logical.x, logical.y));
    return {static_cast<float>(p.x()), static_cast<float>(p.y())};
}

glm::vec2 GCanvas::pos_from_mouse_event(const QMouseEvent* ev) const {
    if (ev == nullptr) {
        pp_error("GCanvas::pos_from_mouse_event, ev == NULL");
        return {0.0f, 0.0f};
    }
    const QPointF p = ev->position();
    return convert_to_coord_system({static_cast<float>(p.x()), static_cast<float>(p.y())});
}

int GCanvas::quadrant_from_point(glm::vec2 p) const {
    if (std::isnan(p.x) || std::isnan(p.y)) {
        pp_warn("GCanvas::quadrant_from_point, invalid point:$", p);
        return 0;
    }
    if (p.y >= 0.0f) return p.x >= 0.0f ? 1 : 2;
    return p.x < 0.0f ? 3 : 4;
}

void GCanvas::draw_string_screen(GPC& gpc, glm::vec2 p, const QString& text, int size, const QColor& color,
                                 TextAlignY align) const {
    gpc.draw_text_screen(p, text, size, color, align);
}

float GCanvas::line_height_logical(const GPC& gpc) const {
    return gpc.line_height() / logical_scale(get_viewport());
}

void GCanvas::paint_to(QPainter& painter, const ViewPort& viewport) {
    GPC gpc(painter);
    const math::Rect view = get_view_rect(viewport);
    if (debug) pp("VIEWPORT: {$}, rView:{$}", viewport, view);
    setup_transform(gpc, viewport);
    if (clipEnabled) {
        gpc.save();
        painter.setClipRect(QRectF(view.x, view.y, view.w, view.h));
        draw(gpc, view);
        gpc.restore();
    } else {
        draw(gpc, view);
    }
}

void GCanvas::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paint_to(painter, get_viewport());
}

}  // namespace ki::qt
