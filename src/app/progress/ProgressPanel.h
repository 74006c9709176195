#pragma once
// The progress dialog: the level's characters with their state in a sortable table, the last
// 30 days as a chart, the characters missed most often, and buttons to export or reset the
// history. A click on a character reports it through `liSelect`; the dialog knows no window.

#include <ki/Listener.h>

#include <QDialog>
#include <vector>

#include "app/ChinChar.h"
#include "app/progress/ProgressStore.h"

class QListWidget;
class QStandardItemModel;
class QTableView;

namespace morvel::progress {

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

    /// Fired with the code point of a character the learner clicked.
    ki::Listener<int> liSelect;

    QTableView* table() const { return tableView; }
    QListWidget* missed_list() const { return missedList; }
    ProgressChart* chart() const { return chartView; }

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
    QListWidget* missedList = nullptr;
};

}  // namespace morvel::progress
