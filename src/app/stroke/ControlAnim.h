#pragma once
// The lesson state of the current character: mode bits, watch-mode position and step, and the
// strokes traced so far. It changes only through the named operations below and tells its
// listener the state before and after every change, so that canvas, slider and label follow
// one source instead of each keeping a copy.

#include <ki/Listener.h>

#include <string>
#include <vector>

namespace ki::store {
class GNode;
}

namespace morvel::prog2 {

/// Bits of the mode word.
enum LessonMode : unsigned int {
    MODE_LEARN = 0x01,
    MODE_TRANSLATION = 0x02,
    MODE_AUTO_PLAY = 0x04,
    MODE_SLIDER = 0x08,
    MODE_AUTO_DRAW = 0x10,
    /// Automatic drawing held (the learner moved the slider); cleared on every selection.
    MODE_PAUSED = 0x20,
    MODE_KNOWN = 0x3F,
};

struct LessonState {
    unsigned int modeFlags = MODE_LEARN | MODE_TRANSLATION | MODE_AUTO_PLAY | MODE_AUTO_DRAW;
    /// Watch-mode increase of `progress` per timer tick, in percent.
    int step = 3;
    /// Watch-mode position in percent of the character's centre-line length, 0 to 100.
    float progress = 0.0f;
    /// Strokes traced so far: the index of the stroke to trace now.
    int strokesLearned = 0;
    int strokeCount = 0;
    /// Rejected traces of the current stroke since it became current.
    int misses = 0;
    /// Practice rounds: the character is traced `rounds` times, with fewer aids each round.
    int round = 1;
    int rounds = 1;
    /// The current stroke painting itself as a hint: its drawn share in percent, -1 for none.
    float hint = -1.0f;

    bool operator==(const LessonState&) const = default;
    bool is(unsigned int bits) const { return (modeFlags & bits) != 0; }
    /// Learn mode and automatic drawing start from an empty character, watch mode without
    /// automatic drawing shows it finished.
    float start_progress() const { return is(MODE_LEARN | MODE_AUTO_DRAW) ? 0.0f : 100.0f; }
    /// Every stroke of this round traced.
    bool is_done() const { return strokesLearned >= 1 && strokesLearned == strokeCount; }
    /// Every stroke of the last round traced.
    bool is_complete() const { return is_done() && round >= rounds; }
};

struct LessonChange {
    LessonState before;
    LessonState after;
    unsigned int changed_bits() const { return before.modeFlags ^ after.modeFlags; }
};

class ControlAnim {
public:
    static constexpr unsigned int MODE_FLAGS_DEFAULT = LessonState{}.modeFlags;
    static_assert(MODE_FLAGS_DEFAULT == 23);
    /// The step the stored speed falls back to; the window starts at LessonState::step.
    static constexpr int INC_SPEED_DEFAULT = 5;
    static constexpr int INC_SPEED_MIN = 1;
    static constexpr int INC_SPEED_MAX = 8;

    const LessonState& state() const { return current; }
    unsigned int get_mode_flags() const { return current.modeFlags; }
    /// The value being announced; equal to the mode flags outside an announcement.
    unsigned int get_mode_flags_pending() const { return pending.modeFlags; }
    bool is_mode_bit(unsigned int bits) const { return current.is(bits); }
    int get_inc_speed() const { return current.step; }
    float get_progress() const { return current.progress; }
    int get_strokes_learned() const { return current.strokesLearned; }

    /// A change of learn mode or automatic drawing moves the position to its start value; a
    /// change of learn mode also starts the tracing again.
    void set_mode_flags(unsigned int flags);
    void set_mode_bits(unsigned int bits, bool on);
    /// Clamped to INC_SPEED_MIN..INC_SPEED_MAX.
    void set_inc_speed(int speed);
    /// A new character with the centre-line lengths of its strokes: position at its start,
    /// nothing traced, pause released.
    void select(std::vector<float> strokeLengths);
    /// The same for `strokeCount` strokes of equal length.
    void select(int strokeCount);
    /// One timer step of automatic drawing; nothing while paused, off or at 100 %.
    void tick();
    /// The learner moved the slider: the position follows it and automatic drawing holds.
    void set_from_slider(unsigned int percent);
    /// The position set by hand (slider, stroke steps): automatic drawing holds there.
    void hold_at(float percent);
    void set_progress(float percent);
    void stroke_accepted();
    /// Counts a miss; from the `hintAfter`th miss on (0: never) each miss lets the current stroke
    /// paint itself as a hint, as fast along it as watch mode draws. True when it does.
    bool stroke_rejected(int hintAfter);
    /// The current stroke paints itself as a hint now, without a miss. False when every stroke
    /// is traced.
    bool show_hint();
    /// Watch mode: to the end of the next stroke, or back to the end of the one before the
    /// current position, holding there.
    void step_stroke(bool forward);
    /// Clamped to 0..strokeCount.
    void set_strokes_learned(int count);
    /// Tracing starts again from the first stroke of the first round.
    void restart();
    /// After a finished round that is not the last: the next round from the first stroke.
    void next_round();
    /// 1 or more; a finished character stays finished.
    void set_rounds(int rounds);

    /// "ControlAnim.modeFlags" (default 23, unknown bits dropped) and "incSpeed" (default 5,
    /// kept in 1..8).
    void config_load(const ki::store::GNode& node);
    void config_save(ki::store::GNode& node) const;

    std::string to_string() const;

    /// Fired once per change with the state before and after; while it runs, `state()` is still
    /// the state before. Callbacks must not change the model.
    ki::Listener<LessonChange> liChanged;

private:
    void commit(const LessonState& next);
    /// Starts the hint of the current stroke in `next`; false when there is no stroke left.
    bool start_hint(LessonState& next);

    LessonState current;
    LessonState pending;
    std::vector<float> lengths;
    float totalLength = 0.0f;
    float hintSpeed = 1.0f;
};

}  // namespace morvel::prog2
