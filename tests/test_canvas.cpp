// The character canvas painted into images, and its settings as loaded.
#include <gtest/gtest.h>
#include <ki/store/GNode.h>

#include <QImage>
#include <functional>
#include <tuple>

#include "WindowTestKit.h"
#include "app/stroke/ControlAnim.h"

using morvel::Anim;
using morvel::AnimStroke;
using morvel::CanvasHanzi;

namespace {

// Centre lines of length 300 and 100, each inside a rectangle that reaches 50 past its ends.
Anim two_strokes() {
    return anim_of({{"M 50 150 L 450 150 L 450 250 L 50 250 Z", "M 100 200 L 400 200"},
                    {"M 50 450 L 250 450 L 250 550 L 50 550 Z", "M 100 500 L 200 500"}});
}

QImage render(CanvasHanzi& canvas, int w, int h) {
    canvas.resize(w, h);
    QImage image(w, h, QImage::Format_RGB32);
    canvas.render(&image);
    return image;
}

bool is_ink(const QImage& image, const CanvasHanzi& canvas, QPoint p) {
    return near_colour(image.pixelColor(p), canvas.get_colors().colorAnim, 24);
}

}  // namespace

// Ink is a 150-unit round pen clipped by its stroke's outline: its painted end lies 75 units past the
// drawn length. Points are in character units; the canvas paints at half size, so a pen that does
// not scale with the character shows too.
TEST(CanvasInk, FollowsTheShareOfTotalCentreLineLengthAndTheHint) {
    struct Row {
        const char* name;
        float progress;
        int hintOn;  // learn mode with a full hint on this stroke; -1 for watch mode
        std::vector<QPoint> inked, blank;
    };
    // clang-format off
    const Row rows[] = {
        {"progress 50 paints two thirds of the first stroke only", 50, -1, {{110, 200}, {368, 200}}, {{382, 200}, {110, 500}}},
        {"progress 80 finishes the first and paints a fifth of the second", 80, -1, {{445, 200}, {188, 500}}, {{202, 500}}},
        {"progress above 100 counts as 100", 400, -1, {{445, 200}, {245, 500}}, {}},
        {"negative progress counts as 0", -30, -1, {}, {{110, 200}, {110, 500}}},
        {"hint on the first stroke leaves the second alone", 0, 0, {{250, 200}}, {{150, 500}}},
        {"hint on the second stroke leaves the first alone", 0, 1, {{150, 500}}, {{250, 200}}},
    };
    // clang-format on
    QPainterPath outlines;
    for (const AnimStroke& s : two_strokes().strokes)
        outlines.addPath(ki::qt::GPC::math_path_to_painter_path(s.pathOutline));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        CanvasHanzi canvas;
        canvas.set_anim(two_strokes());
        morvel::prog2::ControlAnim& lesson = canvas.own_lesson();
        lesson.set_progress(row.progress);
        if (row.hintOn >= 0) {
            lesson.set_mode_flags(morvel::prog2::MODE_LEARN);
            lesson.select({300.0f, 100.0f});
            lesson.set_strokes_learned(row.hintOn);
            ASSERT_TRUE(lesson.stroke_rejected(1));
            while (lesson.state().hint < 100.0f) lesson.tick();
        }
        const QImage image = render(canvas, 500, 500);
        const auto ink_at = [&](QPoint p) { return is_ink(image, canvas, p / 2); };
        for (QPoint p : row.inked) EXPECT_TRUE(ink_at(p)) << p.x() << "," << p.y();
        for (QPoint p : row.blank) EXPECT_FALSE(ink_at(p)) << p.x() << "," << p.y();
        const auto outside = [&](QPoint p) {
            return is_ink(image, canvas, p) && !outlines.contains(QPointF(p * 2) + QPointF(1, 1));
        };
        EXPECT_EQ(count_pixels(image.rect(), outside), 0) << "ink outside the outlines";
    }
}

TEST(CanvasLearnMode, CornerCaptionFollowsTheCounter) {
    CanvasHanzi canvas;
    canvas.set_anim(two_strokes());
    canvas.own_lesson().set_mode_flags(morvel::prog2::MODE_LEARN);
    canvas.own_lesson().select(2);
    auto corner = [&canvas]() { return render(canvas, 600, 600).copy(0, 0, 300, 60); };
    const QImage bare = corner();
    canvas.set_captions(true);
    const QImage first = corner();
    canvas.own_lesson().stroke_accepted();
    const QImage second = corner();
    EXPECT_NE(bare, first) << "the counter is painted";
    EXPECT_NE(first, second) << "and follows the strokes traced";
}

TEST(CanvasSettings, LoadAppliesDefaultsAndClamps) {
    struct Row {
        const char* name;
        std::vector<std::pair<const char*, QVariant>> stored;
        unsigned drawConfig;
        int rCircle;
        unsigned modeFlags;
        int incSpeed;
    };
    // clang-format off
    const Row rows[] = {
        {"fresh configuration gives the defaults, not the construction values", {}, 10, 140, 23, 5},
        {"stored values load", {{"DRAW_CONFIG", 18u}, {"rCircle", 80}, {"ControlAnim.modeFlags", 6u}, {"incSpeed", 3}}, 18, 80, 6, 3},
        {"speed 0 loads as 1", {{"incSpeed", 0}}, 10, 140, 23, 1},
        {"speed 9 loads as 8", {{"incSpeed", 9}}, 10, 140, 23, 8},
        {"garbage types fall back to defaults",
         {{"DRAW_CONFIG", "lots"}, {"rCircle", 2.5}, {"ControlAnim.modeFlags", -1}, {"incSpeed", "fast"}}, 10, 140, 23, 5},
        {"a radius below 1 would reject every trace", {{"rCircle", 0}}, 10, 140, 23, 5},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ki::store::GNode node;
        for (const auto& [key, value] : row.stored) node.set(key, value);
        CanvasHanzi canvas;
        morvel::prog2::ControlAnim control;
        canvas.config_load(node);
        control.config_load(node);
        EXPECT_EQ(canvas.get_draw_config(), row.drawConfig);
        EXPECT_EQ(canvas.get_r_circle(), row.rCircle);
        EXPECT_EQ(control.get_mode_flags(), row.modeFlags);
        EXPECT_EQ(control.get_inc_speed(), row.incSpeed);
    }
}

TEST(ControlAnimModes, ListenersSeeOldCurrentAndNewPendingOncePerChange) {
    morvel::prog2::ControlAnim control;
    std::vector<std::tuple<unsigned, unsigned, unsigned>> seen;  // current, pending, delivered after
    control.liChanged += [&](const morvel::prog2::LessonChange& change) {
        EXPECT_EQ(change.before, control.state());
        seen.emplace_back(control.get_mode_flags(), control.get_mode_flags_pending(), change.after.modeFlags);
    };
    control.set_mode_flags(17u);
    control.set_mode_flags(17u);
    control.set_mode_bits(0x20, true);
    control.set_mode_bits(0x20, true);
    const std::vector<std::tuple<unsigned, unsigned, unsigned>> expected = {{23u, 17u, 17u}, {17u, 49u, 49u}};
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(control.get_mode_flags(), 49u);
}

TEST(ControlAnimModes, OperationsMoveOneLessonState) {
    using namespace morvel::prog2;
    struct Row {
        const char* name;
        unsigned int flags;  // set before the operation, after a selection of a 4-stroke character
        std::function<void(ControlAnim&)> op;
        float progress;
        int learned;
        bool paused;
        int round = 1;
    };
    // clang-format off
    const Row rows[] = {
        {"selection without automatic drawing shows the character whole", MODE_SLIDER, [](ControlAnim&) {}, 100, 0, false},
        {"a tick advances by the step", MODE_AUTO_DRAW, [](ControlAnim& c) { c.set_inc_speed(7); c.tick(); }, 7, 0, false},
        {"ticks stop at 100", MODE_AUTO_DRAW, [](ControlAnim& c) { c.set_inc_speed(8); for (int i = 0; i < 20; ++i) c.tick(); }, 100, 0, false},
        {"no tick without automatic drawing", MODE_LEARN, [](ControlAnim& c) { c.tick(); }, 0, 0, false},
        {"the slider pauses automatic drawing", MODE_AUTO_DRAW, [](ControlAnim& c) { c.set_from_slider(40); c.tick(); }, 40, 0, true},
        {"a new selection releases the pause", MODE_AUTO_DRAW, [](ControlAnim& c) { c.set_from_slider(40); c.select(4); c.tick(); }, 3, 0, false},
        {"accepted strokes count up to the character's strokes", MODE_LEARN,
         [](ControlAnim& c) { for (int i = 0; i < 6; ++i) c.stroke_accepted(); }, 0, 4, false},
        {"switching learn mode off shows the whole character and forgets the strokes", MODE_LEARN,
         [](ControlAnim& c) { c.stroke_accepted(); c.set_mode_bits(MODE_LEARN, false); }, 100, 0, false},
        {"switching automatic drawing on starts from empty", MODE_SLIDER,
         [](ControlAnim& c) { c.set_mode_bits(MODE_AUTO_DRAW, true); }, 0, 0, false},
        {"a stroke step forward holds at the end of the first stroke", MODE_AUTO_DRAW,
         [](ControlAnim& c) { c.select({300, 100, 100, 300}); c.step_stroke(true); }, 37.5f, 0, true},
        {"a step back from inside a stroke returns to the end of the one before", MODE_AUTO_DRAW,
         [](ControlAnim& c) { c.select({300, 100, 100, 300}); c.hold_at(60); c.step_stroke(false); }, 50, 0, true},
        {"a step back from a stroke's end goes one stroke further", MODE_AUTO_DRAW,
         [](ControlAnim& c) { c.select({300, 100, 100, 300}); c.hold_at(50); c.step_stroke(false); }, 37.5f, 0, true},
        {"stroke steps do nothing in learn mode", MODE_LEARN,
         [](ControlAnim& c) { c.step_stroke(true); }, 0, 0, false},
        {"practice rounds switched on after the last stroke leave the character finished", MODE_LEARN,
         [](ControlAnim& c) { for (int i = 0; i < 4; ++i) c.stroke_accepted(); c.set_rounds(3); }, 0, 4, false, 3},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ControlAnim control;
        control.set_mode_flags(row.flags);
        control.select(4);
        row.op(control);
        EXPECT_FLOAT_EQ(control.get_progress(), row.progress);
        EXPECT_EQ(control.get_strokes_learned(), row.learned);
        EXPECT_EQ(control.is_mode_bit(MODE_PAUSED), row.paused);
        EXPECT_EQ(control.state().is_done(), row.learned == 4);
        EXPECT_EQ(control.state().round, row.round);
    }
}
