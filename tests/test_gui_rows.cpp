#include <gtest/gtest.h>
#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/qt/components/GLabel.h>
#include <ki/qt/components/GPanel.h>
#include <ki/qt/components/otf/GDataScroller.h>
#include <ki/qt/dialogs/GPanelLogView.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLayout>
#include <QTest>
#include <QWheelEvent>
#include <atomic>
#include <thread>
#include <vector>

using namespace ki::qt;
using ki::qt::otf::GDataScroller;
using ki::qt::otf::GModel;
using ki::qt::otf::PanelData;

namespace {

class NumberModel : public GModel {
public:
    explicit NumberModel(long long rows, int height = 20) : count(rows), rowHeight(height) {}
    long long row_count() const override { return count; }
    int get_row_height(int) const override { return rowHeight; }
    GPanel* gen_panel_row(long long row, PanelData* data) override {
        GPanel* panel = GModel::gen_panel_row(row, data);
        if (rowHeight > 0) panel->gen_label(QStringLiteral("row %1").arg(row));
        else panel->layout()->setContentsMargins(0, 0, 0, 0);
        ++generated;
        return panel;
    }
    long long count;
    int rowHeight;
    long long generated = 0;
};

void drop_deleted_rows() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

int live_rows(const GDataScroller& scroller) {
    return int(
        scroller.findChild<QWidget*>("viewport")->findChildren<GPanel*>(Qt::FindDirectChildrenOnly).size());
}

QString first_label(GPanel* row) {
    return row != nullptr ? row->findChild<GLabel*>()->text() : QString();
}

}  // namespace

TEST(GuiRows, HundredThousandRowsScrollSelectAndKeepOnlyVisibleRowsAsWidgets) {
    NumberModel model(100000);
    GDataScroller scroller;
    scroller.resize(240, 400);
    QElapsedTimer clock;
    clock.start();
    scroller.ini(&model);
    scroller.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&scroller));
    const int visible = scroller.get_visible_row_count();
    EXPECT_GE(visible, 15);
    EXPECT_LE(visible, 21) << "400 pixels hold about 20 rows of 20";
    for (long long top = 0; top < 100000; top += 997) scroller.update_index_win_top(top);
    scroller.update_index_win_top(1LL << 40);
    const qint64 elapsed = clock.elapsed();
    drop_deleted_rows();
    EXPECT_LT(elapsed, 3000) << "opening and 100 jumps must not touch the whole model";
    EXPECT_LT(model.generated, 120 * 25);
    EXPECT_EQ(live_rows(scroller), scroller.get_visible_row_count()) << "rows scrolled away must be gone";
    EXPECT_EQ(first_label(scroller.get_row_widget(99999)), "row 99999") << "the end is reachable";
    EXPECT_EQ(scroller.get_row_widget(0), nullptr);

    scroller.update_index_win_top(0);
    long long clicked = -1;
    scroller.liRowClicked += [&](const long long& row) { clicked = row; };
    QTest::mouseClick(scroller.get_row_widget(3), Qt::LeftButton);
    EXPECT_EQ(clicked, 3);
    EXPECT_EQ(model.get_selected_index(), 3);
    GPanel* row5 = scroller.get_row_widget(5);
    QTest::mousePress(row5, Qt::LeftButton, {}, QPoint(10, 5));
    QTest::mouseRelease(row5, Qt::LeftButton, {}, QPoint(10, 45));
    EXPECT_EQ(model.get_selected_index(), 3) << "a press that moved 40 pixels is a drag, not a click";
    scroller.update_index_win_top(250);
    QCoreApplication::processEvents();
    scroller.update_index_win_top(0);
    drop_deleted_rows();
    ASSERT_NE(scroller.get_row_widget(3), nullptr);
    EXPECT_EQ(scroller.get_row_widget(3)->backgroundRole(), QPalette::Highlight) << "after scrolling";
    EXPECT_EQ(scroller.get_row_widget(4)->backgroundRole(), QPalette::Base);
    QWheelEvent down(QPointF(20, 20), scroller.mapToGlobal(QPointF(20, 20)), QPoint(), QPoint(0, -240),
                     Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&scroller, &down);
    EXPECT_EQ(scroller.get_index_win_top(), 2) << "two wheel notches move two rows";
    EXPECT_TRUE(scroller.contains_global_point(scroller.mapToGlobal(QPoint(5, 5))));
    EXPECT_FALSE(scroller.contains_global_point(scroller.mapToGlobal(QPoint(-5, 5))));

    NumberModel flat(100000, 0);
    scroller.ini(&flat);
    EXPECT_LE(flat.generated, 400) << "rows of no height must not all be built";
}

// A window sets its list's top row before its first show; the list builds its rows once it is
// seen, and near the model's end rows from above fill what would stay empty below the last.
TEST(GuiRows, AHiddenListBuildsNoRowAndAShownOneFillsItsHeightAlsoAtTheEnd) {
    struct Case {
        const char* name;
        long long visibleBeforeShow;
        int heightAfterShow;  // 0: as shown
        long long top;        // -1: the last row at the bottom
    };
    const Case cases[] = {
        {"a row in the middle", 40, 0, 40},
        {"the last row", 99, 0, -1},
        {"the last row, then a taller list", 99, 600, -1},
        {"a row in the middle, then a shorter list", 40, 200, 40},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        NumberModel model(100);
        GDataScroller scroller;
        scroller.resize(240, 400);
        scroller.ini(&model);
        scroller.ensure_visible(c.visibleBeforeShow);
        scroller.update_model();
        scroller.update_model_later();
        QCoreApplication::processEvents();
        EXPECT_EQ(model.generated, 0) << "nothing is built for a list never seen";
        scroller.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&scroller));
        QCoreApplication::processEvents();
        EXPECT_LE(model.generated, scroller.get_visible_row_count() + 1) << "one build when shown";
        if (c.heightAfterShow > 0) {
            scroller.resize(240, c.heightAfterShow);
            QCoreApplication::processEvents();
        }
        drop_deleted_rows();
        const int height = scroller.findChild<QWidget*>("viewport")->height();
        const int visible = scroller.get_visible_row_count();
        const long long top = scroller.get_index_win_top();
        EXPECT_EQ(live_rows(scroller), visible);
        EXPECT_EQ(first_label(scroller.get_row_widget(top)), QString("row %1").arg(top));
        EXPECT_GT(visible * 20, height - 20) << "no whole row's room stays empty";
        if (c.top >= 0) {
            EXPECT_EQ(top, c.top);
        } else {
            EXPECT_EQ(top + visible, 100);
            EXPECT_LE(scroller.get_row_widget(99)->geometry().bottom(), height) << "the last row in full view";
        }
    }
}

TEST(GuiRows, WorkerThreadLinesReachTheLogViewBoundedAndOutliveIt) {
    ki::log::set_log_level(ki::log::LOG_INFO);  // the view reads info lines; the suite runs at warnings
    ki::log::LogAppender* console = ki::log::get_console_appender();
    console->set_enabled(false);
    {
        GPanelLogView view;
        std::thread worker([]() {
            for (int i = 0; i < 3 * GPanelLogView::MAX_LINES; ++i) ki::pp_info("worker line $", i);
        });
        worker.join();
        QCoreApplication::processEvents();
        EXPECT_LE(view.get_line_count(), GPanelLogView::MAX_LINES);
        const QString text = view.get_text();
        EXPECT_TRUE(text.endsWith(QString("worker line %1").arg(3 * GPanelLogView::MAX_LINES - 1)));
        EXPECT_TRUE(text.contains("lines dropped")) << "a flood is cut, and says so";
    }
    // Views destroyed while a worker logs: flushes queued for them must go with them, and the
    // view that stays still receives the worker's lines.
    std::atomic<bool> stop{false};
    std::atomic<int> logged{0};
    std::thread worker([&]() {
        for (; !stop; ++logged) ki::pp_info("busy worker");
    });
    auto view = std::make_unique<GPanelLogView>();
    for (int round = 0; round < 20; ++round) {
        QCoreApplication::processEvents();
        view = std::make_unique<GPanelLogView>();
    }
    for (const int seen = logged; logged < seen + 10;) std::this_thread::yield();
    stop = true;
    worker.join();
    QCoreApplication::processEvents();
    console->set_enabled(true);
    EXPECT_TRUE(view->get_text().contains("busy worker"));
}

TEST(GuiRows, GlobalMouseAndKeyListenersHearEachPressOnce) {
    QWidget outer;
    outer.resize(100, 100);
    auto* inner = new QWidget(&outer);
    inner->setGeometry(10, 10, 50, 50);
    outer.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&outer));
    int presses = 0;
    int releases = 0;
    std::vector<int> keys;
    auto& filter = gApp->get_event_filter();
    filter.liMousePress.set("test", [&](QMouseEvent* const&) { ++presses; });
    filter.liMouseRelease.set("test", [&](QMouseEvent* const&) { ++releases; });
    filter.liKeyPress.set("test", [&](const int& key) { keys.push_back(key); });
    // The inner widget ignores presses and keys, so Qt offers them to the outer one as well.
    QTest::mouseClick(inner, Qt::LeftButton, {}, QPoint(5, 5));
    QTest::mouseClick(inner, Qt::LeftButton, {}, QPoint(6, 5));
    QTest::keyClick(inner, Qt::Key_A);
    QTest::keyClick(inner, Qt::Key_A);
    QTest::keyClick(&outer, Qt::Key_B);
    filter.liMousePress.remove("test");
    filter.liMouseRelease.remove("test");
    filter.liKeyPress.remove("test");
    EXPECT_EQ(presses, 2);
    EXPECT_EQ(releases, 2);
    EXPECT_EQ(keys, (std::vector<int>{Qt::Key_A, Qt::Key_A, Qt::Key_B}));
}
