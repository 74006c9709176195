#include "app/recall/RecallLayer.h"

#include <ki/math/Rect.h>
#include <ki/qt/GPC.h>
#include <ki/qt/lang.h>

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>

namespace morvel::recall {

using ki::qt::lang::tt;
using review::Rating;

namespace {

constexpr Rating GRADES[] = {Rating::AGAIN, Rating::HARD, Rating::GOOD, Rating::EASY};

float font_pixels(const ki::math::Rect& rect) {
    return std::clamp(std::min(rect.w, rect.h) / 24.0f, 13.0f, 28.0f);
}

}  // namespace

QString mode_text() {
    return tt("Write from memory", "Aus dem Gedächtnis", "По памяти");
}

QString show_me_text() {
    return tt("Show me", "Zeig es mir", "Покажи");
}

QString grade_text(Rating rating) {
    switch (rating) {
        case Rating::AGAIN:
            return tt("Again", "Nochmal", "Снова");
        case Rating::HARD:
            return tt("Hard", "Schwer", "Трудно");
        case Rating::GOOD:
            return tt("Good", "Gut", "Хорошо");
        case Rating::EASY:
            return tt("Easy", "Leicht", "Легко");
    }
    return {};
}

void RecallLayer::paint_character(ki::qt::GPC& gpc, const std::vector<QPainterPath>& outlines,
                                  const prog2::RecallState& state, bool written, const CanvasColors& colors) {
    if (written) {
        for (const QPainterPath& outline : outlines) gpc.fill_path(outline, colors.colorDone);
        return;
    }
    QColor faint = colors.colorAnim;
    faint.setAlpha(FAINT_ALPHA);
    for (const int index : state.shownStrokes)
        if (index >= 0 && index < static_cast<int>(outlines.size()))
            gpc.fill_path(outlines[static_cast<size_t>(index)], faint);
}

QRectF RecallLayer::grade_box(const ki::math::Rect& rect, Rating rating) {
    const qreal font = font_pixels(rect);
    const qreal gap = font * 0.5;
    const qreal width = std::min<qreal>(font * 6.5, (rect.w - 5 * gap) / 4);
    const qreal height = font * 3.2;
    const qreal left = rect.x + (rect.w - 4 * width - 3 * gap) / 2;
    const int slot = static_cast<int>(rating) - 1;
    return {left + slot * (width + gap), rect.y + rect.h - gap - height, width, height};
}

void RecallLayer::paint_grades(ki::qt::GPC& gpc, const ki::math::Rect& rect, const prog2::RecallState& state,
                               const CanvasColors& colors) {
    if (!state.grading || rect.w <= 0.0f || rect.h <= 0.0f) return;
    QPainter& painter = gpc.get_painter();
    painter.save();
    painter.resetTransform();
    painter.setRenderHint(QPainter::Antialiasing, true);
    QFont font = painter.font();
    font.setPixelSize(static_cast<int>(font_pixels(rect)));
    painter.setFont(font);
    QColor text = colors.colorAnim;
    text.setAlpha(255);
    QColor back = colors.colorBackground[0];
    back.setAlpha(235);
    QColor chosen = colors.colorTraceGood;
    chosen.setAlpha(255);
    for (const Rating rating : GRADES) {
        const QRectF box = grade_box(rect, rating);
        const bool on = rating == state.chosen;
        painter.setPen(QPen(on ? chosen : colors.colorOutline, on ? 3.0 : 1.0));
        painter.setBrush(on ? chosen : back);
        const qreal radius = box.height() * 0.15;
        painter.drawRoundedRect(box, radius, radius);
        painter.setPen(on ? colors.colorBackground[0] : text);
        painter.drawText(
            box, Qt::AlignCenter,
            QString::number(static_cast<int>(rating)) + QStringLiteral("\n") + grade_text(rating));
    }
    // The keys, above the choices.
    const QRectF first = grade_box(rect, Rating::AGAIN);
    const QRectF hint(rect.x, first.top() - first.height() * 0.6, rect.w, first.height() * 0.5);
    const QString keys = tt("1–4 choose · Space accepts", "1–4 wählen · Leertaste übernimmt",
                            "1–4 выбор · пробел подтверждает");
    const QFontMetricsF metrics(font, painter.device());
    const QRectF plate = metrics.boundingRect(hint, Qt::AlignCenter, keys).adjusted(-8, -3, 8, 3);
    painter.setPen(QPen(colors.colorOutline, 1.0));
    painter.setBrush(back);
    painter.drawRoundedRect(plate, 6, 6);
    painter.setPen(text);
    painter.drawText(hint, Qt::AlignCenter, keys);
    painter.restore();
}

}  // namespace morvel::recall
