// The lesson flow without a window: traces, rounds, hints, "next when done" and Previous/Next
// with and without due characters, read from what the flow asks the window to show and play;
// writing from memory: misses, strokes shown, "Show me", the proposed grade and the one given.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/lesson/LessonFlow.h"
#include "app/lesson/LessonOptions.h"
#include "app/lesson/LevelSource.h"
#include "app/stroke/ControlAnim.h"

using namespace morvel::prog2;
using morvel::review::Rating;

namespace {

constexpr int LEVEL_SIZE = 10, STROKES = 2, CODE = 0x4E2D;

// What the learner does; PICK_6 stands for a click on the list's seventh row, WAIT for the
// oldest pending pause running out, CLICK_SHOWN_ROW for a click on the shown character's row
// (the window shows it anew unless the flow starts it again). From memory, WAIT_2S lets two
// seconds pass and KEY_n presses a grade key.
enum Event { ACCEPT, REJECT, WAIT, AGAIN, NEXT, PREVIOUS, PICK_6, CLICK_SHOWN_ROW, SHOW_ME, WAIT_2S, KEY_1, KEY_2,
             KEY_3, KEY_4, SPACE };

// The flow as the window wires it, over a level of ten characters of two strokes unless asked
// otherwise; character n has code point CODE + n.
struct Lesson {
    explicit Lesson(const LessonOptions& options, std::set<int> dueIndexes, int strokeCount = STROKES)
        : due(std::move(dueIndexes)), strokes(strokeCount) {
        control.set_mode_flags(options.modeFlags);
        flow.set_options(options);
        flow.set_source(std::make_unique<LevelSource>(
            []() { return LEVEL_SIZE; },
            [this](int from, int step) {
                // As the history answers: the next due one that way, round the level's end.
                for (int i = 1; i <= LEVEL_SIZE; ++i)
                    if (due.count((from + i * step + LEVEL_SIZE) % LEVEL_SIZE) != 0)
                        return (from + i * step + LEVEL_SIZE) % LEVEL_SIZE;
                return -1;
            }));
        flow.liShow += [this](const int& index) {
            heard.push_back("show " + std::to_string(index));
            pick(index);
        };
        flow.liFeedback += [this](const Feedback& what) {
            heard.push_back(what == Feedback::ACCEPTED   ? "accepted"
                            : what == Feedback::COMPLETE ? "complete"
                                                         : "rejected");
        };
        flow.liFinished +=
            [this](const int& round) { heard.push_back("round " + std::to_string(round) + " done"); };
        flow.liHint += [this]() { heard.push_back("hint"); };
        flow.liGraded += [this](const GradedRecall& g) { graded.push_back(g); };
        flow.set_clock([this]() { return now; });
    }
    void pick(int index) {
        control.select(strokes);
        flow.shown(index, CODE + index);
    }
    void play(Event event) {
        switch (event) {
            case ACCEPT:
                return flow.stroke_accepted();
            case REJECT:
                return flow.stroke_rejected();
            case AGAIN:
                return flow.again();
            case NEXT:
                return flow.move(+1);
            case PREVIOUS:
                return flow.move(-1);
            case PICK_6:
                return pick(6);
            case SHOW_ME:
                return flow.show_me();
            case WAIT_2S:
                now += 2000;
                return;
            case SPACE:
                return flow.accept_grade();
            case KEY_1:
            case KEY_2:
            case KEY_3:
            case KEY_4:
                return flow.choose_grade(static_cast<Rating>(event - KEY_1 + 1));
            case CLICK_SHOWN_ROW:
                if (!flow.again_if_learning()) {
                    heard.push_back("shown anew");
                    pick(flow.current());
                }
                return;
            case WAIT:  // the oldest pause runs out
                if (!waiting.empty()) {
                    const std::function<void()> then = waiting.front();
                    waiting.erase(waiting.begin());
                    then();
                }
        }
    }
    std::string where() const {
        const LessonState& s = control.state();
        return std::to_string(flow.current()) + ": round " + std::to_string(s.round) + ", " +
               std::to_string(s.strokesLearned) + " of " + std::to_string(s.strokeCount) +
               (s.hint >= 0.0f ? ", hint" : "");
    }

    ControlAnim control;
    std::vector<std::function<void()>> waiting;
    LessonFlow flow{control, [this](int ms, std::function<void()> then) {
                        heard.push_back("wait " + std::to_string(ms));
                        waiting.push_back(std::move(then));
                    }};
    std::set<int> due;
    int strokes;
    long long now = 50'000;
    std::vector<std::string> heard;
    std::vector<GradedRecall> graded;
};

}  // namespace

TEST(LessonFlow, PlaysTracesRoundsHintsAndNavigation) {
    const LessonOptions plain;
    LessonOptions rounds, nextWhenDone, noHints, both;
    rounds.practiceRounds = both.practiceRounds = true;
    nextWhenDone.nextWhenDone = both.nextWhenDone = true;
    noHints.hintAfterMisses = 0;
    LessonOptions watch;
    watch.modeFlags &= ~MODE_LEARN;
    using V = std::vector<std::string>;
    struct Row {
        const char* name;
        LessonOptions options;
        std::set<int> due;
        int start;
        std::vector<Event> events;
        V heard;
        std::string where;
    };
    // clang-format off
    const Row rows[] = {
        {"every stroke traced finishes the character", plain, {}, 3, {ACCEPT, ACCEPT},
         {"accepted", "round 1 done", "complete"}, "3: round 1, 2 of 2"},
        {"the third miss starts the hint, every further miss again", plain, {}, 3, {REJECT, REJECT, REJECT, REJECT},
         {"rejected", "rejected", "rejected", "hint", "rejected", "hint"}, "3: round 1, 0 of 2, hint"},
        {"an accepted stroke starts the miss count again", plain, {}, 3, {REJECT, REJECT, ACCEPT, REJECT, REJECT},
         {"rejected", "rejected", "accepted", "rejected", "rejected"}, "3: round 1, 1 of 2"},
        {"hints off never hint", noHints, {}, 3, {REJECT, REJECT, REJECT, REJECT},
         {"rejected", "rejected", "rejected", "rejected"}, "3: round 1, 0 of 2"},
        {"the third round finishes the character", rounds, {}, 3,
         {ACCEPT, ACCEPT, WAIT, ACCEPT, ACCEPT, WAIT, ACCEPT, ACCEPT, WAIT},
         {"accepted", "round 1 done", "accepted", "wait 1000", "accepted", "round 2 done", "accepted", "wait 1000",
          "accepted", "round 3 done", "complete"}, "3: round 3, 2 of 2"},
        {"Again in the pause between rounds starts round one", rounds, {}, 3, {ACCEPT, ACCEPT, AGAIN, WAIT},
         {"accepted", "round 1 done", "accepted", "wait 1000"}, "3: round 1, 0 of 2"},
        {"next when done shows the next character after the pause", nextWhenDone, {}, 3, {ACCEPT, ACCEPT, WAIT},
         {"accepted", "round 1 done", "complete", "wait 1500", "show 4"}, "4: round 1, 0 of 2"},
        {"next when done waits for the last round", both, {}, 3, {ACCEPT, ACCEPT, WAIT},
         {"accepted", "round 1 done", "accepted", "wait 1000"}, "3: round 2, 0 of 2"},
        {"a character picked in the pause is not left", nextWhenDone, {}, 3, {ACCEPT, ACCEPT, PICK_6, WAIT},
         {"accepted", "round 1 done", "complete", "wait 1500"}, "6: round 1, 0 of 2"},
        {"the pause of a character left, then the next one finished in it, lapses", nextWhenDone, {}, 3,
         {ACCEPT, ACCEPT, PICK_6, ACCEPT, ACCEPT, WAIT},
         {"accepted", "round 1 done", "complete", "wait 1500", "accepted", "round 1 done", "complete", "wait 1500"},
         "6: round 1, 2 of 2"},
        {"Again in the pause keeps the character", nextWhenDone, {}, 3, {ACCEPT, ACCEPT, AGAIN, WAIT},
         {"accepted", "round 1 done", "complete", "wait 1500"}, "3: round 1, 0 of 2"},
        {"next when done at the last character stays", nextWhenDone, {}, 9, {ACCEPT, ACCEPT, WAIT},
         {"accepted", "round 1 done", "complete", "wait 1500"}, "9: round 1, 2 of 2"},
        {"Next and Previous in the level's order", plain, {}, 3, {NEXT, NEXT, PREVIOUS}, {"show 4", "show 5", "show 4"},
         "4: round 1, 0 of 2"},
        {"Previous at the first stays", plain, {}, 0, {PREVIOUS}, {}, "0: round 1, 0 of 2"},
        {"Next at the last stays", plain, {}, 9, {NEXT}, {}, "9: round 1, 0 of 2"},
        {"review: Next and Previous go to the due ones, round the end", plain, {1, 7}, 3, {NEXT, NEXT, PREVIOUS},
         {"show 7", "show 1", "show 7"}, "7: round 1, 0 of 2"},
        {"review with only the shown one due goes on in order", plain, {3}, 3, {NEXT}, {"show 4"}, "4: round 1, 0 of 2"},
        {"review: next when done goes to the next due one", nextWhenDone, {8}, 3, {ACCEPT, ACCEPT, WAIT},
         {"accepted", "round 1 done", "complete", "wait 1500", "show 8"}, "8: round 1, 0 of 2"},
        {"a click on the shown row in learn mode starts its tracing again", plain, {}, 3,
         {ACCEPT, CLICK_SHOWN_ROW}, {"accepted"}, "3: round 1, 0 of 2"},
        {"a click on the shown row in watch mode shows it anew", watch, {}, 3, {CLICK_SHOWN_ROW},
         {"shown anew"}, "3: round 1, 0 of 2"},
        {"a move in the middle of a character starts it afresh", plain, {}, 3, {ACCEPT, REJECT, NEXT},
         {"accepted", "rejected", "show 4"}, "4: round 1, 0 of 2"},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Lesson lesson(row.options, row.due);
        lesson.pick(row.start);
        for (const Event event : row.events) lesson.play(event);
        EXPECT_EQ(lesson.heard, row.heard);
        EXPECT_EQ(lesson.where(), row.where);
    }
}

TEST(RecallFlow, MissesShowMeAndKeysLeadToTheGradeGivenOnce) {
    const Event A = ACCEPT, R = REJECT, W = WAIT_2S;
    struct Row {
        const char* name;
        int score;
        std::optional<int> medianMs;
        std::vector<Event> steps;
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
        Lesson recall({}, {}, 3);
        recall.flow.set_score([score = row.score]() { return score; });
        recall.flow.set_median([median = row.medianMs](int code) { return code == CODE ? median : std::nullopt; });
        recall.pick(0);
        recall.flow.set_recall(true);
        // The state is read just before the first Space after the last stroke.
        RecallState seen;
        for (const Event step : row.steps) {
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
        EXPECT_TRUE(std::count(recall.heard.begin(), recall.heard.end(), "show 1") == 1 && recall.flow.current() == 1)
            << "a given grade moves on to the next character";
        EXPECT_TRUE(recall.flow.is_recall() && !recall.flow.recall().grading &&
                    recall.flow.recall().misses == 0)
            << "the next character starts afresh";
    }
}
