#include "app/progress/ForecastChart.h"

#include <ki/qt/lang.h>

#include <QDate>
#include <QLocale>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "app/progress/ProgressMark.h"

namespace morvel::progress {

using ki::qt::lang::tt;

ForecastChart::ForecastChart(QWidget* parent) : QWidget(parent) {
    setMinimumHeight(120);
}

void ForecastChart::set_counts(std::vector<int> dueCounts, int today) {
    counts = std::move(dueCounts);
    firstDay = today;
    update();
}

QString ForecastChart::caption_text(int days) {
    return tt(QStringLiteral("Due in the next %1 days"), QStringLiteral("Fällig in den nächsten %1 Tagen"),
              QStringLiteral("К повторению в ближайшие %1 дней"))
        .arg(days);
}

QSize ForecastChart::sizeHint() const {
    return {380, 180};
}

int ForecastChart::highest() const {
    return std::max(1, counts.empty() ? 0 : *std::max_element(counts.begin(), counts.end()));
}

QRectF ForecastChart::plot_rect() const {
    const QFontMetrics fm(font());
    const int lineHeight = fm.height();
    const int left = fm.horizontalAdvance(QString::number(highest())) + 8;
    // Caption, then a line for the count over the tallest bar; the dates below.
    return QRectF(left, lineHeight * 2.5, width() - left - 4, height() - lineHeight * 4);
}

QRectF ForecastChart::bar_rect(int index) const {
    if (index < 0 || index >= static_cast<int>(counts.size()) || counts[static_cast<size_t>(index)] <= 0)
        return {};
    const QRectF plot = plot_rect();
    if (plot.width() <= 0 || plot.height() <= 0) return {};
    const qreal slot = plot.width() / static_cast<qreal>(counts.size());
    // Whole pixels: the bars stay crisp and their heights read as the counts.
    const qreal h = std::round(plot.height() * counts[static_cast<size_t>(index)] / highest());
    return QRectF(std::round(plot.left() + slot * index + slot * 0.15), std::round(plot.bottom()) - h,
                  std::max(1.0, std::round(slot * 0.7)), h);
}

void ForecastChart::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QPalette& pal = palette();
    const QColor text = pal.color(QPalette::WindowText);
    const QFontMetrics fm(font());
    const int lineHeight = fm.height();

    painter.setPen(text);
    painter.drawText(0, fm.ascent(), caption_text(static_cast<int>(counts.size())));
    const QRectF plot = plot_rect();
    if (plot.width() <= 0 || plot.height() <= 0 || counts.empty()) return;

    painter.setPen(QPen(pal.color(QPalette::Mid), 1));
    painter.drawLine(QPointF(plot.left(), std::round(plot.bottom()) + 0.5),
                     QPointF(plot.right(), std::round(plot.bottom()) + 0.5));
    painter.setPen(text);
    painter.drawText(QRectF(0, plot.top() - lineHeight / 2.0, plot.left() - 4, lineHeight), Qt::AlignRight,
                     QString::number(highest()));
    painter.drawText(QRectF(0, plot.bottom() - lineHeight / 2.0, plot.left() - 4, lineHeight), Qt::AlignRight,
                     QStringLiteral("0"));

    const qreal slot = plot.width() / static_cast<qreal>(counts.size());
    // Today's bar also holds the overdue reviews: it takes the accent that marks due characters.
    const QColor todayColor = ProgressMark::accent(pal);
    const QColor laterColor = pal.color(QPalette::Highlight);
    const bool countsFit = fm.horizontalAdvance(QString::number(highest())) <= slot;
    for (int i = 0; i < static_cast<int>(counts.size()); ++i) {
        const QRectF bar = bar_rect(i);
        if (bar.isEmpty()) continue;
        painter.fillRect(bar, i == 0 ? todayColor : laterColor);
        if (countsFit)
            painter.drawText(QRectF(plot.left() + slot * i, bar.top() - lineHeight, slot, lineHeight),
                             Qt::AlignHCenter | Qt::AlignBottom,
                             QString::number(counts[static_cast<size_t>(i)]));
    }

    // Dates in the interface language, as the practice chart writes them.
    const QLocale locale(ki::qt::lang::get_lang());
    const QString format =
        locale.language() == QLocale::German ? QStringLiteral("d. MMM") : QStringLiteral("d MMM");
    const QRectF below(plot.left(), plot.bottom() + 2, plot.width(), lineHeight);
    painter.drawText(below, Qt::AlignLeft,
                     tt(QStringLiteral("today"), QStringLiteral("heute"), QStringLiteral("сегодня")));
    painter.drawText(
        below, Qt::AlignRight,
        locale.toString(QDate(1970, 1, 1).addDays(firstDay + static_cast<qint64>(counts.size()) - 1),
                        format));
}

}  // namespace morvel::progress
