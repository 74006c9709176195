// Writing from memory without a window: misses, strokes shown, "Show me", the proposed grade
// and the one accepted, read from the flow's state and the grades it reports.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "app/lesson/LessonFlow.h"
#include "app/lesson/LessonOptions.h"
#include "app/lesson/LevelSource.h"
#include "app/stroke/ControlAnim.h"

using namespace morvel::prog2;
using morvel::review::Rating;

namespace {

constexpr int STROKES = 3, CODE = 0x4E2D;

// A learner's steps; WAIT_2S lets two seconds pass, KEY_n presses a grade key.
enum Step { ACCEPT, REJECT, SHOW_ME, WAIT_2S, KEY_1, KEY_2, KEY_3, KEY_4, SPACE };

struct Recall {
    Recall(int score, std::optional<int> median) {
        flow.set_source(std::make_unique<LevelSource>([]() { return 10; }, [](int, int) { return -1; }));
        flow.set_clock([this]() { return now; });
        flow.set_score([score]() { return score; });
        flow.set_median([median](int code) { return code == CODE ? median : std::nullopt; });
        flow.liShow += [this](const int& index) {
            shownIndexes.push_back(index);
            control.select(STROKES);
            flow.shown(index, CODE + index);
        };
        flow.liGraded += [this](const GradedRecall& g) { graded.push_back(g); };
        control.select(STROKES);
        flow.shown(0, CODE);
        flow.set_recall(true);
    }
    void play(Step step) {
        if (step == ACCEPT) flow.stroke_accepted();
        if (step == REJECT) flow.stroke_rejected();
        if (step == SHOW_ME) flow.show_me();
        if (step == WAIT_2S) now += 2000;
        if (step == SPACE) flow.accept_grade();
        if (step >= KEY_1 && step <= KEY_4) flow.choose_grade(static_cast<Rating>(step - KEY_1 + 1));
    }
    ControlAnim control;
    LessonFlow flow{control, [](int, std::function<void()>) {}};
    long long now = 50'000;
    std::vector<int> shownIndexes;
    std::vector<GradedRecall> graded;
};

}  // namespace

TEST(RecallFlow, MissesShowMeAndKeysLeadToTheGradeGivenOnce) {
    const Step A = ACCEPT, R = REJECT, W = WAIT_2S;
    struct Row {
        const char* name;
        int score;
        std::optional<int> medianMs;
        std::vector<Step> steps;
        std::vector<int> strokesShown;
        Rating proposed;
        std::vector<Rating> graded;  // what Space gave, in order
    };
    const Rating AGAIN = Rating::AGAIN, HARD = Rating::HARD, GOOD = Rating::GOOD, EASY = Rating::EASY;
    // clang-format off
    const Row rows[] = {
        {"no miss and no median is good", 95, std::nullopt, {A, W, A, A, SPACE}, {}, GOOD, {GOOD}},
        {"no miss, high score, faster than the median is easy", 95, 3000, {A, W, A, A, SPACE}, {}, EASY, {EASY}},
        {"as slow as the median is good", 95, 4000, {A, W, W, A, A, SPACE}, {}, GOOD, {GOOD}},
        {"fast with a score below 90 is good", 89, 3000, {A, A, A, SPACE}, {}, GOOD, {GOOD}},
        {"one miss on each of two strokes is hard", 95, 3000, {R, A, R, A, A, SPACE}, {}, HARD, {HARD}},
        {"two misses on one stroke show it and give again", 95, 3000, {A, R, R, A, A, SPACE}, {1}, AGAIN, {AGAIN}},
        {"three misses over the character give again", 95, 3000, {R, A, R, A, R, A, SPACE}, {}, AGAIN, {AGAIN}},
        {"show me shows the current stroke and gives again", 95, 3000, {A, A, SHOW_ME, A, SPACE}, {2}, AGAIN, {AGAIN}},
        {"keys change the proposal and the last one is given", 95, 3000, {A, A, A, KEY_2, KEY_4, KEY_1, SPACE}, {}, EASY,
         {AGAIN}},
        {"keys and show me before the end change nothing", 95, 3000, {KEY_4, A, A, A, SHOW_ME, SPACE}, {}, EASY, {EASY}},
        {"space before the end and a second space give nothing more", 95, 3000, {A, SPACE, A, A, SPACE, SPACE}, {},
         EASY, {EASY}},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Recall recall(row.score, row.medianMs);
        // The state is read just before the first Space after the last stroke.
        RecallState seen;
        for (const Step step : row.steps) {
            if (step == SPACE && recall.flow.recall().grading) seen = recall.flow.recall();
            recall.play(step);
        }
        EXPECT_EQ(seen.shownStrokes, row.strokesShown);
        EXPECT_EQ(seen.proposed, row.proposed);
        std::vector<Rating> given;
        for (const GradedRecall& g : recall.graded) {
            given.push_back(g.rating);
            EXPECT_EQ(g.codePoint, CODE);
            EXPECT_EQ(g.durationMs, 2000 * std::count(row.steps.begin(), row.steps.end(), W))
                << "prompt to last stroke";
        }
        EXPECT_EQ(given, row.graded);
        EXPECT_EQ(recall.shownIndexes, std::vector<int>{1}) << "a given grade moves on to the next character";
        EXPECT_TRUE(recall.flow.is_recall() && !recall.flow.recall().grading &&
                    recall.flow.recall().misses == 0)
            << "the next character starts afresh";
    }
}
