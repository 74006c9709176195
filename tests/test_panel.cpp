// The progress panel's forecast, retention and memory columns, read from pixels and table cells.
#include <gtest/gtest.h>
#include <ki/qt/lang.h>
#include <ki/qt/themes.h>

#include <QDateTime>
#include <QImage>
#include <QLabel>
#include <QTableView>
#include <QTemporaryDir>

#include "WindowTestKit.h"
#include "app/progress/ForecastChart.h"
#include "app/progress/ProgressChart.h"
#include "app/progress/ProgressMark.h"
#include "app/progress/ProgressPanel.h"

namespace {

using namespace morvel::progress;
using R = morvel::review::Rating;
using ki::qt::themes::THEME_DARK, ki::qt::themes::THEME_GREEN, ki::qt::themes::THEME_NORMAL;
constexpr int A = 0x4E2D, B = 0x4EBA, C = 0x5927, D = 0x5C0F;

TEST(PanelTest, ForecastRetentionAndMemoryFollowTheHistory) {
    const qint64 base = QDateTime(QDate(2026, 3, 2), QTime(9, 0)).toMSecsSinceEpoch(), dayMs = 86'400'000;
    const struct {
        const char* name;
        QLocale::Language language;
        unsigned theme;
        std::vector<std::tuple<int, int, R>> reviews;  // day, code point, rating
        int today;
        QString retention;
    } rows[] = {
        // clang-format off
        {"nothing reviewed: no bar, dashes", QLocale::English, THEME_NORMAL, {}, 0, "Retention (30 days): —"},
        {"one again in four recalls, cards due over the coming days", QLocale::German, THEME_GREEN,
         {{0, A, R::GOOD}, {0, B, R::GOOD}, {3, A, R::AGAIN}, {4, A, R::GOOD}, {4, B, R::HARD}, {8, C, R::EASY},
          {8, B, R::EASY}}, 9, "Behalten (30 Tage): 75 %"},
        {"overdue cards in today's bar, reviews past the month forgotten", QLocale::Russian, THEME_DARK,
         {{0, A, R::GOOD}, {5, A, R::AGAIN}, {0, B, R::EASY}}, 90, "Удержание (30 дней): —"},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ki::qt::lang::set_lang(row.language);
        QTemporaryDir dir;
        qint64 now = 0;
        ProgressStore store([&now] { return now; });
        ASSERT_EQ(store.open(dir.path()), ProgressStore::Status::WRITABLE);
        for (const auto& [day, cp, rating] : row.reviews)
            ASSERT_TRUE(store.record_review(ReviewRecord{base + day * dayMs, cp, rating, 4000}));
        now = base + row.today * dayMs;
        ProgressPanel panel(store, morvel::create_basic_table());
        panel.setPalette(ki::qt::themes::get_palette(row.theme));
        panel.show();
        EXPECT_EQ(panel.retention_label()->text(), row.retention);

        // A bar from a wrong count, or in the window's own colour, shows in the bar-coloured pixels.
        const QImage image = panel.forecast()->grab().toImage();
        const QColor today = ProgressMark::accent(panel.palette()),
                     later = panel.palette().color(QPalette::Highlight);
        const std::vector<int> counts = store.due_forecast(ProgressPanel::CHART_DAYS);
        const auto coloured = [&](const QList<QColor>& colours, const QRect& area) {
            return count_pixels(area, [&](QPoint p) { return colours.contains(image.pixelColor(p)); });
        };
        qreal area = 0, unit = 0;
        for (int day = 0; day < static_cast<int>(counts.size()); ++day) {
            const QRectF bar = panel.forecast()->bar_rect(day);
            area += bar.width() * bar.height();
            const QRect column(static_cast<int>(bar.center().x()), 0, 1, image.height());
            const int height = bar.isEmpty() ? 0 : coloured({day ? later : today}, column);
            if (unit == 0 && counts[day] > 0) unit = static_cast<qreal>(height) / counts[day];
            EXPECT_NEAR(height, unit * counts[day], 1.0) << "day " << day;
        }
        EXPECT_EQ(coloured({today, later}, image.rect()), area) << "bar-coloured pixels only inside the bars";
        EXPECT_EQ(row.reviews.empty(), area == 0);

        // Most stable first, numbers as the language writes them; never reviewed: dashes, last.
        panel.table()->sortByColumn(ProgressPanel::COL_STABILITY, Qt::DescendingOrder);
        const QAbstractItemModel* cells = panel.table()->model();
        const QLocale locale(row.language);
        double previous = 1e9;
        for (int r = 0; r < cells->rowCount(); ++r) {
            const auto text = [&](int column) { return cells->index(r, column).data().toString(); };
            const auto card = store.card(static_cast<int>(text(ProgressPanel::COL_CHARACTER).toUcs4()[0]));
            const bool reviewed = card.state != morvel::review::CardState::NEW;
            const QString dash = QStringLiteral("—");
            EXPECT_EQ(text(ProgressPanel::COL_STABILITY),
                      reviewed ? locale.toString(card.stability, 'f', 1) : dash);
            EXPECT_EQ(text(ProgressPanel::COL_DIFFICULTY),
                      reviewed ? locale.toString(card.difficulty, 'f', 1) : dash);
            EXPECT_EQ(text(ProgressPanel::COL_DUE) == dash, !reviewed);
            EXPECT_LE(reviewed ? card.stability : -1, previous) << r;
            previous = reviewed ? card.stability : -1;
        }
    }
    ki::qt::lang::set_lang(QLocale::English);
}

TEST(PanelTest, EveryScoredDayIsMarkedByASolidSquare) {
    // The marks are drawn apart from the dashed score line: under its dash pattern a lone day's
    // square broke into a hook.
    const struct {
        const char* name;
        unsigned theme;
        std::vector<int> scores;  // a day each, oldest first; -1: no score that day
    } rows[] = {
        {"one day alone", THEME_NORMAL, {60}},
        {"a gap between two days, the edges of the scale", THEME_DARK, {0, -1, 100}},
        {"a fortnight", THEME_GREEN, {40, 55, -1, -1, 70, 72, 90, 35, -1, 80, 81, 82, 99, 100}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ProgressChart chart;
        chart.setPalette(ki::qt::themes::get_palette(row.theme));
        std::vector<DayStats> days;
        for (const int score : row.scores)
            days.push_back(DayStats{static_cast<qint64>(days.size()) + 2'460'000, 1, 2, 1, score});
        chart.set_days(days);
        chart.resize(560, 180);
        const QImage image = chart.grab().toImage();
        const QColor mark = ProgressChart::score_color(chart.palette());
        for (size_t day = 0; day < row.scores.size(); ++day) {
            const QPointF point = chart.score_point(day);
            if (row.scores[day] < 0) {
                EXPECT_EQ(point, QPointF(-1, -1)) << "day " << day;
                continue;
            }
            const QRect around(static_cast<int>(point.x()) - 1, static_cast<int>(point.y()) - 1, 3, 3);
            EXPECT_EQ(count_pixels(around, [&](QPoint p) { return image.pixelColor(p) == mark; }), 9)
                << "day " << day;
        }
    }
}

}  // namespace
