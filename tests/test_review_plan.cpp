// The widget-free parts of a day's session: the grade a recall earns, local days, and the
// session plan played through reviews, new characters, midnight and a restart.
#include <gtest/gtest.h>

#include <QDateTime>
#include <QTimeZone>
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "app/review/GradeRule.h"
#include "app/review/LocalDay.h"
#include "app/review/Scheduler.h"
#include "app/review/SessionPlan.h"

using namespace morvel::review;

TEST(ReviewGrade, ProposedGrade) {
    struct Row {
        const char* name;
        RecallResult result;
        Rating want;
    };
    const Row rows[] = {
        {"clean, high score and faster than usual is easy", {0, 0, false, 95, 4000, 5000}, Rating::EASY},
        {"score exactly 90 is still easy", {0, 0, false, 90, 4000, 5000}, Rating::EASY},
        {"score 89 is good", {0, 0, false, 89, 4000, 5000}, Rating::GOOD},
        {"as fast as the median is good", {0, 0, false, 95, 5000, 5000}, Rating::GOOD},
        {"slower than the median is good", {0, 0, false, 99, 7000, 5000}, Rating::GOOD},
        {"one miss is hard however fast", {1, 0, false, 95, 1000, 5000}, Rating::HARD},
        {"a stroke shown is again", {2, 1, false, 60, 9000, 5000}, Rating::AGAIN},
        {"show me is again even without a miss", {0, 0, true, 100, 1000, 5000}, Rating::AGAIN},
    };
    for (const Row& row : rows) EXPECT_EQ(GradeRule::grade(row.result), row.want) << row.name;
}

TEST(ReviewLocalDay, DayTurnsAtLocalMidnight) {
    const qint64 lateUtc =
        QDateTime(QDate(2026, 11, 25), QTime(23, 30), QTimeZone::utc()).toMSecsSinceEpoch();
    const int day = static_cast<int>(QDate(2026, 11, 25).toJulianDay() - 2440588);
    struct Row {
        const char* name;
        const char* zone;
        qint64 at;
        int want;
    };
    const Row rows[] = {
        {"23:30 UTC is that day in UTC", "UTC", lateUtc, day},
        {"23:30 UTC is already the next day in Berlin", "Europe/Berlin", lateUtc, day + 1},
        {"23:30 UTC is the same day in New York", "America/New_York", lateUtc, day},
        {"the first millisecond of 1970 is day 0", "UTC", 0, 0},
        {"a moment before 1970 is day -1", "UTC", -1, -1},
    };
    for (const Row& row : rows) EXPECT_EQ(LocalDay::of(row.at, QTimeZone(row.zone)), row.want) << row.name;

    // A day that starts without a midnight (the clocks skipped it) still begins on its own date.
    const QTimeZone saoPaulo("America/Sao_Paulo");
    const int skipped = static_cast<int>(QDate(2018, 11, 4).toJulianDay() - 2440588);
    for (int d : {skipped - 1, skipped, skipped + 1, day}) {
        const qint64 start = LocalDay::start_of(d, saoPaulo);
        EXPECT_EQ(LocalDay::of(start, saoPaulo), d) << d;
        EXPECT_EQ(LocalDay::of(start - 1, saoPaulo), d - 1) << d;
    }
}

namespace {

constexpr int TODAY = 100;

Card reviewed(double stability, int lastReview, int due) {
    Card c;
    c.stability = stability;
    c.difficulty = 5.0;
    c.lastReview = lastReview;
    c.due = due;
    c.interval = due - lastReview;
    c.reps = 1;
    c.state = CardState::REVIEW;
    return c;
}

// What the practice store would hold: the cards and today's counts.
struct Store {
    std::vector<PlanCard> cards = {
        {U'a', 1, {}},
        {U'b', 2, {}},
        {U'c', 3, {}},
        {U'x', 10, reviewed(2.0, 95, 98)},    // overdue, least likely recalled
        {U'y', 11, reviewed(20.0, 95, 100)},  // due today, well held
        {U'z', 12, reviewed(5.0, 99, 101)},   // due tomorrow
    };
    std::map<int, std::vector<char32_t>> introduced;
    std::map<int, int> reviewedOn;
};

struct Action {
    enum Op { NEXT, INTRODUCE, GRADE, PROGRESS, SET_DAY, RESTART } op;
    char32_t codePoint = 0;
    PlanStep step = {};
    PlanProgress progress = {};
    int day = 0;
};

Action next(PlanStep::Kind kind, char32_t cp = 0) {
    return {Action::NEXT, 0, {kind, cp}};
}
Action introduce(char32_t cp) {
    return {Action::INTRODUCE, cp};
}
Action grade(char32_t cp) {
    return {Action::GRADE, cp};
}
Action progress(int reviews, int fresh, int left) {
    return {Action::PROGRESS, 0, {}, {reviews, fresh, left}};
}
Action set_day(int day) {
    return {Action::SET_DAY, 0, {}, {}, day};
}
Action restart() {
    return {Action::RESTART};
}

using K = PlanStep::Kind;

}  // namespace

TEST(ReviewPlan, PlaysSessions) {
    struct Row {
        const char* name;
        int limit;
        std::vector<char32_t> introducedBefore;  ///< earlier today, before this run
        std::vector<Action> actions;
    };
    const std::vector<Row> rows = {
        {"due reviews lowest recall first, then new in level order",
         10,
         {},
         {progress(0, 0, 5), next(K::REVIEW, U'x'), grade(U'x'), next(K::REVIEW, U'y'), grade(U'y'),
          next(K::NEW, U'a'), introduce(U'a'), next(K::NEW, U'a'), progress(2, 1, 3), grade(U'a'),
          next(K::NEW, U'b'), progress(2, 1, 2)}},
        {"the daily limit counts what was introduced before",
         5,
         {U'p', U'q', U'r', U's'},
         {next(K::REVIEW, U'x'), grade(U'x'), next(K::REVIEW, U'y'), grade(U'y'), next(K::NEW, U'a'),
          introduce(U'a'), grade(U'a'), next(K::DONE), progress(2, 5, 0)}},
        {"a new character graded without introduction counts against the limit",
         5,
         {U'p', U'q', U'r', U's'},
         {grade(U'c'), progress(0, 5, 2), grade(U'x'), grade(U'y'), next(K::DONE)}},
        {"after midnight the limit starts afresh and tomorrow's reviews come due",
         5,
         {U'p', U'q', U'r', U's', U't'},
         {grade(U'x'), grade(U'y'), next(K::DONE), set_day(TODAY + 1), progress(0, 0, 4),
          next(K::REVIEW, U'z'), grade(U'z'), next(K::NEW, U'a')}},
        {"a restart in the middle resumes with the same counts",
         5,
         {U'p', U'q', U'r'},
         {next(K::REVIEW, U'x'), grade(U'x'), restart(), progress(1, 3, 3), next(K::REVIEW, U'y'),
          grade(U'y'), introduce(U'a'), grade(U'a'), restart(), progress(2, 4, 1), next(K::NEW, U'b'),
          introduce(U'b'), grade(U'b'), restart(), next(K::DONE)}},
        {"a restart across midnight starts the new day",
         5,
         {U'p', U'q', U'r', U's', U't'},
         {grade(U'x'), grade(U'y'), set_day(TODAY + 1), restart(), progress(0, 0, 4), next(K::REVIEW, U'z')}},
        {"introduced, not graded before a restart: it comes back first and counts once",
         5,
         {U'p', U'q', U'r'},
         {grade(U'x'), grade(U'y'), next(K::NEW, U'a'), introduce(U'a'), restart(), progress(2, 4, 2),
          next(K::NEW, U'a'), introduce(U'a'), grade(U'a'), progress(2, 4, 1), next(K::NEW, U'b'), introduce(U'b'),
          grade(U'b'), next(K::DONE), progress(2, 5, 0)}},
    };
    const Scheduler scheduler;
    for (const Row& row : rows) {
        Store store;
        store.introduced[TODAY] = row.introducedBefore;
        int today = TODAY;
        auto build = [&] {
            return SessionPlan(
                scheduler, [&today] { return today; }, store.cards, row.limit, store.introduced[today],
                store.reviewedOn[today]);
        };
        SessionPlan plan = build();
        int index = 0;
        for (const Action& a : row.actions) {
            const std::string where = std::string(row.name) + ", action " + std::to_string(index++);
            switch (a.op) {
                case Action::NEXT:
                    EXPECT_EQ(plan.next(), a.step) << where;
                    break;
                case Action::INTRODUCE: {
                    plan.introduced(a.codePoint);
                    std::vector<char32_t>& shown = store.introduced[today];
                    if (std::find(shown.begin(), shown.end(), a.codePoint) == shown.end())
                        shown.push_back(a.codePoint);
                    break;
                }
                case Action::GRADE:
                    for (PlanCard& c : store.cards) {
                        if (c.codePoint != a.codePoint) continue;
                        std::vector<char32_t>& shown = store.introduced[today];
                        if (c.card.state != CardState::NEW)
                            ++store.reviewedOn[today];
                        else if (std::find(shown.begin(), shown.end(), a.codePoint) == shown.end())
                            shown.push_back(a.codePoint);
                        c.card = plan.graded(a.codePoint, Rating::GOOD);
                        EXPECT_EQ(c.card.lastReview, today) << where;
                    }
                    break;
                case Action::PROGRESS:
                    EXPECT_EQ(plan.progress(), a.progress) << where;
                    break;
                case Action::SET_DAY:
                    today = a.day;
                    break;
                case Action::RESTART:
                    plan = build();
                    break;
            }
        }
    }
}
