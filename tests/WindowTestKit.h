#pragma once
// What the window and canvas tests share: pixel helpers, the mapping from character units to
// widget pixels, and the program's window opened offscreen on level 1 and driven like a learner
// would (menu items, mouse traces along a stroke's centre line).

#include <gtest/gtest.h>
#include <ki/qt/GSound.h>
#include <ki/qt/components/GButton.h>
#include <ki/qt/components/GMenu.h>
#include <ki/qt/components/otf/GDataScroller.h>
#include <ki/qt/lang.h>
#include <ki/qt/themes.h>
#include <ki/tools/GSettings.h>

#include <QAction>
#include <QCoreApplication>
#include <QImage>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <cmath>
#include <functional>
#include <memory>
#include <vector>

#include "app/AppData.h"
#include "app/ModelAppData.h"
#include "app/Window.h"
#include "app/stroke/CanvasHanzi.h"

using morvel::prog2::AppData;
using morvel::prog2::Window;

// The points of `area` for which `counted` holds.
inline int count_pixels(const QRect& area, const std::function<bool(QPoint)>& counted) {
    int n = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x) n += counted(QPoint(x, y)) ? 1 : 0;
    return n;
}

// Colours whose red, green and blue differ by less than `tolerance` in all: antialiasing and
// blending leave a painted colour a little off.
inline bool near_colour(const QColor& a, const QColor& b, int tolerance = 60) {
    return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) + std::abs(a.blue() - b.blue()) <
           tolerance;
}

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
};

// A character in a 1000-unit box made of strokes given as path data: outline, centre line.
inline morvel::Anim anim_of(const std::vector<std::pair<QString, QString>>& strokes) {
    morvel::Anim anim;
    anim.viewBox = {0, 0, 1000, 1000};
    for (const auto& [outline, centre] : strokes) {
        const auto shape = ki::math::Path::from_svg_path_data(outline);
        const auto line = ki::math::Path::from_svg_path_data(centre);
        EXPECT_TRUE(shape.ok() && line.ok()) << shape.to_string() << line.to_string();
        anim.strokes.push_back({shape.value, line.value});
    }
    return anim;
}

// Character `unicode` of level `levelNumber`, read from its stroke file.
inline morvel::Anim character(int unicode, int levelNumber = 1) {
    auto result = morvel::Anim::build_from_file(QString(":/wb/shared-res/zh/%1/%2.svg").arg(levelNumber).arg(unicode));
    EXPECT_TRUE(result.ok()) << result.to_string();
    return result.value;
}

// Samples every 10 units (at least 8 steps) along the centre line of `stroke` from share `from`
// of its length to share `to`, each moved by `across(share)` and then by `shift`.
inline std::vector<glm::vec2> along(const morvel::AnimStroke& stroke, float from = 0, float to = 1,
                                    glm::vec2 shift = {}, const std::function<glm::vec2(float)>& across = {}) {
    const ki::math::Path& centre = stroke.pathAnim;
    const float length = centre.get_length();
    const int steps = std::max(8, static_cast<int>(std::abs(to - from) * length / 10));
    std::vector<glm::vec2> points;
    for (int i = 0; i <= steps; ++i) {
        const float share = from + (to - from) * i / steps;
        points.push_back(centre.point_at_length(length * share) + (across ? across(share) : glm::vec2(0)) + shift);
    }
    return points;
}

// Across 一 (about 800 units wide): five peaks of ±80 units, inside the lenient corridor.
inline glm::vec2 zigzag(float share) {
    return glm::vec2(0.0f, 80.0f * std::asin(std::sin(share * 5.0f * 3.14159f)) / 1.5708f);
}

inline QPoint to_pixel(const morvel::CanvasHanzi* canvas, glm::vec2 p) {
    return Fit(canvas->get_view_box(), canvas->size()).to_pixel(p).toPoint();
}

inline void send_mouse(QWidget* target, QEvent::Type type, QPoint local, Qt::MouseButtons held) {
    static quint64 stamp = 1000;
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent ev(type, QPointF(local), QPointF(target->mapToGlobal(local)), button, held, Qt::NoModifier);
    ev.setTimestamp(++stamp);
    QCoreApplication::sendEvent(target, &ev);
}

// Traces stroke `k` of the canvas's character with the mouse, along its centre line or reversed,
// each point moved across it by `across(share of the length)`.
inline void trace_stroke(morvel::CanvasHanzi* canvas, int k, bool reversed = false,
                         const std::function<glm::vec2(float)>& across = {}) {
    const ki::math::Path& centre = canvas->get_anim().strokes[size_t(k)].pathAnim;
    const float length = centre.get_length();
    auto at = [&](float along) {
        const glm::vec2 moved = across ? across(along / length) : glm::vec2(0.0f);
        return to_pixel(canvas, centre.point_at_length(reversed ? length - along : along) + moved);
    };
    send_mouse(canvas, QEvent::MouseButtonPress, at(0.0f), Qt::LeftButton);
    for (float along = 20.0f; along < length; along += 20.0f)
        send_mouse(canvas, QEvent::MouseMove, at(along), Qt::LeftButton);
    send_mouse(canvas, QEvent::MouseButtonRelease, at(length), Qt::NoButton);
}

inline void settle() {
    for (int i = 0; i < 5; ++i) QCoreApplication::processEvents();
}

// Level 1, loaded once for every window test.
inline AppData& catalogue() {
    static AppData data(QStringLiteral(":/wb/shared-res/zh/1"));
    [[maybe_unused]] static const bool loaded = (data.load(), true);
    return data;
}

// The item at the end of `path` (sub-menu titles, then the item), or null.
inline QAction* menu_item(QMenu* menu, const QStringList& path) {
    for (int i = 0; i < path.size() && menu != nullptr; ++i) {
        QAction* found = nullptr;
        for (QAction* action : menu->actions())
            if (action->text() == path[i]) found = action;
        if (found == nullptr || i + 1 == path.size()) return found;
        menu = found->menu();
    }
    return nullptr;
}

inline void trigger_item(Window& w, const QStringList& path) {
    std::unique_ptr<ki::qt::GMenu> menu(w.gen_menu_options(Window::OPTIONS_ALL));
    QAction* item = menu_item(menu.get(), path);
    ASSERT_NE(item, nullptr) << path.join(QStringLiteral(" > ")).toStdString();
    item->trigger();
}

inline void change_options(Window& w, const std::function<void(morvel::prog2::LessonOptions&)>& change) {
    morvel::prog2::LessonOptions options = w.get_options();
    change(options);
    w.apply_options(options);
}

// The window's parts, found the way a test of any window would find them.
inline morvel::CanvasHanzi* canvas_of(Window& w) {
    return w.findChild<morvel::CanvasHanzi*>();
}
inline ki::qt::otf::GDataScroller* list_of(Window& w) {
    return w.findChild<ki::qt::otf::GDataScroller*>();
}
inline morvel::prog2::ModelAppData* model_of(Window& w) {
    return static_cast<morvel::prog2::ModelAppData*>(list_of(w)->get_model());
}

// Where the buttons of the bar are, left to right.
inline std::vector<int> button_places(Window& w) {
    std::vector<int> xs;
    for (auto* b : w.findChild<QWidget*>(QStringLiteral("buttons"))->findChildren<ki::qt::GButton*>())
        xs.push_back(b->mapTo(&w, QPoint()).x());
    return xs;
}

// The window in English, silent, on a stored node of its own; the theme of the run comes back
// afterwards. private_history() gives the test an empty practice history of its own.
class WindowTest : public testing::Test {
protected:
    static inline const QString WINDOW_NODE = QStringLiteral("WinHanzi_0");

    void SetUp() override {
        ki::qt::GSound::set_silent(true);
        ki::qt::lang::set_lang(QLocale::English);
        themeBefore = ki::qt::themes::get_theme();
        ki::qt::GSettings::instance().remove(QStringLiteral("Window/") + WINDOW_NODE);
    }
    void TearDown() override {
        win.reset();
        ki::qt::lang::set_lang(QLocale::English);
        ki::qt::themes::set(themeBefore);
        if (history) qputenv("XDG_DATA_HOME", dataHomeBefore);
    }
    void private_history() {
        history = std::make_unique<QTemporaryDir>();
        dataHomeBefore = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", history->path().toUtf8());
    }
    // A new window in place of the last one, which goes without closing.
    Window& open(bool shown = true) {
        win = std::make_unique<Window>(catalogue());
        win->resize(1024, 750);
        win->setup();
        if (shown) win->show();
        settle();
        return *win;
    }

    std::unique_ptr<Window> win;
    unsigned int themeBefore = 0;
    std::unique_ptr<QTemporaryDir> history;
    QByteArray dataHomeBefore;
};
