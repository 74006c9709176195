#include "app/lesson/LessonFlow.h"

#include <ki/log/GLog.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "app/lesson/CharacterSource.h"
#include "app/lesson/LessonOptions.h"
#include "app/review/GradeRule.h"
#include "app/stroke/ControlAnim.h"

namespace morvel::prog2 {

namespace {

long long steady_ms() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

LessonFlow::LessonFlow(ControlAnim& lesson, Delay wait)
    : control(lesson), delay(std::move(wait)), clock(steady_ms) {}

LessonFlow::~LessonFlow() = default;

void LessonFlow::set_options(const LessonOptions& options) {
    hintAfterMisses = options.hintAfterMisses;
    nextWhenDone = options.nextWhenDone;
    practiceRounds = options.practiceRounds;
    control.set_rounds(practiceRounds && !recallState.active ? PRACTICE_ROUNDS : 1);
}

std::unique_ptr<CharacterSource> LessonFlow::set_source(std::unique_ptr<CharacterSource> next) {
    std::swap(source, next);
    return next;
}

void LessonFlow::shown(int index, int codePoint) {
    shownIndex = index;
    recallState.codePoint = codePoint;
    if (recallState.active) start_recall();
}

void LessonFlow::set_learn(bool on) {
    if (!on) set_recall(false);
    control.set_mode_bits(MODE_LEARN, on);
}

void LessonFlow::set_recall(bool on) {
    if (on == recallState.active) return;
    recallState.active = on;
    control.set_rounds(practiceRounds && !on ? PRACTICE_ROUNDS : 1);
    if (on) control.set_mode_bits(MODE_LEARN, true);
    // Traced strokes and their ink would give the character away, or belong to the other way
    // of practising.
    again();
    start_recall();
}

void LessonFlow::start_recall() {
    RecallState fresh;
    fresh.active = recallState.active;
    fresh.codePoint = recallState.codePoint;
    fresh.startMs = clock();
    recallState = std::move(fresh);
    liRecall.fire_event();
}

void LessonFlow::set_clock(std::function<long long()> now) {
    clock = std::move(now);
}

void LessonFlow::set_median(std::function<std::optional<int>(int)> median) {
    medianOf = std::move(median);
}

void LessonFlow::set_score(std::function<int()> score) {
    scoreOf = std::move(score);
}

void LessonFlow::stroke_accepted() {
    if (recallState.active) return recall_accepted();
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

void LessonFlow::recall_accepted() {
    if (recallState.grading) return;
    liClearTrace.fire_event();
    control.stroke_accepted();
    if (!control.state().is_complete()) {
        liFeedback.fire_event(Feedback::ACCEPTED);
        liRecall.fire_event();
        return;
    }
    liFeedback.fire_event(Feedback::COMPLETE);
    RecallState& r = recallState;
    r.durationMs = static_cast<int>(std::max(0LL, clock() - r.startMs));
    r.score = scoreOf ? scoreOf() : 0;
    review::RecallResult result;
    result.misses = r.misses;
    result.strokesShown = static_cast<int>(r.shownStrokes.size());
    result.showMeUsed = r.showMeUsed;
    result.score = r.score;
    result.durationMs = r.durationMs;
    if (medianOf) result.medianMs = medianOf(r.codePoint);
    r.proposed = r.chosen = review::GradeRule::grade(result);
    r.grading = true;
    liRecall.fire_event();
}

void LessonFlow::recall_rejected() {
    if (recallState.grading) return;
    liFeedback.fire_event(Feedback::REJECTED);
    ++recallState.misses;
    if (control.stroke_rejected(RECALL_SHOW_AFTER)) {
        recallState.mark_shown(control.state().strokesLearned);
        liHint.fire_event();
    }
    liRecall.fire_event();
}

void LessonFlow::show_me() {
    if (!recallState.active || recallState.grading || !control.show_hint()) return;
    recallState.showMeUsed = true;
    recallState.mark_shown(control.state().strokesLearned);
    liHint.fire_event();
    liRecall.fire_event();
}

void LessonFlow::choose_grade(review::Rating rating) {
    if (!recallState.grading) return;
    recallState.chosen = rating;
    liRecall.fire_event();
}

void LessonFlow::accept_grade() {
    if (!recallState.grading) return;
    recallState.grading = false;
    liGraded.fire_event(GradedRecall{recallState.codePoint, recallState.chosen, recallState.durationMs});
    move(+1);
}

void LessonFlow::stroke_rejected() {
    if (recallState.active) return recall_rejected();
    liFeedback.fire_event(Feedback::REJECTED);
    if (control.stroke_rejected(hintAfterMisses)) liHint.fire_event();
}

void LessonFlow::again() {
    liClearTrace.fire_event();
    control.restart();
    // From memory, what was missed and shown still counts: the character has been seen.
    if (recallState.grading) {
        recallState.grading = false;
        liRecall.fire_event();
    }
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
