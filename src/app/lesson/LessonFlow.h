#pragma once
// The lesson flow: which character is shown, when practice goes on to the next round or the
// next character, when misses turn into a hint, and what a finished character leads to. It
// takes the learner's events, drives the lesson state (ControlAnim) through them and tells its
// listeners what to show, play and record. It owns no widget and waits only through the delay
// it is handed, so a whole lesson plays through it without a window.

#include <ki/Listener.h>

#include <functional>
#include <memory>

#include "app/lesson/FeedbackSounds.h"

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
    /// Runs `then` once `ms` milliseconds have passed, unless its owner has gone by then.
    using Delay = std::function<void(int ms, std::function<void()> then)>;

    /// `control` must outlive the flow. Until a source is set, Previous and Next stay put.
    LessonFlow(ControlAnim& control, Delay delay);
    ~LessonFlow();

    /// Follows the hint threshold, "next when done" and practice rounds of `options`.
    void set_options(const LessonOptions& options);
    void set_source(std::unique_ptr<CharacterSource> next);

    /// The character at `index` is shown now, whoever chose it; a pending step for another
    /// character lapses.
    void shown(int index);
    int current() const { return shownIndex; }

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

private:
    ControlAnim& control;
    Delay delay;
    std::unique_ptr<CharacterSource> source;
    int shownIndex = -1;
    int hintAfterMisses = 3;
    bool nextWhenDone = false;
};

}  // namespace morvel::prog2
