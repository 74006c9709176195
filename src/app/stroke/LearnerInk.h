#pragma once
// The learner's own ink: the accepted trace of each stroke, kept as a thin line over the
// traced strokes so the learner compares their writing with the model, and the mark on the
// weakest stroke of a finished character. A canvas layer: it paints from what it was given and
// expects the canvas transform (character units) already set.

#include <QImage>
#include <QPainterPath>
#include <QTransform>
#include <vector>

#include "app/stroke/Anim.h"
#include "app/stroke/CanvasColors.h"

class QPainter;

namespace ki::qt {
class GPC;
}

namespace morvel {

class LearnerInk {
public:
    /// Pen width of the ink and of its light rim, in character units.
    static constexpr float WIDTH = 12.0f;
    static constexpr float RIM = 4.0f;
    /// Pen width of the weakest stroke's mark along its outline.
    static constexpr float MARK_WIDTH = 10.0f;
    /// Trace samples closer than this to the last one kept are dropped: a slow hand gives a
    /// sample per pixel, and a thin line shows no difference.
    static constexpr float MIN_STEP = 8.0f;

    /// Dark blue ink, legible over the green of traced strokes; the rim keeps it legible over
    /// the dark backgrounds.
    static QColor ink_color();
    static QColor rim_color();
    static QColor mark_color();

    void clear();
    /// Keeps `trace` as the ink of stroke `index`, replacing an earlier one.
    void keep(int index, const ki::math::Path& trace);
    bool has(int index) const;

    /// The ink of strokes 0 .. `shown` - 1 (when `showInk`), and stroke `weakest` of `anim`
    /// marked (none for -1): its ink in the mark colour, or without ink its outline.
    void paint(ki::qt::GPC& gpc, const Anim& anim, int shown, bool showInk, int weakest) const;

private:
    /// What the cached image shows; any difference paints it anew.
    struct Key {
        QTransform transform;
        QSize size;
        qreal ratio = 1.0;
        int shown = -1;
        bool showInk = false;
        int weakest = -1;
        const Anim* anim = nullptr;
        unsigned int version = 0;
        bool operator==(const Key&) const = default;
    };
    void paint_layer(QPainter& painter, const Anim& anim, int shown, bool showInk, int weakest) const;

    std::vector<QPainterPath> traces;
    // The layer changes only when a stroke is accepted; a frame in between only copies it.
    unsigned int version = 0;
    mutable QImage cache;
    mutable Key cacheKey;
};

}  // namespace morvel
