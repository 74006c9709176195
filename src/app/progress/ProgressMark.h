#pragma once
// The small mark of a character's state in the character list and the progress table: nothing
// for new, a hollow dot for learning, a filled dot for known, drawn in the accent colour when
// the character is due for review.

#include <QColor>

#include "app/progress/ProgressTypes.h"

class QPainter;
class QPalette;
class QRectF;

namespace morvel::progress {

class ProgressMark {
public:
    /// Centres the mark in `rect` with a diameter of half its shorter side; restores the
    /// painter's state. Colours come from `palette`, so the mark follows the theme.
    static void paint(QPainter& painter, const QRectF& rect, Mastery mastery, bool due,
                      const QPalette& palette);

    /// The accent that marks due characters: orange, lighter on dark palettes.
    static QColor accent(const QPalette& palette);
};

}  // namespace morvel::progress
