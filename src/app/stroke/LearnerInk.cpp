#include "app/stroke/LearnerInk.h"

#include <ki/qt/GPC.h>

#include <QPen>
#include <algorithm>

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
    return QColor(255, 255, 255, 200);
}

QColor LearnerInk::mark_color() {
    return QColor(200, 20, 60);
}

void LearnerInk::keep(int index, const ki::math::Path& trace) {
    if (index < 0) return;
    if (static_cast<size_t>(index) >= traces.size()) traces.resize(static_cast<size_t>(index) + 1);
    traces[static_cast<size_t>(index)] = ki::qt::GPC::math_path_to_painter_path(trace);
}

bool LearnerInk::has(int index) const {
    return index >= 0 && static_cast<size_t>(index) < traces.size() && !traces[static_cast<size_t>(index)].isEmpty();
}

void LearnerInk::paint(ki::qt::GPC& gpc, const Anim& anim, int shown, bool showInk, int weakest) const {
    if (weakest >= 0 && static_cast<size_t>(weakest) < anim.strokes.size()) {
        const QPainterPath outline =
            ki::qt::GPC::math_path_to_painter_path(anim.strokes[static_cast<size_t>(weakest)].pathOutline);
        gpc.stroke_path(outline, round_pen(rim_color(), MARK_WIDTH + 2.0f * RIM));
        gpc.stroke_path(outline, round_pen(mark_color(), MARK_WIDTH));
    }
    if (!showInk) return;
    const size_t count = std::min(traces.size(), static_cast<size_t>(std::max(shown, 0)));
    // All rims first, so a crossing stroke's rim never cuts through ink already drawn.
    const QPen rim = round_pen(rim_color(), WIDTH + 2.0f * RIM);
    const QPen ink = round_pen(ink_color(), WIDTH);
    for (size_t i = 0; i < count; ++i) gpc.stroke_path(traces[i], rim);
    for (size_t i = 0; i < count; ++i) gpc.stroke_path(traces[i], ink);
}

}  // namespace morvel
