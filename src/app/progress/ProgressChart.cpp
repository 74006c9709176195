#include "app/progress/ProgressChart.h"

#include <ki/qt/lang.h>
#include <ki/qt/themes.h>

#include <QDate>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "app/progress/ProgressMark.h"

namespace morvel::progress {

using ki::qt::lang::tt;

QColor ProgressChart::score_color(const QPalette& palette) {
    // Blue stands apart from the highlight bars and the orange accent in every theme.
    return ki::qt::themes::is_dark_palette(palette) ? QColor(120, 200, 255) : QColor(30, 90, 200);
}

ProgressChart::ProgressChart(QWidget* parent) : QWidget(parent) {
    setMinimumHeight(140);
}

void ProgressChart::set_days(std::vector<DayStats> stats) {
    days = std::move(stats);
    update();
}

QSize ProgressChart::sizeHint() const {
    return {560, 180};
}

int ProgressChart::most_completed() const {
    int most = 1;
    for (const DayStats& day : days) most = std::max(most, day.completions);
    return most;
}

QRectF ProgressChart::plot_rect() const {
    // Legend on top, axis labels left, right and below: the plot takes what is left.
    const QFontMetrics fm(font());
    const int lineHeight = fm.height();
    const int left = fm.horizontalAdvance(QString::number(most_completed())) + 8;
    const int right = fm.horizontalAdvance(QStringLiteral("100")) + 8;
    return {static_cast<qreal>(left), lineHeight * 1.5, static_cast<qreal>(width() - left - right),
            static_cast<qreal>(height() - lineHeight * 3)};
}

QPointF ProgressChart::score_point(size_t day) const {
    return score_point_in(plot_rect(), day);
}

QPointF ProgressChart::score_point_in(const QRectF& plot, size_t day) const {
    if (day >= days.size() || days[day].score < 0) return {-1, -1};
    const qreal slot = plot.width() / static_cast<qreal>(days.size());
    return {plot.left() + slot * static_cast<qreal>(day) + slot / 2,
            plot.bottom() - plot.height() * days[day].score / 100.0};
}

void ProgressChart::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    const QPalette& pal = palette();
    const QColor text = pal.color(QPalette::WindowText);
    const QColor bar = pal.color(QPalette::Highlight);
    const QColor line = ProgressMark::accent(pal);
    const QFontMetrics fm(font());
    const int lineHeight = fm.height();

    const QString completedLabel =
        tt(QStringLiteral("Characters completed"), QStringLiteral("Zeichen geschafft"),
           QStringLiteral("Пройдено иероглифов"));
    const QString cleanLabel = tt(QStringLiteral("Clean strokes (%)"), QStringLiteral("Saubere Striche (%)"),
                                  QStringLiteral("Чистые черты (%)"));
    int x = 4;
    painter.fillRect(QRect(x, lineHeight / 4, lineHeight / 2, lineHeight / 2), bar);
    x += lineHeight;
    painter.setPen(text);
    painter.drawText(x, fm.ascent(), completedLabel);
    x += fm.horizontalAdvance(completedLabel) + lineHeight;
    painter.setPen(QPen(line, 2));
    painter.drawLine(x, lineHeight / 2, x + lineHeight, lineHeight / 2);
    x += lineHeight + lineHeight / 2;
    painter.setPen(text);
    painter.drawText(x, fm.ascent(), cleanLabel);
    x += fm.horizontalAdvance(cleanLabel) + lineHeight;
    const QColor scoreColor = score_color(pal);
    painter.setPen(QPen(scoreColor, 2, Qt::DashLine));
    painter.drawLine(x, lineHeight / 2, x + lineHeight, lineHeight / 2);
    x += lineHeight + lineHeight / 2;
    painter.setPen(text);
    painter.drawText(x, fm.ascent(),
                     tt(QStringLiteral("Score"), QStringLiteral("Wertung"), QStringLiteral("Оценка")));

    const int maxCompleted = most_completed();
    const QRectF plot = plot_rect();
    if (plot.width() <= 0 || plot.height() <= 0 || days.empty()) return;
    const int left = static_cast<int>(plot.left());

    painter.setPen(QPen(pal.color(QPalette::Mid), 1));
    painter.drawLine(plot.bottomLeft(), plot.bottomRight());
    painter.setPen(text);
    painter.drawText(QRectF(0, plot.top() - lineHeight / 2.0, left - 4, lineHeight), Qt::AlignRight,
                     QString::number(maxCompleted));
    painter.drawText(QRectF(0, plot.bottom() - lineHeight / 2.0, left - 4, lineHeight), Qt::AlignRight,
                     QStringLiteral("0"));
    painter.drawText(
        QRectF(plot.right() + 4, plot.top() - lineHeight / 2.0, width() - plot.right() - 4, lineHeight),
        Qt::AlignLeft, QStringLiteral("100"));

    const qreal slot = plot.width() / static_cast<qreal>(days.size());
    QPainterPath cleanShare;
    QPainterPath scoreLine;
    // Apart from the line: under its dash pattern a marker's outline broke into pieces, and a
    // day alone showed a stray hook instead of a square.
    QPainterPath scoreMarks;
    bool penDown = false;
    bool scoreDown = false;
    for (size_t i = 0; i < days.size(); ++i) {
        const DayStats& day = days[i];
        const qreal x0 = plot.left() + slot * static_cast<qreal>(i);
        if (day.completions > 0) {
            const qreal h = plot.height() * day.completions / maxCompleted;
            painter.fillRect(QRectF(x0 + slot * 0.15, plot.bottom() - h, slot * 0.7, h), bar);
        }
        if (day.score >= 0) {
            const QPointF point = score_point_in(plot, i);
            if (scoreDown)
                scoreLine.lineTo(point);
            else
                scoreLine.moveTo(point);
            scoreMarks.addRect(QRectF(point - QPointF(2, 2), QSizeF(4, 4)));
        }
        scoreDown = day.score >= 0;
        if (day.traces == 0) {
            penDown = false;  // no practice that day: a gap, not a fall to zero
            continue;
        }
        const QPointF point(x0 + slot / 2, plot.bottom() - plot.height() * day.acceptedTraces / day.traces);
        if (penDown)
            cleanShare.lineTo(point);
        else
            cleanShare.moveTo(point);
        cleanShare.addEllipse(point, 2, 2);
        cleanShare.moveTo(point);
        penDown = true;
    }
    painter.setPen(QPen(line, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(cleanShare);
    painter.setPen(QPen(scoreColor, 2, Qt::DashLine));
    painter.drawPath(scoreLine);
    painter.setPen(QPen(scoreColor, 2));
    painter.setBrush(scoreColor);
    painter.drawPath(scoreMarks);

    painter.setPen(text);
    // Day and month name in the interface language, as the table's dates are: "27 Oct", "27. Okt.".
    const QLocale locale(ki::qt::lang::get_lang());
    const QString format =
        locale.language() == QLocale::German ? QStringLiteral("d. MMM") : QStringLiteral("d MMM");
    const auto dayLabel = [&locale, &format](qint64 julian) {
        return locale.toString(QDate::fromJulianDay(julian), format);
    };
    painter.drawText(QRectF(plot.left(), plot.bottom() + 2, plot.width(), lineHeight), Qt::AlignLeft,
                     dayLabel(days.front().day));
    painter.drawText(QRectF(plot.left(), plot.bottom() + 2, plot.width(), lineHeight), Qt::AlignRight,
                     dayLabel(days.back().day));
}

}  // namespace morvel::progress
