#pragma once
// What the canvas shows while the learner writes a character from memory: the strokes shown
// after misses as faint outlines, the whole character once it is written, and the grade
// choice. Painting only reads the recall state.

#include <QPainterPath>
#include <QString>
#include <vector>

#include "app/lesson/RecallState.h"
#include "app/stroke/CanvasColors.h"

namespace ki::math {
struct Rect;
}
namespace ki::qt {
class GPC;
}

namespace morvel::recall {

/// "Write from memory" in the interface language.
QString mode_text();
/// "Show me" in the interface language.
QString show_me_text();
/// "Again", "Hard", "Good", "Easy" in the interface language.
QString grade_text(review::Rating rating);

class RecallLayer {
public:
    /// Alpha of a shown stroke's outline.
    static constexpr int FAINT_ALPHA = 70;

    /// In the character's frame: the shown strokes faint, and every stroke in the colour of
    /// written ones once `written`.
    static void paint_character(ki::qt::GPC& gpc, const std::vector<QPainterPath>& outlines,
                                const prog2::RecallState& state, bool written, const CanvasColors& colors);
    /// In widget pixels, along the bottom of `rect`: the four grades with their keys, the
    /// chosen one filled, and how to accept it. Nothing unless a grade waits.
    static void paint_grades(ki::qt::GPC& gpc, const ki::math::Rect& rect, const prog2::RecallState& state,
                             const CanvasColors& colors);
    /// Where grade `rating` is painted in a canvas of `rect`; a click there gives it.
    static QRectF grade_box(const ki::math::Rect& rect, review::Rating rating);
};

}  // namespace morvel::recall
