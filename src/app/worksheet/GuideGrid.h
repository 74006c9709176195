#pragma once
// The guide lines of a practice square: its frame, and inside it the cross of the tian grid
// or the cross and both diagonals of the mi grid. Shared by everything that draws practice
// squares, on paper or on screen.

#include <ki/math/Rect.h>

#include <QColor>
#include <QString>
#include <optional>

namespace ki::qt {
class GPC;
}

namespace morvel {

enum class GuideGrid { NONE, TIAN, MI };

/// "none", "tian", "mi".
QString guide_grid_to_string(GuideGrid grid);
/// The grid of a name as guide_grid_to_string writes it; nothing for any other text.
std::optional<GuideGrid> guide_grid_from_string(const QString& name);

/// How the lines look. Widths are in the units of the current transform.
struct GuideGridStyle {
    QColor color = QColor(226, 160, 150);
    float frameWidth = 0.3f;
    float lineWidth = 0.15f;
    /// Dashed inner lines keep the square readable under the learner's strokes.
    Qt::PenStyle lineStyle = Qt::DashLine;
};

/// Frames `box` and draws the inner lines of `grid` through its centre.
void draw_guide_grid(ki::qt::GPC& gpc, const ki::math::Rect& box, GuideGrid grid,
                     const GuideGridStyle& style);

}  // namespace morvel
