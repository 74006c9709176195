#pragma once
// The reviews falling due over the coming days as bars, today's bar (which also holds the
// overdue ones) first, under a caption saying what is counted.

#include <QWidget>
#include <vector>

namespace morvel::progress {

class ForecastChart : public QWidget {
    Q_OBJECT
public:
    explicit ForecastChart(QWidget* parent = nullptr);

    /// Due reviews per day, from `today` on (a local day, counted from 1970-01-01).
    void set_counts(std::vector<int> dueCounts, int today);
    const std::vector<int>& get_counts() const { return counts; }
    /// Where the bar of day `index` is painted in the current size; empty for a day without
    /// reviews or outside the forecast.
    QRectF bar_rect(int index) const;
    /// "Due in the next 30 days", in the current language.
    static QString caption_text(int days);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    /// The area the bars stand in: below the caption, right of the count axis, above the dates.
    QRectF plot_rect() const;
    int highest() const;

    std::vector<int> counts;
    int firstDay = 0;
};

}  // namespace morvel::progress
