#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/qt/components/GPanel.h>
#include <ki/qt/components/otf/GDataScroller.h>

#include <QBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QResizeEvent>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QWheelEvent>
#include <algorithm>
#include <cstdlib>

namespace ki::qt::otf {

namespace {
std::string listener_key(const GDataScroller* scroller) {
    return "GDataScroller@" + std::to_string(reinterpret_cast<quintptr>(scroller));
}
}  // namespace

GDataScroller::GDataScroller(QWidget* parent) : QFrame(parent), ObjectName<QWidget>(this, "GDataScroller") {
    setFrameShape(QFrame::StyledPanel);
    setFrameShadow(QFrame::Sunken);
    setFocusPolicy(Qt::WheelFocus);
    auto* box = new QHBoxLayout(this);
    box->setContentsMargins(0, 0, 0, 0);
    box->setSpacing(0);
    viewport = new QWidget(this);
    viewport->setObjectName(QStringLiteral("viewport"));
    viewport->setAutoFillBackground(true);
    viewport->setBackgroundRole(QPalette::Base);
    viewport->installEventFilter(this);
    scrollbar = new QScrollBar(Qt::Vertical, this);
    box->addWidget(viewport, 1);
    box->addWidget(scrollbar);
    connect(scrollbar, &QScrollBar::valueChanged, this, [this](int value) { update_index_win_top(value); });
}

GDataScroller::~GDataScroller() {
    if (model) model->liModelChanged.remove(listener_key(this));
    if (dragEnabled && gApp != nullptr) {
        event::EventFilter& filter = gApp->get_event_filter();
        filter.liMousePress.remove(listener_key(this));
        filter.liMouseMove.remove(listener_key(this));
        filter.liMouseRelease.remove(listener_key(this));
    }
}

void GDataScroller::enable_drag(int threshold) {
    if (gApp == nullptr) {
        pp_error("GDataScroller::enable_drag, no application object");
        return;
    }
    dragThreshold = threshold;
    dragEnabled = true;
    event::EventFilter& filter = gApp->get_event_filter();
    filter.liMousePress.set(listener_key(this), [this](QMouseEvent* const& ev) { on_drag_press(ev); });
    filter.liMouseMove.set(listener_key(this), [this](QMouseEvent* const& ev) { on_drag_move(ev); });
    filter.liMouseRelease.set(listener_key(this), [this](QMouseEvent* const& ev) { on_drag_release(ev); });
}

void GDataScroller::on_drag_press(QMouseEvent* ev) {
    const QPoint global = ev->globalPosition().toPoint();
    // Every press starts afresh: a press elsewhere (a trace on the canvas) must not drag the
    // list from an old position.
    tracking = false;
    dragged = false;
    if (!contains_global_point(global)) return;
    pp("HOOK, press, mouse at:$", global);
    ptPress = global;
    topIndexPress = get_index_win_top();
    tracking = true;
}

void GDataScroller::on_drag_move(QMouseEvent* ev) {
    if ((ev->buttons() & Qt::LeftButton) == 0 || !tracking) return;
    const QPoint global = ev->globalPosition().toPoint();
    const QPoint diff = global - ptPress;
    if (std::abs(diff.y()) > dragThreshold) {
        pp("HOOK, move, mouse BIGGER diff:$ - so disable now", diff);
        dragged = true;
        const int rowHeight = model ? std::max(1, model->get_row_height(20)) : 1;
        const long long rows = diff.y() / rowHeight;
        pp("diffINdex:$", rows);
        update_index_win_top(topIndexPress - rows);
    } else {
        pp("HOOK, move, mouse at:$, ptDiff:$", global, diff);
    }
}

void GDataScroller::on_drag_release(QMouseEvent* ev) {
    if (!tracking) return;
    pp("HOOK, released, mouse at:$", ev->globalPosition().toPoint());
    // Queued: the release reaches the rows first, and a row must still see the drag.
    QMetaObject::invokeMethod(
        this,
        [this]() {
            if (!dragged) return;
            dragged = false;
            tracking = false;
            update_model();
        },
        Qt::QueuedConnection);
}

void GDataScroller::ini(GModel* new_model) {
    if (model) model->liModelChanged.remove(listener_key(this));
    model = new_model;
    topIndex = 0;
    if (model) model->liModelChanged.set(listener_key(this), [this]() { update_model_later(); });
    rebuild();
}

void GDataScroller::update_model() {
    rebuild();
}

void GDataScroller::update_model_later() {
    // A hidden list only notes it (rebuild()): it builds its rows when it is shown.
    if (!isVisible()) {
        rebuild();
        return;
    }
    if (rebuildPosted) return;
    rebuildPosted = true;
    QMetaObject::invokeMethod(
        this,
        [this]() {
            rebuildPosted = false;
            rebuild();
        },
        Qt::QueuedConnection);
}

void GDataScroller::drop_rows() {
    for (GPanel* row : std::as_const(rows)) discard_row(row);
    rows.clear();
}

void GDataScroller::discard_row(GPanel* row) {
    // Later, not now: the row may be the receiver of the very event that led here (a click,
    // or a move that the application-wide filter turned into a scroll).
    row->liMouseClick.clear();
    row->hide();
    row->deleteLater();
}

void GDataScroller::rebuild() {
    if (inRebuild) return;
    const long long count = model ? model->row_count() : 0;
    topIndex = std::clamp(topIndex, 0LL, std::max(0LL, count - 1));
    // Rows built for a list nobody sees would only be built again at its real size: a window
    // before it is first shown sets its list's top row and selection several times, and its
    // palette change would post yet another build. A hidden list builds its rows when shown.
    if (!isVisible()) {
        drop_rows();
        rowsStale = true;
        return;
    }
    inRebuild = true;
    rowsStale = false;
    drop_rows();
    fill_rows();
    inRebuild = false;
    update_scrollbar();
}

int GDataScroller::model_row_height(long long index) const {
    return model->get_row_height(int(std::min<long long>(index, INT_MAX)));
}

GPanel* GDataScroller::make_row(long long index, int width) {
    PanelData data{viewport, width, index == model->get_selected_index()};
    GPanel* row = model->gen_panel_row(index, &data);
    if (row == nullptr) {
        pp_error("GDataScroller::make_row, gen_panel_row returned NULL, row:$", index);
        return nullptr;
    }
    if (row->parentWidget() != viewport) row->setParent(viewport);
    // At least a pixel: rows of no height would never fill the viewport, and every row of
    // the model would be built.
    const int height =
        std::max({1, model_row_height(index),
                  row->hasHeightForWidth() ? row->heightForWidth(width) : row->sizeHint().height()});
    row->resize(width, height);
    row->liMouseClick.set(listener_key(this), [this, index](QMouseEvent* const&) { on_row_click(index); });
    return row;
}

void GDataScroller::fill_rows() {
    if (!model) return;
    const long long count = model->row_count();
    const int width = viewport->width();
    const int height = viewport->height();
    // Rows a lower viewport no longer shows go.
    while (!rows.isEmpty() && rows.back()->y() >= height) discard_row(rows.takeLast());
    int y = rows.isEmpty() ? 0 : rows.back()->y() + rows.back()->height();
    for (long long i = topIndex + rows.size(); i < count && y < height; ++i) {
        GPanel* row = make_row(i, width);
        if (row == nullptr) break;
        row->move(0, y);
        row->show();
        rows.push_back(row);
        y += row->height();
    }
    // Below the list's last row, rows from above take the place that would stay empty (a
    // selection near the end set while the list had no height yet, or a taller window). Only
    // whole rows: the last one stays in full view.
    while (topIndex > 0 && y < height) {
        // A row is at least as high as its model says: one that cannot fit is not built.
        if (y + model_row_height(topIndex - 1) > height) break;
        GPanel* row = make_row(topIndex - 1, width);
        if (row == nullptr) break;
        if (y + row->height() > height) {
            discard_row(row);
            break;
        }
        for (GPanel* below : std::as_const(rows)) below->move(0, below->y() + row->height());
        row->move(0, 0);
        row->show();
        rows.prepend(row);
        --topIndex;
        y += row->height();
    }
    if (!rows.isEmpty()) rowHeightSeen = std::max(1, y / int(rows.size()));
}

int GDataScroller::estimated_rows_per_page() const {
    int row_height = rowHeightSeen;
    if (row_height <= 0) row_height = model ? std::max(1, model->get_row_height(0)) : 1;
    return std::max(1, viewport->height() / row_height);
}

long long GDataScroller::max_top() const {
    const long long count = model ? model->row_count() : 0;
    return std::max(0LL, count - estimated_rows_per_page());
}

void GDataScroller::update_scrollbar() {
    const QSignalBlocker blocker(scrollbar);
    const long long top_max = max_top();
    // QScrollBar counts in int; lists beyond that scroll by the scroll bar in coarser steps.
    scrollbar->setRange(0, int(std::min<long long>(top_max, INT_MAX)));
    scrollbar->setPageStep(estimated_rows_per_page());
    scrollbar->setSingleStep(1);
    scrollbar->setValue(int(std::min<long long>(topIndex, INT_MAX)));
}

void GDataScroller::update_index_win_top(long long index) {
    index = std::clamp(index, 0LL, max_top());
    if (index == topIndex && !rows.isEmpty()) return;
    topIndex = index;
    rebuild();
}

int GDataScroller::fully_visible_rows() const {
    int n = 0;
    for (const GPanel* row : rows) {
        if (row->geometry().bottom() >= viewport->height()) break;
        ++n;
    }
    return std::max(1, n);
}

void GDataScroller::ensure_visible(long long index) {
    if (index < topIndex)
        update_index_win_top(index);
    else if (index >= topIndex + fully_visible_rows())
        update_index_win_top(index - fully_visible_rows() + 1);
}

GPanel* GDataScroller::get_row_widget(long long index) const {
    const long long offset = index - topIndex;
    return offset >= 0 && offset < rows.size() ? rows[int(offset)] : nullptr;
}

bool GDataScroller::contains_global_point(const QPoint& global) const {
    return isVisible() && rect().contains(mapFromGlobal(global));
}

void GDataScroller::set_scrollbar_vert_visible(bool visible) {
    scrollbar->setVisible(visible);
}

bool GDataScroller::is_scrollbar_vert_visible() const {
    return !scrollbar->isHidden();
}

void GDataScroller::on_row_click(long long index) {
    if (model) model->set_selected_index(index);
    if (liRowClicked.has_listener()) liRowClicked.fire_event(index);
    update_model_later();
}

bool GDataScroller::eventFilter(QObject* watched, QEvent* ev) {
    if (watched == viewport && ev->type() == QEvent::Resize) {
        const auto* resize = static_cast<QResizeEvent*>(ev);
        const bool sameWidth = resize->oldSize().width() == resize->size().width();
        const bool sameHeight = resize->oldSize().height() == resize->size().height();
        if (!model || rows.isEmpty() || rowsStale || !isVisible() || (!sameWidth && !sameHeight)) {
            rebuild();
        } else if (sameHeight) {
            // Only wider or narrower: stretch the rows in place.
            for (GPanel* row : std::as_const(rows)) row->resize(resize->size().width(), row->height());
        } else if (!inRebuild) {
            // Only taller or shorter (a layout settling): the rows on screen stay, rows are
            // added or dropped at the bottom.
            fill_rows();
            update_scrollbar();
        }
    }
    return QFrame::eventFilter(watched, ev);
}

void GDataScroller::wheelEvent(QWheelEvent* ev) {
    wheelRemainder += ev->angleDelta().y();
    const int steps = wheelRemainder / 120;
    wheelRemainder %= 120;
    if (steps != 0) update_index_win_top(topIndex - steps);
    ev->accept();
}

void GDataScroller::keyPressEvent(QKeyEvent* ev) {
    const long long page = estimated_rows_per_page();
    switch (ev->key()) {
        case Qt::Key_Up:
            update_index_win_top(topIndex - 1);
            break;
        case Qt::Key_Down:
            update_index_win_top(topIndex + 1);
            break;
        case Qt::Key_PageUp:
            update_index_win_top(topIndex - page);
            break;
        case Qt::Key_PageDown:
            update_index_win_top(topIndex + page);
            break;
        case Qt::Key_Home:
            update_index_win_top(0);
            break;
        case Qt::Key_End:
            update_index_win_top(max_top());
            break;
        default:
            QFrame::keyPressEvent(ev);
            return;
    }
    ev->accept();
}

void GDataScroller::showEvent(QShowEvent* ev) {
    QFrame::showEvent(ev);
    if (rowsStale) rebuild();
}

void GDataScroller::changeEvent(QEvent* ev) {
    QFrame::changeEvent(ev);
    if (ev->type() == QEvent::PaletteChange || ev->type() == QEvent::FontChange ||
        ev->type() == QEvent::StyleChange)
        update_model_later();
}

}  // namespace ki::qt::otf
