// The tracing judge as a table over its verdicts, and learn mode driven through the real widget
// with mouse, pen and touch events, judged by the listener events it fires and the pixels it
// paints.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QTabletEvent>
#include <QTest>

#include "WindowTestKit.h"
#include "app/stroke/StrokeJudge.h"

using morvel::Anim;
using morvel::CanvasHanzi;
using morvel::StrokeJudge;

namespace {

// A finger on a touch screen, delivered through Qt's own touch handling, and a pen; made once
// the application runs and owned by it. As function statics they were destroyed among the exit
// handlers, sometimes after Qt's device registry, and crashed there.
QPointingDevice* touch_screen() {
    static QPointer<QPointingDevice> device;
    if (!device) {
        device = QTest::createTouchDevice();
        device->setParent(qApp);
    }
    return device;
}

const QPointingDevice* pen() {
    static QPointer<QPointingDevice> device;
    if (!device)
        device = new QPointingDevice("pen", 7001, QInputDevice::DeviceType::Stylus, QPointingDevice::PointerType::Pen,
                                     QInputDevice::Capability::Position, 1, 2, QString(), QPointingDeviceUniqueId(),
                                     qApp);
    return device;
}

enum class Input { MOUSE, PEN, FINGER, MOUSE_FROM_TOUCH, MOUSE_FROM_PEN };
// RIGHT_RELEASE: the right button comes up while the left is held; SECOND_FINGER: another
// finger taps while the first is down.
enum class Phase { PRESS, MOVE, RELEASE, RIGHT_RELEASE, SECOND_FINGER, CANCEL };
struct Step {
    Input input;
    Phase phase;
    glm::vec2 at;  // character units
};

// Press at the first point, move through the middle ones, release at the last.
std::vector<Step> gesture(Input input, const std::vector<glm::vec2>& points) {
    std::vector<Step> steps;
    for (size_t i = 0; i < points.size(); ++i)
        steps.push_back({input, i == 0 ? Phase::PRESS : i + 1 == points.size() ? Phase::RELEASE : Phase::MOVE,
                         points[i]});
    return steps;
}

// Sends the steps at the pixels `fit` gives their points; false when the canvas left a pen
// event to Qt to turn into mouse events.
bool trace(CanvasHanzi& canvas, const Fit& fit, const std::vector<Step>& steps) {
    bool taken = true;
    for (const Step& step : steps) {
        const QPoint px = fit.to_pixel(step.at).toPoint();
        const bool press = step.phase == Phase::PRESS;
        const bool release = step.phase == Phase::RELEASE || step.phase == Phase::RIGHT_RELEASE;
        if (step.input == Input::FINGER) {
            QTouchEvent cancel(QEvent::TouchCancel, touch_screen());
            if (step.phase == Phase::CANCEL) QCoreApplication::sendEvent(&canvas, &cancel);
            auto touch = QTest::touchEvent(&canvas, touch_screen(), false);
            if (step.phase == Phase::SECOND_FINGER) touch.stationary(0).press(1, px).commit();
            if (step.phase == Phase::SECOND_FINGER) touch.stationary(0).release(1, px);
            if (press) touch.press(0, px);
            if (step.phase == Phase::MOVE) touch.move(0, px);
            if (release || step.phase == Phase::CANCEL) touch.release(0, px);
            touch.commit();
            continue;
        }
        const Qt::MouseButton button =
            step.phase == Phase::RIGHT_RELEASE ? Qt::RightButton : press || release ? Qt::LeftButton : Qt::NoButton;
        const Qt::MouseButtons held = step.phase == Phase::RELEASE ? Qt::NoButton : Qt::LeftButton;
        if (step.input == Input::PEN) {
            QTabletEvent ev(press ? QEvent::TabletPress : release ? QEvent::TabletRelease : QEvent::TabletMove, pen(), px,
                            canvas.mapToGlobal(px), 0.5, 0, 0, 0, 0, 0, Qt::NoModifier, button, held);
            QCoreApplication::sendEvent(&canvas, &ev);
            taken = taken && ev.isAccepted();
            continue;
        }
        // Qt marks the mouse events it makes of touch; those it makes of a pen carry the pen.
        const bool fromTouch = step.input == Input::MOUSE_FROM_TOUCH;
        QMouseEvent ev(press ? QEvent::MouseButtonPress : release ? QEvent::MouseButtonRelease : QEvent::MouseMove, px,
                       px, canvas.mapToGlobal(px), button, held, Qt::NoModifier,
                       fromTouch ? Qt::MouseEventSynthesizedByQt : Qt::MouseEventNotSynthesized,
                       fromTouch                                ? touch_screen()
                       : step.input == Input::MOUSE_FROM_PEN ? pen()
                                                             : QPointingDevice::primaryPointingDevice());
        QCoreApplication::sendEvent(&canvas, &ev);
    }
    return taken;
}

// The canvas's own lesson state, at the first stroke of its character.
void start_lesson(CanvasHanzi& canvas, bool learn, int learned = 0) {
    canvas.own_lesson().set_mode_flags(learn ? morvel::prog2::MODE_LEARN : 0u);
    canvas.own_lesson().select(static_cast<int>(canvas.get_anim().strokes.size()));
    canvas.own_lesson().set_strokes_learned(learned);
}

// One horizontal centre line from (100,500) to (700,500); one pixel per unit at 1000 x 1000.
Anim line_anim() {
    return anim_of({{"M 50 450 L 750 450 L 750 550 L 50 550 Z", "M 100 500 L 700 500"}});
}

}  // namespace

TEST(StrokeJudge, VerdictOnOneStroke) {
    const morvel::AnimStroke stroke = line_anim().strokes[0];  // judged with rCircle 60
    using V = StrokeJudge::Verdict;
    struct Row {
        const char* name;
        std::vector<glm::vec2> points;  // press, moves, release
        V verdict;
        int errors;
    };
    // clang-format off
    const Row rows[] = {
        {"trace exactly rCircle away stays clean", {{100, 500}, {200, 560}, {600, 440}, {700, 500}}, V::ACCEPTED, 0},
        {"press on the start circle's rim accepted", {{100, 560}, {400, 500}, {700, 500}}, V::ACCEPTED, 0},
        {"release on the end circle's rim accepted", {{100, 500}, {400, 500}, {700, 440}}, V::ACCEPTED, 0},
        {"one sample just past rCircle spoils the attempt", {{100, 500}, {200, 561}, {700, 500}}, V::REJECTED, 2},
        {"trace shifted by 1.5 rCircle rejected", {{100, 590}, {400, 590}, {700, 590}}, V::REJECTED, 3},
        {"press outside the start circle spoils a perfect trace",
         {{100, 561}, {100, 500}, {400, 500}, {700, 500}}, V::REJECTED, 2},
        {"reversed stroke rejected", {{700, 500}, {400, 500}, {100, 500}}, V::REJECTED, 2},
        {"release short of the end circle rejected", {{100, 500}, {400, 500}, {630, 500}}, V::REJECTED, 1},
        {"scribble under 20 units is a click", {{100, 500}, {110, 500}, {119.9f, 500}, {119.9f, 500}}, V::CLICK, 0},
        {"a trace of exactly 20 units is judged, not a click", {{100, 500}, {120, 500}, {120, 500}}, V::REJECTED, 1},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        StrokeJudge judge;
        judge.press(row.points.front(), stroke, 60);
        for (size_t i = 1; i + 1 < row.points.size(); ++i) judge.move(row.points[i], stroke, 60);
        EXPECT_EQ(judge.release(row.points.back(), stroke, 60), row.verdict);
        EXPECT_EQ(judge.get_errors(), row.errors);
        EXPECT_EQ(judge.get_path().is_empty(), row.verdict == V::CLICK) << "a judged trace stays visible";
    }
}

TEST(Tracing, EveryInputIsJudgedOnceLikeTheMouse) {
    const Anim line = line_anim();
    const std::vector<glm::vec2> perfect = {{100, 500}, {400, 500}, {700, 500}};
    const auto join = [](std::vector<Step> a, const std::vector<Step>& b, const std::vector<Step>& c = {}) {
        a.insert(a.end(), b.begin(), b.end());
        a.insert(a.end(), c.begin(), c.end());
        return a;
    };
    const auto interrupted = [&](Input input, Phase phase, std::vector<Step> after) {
        return join({{input, Phase::PRESS, {100, 500}}, {input, Phase::MOVE, {400, 500}}, {input, phase, {400, 500}}},
                    {{input, Phase::MOVE, {690, 500}}}, after);
    };
    struct Row {
        const char* name;
        std::vector<Step> steps;
        int learned;
        int rejected;
        bool learn = true;
        int done = 0;  // strokes traced before
    };
    const Row rows[] = {
        {"second finger cancels without a verdict",
         interrupted(Input::FINGER, Phase::SECOND_FINGER, {{Input::FINGER, Phase::RELEASE, {700, 500}}}), 0, 0},
        {"cancelled touch ends without a verdict", interrupted(Input::FINGER, Phase::CANCEL, {}), 0, 0},
        {"a right-button release ends no mouse attempt",
         interrupted(Input::MOUSE, Phase::RIGHT_RELEASE, {{Input::MOUSE, Phase::RELEASE, {700, 500}}}), 1, 0},
        {"finger stroke then Qt's mouse copy judged once",
         join(gesture(Input::FINGER, perfect), gesture(Input::MOUSE_FROM_TOUCH, perfect)), 1, 0},
        {"pen stroke then its mouse copy judged once",
         join(gesture(Input::PEN, perfect), gesture(Input::MOUSE_FROM_PEN, perfect)), 1, 0},
        {"a real mouse stroke after a finger stroke counts again",
         join(gesture(Input::FINGER, perfect), gesture(Input::MOUSE, perfect)), 2, 0},
        {"watch mode leaves every input alone",
         join(gesture(Input::MOUSE, perfect), gesture(Input::PEN, perfect), gesture(Input::FINGER, perfect)), 0, 0, false},
        {"finished character: no press, and a lone release judges nothing",
         join(gesture(Input::MOUSE, perfect), gesture(Input::FINGER, perfect), {{Input::MOUSE, Phase::RELEASE, {700, 500}}}),
         0, 0, true, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        CanvasHanzi canvas;
        canvas.resize(500, 400);
        canvas.set_r_circle(60);
        canvas.set_anim(line);
        start_lesson(canvas, row.learn, row.done);
        canvas.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&canvas));
        int learned = 0, rejected = 0;
        canvas.listenerStrokeLearned += [&] { ++learned; };
        canvas.listenerStrokeRejected += [&] { ++rejected; };
        EXPECT_EQ(trace(canvas, Fit(line.viewBox, canvas.size()), row.steps), row.learn) << "pen events taken";
        EXPECT_EQ(learned, row.learned);
        EXPECT_EQ(rejected, row.rejected);
        EXPECT_EQ(canvas.get_path_mouse().is_empty(), row.learned + row.rejected == 0);
    }
}

// At any widget size and device pixel ratio the trace lies under the pointer that made it, and
// the first grid line 50 pixels down.
TEST(Tracing, TracePaintsUnderThePointerAtAnySizeAndPixelRatio) {
    const Anim line = line_anim();
    const auto is_trace = [](QRgb c) { return qBlue(c) - qRed(c) > 100; };
    const QRgb grid = morvel::CanvasColors::normal().colorGrid.rgb();
    const std::pair<QSize, qreal> rows[] = {{{500, 400}, 1.0}, {{517, 333}, 1.5}, {{300, 900}, 2.0}, {{1024, 750}, 1.5}};
    for (const auto& [size, ratio] : rows) {
        SCOPED_TRACE(testing::Message() << size.width() << "x" << size.height() << " at ratio " << ratio);
        CanvasHanzi canvas;
        canvas.resize(size);
        canvas.set_anim(line);
        start_lesson(canvas, true);
        const Fit fit(line.viewBox, size);
        trace(canvas, fit, gesture(Input::PEN, {{100, 500}, {400, 500}, {690, 500}, {700, 500}}));
        QImage image(size * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        QPainter painter(&image);
        canvas.paint_to(painter, {static_cast<float>(size.width()), static_cast<float>(size.height())});
        painter.end();
        const auto at = [&](glm::vec2 p, qreal dx, qreal dy) {
            return image.pixel(((fit.to_pixel(p) + QPointF(dx, dy)) * ratio).toPoint());
        };
        const qreal half = CanvasHanzi::WIDTH_INK / 2 * fit.scale;  // of the trace, in pixels
        for (glm::vec2 p : {glm::vec2(100, 500), glm::vec2(400, 500), glm::vec2(690, 500)}) {
            EXPECT_TRUE(is_trace(at(p, 0, 0)) && is_trace(at(p, 0, 0.8 * half)) && is_trace(at(p, 0, -0.8 * half)));
            EXPECT_FALSE(is_trace(at(p, 0, 1.2 * half)) || is_trace(at(p, 0, -1.2 * half))) << p.x;
        }
        EXPECT_FALSE(is_trace(at({100, 500}, -1.2 * half, 0)));
        // Rows of grid colour near y = 50, in a column clear of the vertical lines.
        for (int y = static_cast<int>(40 * ratio); y <= static_cast<int>(60 * ratio); ++y) {
            if (image.pixel(static_cast<int>(20 * ratio), y) != grid) continue;
            EXPECT_LE(std::abs(y - 50 * ratio), 1.0) << y;
        }
        EXPECT_EQ(image.pixel(static_cast<int>(20 * ratio), static_cast<int>(50 * ratio)), grid);
    }
}
