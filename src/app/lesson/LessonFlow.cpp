#include "app/lesson/LessonFlow.h"

#include <ki/log/GLog.h>

#include <utility>

#include "app/lesson/CharacterSource.h"
#include "app/lesson/LessonOptions.h"
#include "app/stroke/ControlAnim.h"

namespace morvel::prog2 {

LessonFlow::LessonFlow(ControlAnim& lesson, Delay wait) : control(lesson), delay(std::move(wait)) {}

LessonFlow::~LessonFlow() = default;

void LessonFlow::set_options(const LessonOptions& options) {
    hintAfterMisses = options.hintAfterMisses;
    nextWhenDone = options.nextWhenDone;
    control.set_rounds(options.practiceRounds ? PRACTICE_ROUNDS : 1);
}

void LessonFlow::set_source(std::unique_ptr<CharacterSource> next) {
    source = std::move(next);
}

void LessonFlow::shown(int index) {
    shownIndex = index;
}

void LessonFlow::stroke_accepted() {
    liClearTrace.fire_event();
    control.stroke_accepted();
    const LessonState& state = control.state();
    if (state.is_done()) liFinished.fire_event(state.round);
    const int selected = shownIndex;
    if (!state.is_complete()) {
        liFeedback.fire_event(Feedback::ACCEPTED);
        if (state.is_done())
            delay(NEXT_ROUND_DELAY_MS, [this, selected]() {
                if (shownIndex == selected) control.next_round();
            });
        return;
    }
    ki::pp("hieroglyphe done");
    liFeedback.fire_event(Feedback::COMPLETE);
    if (!nextWhenDone) return;
    delay(NEXT_CHARACTER_DELAY_MS, [this, selected]() {
        if (shownIndex == selected && control.state().is_complete()) move(+1);
    });
}

void LessonFlow::stroke_rejected() {
    liFeedback.fire_event(Feedback::REJECTED);
    if (control.stroke_rejected(hintAfterMisses)) liHint.fire_event();
}

void LessonFlow::again() {
    liClearTrace.fire_event();
    control.restart();
}

bool LessonFlow::again_if_learning() {
    if (!control.is_mode_bit(MODE_LEARN)) return false;
    again();
    return true;
}

void LessonFlow::move(int step) {
    ki::pp("LessonFlow::move, step:$", step);
    const int next = source != nullptr ? source->after(shownIndex, step) : -1;
    if (next < 0) return;
    // Counted as shown at once: the list follows even when the character cannot be loaded.
    shownIndex = next;
    liShow.fire_event(next);
}

}  // namespace morvel::prog2
