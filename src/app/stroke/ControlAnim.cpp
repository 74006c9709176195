#include "app/stroke/ControlAnim.h"

#include <ki/log/GLog.h>
#include <ki/store/GNode.h>
#include <ki/str/xprintF.h>

#include <QVariant>
#include <algorithm>
#include <cmath>

#include "app/lesson/LessonOptions.h"

namespace morvel::prog2 {

void ControlAnim::commit(const LessonState& next) {
    pending = next;
    if (next != current && liChanged.has_listener()) liChanged.fire_event(LessonChange{current, next});
    current = next;
}

void ControlAnim::set_mode_flags(unsigned int flags) {
    LessonState next = current;
    next.modeFlags = flags;
    const unsigned int changed = current.modeFlags ^ flags;
    if ((changed & (MODE_LEARN | MODE_AUTO_DRAW)) != 0) next.progress = next.start_progress();
    if ((changed & MODE_LEARN) != 0) {
        next.strokesLearned = 0;
        next.misses = 0;
        next.round = 1;
        next.hint = -1.0f;
    }
    commit(next);
}

void ControlAnim::set_mode_bits(unsigned int bits, bool on) {
    set_mode_flags(on ? (current.modeFlags | bits) : (current.modeFlags & ~bits));
}

void ControlAnim::set_inc_speed(int speed) {
    LessonState next = current;
    next.step = std::clamp(speed, INC_SPEED_MIN, INC_SPEED_MAX);
    commit(next);
}

void ControlAnim::select(int strokeCount) {
    select(std::vector<float>(static_cast<size_t>(std::max(0, strokeCount)), 1.0f));
}

void ControlAnim::select(std::vector<float> strokeLengths) {
    lengths = std::move(strokeLengths);
    totalLength = 0.0f;
    for (const float length : lengths) totalLength += std::max(0.0f, length);
    const int strokeCount = static_cast<int>(lengths.size());
    LessonState next = current;
    next.modeFlags &= ~MODE_PAUSED;
    next.strokeCount = std::max(0, strokeCount);
    next.strokesLearned = 0;
    next.misses = 0;
    next.round = 1;
    next.hint = -1.0f;
    next.progress = next.start_progress();
    commit(next);
}

void ControlAnim::tick() {
    if (current.hint >= 0.0f) {
        LessonState next = current;
        // A finished hint stays one tick, so that the whole stroke is seen before it goes.
        next.hint = current.hint >= 100.0f ? -1.0f
                                           : std::min(100.0f, current.hint + hintSpeed * static_cast<float>(current.step));
        commit(next);
        return;
    }
    if ((current.modeFlags & (MODE_AUTO_DRAW | MODE_PAUSED)) != MODE_AUTO_DRAW) return;
    if (current.progress >= 100.0f) return;
    set_progress(current.progress + static_cast<float>(current.step));
}

void ControlAnim::set_from_slider(unsigned int percent) {
    hold_at(static_cast<float>(percent));
}

void ControlAnim::hold_at(float percent) {
    if (std::isnan(percent)) return;
    LessonState next = current;
    // The learner took over: the timer must not move the character on under the slider.
    next.modeFlags |= MODE_PAUSED;
    next.progress = std::clamp(percent, 0.0f, 100.0f);
    commit(next);
}

void ControlAnim::set_progress(float percent) {
    if (std::isnan(percent)) {
        ki::pp_warn("ControlAnim::set_progress, progress is not a number");
        return;
    }
    LessonState next = current;
    next.progress = std::min(100.0f, percent);
    commit(next);
}

void ControlAnim::stroke_accepted() {
    LessonState next = current;
    next.strokesLearned = std::min(current.strokesLearned + 1, std::max(0, current.strokeCount));
    next.misses = 0;
    next.hint = -1.0f;
    commit(next);
}

bool ControlAnim::stroke_rejected(int hintAfter) {
    LessonState next = current;
    ++next.misses;
    // Past the threshold every further miss shows the stroke again.
    const bool hint = hintAfter > 0 && next.misses >= hintAfter && start_hint(next);
    commit(next);
    return hint;
}

bool ControlAnim::show_hint() {
    LessonState next = current;
    if (!start_hint(next)) return false;
    commit(next);
    return true;
}

bool ControlAnim::start_hint(LessonState& next) {
    const size_t index = static_cast<size_t>(std::max(0, current.strokesLearned));
    if (index >= lengths.size()) return false;
    next.hint = 0.0f;
    // The step is a share of the whole character: a stroke's share is that much faster.
    hintSpeed = lengths[index] > 0.0f ? totalLength / lengths[index] : 1.0f;
    return true;
}

void ControlAnim::step_stroke(bool forward) {
    if (totalLength <= 0.0f || current.is(MODE_LEARN)) return;
    // The slack lets a position just short of a stroke's end (float sums) count as that end.
    constexpr float SLACK = 0.01f;
    const float now = current.progress;
    float target = forward ? 100.0f : 0.0f;
    float acc = 0.0f;
    for (const float length : lengths) {
        acc += std::max(0.0f, length);
        const float end = acc / totalLength * 100.0f;
        if (forward && end > now + SLACK) {
            target = end;
            break;
        }
        if (!forward && end < now - SLACK) target = end;
    }
    hold_at(target);
}

void ControlAnim::restart() {
    LessonState next = current;
    next.strokesLearned = 0;
    next.misses = 0;
    next.round = 1;
    next.hint = -1.0f;
    commit(next);
}

void ControlAnim::next_round() {
    if (!current.is_done() || current.round >= current.rounds) return;
    LessonState next = current;
    ++next.round;
    next.strokesLearned = 0;
    next.misses = 0;
    next.hint = -1.0f;
    commit(next);
}

void ControlAnim::set_rounds(int rounds) {
    LessonState next = current;
    next.rounds = std::max(1, rounds);
    // A finished character stays finished; more rounds start with the next one or "Again".
    next.round = current.is_complete() ? next.rounds : std::min(next.round, next.rounds);
    commit(next);
}

void ControlAnim::set_strokes_learned(int count) {
    LessonState next = current;
    next.strokesLearned = std::clamp(count, 0, std::max(0, current.strokeCount));
    next.hint = -1.0f;
    commit(next);
}

void ControlAnim::config_load(const ki::store::GNode& node) {
    const LessonOptions options = LessonOptions::load(node);
    set_mode_flags(options.modeFlags);
    set_inc_speed(options.incSpeed);
}

void ControlAnim::config_save(ki::store::GNode& node) const {
    node.set(QStringLiteral("ControlAnim.modeFlags"), QVariant::fromValue(current.modeFlags));
    node.set(QStringLiteral("incSpeed"), QVariant::fromValue(current.step));
}

std::string ControlAnim::to_string() const {
    return ki::str::xprintF(0, "ControlAnim{modeFlags:$, incSpeed:$, progress:$, strokes:$/$}", current.modeFlags,
                            current.step, current.progress, current.strokesLearned, current.strokeCount);
}

}  // namespace morvel::prog2
