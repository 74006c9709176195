#include "app/progress/ProgressMark.h"

#include <ki/qt/themes.h>

#include <QPainter>
#include <QPalette>
#include <QRectF>
#include <algorithm>

namespace morvel::progress {

QColor ProgressMark::accent(const QPalette& palette) {
    // Orange reads against the normal, dark and green backgrounds alike and is not the green
    // of finished strokes.
    return ki::qt::themes::is_dark_palette(palette) ? QColor(255, 160, 64) : QColor(204, 85, 0);
}

void ProgressMark::paint(QPainter& painter, const QRectF& rect, Mastery mastery, bool due,
                         const QPalette& palette) {
    if (mastery == Mastery::NEW || rect.isEmpty()) return;
    const QColor colour = due ? accent(palette) : palette.color(QPalette::Text);
    const qreal diameter = std::min(rect.width(), rect.height()) / 2.0;
    const qreal penWidth = std::max<qreal>(1.5, diameter / 5.0);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    QRectF dot(0, 0, diameter, diameter);
    dot.moveCenter(rect.center());
    if (mastery == Mastery::KNOWN) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
    } else {
        painter.setPen(QPen(colour, penWidth));
        painter.setBrush(Qt::NoBrush);
        dot.adjust(penWidth / 2, penWidth / 2, -penWidth / 2, -penWidth / 2);
    }
    painter.drawEllipse(dot);
    painter.restore();
}

}  // namespace morvel::progress
