#pragma once
// The practice of the last days as a chart: a bar per day for the characters completed and a
// line for the share of clean strokes among the day's judged traces, and a dashed line for the
// day's average character score, each day's score marked by a square.

#include <QWidget>
#include <vector>

#include "app/progress/ProgressTypes.h"

namespace morvel::progress {

class ProgressChart : public QWidget {
    Q_OBJECT
public:
    explicit ProgressChart(QWidget* parent = nullptr);

    /// Oldest day first.
    void set_days(std::vector<DayStats> stats);
    const std::vector<DayStats>& get_days() const { return days; }
    /// The colour of the line of the day's average score.
    static QColor score_color(const QPalette& palette);
    /// Where the day's score is marked; (-1, -1) for a day without a score.
    QPointF score_point(size_t day) const;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int most_completed() const;
    QRectF plot_rect() const;
    /// The same, for a plot measured once per paint.
    QPointF score_point_in(const QRectF& plot, size_t day) const;

    std::vector<DayStats> days;
};

}  // namespace morvel::progress
