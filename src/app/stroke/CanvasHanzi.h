#pragma once
// The widget on which the current character is painted: background, practice grid and the
// strokes, either filling up along their centre lines (watch mode) or traced by the user with
// the left mouse button, a pen or one finger (learn mode). Everything is drawn and judged in
// the character's own frame (the viewBox), which one transform fits centred into the widget.

#include <ki/Listener.h>
#include <ki/qt/GCanvas.h>

#include <QColor>
#include <QPainterPath>
#include <glm/mat3x3.hpp>
#include <glm/vec2.hpp>
#include <vector>

#include "app/lesson/LessonOptions.h"
#include "app/lesson/RecallState.h"
#include "app/practice/Rejection.h"
#include "app/practice/ScoreCard.h"
#include "app/stroke/Anim.h"
#include "app/stroke/CanvasColors.h"
#include "app/stroke/ControlAnim.h"
#include "app/stroke/LearnerInk.h"
#include "app/stroke/StrokeJudge.h"

class QTouchEvent;

namespace ki::store {
class GNode;
}

namespace morvel {

class CanvasHanzi : public ki::qt::GCanvas {
    Q_OBJECT
public:
    /// drawConfig bits.
    static constexpr unsigned int DRAW_OUTLINE = prog2::LessonOptions::DRAW_OUTLINE;
    static constexpr unsigned int DRAW_HELPER_CIRCLES = prog2::LessonOptions::DRAW_HELPER_CIRCLES;
    static constexpr unsigned int DRAW_HELPER_LINES = prog2::LessonOptions::DRAW_HELPER_LINES;
    static constexpr unsigned int DRAW_CONFIG_DEFAULT = prog2::LessonOptions{}.drawConfig;
    static constexpr int R_CIRCLE_DEFAULT = prog2::LessonOptions{}.rCircle;
    /// Pen width of the watch-mode ink and of the trace, in character units.
    static constexpr float WIDTH_INK = 150.0f;
    static constexpr float WIDTH_HELPER_LINES = 5.0f;
    static constexpr float GRID_SPACING = 50.0f;
    /// The frame of the level's stroke files, used when a character has no valid viewBox.
    static constexpr ki::math::Rect VIEW_BOX_FALLBACK{0.0f, 0.0f, 1024.0f, 1024.0f};

    explicit CanvasHanzi(QWidget* parent = nullptr);

    /// Shows `anim` from its first stroke, with the trace cleared.
    void set_anim(Anim anim);
    const Anim& get_anim() const { return anim; }
    /// The frame painting and mapping use: the viewBox, or the fallback when it is invalid.
    ki::math::Rect get_view_box() const;

    /// The lesson state painted: mode, watch-mode position and strokes traced. Until one is
    /// bound the canvas paints its own, which starts in watch mode at 0 %.
    void set_lesson(const prog2::ControlAnim* model);
    const prog2::ControlAnim& get_lesson() const { return *lesson; }
    /// Writing from memory as the lesson flow keeps it; while it is active, learn mode hides the
    /// character. Must outlive the canvas.
    void set_recall(const prog2::RecallState* state) {
        recall = state;
        update();
    }
    bool is_recall() const { return recall != nullptr && recall->active && is_learn_mode(); }
    /// The canvas's own lesson state, painted while no other is bound.
    prog2::ControlAnim& own_lesson() { return ownLesson; }
    float get_progress() const { return lesson->get_progress(); }
    bool is_learn_mode() const { return lesson->is_mode_bit(prog2::MODE_LEARN); }
    void set_unicode(int code) { unicode = code; }
    int get_unicode() const { return unicode; }
    void set_grid_on(bool on);
    bool is_grid_on() const { return gridOn; }
    void set_alt_background(bool on);
    bool is_alt_background() const { return altBackground; }

    /// Theme 0 normal, 1 dark, 2 green, 3 auto (dark when `osDark`).
    void on_change_theme(unsigned int theme, bool osDark = false);
    const CanvasColors& get_colors() const { return colors; }

    unsigned int get_draw_config() const { return drawConfig; }
    /// The aids of drawConfig that the current practice round still shows; none from memory.
    unsigned int aids_shown() const;
    int get_guide_grid() const { return guideGrid; }
    void set_draw_config(unsigned int config);
    void set_draw_config_bits(unsigned int bits, bool on);
    /// Practice aids: strict judging, stroke numbers (in learn mode those written and the
    /// current one beside its start), the guide grid in the
    /// character's box (LessonOptions::Grid).
    void set_strict(bool on) { strict = on; }
    void set_stroke_numbers(bool on);
    void set_guide_grid(int grid);
    /// The mode and stroke counter in a corner, and the reason of a rejected trace.
    void set_captions(bool on);
    /// The counter as the caption shows it now, in the current language ("Round 1 of 3 · Stroke
    /// 2 of 4", "Done", "Watch").
    QString counter_text() const;
    /// The learner's accepted traces drawn over the traced strokes.
    void set_show_my_strokes(bool on);
    bool is_show_my_strokes() const { return showMyStrokes; }
    const LearnerInk& get_ink() const { return ink; }
    /// The scores of the current pass over the character; finished with its last stroke.
    const practice::ScoreCard& get_score_card() const { return scoreCard; }
    /// The score of the last judged trace, 0 .. 100; -1 before the first.
    int get_last_score() const { return lastScore; }
    /// Why the last trace was rejected; NONE after an accepted trace and from the next press.
    const practice::Rejection& get_rejection() const { return rejection; }
    /// How long the outline of a wrongly traced later stroke stays up.
    static constexpr int WRONG_STROKE_MARK_MS = 1500;
    /// Tolerance radius of tracing, in character units; values below 1 are refused.
    int get_r_circle() const { return rCircle; }
    void set_r_circle(int radius);

    /// Strokes traced so far, which is the index of the stroke to trace now.
    int get_strokes_learned() const { return lesson->get_strokes_learned(); }
    /// The last traced stroke; -1 before the first.
    int get_index_stroke() const { return get_strokes_learned() - 1; }
    bool is_hieroglyphe_drawn() const;
    void clear_path_mouse();
    const ki::math::Path& get_path_mouse() const { return judge.get_path(); }
    /// Faults of the current or last attempt.
    int get_errors() const { return judge.get_errors(); }

    /// Widget pixels to character units: the inverse of the transform painting uses.
    glm::vec2 map_point_to_anim(glm::vec2 p) const;
    glm::vec2 map_mouse_point_to_anim(QPoint p) const;

    /// "DRAW_CONFIG" (default 10) and "rCircle" (default 140), checked by LessonOptions.
    void config_load(const ki::store::GNode& node);
    void config_save(ki::store::GNode& node) const;

    void draw(ki::qt::GPC& gpc, const ki::math::Rect& rect) override;
    /// Watch mode, in character units.
    void draw_standard(ki::qt::GPC& gpc) const;
    /// Learn mode, in character units.
    void draw_learning(ki::qt::GPC& gpc) const;

    /// Fired once per correctly traced stroke.
    ki::Listener<ki::NO_PAYLOAD> listenerStrokeLearned;
    /// Fired once per rejected trace (a click is no trace).
    ki::Listener<ki::NO_PAYLOAD> listenerStrokeRejected;

protected:
    void mousePressEvent(QMouseEvent* ev) override;
    void mouseMoveEvent(QMouseEvent* ev) override;
    void mouseReleaseEvent(QMouseEvent* ev) override;
    void tabletEvent(QTabletEvent* ev) override;
    /// Touch events, for which QWidget has no handler of its own.
    bool event(QEvent* ev) override;

private:
    /// The three steps of an attempt at a widget pixel, the same for mouse, pen and finger;
    /// false when there is no stroke to trace.
    bool trace_press(QPoint pixel);
    bool trace_move(QPoint pixel);
    bool trace_release(QPoint pixel);
    /// One finger traces; a second finger or a cancelled sequence ends the attempt without a
    /// verdict.
    void touch_event(QTouchEvent* ev);
    /// The fit of the character's frame into `view` (pixels).
    glm::mat3 anim_matrix(const ki::math::Rect& view) const;
    /// The stroke to trace now, or nullptr when every stroke is done.
    const AnimStroke* current_stroke() const;
    void draw_background(ki::qt::GPC& gpc, const ki::math::Rect& rect);
    void fill_outlines(ki::qt::GPC& gpc, int count, const QColor& color) const;
    /// The counter and the reason of a rejection, in widget pixels.
    void draw_captions(ki::qt::GPC& gpc, const ki::math::Rect& rect) const;
    /// Stroke `index` inked along its centre line up to `length`, inside its outline.
    void ink_stroke(ki::qt::GPC& gpc, size_t index, float length, const QPen& ink) const;


    Anim anim;
    // Built once per Anim, so a frame converts no geometry.
    std::vector<QPainterPath> outlines;
    std::vector<QPainterPath> centreLines;
    float totalLength = 0.0f;

    int unicode = 0;
    bool gridOn = true;
    bool altBackground = false;
    CanvasColors colors = CanvasColors::normal();
    prog2::ControlAnim ownLesson;
    const prog2::ControlAnim* lesson = &ownLesson;
    const prog2::RecallState* recall = nullptr;

    int rCircle = 60;
    int widthCircle = 6;
    unsigned int drawConfig = 0;
    StrokeJudge judge;
    bool strict = false;
    bool strokeNumbers = false;
    int guideGrid = 0;
    bool captions = false;
    practice::Rejection rejection;
    LearnerInk ink;
    bool showMyStrokes = true;
    practice::ScoreCard scoreCard;
    int lastScore = -1;
    // A wrong-stroke marker goes after a while; the count tells a late timer from a current one.
    bool markerShown = false;
    int rejectionCount = 0;
    // The finger that traces the current attempt; -1 when none does.
    int touchId = -1;

};

}  // namespace morvel
