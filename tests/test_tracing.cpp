// The tracing judge as a table over its verdicts, and learn mode driven through the real widget
// with mouse, pen and touch events, judged by the listener events it fires and the pixels it
// paints.
#include <gtest/gtest.h>
#include <ki/log/GLog.h>

#include <QCoreApplication>
#include <QDir>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QTabletEvent>
#include <QTest>
#include <random>

#include "app/stroke/CanvasHanzi.h"
#include "app/stroke/StrokeJudge.h"

using morvel::Anim;
using morvel::CanvasHanzi;
using morvel::StrokeJudge;

namespace {

// Character units to widget pixels, computed here independently of the canvas: the frame is
// scaled uniformly to fit and centred.
struct Fit {
    float scale;
    glm::vec2 offset;

    Fit(const ki::math::Rect& box, QSize widget) {
        scale = std::min(widget.width() / box.w, widget.height() / box.h);
        offset = {(widget.width() - box.w * scale) / 2.0f - box.x * scale,
                  (widget.height() - box.h * scale) / 2.0f - box.y * scale};
    }
    QPointF to_pixel(glm::vec2 p) const { return {offset.x + p.x * scale, offset.y + p.y * scale}; }
    glm::vec2 to_anim(QPoint p) const { return (glm::vec2(p.x(), p.y()) - offset) / scale; }
};

void send(CanvasHanzi& canvas, QEvent::Type type, QPointF pos, Qt::MouseButton button = Qt::LeftButton,
          Qt::MouseButtons held = Qt::LeftButton) {
    if (type == QEvent::MouseButtonRelease && button == Qt::LeftButton) held = Qt::NoButton;
    QMouseEvent ev(type, pos, canvas.mapToGlobal(pos), type == QEvent::MouseMove ? Qt::NoButton : button, held,
                   Qt::NoModifier);
    QCoreApplication::sendEvent(&canvas, &ev);
}

// A finger on a touch screen, delivered through Qt's own touch handling, and a pen.
QPointingDevice* touch_screen() {
    static QPointingDevice* const device = QTest::createTouchDevice();
    return device;
}

const QPointingDevice& pen() {
    static const QPointingDevice device("pen", 7001, QInputDevice::DeviceType::Stylus,
                                        QPointingDevice::PointerType::Pen, QInputDevice::Capability::Position, 1, 2);
    return device;
}

enum class Input { MOUSE, PEN, FINGER, MOUSE_FROM_TOUCH, MOUSE_FROM_PEN };
enum class Phase { PRESS, MOVE, RELEASE, SECOND_FINGER, CANCEL };
struct Step {
    Input input;
    Phase phase;
    glm::vec2 at;  // character units
};

// Press at the first point, move through the middle ones, release at the last.
std::vector<Step> stroke(Input input, const std::vector<glm::vec2>& points) {
    std::vector<Step> steps;
    for (size_t i = 0; i < points.size(); ++i)
        steps.push_back({input, i == 0 ? Phase::PRESS : i + 1 == points.size() ? Phase::RELEASE : Phase::MOVE,
                         points[i]});
    return steps;
}

// Sends one step; false when the canvas ignored a pen event, so Qt would make a mouse event of it.
bool send_step(CanvasHanzi& canvas, const Step& step, QPoint px) {
    const bool press = step.phase == Phase::PRESS;
    const bool release = step.phase == Phase::RELEASE;
    if (step.input == Input::FINGER) {
        static bool secondDown = false;
        auto touch = QTest::touchEvent(&canvas, touch_screen(), false);
        if (step.phase == Phase::CANCEL) {
            QTouchEvent cancel(QEvent::TouchCancel, touch_screen());
            QCoreApplication::sendEvent(&canvas, &cancel);
        }
        if (press) touch.press(0, px);
        if (step.phase == Phase::MOVE) touch.move(0, px);
        if (step.phase == Phase::SECOND_FINGER) touch.stationary(0).press(1, px);
        // Every finger comes off at the end, so the next row starts on a clear screen.
        if (release || step.phase == Phase::CANCEL) touch.release(0, px);
        if ((release || step.phase == Phase::CANCEL) && secondDown) touch.release(1, px);
        secondDown = (secondDown || step.phase == Phase::SECOND_FINGER) && !release && step.phase != Phase::CANCEL;
        touch.commit();
        return true;
    }
    const Qt::MouseButton button = press || release ? Qt::LeftButton : Qt::NoButton;
    const Qt::MouseButtons held = release ? Qt::NoButton : Qt::LeftButton;
    if (step.input == Input::PEN) {
        const QEvent::Type type = press ? QEvent::TabletPress : release ? QEvent::TabletRelease : QEvent::TabletMove;
        QTabletEvent ev(type, &pen(), px, canvas.mapToGlobal(px), 0.5, 0, 0, 0, 0, 0, Qt::NoModifier, button, held);
        QCoreApplication::sendEvent(&canvas, &ev);
        return ev.isAccepted();
    }
    const QEvent::Type type = press ? QEvent::MouseButtonPress : release ? QEvent::MouseButtonRelease : QEvent::MouseMove;
    const bool fromTouch = step.input == Input::MOUSE_FROM_TOUCH;
    // Qt marks mouse events it makes of touch as such; those made of a pen carry the pen.
    QMouseEvent ev(type, px, px, canvas.mapToGlobal(px), button, held, Qt::NoModifier,
                   fromTouch ? Qt::MouseEventSynthesizedByQt : Qt::MouseEventNotSynthesized,
                   fromTouch ? touch_screen() : step.input == Input::MOUSE_FROM_PEN ? &pen() : QPointingDevice::primaryPointingDevice());
    QCoreApplication::sendEvent(&canvas, &ev);
    return true;
}

// The canvas's own lesson state, at the first stroke of its character.
void start_lesson(CanvasHanzi& canvas, bool learn, int learned = 0) {
    canvas.own_lesson().set_mode_flags(learn ? morvel::prog2::MODE_LEARN : 0u);
    canvas.own_lesson().select(static_cast<int>(canvas.get_anim().strokes.size()));
    canvas.own_lesson().set_strokes_learned(learned);
}

// Press at the first point, move through the middle ones, release at the last.
void trace(CanvasHanzi& canvas, const Fit& fit, const std::vector<glm::vec2>& points) {
    send(canvas, QEvent::MouseButtonPress, fit.to_pixel(points.front()));
    for (size_t i = 1; i + 1 < points.size(); ++i) send(canvas, QEvent::MouseMove, fit.to_pixel(points[i]));
    send(canvas, QEvent::MouseButtonRelease, fit.to_pixel(points.back()));
}

// Plays the window's part: every accepted stroke moves the canvas on to the next one.
struct Learner {
    CanvasHanzi& canvas;
    int learned = 0;
    explicit Learner(CanvasHanzi& c) : canvas(c) {
        canvas.listenerStrokeLearned += [this] {
            ++learned;
            canvas.own_lesson().stroke_accepted();
            canvas.clear_path_mouse();
        };
    }
};

// One horizontal centre line from (100,500) to (700,500); one pixel per unit at 1000 x 1000.
Anim line_anim() {
    Anim line;
    line.viewBox = {0, 0, 1000, 1000};
    line.strokes = {{ki::math::Path::from_svg_path_data("M 50 450 L 750 450 L 750 550 L 50 550 Z").value,
                     ki::math::Path::from_svg_path_data("M 100 500 L 700 500").value}};
    return line;
}

// Quiets the per-move debug lines for the length of a bulk test.
struct QuietLog {
    unsigned int level;
    QuietLog() {
        if (!ki::log::is_configured()) ki::log::configure();
        level = ki::log::get_log_level();
        ki::log::set_log_level(ki::log::LOG_WARN);
    }
    ~QuietLog() { ki::log::set_log_level(static_cast<int>(level)); }
};

}  // namespace

TEST(Tracing, JitteredCentreLinesOfEveryLevelCharacterAreAccepted) {
    QuietLog quiet;
    const QDir dir(":/wb/shared-res/zh/1");
    const QStringList files = dir.entryList({"*.svg"}, QDir::Files);
    ASSERT_GE(files.size(), 87);
    std::mt19937 random(20013);
    CanvasHanzi canvas;
    canvas.set_r_circle(60);
    canvas.resize(800, 600);
    for (const QString& file : files) {
        SCOPED_TRACE(file.toStdString());
        const auto built = Anim::build_from_file(dir.filePath(file));
        ASSERT_TRUE(built.ok()) << built.to_string();
        canvas.set_anim(built.value);
        start_lesson(canvas, true);
        Learner learner(canvas);
        const Fit fit(canvas.get_view_box(), canvas.size());
        std::uniform_real_distribution<float> jitter(-30.0f, 30.0f);
        for (const morvel::AnimStroke& stroke : built.value.strokes) {
            const float length = stroke.pathAnim.get_length();
            std::vector<glm::vec2> points;
            for (float along = 0.0f; along < length; along += 10.0f)
                points.push_back(stroke.pathAnim.point_at_length(along) +
                                 glm::vec2(jitter(random), jitter(random)));
            points.push_back(stroke.pathAnim.point_end() + glm::vec2(jitter(random), jitter(random)));
            const int before = learner.learned;
            trace(canvas, fit, points);
            ASSERT_EQ(learner.learned, before + 1)
                << "stroke " << before << " errors " << canvas.get_errors();
        }
        EXPECT_TRUE(canvas.is_hieroglyphe_drawn());
        EXPECT_EQ(canvas.get_index_stroke(), static_cast<int>(built.value.strokes.size()) - 1);
        canvas.listenerStrokeLearned.clear();
    }
}

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
        {"trace along the centre line accepted", {{100, 500}, {300, 500}, {500, 500}, {700, 500}}, V::ACCEPTED, 0},
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

TEST(Tracing, NothingIsJudgedOutsideAnAttempt) {
    const Anim line = line_anim();
    const std::vector<glm::vec2> perfect = {{100, 500}, {400, 500}, {700, 500}};
    struct Row {
        const char* name;
        bool learnMode;
        int learned;
    };
    const Row rows[] = {
        {"watch mode ignores the mouse", false, 0},
        {"finished character: press does nothing", true, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        CanvasHanzi canvas;
        canvas.resize(1000, 1000);
        canvas.set_anim(line);
        start_lesson(canvas, row.learnMode, row.learned);
        int fired = 0;
        canvas.listenerStrokeLearned += [&] { ++fired; };
        trace(canvas, Fit(line.viewBox, canvas.size()), perfect);
        // A lone release at the end point, as after a press outside the widget.
        send(canvas, QEvent::MouseButtonRelease, QPointF(700, 500));
        EXPECT_EQ(fired, 0);
        EXPECT_TRUE(canvas.get_path_mouse().is_empty());
    }
}

// A right-button release while the left button is still held once ended the attempt.
TEST(Tracing, OnlyTheLeftButtonEndsAnAttempt) {
    const Anim line = line_anim();
    CanvasHanzi canvas;
    canvas.resize(1000, 1000);
    canvas.set_r_circle(60);
    canvas.set_anim(line);
    start_lesson(canvas, true);
    int fired = 0;
    canvas.listenerStrokeLearned += [&] { ++fired; };
    send(canvas, QEvent::MouseButtonPress, QPointF(100, 500));
    send(canvas, QEvent::MouseMove, QPointF(400, 500));
    send(canvas, QEvent::MouseButtonRelease, QPointF(400, 500), Qt::RightButton, Qt::LeftButton);
    EXPECT_EQ(fired, 0);
    send(canvas, QEvent::MouseMove, QPointF(690, 500));
    send(canvas, QEvent::MouseButtonRelease, QPointF(700, 500));
    EXPECT_EQ(fired, 1);
}

TEST(Tracing, MousePointsMapExactlyIntoTheCharacterFrame) {
    const Anim anim = Anim::build_from_file(":/wb/shared-res/zh/1/20013.svg").value;
    const QSize sizes[] = {{1024, 750}, {1024, 1024}, {300, 900}, {517, 333}};
    for (QSize size : sizes) {
        SCOPED_TRACE(testing::Message() << size.width() << "x" << size.height());
        CanvasHanzi canvas;
        canvas.set_anim(anim);
        start_lesson(canvas, true);
        canvas.resize(size);
        const Fit fit(anim.viewBox, size);
        const QPoint pixels[] = {
            {0, 0}, {size.width() - 1, size.height() - 1}, {size.width() / 2, size.height() / 3}, {7, 200}};
        for (QPoint px : pixels) {
            const glm::vec2 expected = fit.to_anim(px);
            const glm::vec2 mapped = canvas.map_mouse_point_to_anim(px);
            EXPECT_NEAR(mapped.x, expected.x, 0.5f);
            EXPECT_NEAR(mapped.y, expected.y, 0.5f);
            // The press handler starts the trace at the same mapped point.
            send(canvas, QEvent::MouseButtonPress, QPointF(px));
            EXPECT_NEAR(canvas.get_path_mouse().point_start().x, expected.x, 0.5f);
            EXPECT_NEAR(canvas.get_path_mouse().point_start().y, expected.y, 0.5f);
            send(canvas, QEvent::MouseButtonRelease, QPointF(px));
        }
    }
}

TEST(Tracing, PenAndFingerTraceLikeTheMouse) {
    const Anim line = line_anim();
    const std::vector<glm::vec2> perfect = {{100, 500}, {400, 500}, {700, 500}};
    const std::vector<glm::vec2> shifted = {{100, 590}, {400, 590}, {700, 590}};
    const auto join = [](std::vector<Step> a, const std::vector<Step>& b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    };
    auto cut = [&](Phase phase) {
        std::vector<Step> steps = stroke(Input::FINGER, {{100, 500}, {400, 500}});
        steps.back().phase = Phase::MOVE;
        steps.push_back({Input::FINGER, phase, {400, 300}});
        steps.push_back({Input::FINGER, Phase::RELEASE, {700, 500}});
        return steps;
    };
    struct Row {
        const char* name;
        std::vector<Step> steps;
        int learned;
        int rejected;
        bool learn = true;
    };
    const Row rows[] = {
        {"pen stroke accepted", stroke(Input::PEN, perfect), 1, 0},
        {"pen stroke off the centre line rejected", stroke(Input::PEN, shifted), 0, 1},
        {"finger stroke accepted", stroke(Input::FINGER, perfect), 1, 0},
        {"finger stroke off the centre line rejected", stroke(Input::FINGER, shifted), 0, 1},
        {"second finger cancels without a verdict", cut(Phase::SECOND_FINGER), 0, 0},
        {"cancelled touch ends without a verdict", cut(Phase::CANCEL), 0, 0},
        {"finger stroke then Qt's mouse copy judged once",
         join(stroke(Input::FINGER, perfect), stroke(Input::MOUSE_FROM_TOUCH, perfect)), 1, 0},
        {"pen stroke then its mouse copy judged once",
         join(stroke(Input::PEN, perfect), stroke(Input::MOUSE_FROM_PEN, perfect)), 1, 0},
        {"a real mouse stroke after a finger stroke counts again",
         join(stroke(Input::FINGER, perfect), stroke(Input::MOUSE, perfect)), 2, 0},
        {"watch mode leaves pen and finger alone",
         join(stroke(Input::PEN, perfect), stroke(Input::FINGER, perfect)), 0, 0, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        CanvasHanzi canvas;
        canvas.resize(500, 400);
        canvas.set_r_circle(60);
        canvas.set_anim(line);
        start_lesson(canvas, row.learn);
        canvas.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&canvas));
        int learned = 0;
        int rejected = 0;
        canvas.listenerStrokeLearned += [&] { ++learned; };
        canvas.listenerStrokeRejected += [&] { ++rejected; };
        const Fit fit(line.viewBox, canvas.size());
        for (const Step& step : row.steps) {
            const bool accepted = send_step(canvas, step, fit.to_pixel(step.at).toPoint());
            if (step.input == Input::PEN) {
                EXPECT_EQ(accepted, row.learn) << "a pen event Qt would turn into a mouse event";
            }
        }
        EXPECT_EQ(learned, row.learned);
        EXPECT_EQ(rejected, row.rejected);
        EXPECT_EQ(canvas.get_path_mouse().is_empty(), row.learned + row.rejected == 0);
    }
}

// Rendered at each device pixel ratio, the trace lies under the pointer positions that made it
// and the grid's first line lies 50 widget pixels down.
TEST(Tracing, TraceAndGridLieUnderThePointerAtEveryPixelRatio) {
    const Anim line = line_anim();
    const QSize size(500, 400);
    const morvel::CanvasColors colors = morvel::CanvasColors::normal();
    const auto is_trace = [](QRgb c) { return qBlue(c) - qRed(c) > 100; };
    for (qreal ratio : {1.0, 1.5, 2.0}) {
        SCOPED_TRACE(testing::Message() << "ratio " << ratio);
        CanvasHanzi canvas;
        canvas.resize(size);
        canvas.set_anim(line);
        start_lesson(canvas, true);
        const Fit fit(line.viewBox, size);
        for (const Step& step : stroke(Input::PEN, {{100, 500}, {400, 500}, {690, 500}, {700, 500}}))
            send_step(canvas, step, fit.to_pixel(step.at).toPoint());
        const glm::vec2 start = canvas.get_path_mouse().point_start();
        EXPECT_NEAR(start.x, 100.0f, 1.0f);
        EXPECT_NEAR(start.y, 500.0f, 1.0f);
        QImage image(size * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        {
            QPainter painter(&image);
            canvas.paint_to(painter, {static_cast<float>(size.width()), static_cast<float>(size.height())});
        }
        const auto at = [&](QPointF p) { return image.pixel((p * ratio).toPoint()); };
        // The trace is 60 pixels wide here (150 units at 0.4 pixels per unit).
        for (glm::vec2 along : {glm::vec2(100, 500), glm::vec2(400, 500), glm::vec2(690, 500)}) {
            const QPointF p = fit.to_pixel(along);
            EXPECT_TRUE(is_trace(at(p))) << "on the trace at " << p.x();
            EXPECT_TRUE(is_trace(at(p + QPointF(0, 26))) && is_trace(at(p - QPointF(0, 26))));
            EXPECT_FALSE(is_trace(at(p + QPointF(0, 36))) || is_trace(at(p - QPointF(0, 36))));
        }
        EXPECT_FALSE(is_trace(at(fit.to_pixel({100, 500}) - QPointF(36, 0))));
        std::vector<int> gridRows;
        const int x = static_cast<int>(20 * ratio);
        for (int y = static_cast<int>(40 * ratio); y <= static_cast<int>(60 * ratio); ++y)
            if (image.pixel(x, y) == colors.colorGrid.rgb()) gridRows.push_back(y);
        ASSERT_FALSE(gridRows.empty());
        EXPECT_LE(std::abs(gridRows.front() - 50 * ratio), 1.0);
        EXPECT_LE(std::abs(gridRows.back() - 50 * ratio), 1.0);
    }
}
