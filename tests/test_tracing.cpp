// Learn mode driven through the real widget with mouse events, judged by the stroke-learned
// events it fires.
#include <gtest/gtest.h>
#include <ki/log/GLog.h>
#include <ki/log/LogCapture.h>

#include <QCoreApplication>
#include <QDir>
#include <QMouseEvent>
#include <random>

#include "app/stroke/CanvasHanzi.h"

using morvel::Anim;
using morvel::CanvasHanzi;

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

void send(CanvasHanzi& canvas, QEvent::Type type, QPointF pos) {
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent ev(type, pos, canvas.mapToGlobal(pos),
                   type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, held, Qt::NoModifier);
    QCoreApplication::sendEvent(&canvas, &ev);
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
            canvas.set_index_stroke(++learned);
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
    canvas.set_learn_mode(true);
    canvas.set_r_circle(60);
    canvas.resize(800, 600);
    for (const QString& file : files) {
        SCOPED_TRACE(file.toStdString());
        const auto built = Anim::build_from_file(dir.filePath(file));
        ASSERT_TRUE(built.ok()) << built.to_string();
        canvas.set_anim(built.value);
        canvas.set_index_stroke(0);
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

TEST(Tracing, VerdictOnOneStroke) {
    const Anim line = line_anim();  // judged with rCircle 60
    struct Row {
        const char* name;
        std::vector<glm::vec2> points;
        bool accepted;
        int nos;  // "NO" lines logged
        bool traceKept;
    };
    const Row rows[] = {
        {"trace along the centre line accepted",
         {{100, 500}, {300, 500}, {500, 500}, {700, 500}},
         true,
         0,
         true},
        {"trace exactly rCircle away stays clean",
         {{100, 500}, {200, 560}, {600, 440}, {700, 500}},
         true,
         0,
         true},
        {"press on the start circle's rim accepted", {{100, 560}, {400, 500}, {700, 500}}, true, 0, true},
        {"one sample just past rCircle spoils the attempt",
         {{100, 500}, {200, 561}, {700, 500}},
         false,
         1,
         true},
        {"trace shifted by 1.5 rCircle rejected", {{100, 590}, {400, 590}, {700, 590}}, false, 2, true},
        {"press outside the start circle spoils a perfect trace",
         {{100, 561}, {100, 500}, {400, 500}, {700, 500}},
         false,
         2,
         true},
        {"reversed stroke rejected", {{700, 500}, {400, 500}, {100, 500}}, false, 2, true},
        {"release short of the end circle rejected", {{100, 500}, {400, 500}, {630, 500}}, false, 1, true},
        {"scribble under 20 units neither counts nor fires",
         {{100, 500}, {110, 500}, {115, 500}},
         false,
         0,
         false},
    };
    if (!ki::log::is_configured()) ki::log::configure();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        CanvasHanzi canvas;
        canvas.resize(1000, 1000);
        canvas.set_learn_mode(true);
        canvas.set_r_circle(60);
        canvas.set_anim(line);
        int fired = 0;
        canvas.listenerStrokeLearned += [&] { ++fired; };
        ki::log::LogCapture capture;
        trace(canvas, Fit(line.viewBox, canvas.size()), row.points);
        EXPECT_EQ(fired, row.accepted ? 1 : 0);
        int nos = 0;
        for (const auto& logged : capture.lines()) nos += logged.text == "NO" ? 1 : 0;
        EXPECT_EQ(nos, row.nos);
        EXPECT_EQ(canvas.get_path_mouse().is_empty(), !row.traceKept);
    }
}

TEST(Tracing, NothingIsJudgedOutsideAnAttempt) {
    const Anim line = line_anim();
    const std::vector<glm::vec2> perfect = {{100, 500}, {400, 500}, {700, 500}};
    struct Row {
        const char* name;
        bool learnMode;
        int indexStroke;
    };
    const Row rows[] = {
        {"watch mode ignores the mouse", false, 0},
        {"finished character: press does nothing", true, 1},
        {"negative stroke index: press does nothing", true, -1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        CanvasHanzi canvas;
        canvas.resize(1000, 1000);
        canvas.set_anim(line);
        canvas.set_learn_mode(row.learnMode);
        canvas.set_index_stroke(row.indexStroke);
        int fired = 0;
        canvas.listenerStrokeLearned += [&] { ++fired; };
        trace(canvas, Fit(line.viewBox, canvas.size()), perfect);
        // A lone release at the end point, as after a press outside the widget.
        send(canvas, QEvent::MouseButtonRelease, QPointF(700, 500));
        EXPECT_EQ(fired, 0);
        EXPECT_TRUE(canvas.get_path_mouse().is_empty());
    }
}

TEST(Tracing, MousePointsMapExactlyIntoTheCharacterFrame) {
    const Anim anim = Anim::build_from_file(":/wb/shared-res/zh/1/20013.svg").value;
    const QSize sizes[] = {{1024, 750}, {1024, 1024}, {300, 900}, {517, 333}};
    for (QSize size : sizes) {
        SCOPED_TRACE(testing::Message() << size.width() << "x" << size.height());
        CanvasHanzi canvas;
        canvas.set_anim(anim);
        canvas.set_learn_mode(true);
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
