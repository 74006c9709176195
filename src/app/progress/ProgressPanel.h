#pragma once
// The progress dialog: the level's characters with their state and memory in a sortable table,
// the last 30 days as a chart, the reviews due in the next 30 days, the share of reviews
// remembered, the characters missed most often, and buttons to export or reset the history.
// A click on a character reports it through `liSelect`; the dialog knows no window.

#include <ki/Listener.h>

#include <QDialog>
#include <optional>
#include <vector>

#include "app/ChinChar.h"
#include "app/progress/ProgressStore.h"

class QLabel;
class QListWidget;
class QStandardItemModel;
class QTableView;

namespace morvel::progress {

class ForecastChart;
class ProgressChart;

class ProgressPanel : public QDialog {
    Q_OBJECT
public:
    static constexpr int CHART_DAYS = 30;
    static constexpr int MOST_MISSED = 10;

    enum Column {
        COL_CHARACTER,
        COL_PINYIN,
        COL_STATE,
        COL_COMPLETIONS,
        COL_MISSES,
        COL_LAST,
        COL_DUE,
        COL_STABILITY,
        COL_DIFFICULTY,
        COL_AVERAGE_SCORE,
        COL_BEST_SCORE,
        COL_COUNT
    };

    /// `store` must outlive the panel. `levelChars` are the rows of the table, in level order.
    ProgressPanel(ProgressStore& store, std::vector<ChinChar> levelChars, QWidget* parent = nullptr);

    /// Reads the store again into the table, the chart and the list.
    void refresh();

    /// The learner's texts for a store notice, in the current language; empty for none.
    /// `detail` is the store's `notice_path`: a file, a folder or why writes fail.
    static QString notice_text(ProgressStore::Notice notice, const QString& detail = {});
    /// "12 due", in the current language.
    static QString due_count_text(int count);
    static QString mastery_text(Mastery mastery);
    /// "Retention (30 days): 87 %", with a dash for no reviews, in the current language.
    static QString retention_text(std::optional<double> share);

    /// Fired with the code point of a character the learner clicked.
    ki::Listener<int> liSelect;

    QTableView* table() const { return tableView; }
    QListWidget* missed_list() const { return missedList; }
    ProgressChart* chart() const { return chartView; }
    ForecastChart* forecast() const { return forecastView; }
    QLabel* retention_label() const { return retentionLabel; }

protected:
    /// A new palette (the theme changed, or the window handed over its own) redraws the marks.
    void changeEvent(QEvent* event) override;

private:
    void on_export();
    void on_reset();

    ProgressStore& store;
    std::vector<ChinChar> chars;
    QStandardItemModel* model = nullptr;
    QTableView* tableView = nullptr;
    ProgressChart* chartView = nullptr;
    ForecastChart* forecastView = nullptr;
    QLabel* retentionLabel = nullptr;
    QListWidget* missedList = nullptr;
};

}  // namespace morvel::progress
