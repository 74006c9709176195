#include "app/stroke/LearnerInk.h"

#include <ki/qt/GPC.h>

#include <QPainter>
#include <QPen>
#include <algorithm>
#include <glm/geometric.hpp>

namespace morvel {

namespace {

QPen round_pen(const QColor& color, float width) {
    return QPen(QBrush(color), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

}  // namespace

QColor LearnerInk::ink_color() {
    return QColor(20, 30, 110);
}

QColor LearnerInk::rim_color() {
    return QColor(255, 255, 255);
}

QColor LearnerInk::mark_color() {
    return QColor(200, 20, 60);
}

void LearnerInk::clear() {
    traces.clear();
    ++version;
}

void LearnerInk::keep(int index, const ki::math::Path& trace) {
    if (index < 0) return;
    if (static_cast<size_t>(index) >= traces.size()) traces.resize(static_cast<size_t>(index) + 1);
    QPainterPath path;
    for (const ki::math::Contour& contour : trace.get_contours()) {
        path.moveTo(contour.start.x, contour.start.y);
        glm::vec2 last = contour.start;
        for (size_t i = 0; i < contour.elements.size(); ++i) {
            const glm::vec2 p = ki::math::element_end(contour.elements[i]);
            if (glm::distance(p, last) < MIN_STEP && i + 1 < contour.elements.size()) continue;
            path.lineTo(p.x, p.y);
            last = p;
        }
    }
    traces[static_cast<size_t>(index)] = path;
    ++version;
}

bool LearnerInk::has(int index) const {
    return index >= 0 && static_cast<size_t>(index) < traces.size() &&
           !traces[static_cast<size_t>(index)].isEmpty();
}

void LearnerInk::paint(ki::qt::GPC& gpc, const Anim& anim, int shown, bool showInk, int weakest) const {
    const int count =
        showInk ? static_cast<int>(std::min(traces.size(), static_cast<size_t>(std::max(shown, 0)))) : 0;
    if (count == 0 && weakest < 0) return;
    QPainter& painter = gpc.get_painter();
    QPaintDevice* device = painter.device();
    if (device == nullptr) return;
    const qreal ratio = device->devicePixelRatioF();
    const Key key{painter.worldTransform(),
                  QSize(device->width(), device->height()),
                  ratio,
                  count,
                  showInk,
                  weakest,
                  &anim,
                  version};
    if (!(key == cacheKey) || cache.isNull()) {
        cache = QImage(key.size * ratio, QImage::Format_ARGB32_Premultiplied);
        cache.setDevicePixelRatio(ratio);
        cache.fill(Qt::transparent);
        QPainter layer(&cache);
        layer.setRenderHint(QPainter::Antialiasing, true);
        layer.setWorldTransform(key.transform);
        paint_layer(layer, anim, count, showInk, weakest);
        cacheKey = key;
    }
    painter.save();
    painter.resetTransform();
    painter.drawImage(QPointF(0, 0), cache);
    painter.restore();
}

void LearnerInk::paint_layer(QPainter& painter, const Anim& anim, int count, bool showInk,
                             int weakest) const {
    const bool weakestInked =
        showInk && weakest >= 0 && weakest < count && !traces[static_cast<size_t>(weakest)].isEmpty();
    // Without its ink, the weakest stroke is marked along its outline.
    if (!weakestInked && weakest >= 0 && static_cast<size_t>(weakest) < anim.strokes.size()) {
        const QPainterPath outline =
            ki::qt::GPC::math_path_to_painter_path(anim.strokes[static_cast<size_t>(weakest)].pathOutline);
        painter.strokePath(outline, round_pen(rim_color(), MARK_WIDTH + 2.0f * RIM));
        painter.strokePath(outline, round_pen(mark_color(), MARK_WIDTH));
    }
    // Bevel joins: round ones cost a curve at every sample, and on a line this thin nobody sees
    // the difference. All rims first, so a crossing stroke's rim never cuts through ink.
    const auto pen = [](const QColor& color, float width) {
        return QPen(QBrush(color), width, Qt::SolidLine, Qt::RoundCap, Qt::BevelJoin);
    };
    const QPen rim = pen(rim_color(), WIDTH + 2.0f * RIM);
    for (int i = 0; i < count; ++i) painter.strokePath(traces[static_cast<size_t>(i)], rim);
    const QPen ink = pen(ink_color(), WIDTH);
    for (int i = 0; i < count; ++i)
        if (i != weakest) painter.strokePath(traces[static_cast<size_t>(i)], ink);
    // The weakest stroke's own ink in the mark colour, over the rest.
    if (weakestInked) painter.strokePath(traces[static_cast<size_t>(weakest)], pen(mark_color(), WIDTH));
}

}  // namespace morvel
