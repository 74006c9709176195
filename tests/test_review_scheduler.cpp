// The review scheduler: every review of the reference histories (tests/data/fsrs_vectors.csv,
// made by tools/fsrs/vectors.mjs) replayed, and the cases a learner's own data can bring.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "app/review/Scheduler.h"

using namespace morvel::review;

namespace {

struct VectorRow {
    int history = 0, day = 0, rating = 0, elapsed = 0, interval = 0, due = 0, reps = 0, lapses = 0, state = 0;
    double retention = 0, retrievability = 0, stability = 0, difficulty = 0;
};

std::vector<VectorRow> read_vectors() {
    std::ifstream file(QUENLO_SOURCE_DIR "/tests/data/fsrs_vectors.csv");
    std::vector<VectorRow> rows;
    std::string line;
    while (std::getline(file, line)) {
        if (line.empty() || line[0] == '#' || line[0] == 'h') continue;
        std::replace(line.begin(), line.end(), ',', ' ');
        std::istringstream in(line);
        VectorRow r;
        in >> r.history >> r.retention >> r.day >> r.rating >> r.elapsed >> r.retrievability >> r.stability >>
            r.difficulty >> r.interval >> r.due >> r.reps >> r.lapses >> r.state;
        EXPECT_FALSE(in.fail()) << line;
        rows.push_back(r);
    }
    return rows;
}

}  // namespace

TEST(ReviewScheduler, ReplaysReferenceHistories) {
    const std::vector<VectorRow> rows = read_vectors();
    ASSERT_GE(rows.size(), 5000u);

    Card card;
    int history = -1, histories = 0;
    for (const VectorRow& row : rows) {
        if (row.history != history) {
            history = row.history;
            ++histories;
            card = Card{};
        }
        const Scheduler scheduler(row.retention);
        const std::string where =
            "history " + std::to_string(row.history) + ", review " + std::to_string(card.reps + 1);
        EXPECT_NEAR(scheduler.retrievability(card, row.day), row.retrievability, 1e-6) << where;
        card = scheduler.review(card, row.day, static_cast<Rating>(row.rating));
        EXPECT_EQ(card.interval, row.interval) << where;
        EXPECT_EQ(card.due, row.due) << where;
        EXPECT_EQ(card.reps, row.reps) << where;
        EXPECT_EQ(card.lapses, row.lapses) << where;
        EXPECT_EQ(static_cast<int>(card.state), row.state) << where;
        EXPECT_NEAR(card.stability, row.stability, 1e-4 * row.stability) << where;
        EXPECT_NEAR(card.difficulty, row.difficulty, 1e-4 * row.difficulty) << where;
    }
    EXPECT_GE(histories, 500);
}

TEST(ReviewScheduler, StoredDataItCannotTrust) {
    Card held;
    held.stability = 10.0;
    held.difficulty = 5.0;
    held.lastReview = 100;
    held.due = 110;
    held.state = CardState::REVIEW;
    Card broken = held;
    broken.stability = std::nan("");
    Card tooEasy = held;
    tooEasy.difficulty = 0.5;
    struct Row {
        const char* name;
        Card card;
        int day;
        Card sameAs;
        int sameDay;
    };
    const Row rows[] = {
        {"a clock set back counts as the day of the last review", held, 97, held, 100},
        {"a stability that is not a number starts over", broken, 120, Card{}, 120},
        {"a difficulty below 1 starts over", tooEasy, 120, Card{}, 120},
    };
    const Scheduler plain;
    for (const Row& row : rows) {
        for (Rating rating : {Rating::AGAIN, Rating::HARD, Rating::GOOD, Rating::EASY}) {
            const Card got = plain.review(row.card, row.day, rating);
            const Card want = plain.review(row.sameAs, row.sameDay, rating);
            EXPECT_DOUBLE_EQ(got.stability, want.stability) << row.name;
            EXPECT_DOUBLE_EQ(got.difficulty, want.difficulty) << row.name;
            EXPECT_EQ(got.interval, want.interval) << row.name;
        }
    }
}

TEST(ReviewScheduler, KnownFromThreeWeeks) {
    struct Row {
        const char* name;
        double stability;
        CardState state;
        bool known;
    };
    const Row rows[] = {
        {"just under three weeks is not known yet", 20.99, CardState::REVIEW, false},
        {"three weeks is known", 21.0, CardState::REVIEW, true},
        {"a card never reviewed is not known", 30.0, CardState::NEW, false},
    };
    for (const Row& row : rows) {
        Card card;
        card.stability = row.stability;
        card.difficulty = 5.0;
        card.state = row.state;
        EXPECT_EQ(card.known(), row.known) << row.name;
    }
}
