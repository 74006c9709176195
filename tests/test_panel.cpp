// The progress panel's forecast, retention and memory columns, read from pixels and table cells.
#include <gtest/gtest.h>
#include <ki/qt/lang.h>
#include <ki/qt/themes.h>

#include <QDateTime>
#include <QImage>
#include <QLabel>
#include <QStandardItemModel>
#include <QTableView>
#include <QTemporaryDir>
#include <memory>
#include <numeric>

#include "app/progress/ForecastChart.h"
#include "app/progress/ProgressMark.h"
#include "app/progress/ProgressPanel.h"

namespace {

using namespace morvel::progress;
using morvel::review::Rating;

constexpr qint64 DAY_MS = 86'400'000;
const qint64 BASE_MS = QDateTime(QDate(2026, 3, 2), QTime(9, 0)).toMSecsSinceEpoch();
struct Review {
    int day, codePoint;
    Rating rating;
};

class PanelTest : public testing::Test {
protected:
    /// A fresh history holding `reviews`, read on day `today`.
    void review(const std::vector<Review>& reviews, int today) {
        store.reset();
        dir = std::make_unique<QTemporaryDir>();
        store = std::make_unique<ProgressStore>([this] { return nowMs; });
        ASSERT_EQ(store->open(dir->path()), ProgressStore::Status::WRITABLE);
        for (const Review& r : reviews)
            ASSERT_TRUE(store->record_review(ReviewRecord{BASE_MS + r.day * DAY_MS, r.codePoint, r.rating, 4000}));
        nowMs = BASE_MS + today * DAY_MS;
    }
    void TearDown() override { ki::qt::lang::set_lang(QLocale::English); }

    std::unique_ptr<QTemporaryDir> dir;
    std::unique_ptr<ProgressStore> store;
    qint64 nowMs = BASE_MS;
};

constexpr int A = 0x4E2D, B = 0x4EBA, C = 0x5927, D = 0x5C0F;

// A bar drawn from the wrong count, at the wrong place or in the window's own colour (unreadable
// in that theme) shows in the bar-coloured pixels of each day's column.
TEST_F(PanelTest, ForecastBarsFollowTheDueCounts) {
    const struct {
        const char* name;
        std::vector<Review> reviews;
        int today, scheduled;
    } rows[] = {
        {"nothing reviewed draws no bar", {}, 0, 0},
        {"cards spread over the coming days",
         {{0, A, Rating::GOOD}, {0, B, Rating::GOOD}, {0, C, Rating::EASY}, {0, D, Rating::AGAIN}, {1, D, Rating::HARD}},
         1, 4},
        {"overdue cards stand in today's bar", {{0, A, Rating::GOOD}, {0, B, Rating::EASY}}, 90, 2},
    };
    for (const auto& row : rows) {
        review(row.reviews, row.today);
        const std::vector<int> counts = store->due_forecast(ProgressPanel::CHART_DAYS);
        ASSERT_EQ(std::accumulate(counts.begin(), counts.end(), 0), row.scheduled) << row.name;
        const int tallest = *std::max_element(counts.begin(), counts.end());
        for (unsigned theme : {ki::qt::themes::THEME_NORMAL, ki::qt::themes::THEME_DARK, ki::qt::themes::THEME_GREEN}) {
            SCOPED_TRACE(testing::Message() << row.name << ", theme " << theme);
            ProgressPanel panel(*store, morvel::create_basic_table());
            panel.setPalette(ki::qt::themes::get_palette(theme));
            panel.show();
            ForecastChart* chart = panel.forecast();
            const QImage image = chart->grab().toImage();
            const QColor colors[] = {ProgressMark::accent(panel.palette()), panel.palette().color(QPalette::Highlight)};
            const auto is_bar = [&](int x, int y, int day) { return image.pixelColor(x, y) == colors[day > 0]; };
            qreal area = 0, painted = 0, tallestHeight = 0;
            std::vector<int> heights;
            for (int day = 0; day < static_cast<int>(counts.size()); ++day) {
                const QRectF bar = chart->bar_rect(day);
                area += bar.width() * bar.height();
                heights.push_back(0);
                for (int y = 0; y < image.height() && !bar.isEmpty(); ++y)
                    heights.back() += is_bar(static_cast<int>(bar.center().x()), y, day);
                tallestHeight = std::max<qreal>(tallestHeight, heights.back());
                for (int y = 0; y < image.height(); ++y)
                    for (int x = 0; x < image.width(); ++x) painted += day <= 1 && is_bar(x, y, day);
            }
            for (size_t day = 0; day < counts.size(); ++day)
                EXPECT_NEAR(heights[day], tallestHeight * counts[day] / std::max(1, tallest), 1.0) << "day " << day;
            EXPECT_EQ(painted, area) << "bar-coloured pixels only inside the bars";
        }
    }
}

TEST_F(PanelTest, RetentionAndMemoryColumns) {
    const struct {
        const char* name;
        QLocale::Language language;
        std::vector<Review> reviews;
        int today;
        QString retention;
    } rows[] = {
        {"no reviews show a dash", QLocale::English, {}, 0, "Retention (30 days): —"},
        {"first sights test no memory", QLocale::English, {{0, A, Rating::GOOD}}, 0, "Retention (30 days): —"},
        {"one again in four recalls", QLocale::English,
         {{0, A, Rating::GOOD}, {0, B, Rating::GOOD}, {3, A, Rating::AGAIN}, {4, A, Rating::GOOD},
          {4, B, Rating::HARD}, {8, B, Rating::EASY}},
         9, "Retention (30 days): 75 %"},
        {"German", QLocale::German, {{0, A, Rating::GOOD}, {5, A, Rating::GOOD}}, 5, "Behalten (30 Tage): 100 %"},
        {"Russian, reviews past the month forgotten", QLocale::Russian,
         {{0, A, Rating::GOOD}, {5, A, Rating::AGAIN}}, 40, "Удержание (30 дней): —"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ki::qt::lang::set_lang(row.language);
        review(row.reviews, row.today);
        ProgressPanel panel(*store, morvel::create_basic_table());
        EXPECT_EQ(panel.retention_label()->text(), row.retention);

        // Most stable first; a character never reviewed shows a dash in every memory column, last.
        panel.table()->sortByColumn(ProgressPanel::COL_STABILITY, Qt::DescendingOrder);
        const QAbstractItemModel* cells = panel.table()->model();
        double previous = 1e9;
        for (int r = 0; r < cells->rowCount(); ++r) {
            const int cp = static_cast<int>(cells->index(r, ProgressPanel::COL_CHARACTER).data().toString().toUcs4()[0]);
            const auto text = [&](int column) { return cells->index(r, column).data().toString(); };
            const morvel::review::Card card = store->card(cp);
            if (card.state == morvel::review::CardState::NEW) {
                for (int column : {ProgressPanel::COL_STABILITY, ProgressPanel::COL_DIFFICULTY, ProgressPanel::COL_DUE})
                    EXPECT_EQ(text(column), "—") << cp;
                previous = -1;
                continue;
            }
            EXPECT_LE(card.stability, previous) << "sorted by stability, reviewed ones first";
            previous = card.stability;
            const QLocale locale(row.language);
            EXPECT_NEAR(locale.toDouble(text(ProgressPanel::COL_STABILITY)), card.stability, 0.05) << cp;
            EXPECT_NEAR(locale.toDouble(text(ProgressPanel::COL_DIFFICULTY)), card.difficulty, 0.05) << cp;
            EXPECT_GE(card.difficulty, 1.0);
            EXPECT_LE(card.difficulty, 10.0);
        }
    }
}

}  // namespace
