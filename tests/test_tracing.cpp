// The tracing judge as a table over its verdicts, and learn mode driven through the real widget
// with mouse events, judged by the stroke-learned events it fires.
#include <gtest/gtest.h>
#include <ki/log/GLog.h>

#include <QCoreApplication>
#include <QDir>
#include <QMouseEvent>
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
