#pragma once
// A vertical list over a row model that creates widgets only for the rows on screen, so a
// model of any length opens and scrolls at once. Scrolls by whole rows: wheel, scroll bar,
// keys; the top row index can also be set from outside (drag gestures).

#include <ki/Listener.h>
#include <ki/qt/components/otf/GModel.h>
#include <ki/qt/ext/ObjectName.h>

#include <QFrame>
#include <QPoint>
#include <QPointer>
#include <QVector>

class QMouseEvent;
class QScrollBar;

namespace ki::qt::otf {

class GDataScroller : public QFrame, public ObjectName<QWidget> {
    Q_OBJECT
public:
    explicit GDataScroller(QWidget* parent = nullptr);
    ~GDataScroller() override;

    /// Shows `model` (not owned; a model that goes away leaves the list empty).
    void ini(GModel* model);
    GModel* get_model() const { return model.data(); }

    /// Builds the visible rows again, e.g. after the model or its selection changed.
    void update_model();
    /// update_model once the event loop runs: safe from inside a row's own event handler.
    void update_model_later();

    long long get_index_win_top() const { return topIndex; }
    /// Clamped to the rows there are; rebuilds only when the top row changes.
    void update_index_win_top(long long index);
    /// Scrolls the least amount that brings `index` fully on screen.
    void ensure_visible(long long index);
    /// The number of rows currently on screen (row widgets that exist).
    int get_visible_row_count() const { return int(rows.size()); }
    /// The row widget of `index` when it is on screen, else null.
    GPanel* get_row_widget(long long index) const;

    /// Whether a point in global coordinates lies inside the list.
    bool contains_global_point(const QPoint& global) const;
    void set_scrollbar_vert_visible(bool visible);
    bool is_scrollbar_vert_visible() const;

    /// Lets the list be dragged vertically with the mouse or a finger anywhere inside it,
    /// through the application's mouse listeners: a vertical move of more than `threshold`
    /// pixels scrolls by whole rows against the finger. Needs the application object.
    void enable_drag(int threshold);
    /// Whether the current press has become a drag (a row click then does not select).
    bool is_dragged() const { return dragged; }

    /// A click on a row (after the model's selection was set to it).
    Listener<long long> liRowClicked;

protected:
    bool eventFilter(QObject* watched, QEvent* ev) override;
    void wheelEvent(QWheelEvent* ev) override;
    void keyPressEvent(QKeyEvent* ev) override;
    void changeEvent(QEvent* ev) override;
    void showEvent(QShowEvent* ev) override;

private:
    void rebuild();
    // Adds the rows the viewport has room for below the last one, or above the first at the
    // end of the model, and drops those below the viewport.
    void fill_rows();
    GPanel* make_row(long long index, int width);
    int model_row_height(long long index) const;
    void drop_rows();
    void discard_row(GPanel* row);
    void update_scrollbar();
    void on_row_click(long long index);
    int fully_visible_rows() const;
    long long max_top() const;
    int estimated_rows_per_page() const;

    QPointer<GModel> model;
    QWidget* viewport = nullptr;
    QScrollBar* scrollbar = nullptr;
    QVector<GPanel*> rows;
    long long topIndex = 0;
    int wheelRemainder = 0;
    // Average height of the rows last built: how many rows make a page.
    int rowHeightSeen = 0;
    bool rebuildPosted = false;
    bool inRebuild = false;
    // Rows were asked for while the list was hidden.
    bool rowsStale = false;

    void on_drag_press(QMouseEvent* ev);
    void on_drag_move(QMouseEvent* ev);
    void on_drag_release(QMouseEvent* ev);
    // The press that may become a drag, in global coordinates, and the top row at that moment.
    QPoint ptPress;
    long long topIndexPress = 0;
    int dragThreshold = 4;
    bool dragged = false;
    bool tracking = false;
    bool dragEnabled = false;
};

}  // namespace ki::qt::otf
