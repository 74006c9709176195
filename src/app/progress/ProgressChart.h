#pragma once
// The practice of the last days as a chart: a bar per day for the characters completed and a
// line for the share of clean strokes among the day's judged traces.

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
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::vector<DayStats> days;
};

}  // namespace morvel::progress
