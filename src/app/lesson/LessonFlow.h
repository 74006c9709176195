#pragma once
// The lesson flow: which character is shown, when practice goes on to the next round or the
// next character, when misses turn into a hint, and what a finished character leads to. It
// takes the learner's events, drives the lesson state (ControlAnim) through them and tells its
// listeners what to show, play and record. It owns no widget and waits only through the delay
// it is handed, so a whole lesson plays through it without a window.

#include <ki/Listener.h>

#include <functional>
#include <memory>
#include <optional>

#include "app/lesson/FeedbackSounds.h"
#include "app/lesson/GradedRecall.h"
#include "app/lesson/RecallState.h"

namespace morvel::prog2 {

class CharacterSource;
class ControlAnim;
struct LessonOptions;

class LessonFlow {
public:
    /// Pause after a finished character before the next one is shown ("next when done"), and
    /// after a finished practice round before the next round.
    static constexpr int NEXT_CHARACTER_DELAY_MS = 1500;
    static constexpr int NEXT_ROUND_DELAY_MS = 1000;
    static constexpr int PRACTICE_ROUNDS = 3;
    /// Writing from memory: misses on one stroke after which it is shown.
    static constexpr int RECALL_SHOW_AFTER = 2;
    /// Runs `then` once `ms` milliseconds have passed, unless its owner has gone by then.
    using Delay = std::function<void(int ms, std::function<void()> then)>;

    /// `control` must outlive the flow. Until a source is set, Previous and Next stay put.
    LessonFlow(ControlAnim& control, Delay delay);
    ~LessonFlow();

    /// Follows the hint threshold, "next when done" and practice rounds of `options`.
    void set_options(const LessonOptions& options);
    /// Returns the source used until now, for a caller that hands it back later.
    std::unique_ptr<CharacterSource> set_source(std::unique_ptr<CharacterSource> next);

    /// The character at `index` (code point `codePoint`) is shown now, whoever chose it; a
    /// pending step for another character lapses. Writing from memory starts on it afresh.
    void shown(int index, int codePoint = 0);
    int current() const { return shownIndex; }

    /// Learn mode on or off; off ends writing from memory too.
    void set_learn(bool on);
    /// Writing from memory on or off. On, it is learn mode in a single round; off, learn mode
    /// stays as it is. Either way the shown character starts afresh.
    void set_recall(bool on);
    bool is_recall() const { return recallState.active; }
    const RecallState& recall() const { return recallState; }
    /// Writing from memory: the current stroke is shown at once, and the grade becomes AGAIN.
    void show_me();
    /// While the grade waits: the learner's choice instead of the proposed one.
    void choose_grade(review::Rating rating);
    /// While the grade waits: it is given (liGraded) and the next character is shown as Next
    /// would show it.
    void accept_grade();
    /// Milliseconds on a steady clock; the flow measures the time to recall with it.
    void set_clock(std::function<long long()> now);
    /// The learner's median time to recall a code point; unset or without an answer, no recall
    /// counts as faster than usual.
    void set_median(std::function<std::optional<int>(int codePoint)> median);
    /// The score of the character just written, 0 .. 100.
    void set_score(std::function<int()> score);

    void stroke_accepted();
    void stroke_rejected();
    /// Tracing starts again from the first stroke of the first round.
    void again();
    /// The shown character chosen once more (a click on its row): in learn mode its tracing
    /// starts again. Returns whether it did.
    bool again_if_learning();
    /// Previous (`step` -1) or Next (+1): the character the source names, if any.
    void move(int step);

    /// Show the character at this index: select it in the list and load it; then call `shown`.
    ki::Listener<int> liShow;
    ki::Listener<Feedback> liFeedback;
    /// The learner's trace on the canvas is done with and goes.
    ki::Listener<ki::NO_PAYLOAD> liClearTrace;
    /// Practice round number so-and-so of the shown character is finished.
    ki::Listener<int> liFinished;
    /// The current stroke paints itself as a hint after a miss.
    ki::Listener<ki::NO_PAYLOAD> liHint;
    /// Writing from memory changed: on or off, a miss counted, a stroke shown, a grade proposed
    /// or chosen.
    ki::Listener<ki::NO_PAYLOAD> liRecall;
    /// A character written from memory was graded.
    ki::Listener<GradedRecall> liGraded;

private:
    void recall_accepted();
    void recall_rejected();
    /// Writing from memory starts again on the shown character.
    void start_recall();

    ControlAnim& control;
    Delay delay;
    std::unique_ptr<CharacterSource> source;
    int shownIndex = -1;
    int hintAfterMisses = 3;
    bool nextWhenDone = false;
    bool practiceRounds = false;
    RecallState recallState;
    std::function<long long()> clock;
    std::function<std::optional<int>(int)> medianOf;
    std::function<int()> scoreOf;
};

}  // namespace morvel::prog2
