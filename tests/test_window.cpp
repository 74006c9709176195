// The program's window driven offscreen like a learner would: clicks, drags, buttons, hotkeys,
// the options menu, mouse traces, and restarts on the same isolated settings store.
#include <ki/log/LogCapture.h>
#include <ki/qt/components/GLabel.h>
#include <ki/qt/components/GPanel.h>
#include <ki/qt/guitools/GGui.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QAccessible>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMap>
#include <QRegularExpression>
#include <QSlider>
#include <QTest>
#include <csignal>

#include "WindowTestKit.h"
#include "app/Recording.h"
#include "app/practice/PracticeTexts.h"
#include "app/progress/LessonRecorder.h"
#include "app/progress/ProgressStore.h"
#include "app/recall/RecallLayer.h"

using ki::qt::GSettings;
using namespace morvel::prog2;

namespace {

constexpr int INDEX_ZHONG = 7;  // 中 in the level's code-point order

QSlider* slider_of(Window& w) {
    return w.findChild<QSlider*>(QStringLiteral("progressSlider"));
}
QWidget* translation_panel_of(Window& w) {
    return w.findChild<QWidget*>(QStringLiteral("translatation"));
}

// The recording last handed to the player, empty while none was.
QString last_recording(Window& w) {
    const auto* sound = w.findChild<ki::qt::GSound*>();
    return sound != nullptr ? sound->get_source_path() : QString();
}
QString recording_of(int index) {
    return morvel::prog2::Recording::path(catalogue().unicode_at(unsigned(index)));
}

ki::qt::GButton* button(Window& win, const QString& toolTip) {
    for (auto* b : win.findChildren<ki::qt::GButton*>())
        if (b->toolTip() == toolTip) return b;
    return nullptr;
}

// Counts the paint events a widget receives.
struct PaintCounter : QObject {
    explicit PaintCounter(QWidget* target) { target->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* ev) override {
        if (ev->type() == QEvent::Paint) ++count;
        return false;
    }
    int count = 0;
};

}  // namespace

TEST_F(WindowTest, SelectionByListButtonsAndHotkeysPlaysAtOnceAndMovesNoButton) {
    Window& w = open(false);
    EXPECT_EQ(w.findChild<ki::qt::GSound*>(), nullptr) << "no audio stack loads for a window never seen";
    w.show();
    settle();
    EXPECT_EQ(last_recording(w), recording_of(0)) << "the first recording waits for the first frame";
    // Tool tips by position; the pinyin label beside them must never push the buttons about.
    QMap<int, QString> tips;
    for (auto* b : w.findChild<QWidget*>(QStringLiteral("buttons"))->findChildren<ki::qt::GButton*>())
        if (b->isVisible()) tips[b->mapTo(&w, QPoint()).x()] = b->toolTip();
    const std::vector<int> placed = button_places(w);
    EXPECT_EQ(
        tips.values().join(QStringLiteral(" | ")).toStdString(),
        "Options | Toggle fullscreen | Play Sound | Previous Hieroglyph | Next Hieroglyph | Show/Hide List | "
        "Learn the correct strokes in the correct order | Write from memory | "
        "Today's session: due reviews, then new characters (Ctrl+T)");
    // A drag from the middle of the list or the canvas, with list row 10 at the top.
    model_of(w)->set_row_height(20);
    const auto drag = [&w](bool onList, int dy) {
        return [&w, onList, dy]() {
            list_of(w)->update_index_win_top(10);
            QWidget* target = onList ? static_cast<QWidget*>(list_of(w)) : canvas_of(w);
            const QPoint from(target->width() / 2, target->height() / 2);
            send_mouse(target, QEvent::MouseButtonPress, from, Qt::LeftButton);
            send_mouse(target, QEvent::MouseMove, from + QPoint(3, dy), Qt::LeftButton);
            send_mouse(target, QEvent::MouseButtonRelease, from + QPoint(3, dy), Qt::NoButton);
        };
    };
    struct Row {
        const char* name;
        int start;
        std::function<void()> act;
        int expected;        // a selection happens when it differs from the start
        long long top = -1;  // the list's top row afterwards, where it matters
    };
    // clang-format off
    const Row rows[] = {
        {"list click on the third visible row", 0, [&w]() {
             ki::qt::GPanel* row = list_of(w)->get_row_widget(list_of(w)->get_index_win_top() + 2);
             QTest::mouseClick(row, Qt::LeftButton, {}, row->rect().center());
         }, 2},
        {"next button", 4, [&]() { button(w, QStringLiteral("Next Hieroglyph"))->click(); }, 5},
        {"right action onto a character without a recording", 9,
         [&]() { w.findChild<QAction*>(QStringLiteral("right"))->trigger(); }, 10},
        {"a 5 px drag on the list is no click and scrolls no whole row", 20, drag(true, 5), 20, 10},
        {"45 px down the list shows two rows further up", 20, drag(true, 45), 20, 8},
        {"a drag outside the list never scrolls it", 20, drag(false, 45), 20, 10},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        w.on_index(row.start);
        list_of(w)->ensure_visible(row.start);
        // A selection starts the tracing afresh: a traced stroke tells whether one happened.
        w.get_control().set_mode_bits(MODE_LEARN, true);
        w.get_control().stroke_accepted();
        settle();
        const QString before = last_recording(w);
        const bool recorded = QFile::exists(recording_of(row.expected));
        row.act();
        EXPECT_EQ(last_recording(w), recorded ? recording_of(row.expected) : before)
            << "played at once, if at all";
        settle();
        EXPECT_EQ(w.get_selected_index(), row.expected);
        EXPECT_EQ(w.get_control().get_strokes_learned(), row.expected != row.start ? 0 : 1);
        EXPECT_EQ(canvas_of(w)->get_unicode(), catalogue().unicode_at(unsigned(row.expected)));
        ki::qt::GButton* sound = button(w, QStringLiteral("Play Sound"));
        EXPECT_EQ(sound->isEnabled(), recorded);
        EXPECT_EQ(sound->get_icon_name(), recorded ? "^icons/sound_on.svg" : "^icons/sound_off.svg");
        EXPECT_EQ(button_places(w), placed);
        if (row.top >= 0) {
            EXPECT_EQ(list_of(w)->get_index_win_top(), row.top);
        }
    }
}

// A regression guard: the canvas caption, the reason of a rejected trace and the "due" label
// kept the old language until the next trace or character.
TEST_F(WindowTest, EveryVisibleTextFollowsALanguageSwitchAtOnce) {
    Window& w = open();
    change_options(w, [](LessonOptions& o) { o.reviewDue = true; });
    w.on_index(INDEX_ZHONG);
    ASSERT_TRUE(w.get_recorder().is_open());
    trace_stroke(canvas_of(w), 0, true);
    settle();
    ASSERT_TRUE(canvas_of(w)->get_rejection().is_rejected());
    PaintCounter painted(canvas_of(w));
    const struct {
        QLocale::Language language;
        QString meaning, nextTip, counter, due, level;
        QStringList loosest;  // the menu path to the loosest tolerance
    } rows[] = {
        {QLocale::German,
         "Mitte; Zentrum",
         "Nächstes Schriftzeichen",
         "Strich 1 von 4",
         "Nichts fällig",
         "Stufe 1",
         {"Lernmodus", "Strichtoleranz", "200 · großzügig"}},
        {QLocale::English,
         "middle; centre",
         "Next Hieroglyph",
         "Stroke 1 of 4",
         "Nothing due",
         "Level 1",
         {"Learn Mode", "Stroke Tolerance", "200 · loose"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.language);
        const int paintsBefore = painted.count;
        ki::qt::lang::set_lang(row.language);
        settle();
        EXPECT_EQ(w.findChild<QLabel*>(QStringLiteral("translation"))->text(), row.meaning);
        EXPECT_NE(button(w, row.nextTip), nullptr);
        // A screen reader names an icon-only button by its tooltip, in the new language too.
        for (const ki::qt::GButton* b : w.findChildren<ki::qt::GButton*>()) {
            if (!b->isVisibleTo(&w) || !b->text().isEmpty()) continue;
            SCOPED_TRACE(b->toolTip().toStdString());
            const QAccessibleInterface* named =
                QAccessible::queryAccessibleInterface(const_cast<ki::qt::GButton*>(b));
            ASSERT_NE(named, nullptr);
            EXPECT_FALSE(b->toolTip().isEmpty());
            EXPECT_EQ(named->text(QAccessible::Name), b->toolTip());
        }
        // The search field by its placeholder, gone once something is typed; the slider by its tooltip.
        auto* search = w.findChild<QLineEdit*>(QStringLiteral("searchField"));
        auto* slider = w.findChild<QWidget*>(QStringLiteral("progressSlider"));
        ASSERT_TRUE(search != nullptr && slider != nullptr);
        EXPECT_EQ(QAccessible::queryAccessibleInterface(search)->text(QAccessible::Name),
                  search->placeholderText());
        EXPECT_EQ(QAccessible::queryAccessibleInterface(slider)->text(QAccessible::Name), slider->toolTip());
        EXPECT_GT(painted.count, paintsBefore) << "caption and reason are worded when painted";
        EXPECT_EQ(canvas_of(w)->counter_text(), row.counter);
        EXPECT_TRUE(w.findChild<QLabel*>(QStringLiteral("due"))->text().startsWith(row.due));
        EXPECT_EQ(w.findChild<QLabel*>(QStringLiteral("level"))->text(), row.level);
        std::unique_ptr<ki::qt::GMenu> menu(w.gen_menu_options(Window::OPTIONS_ALL));
        EXPECT_NE(menu_item(menu.get(), row.loosest), nullptr);
    }
    EXPECT_TRUE(translation_panel_of(w)->isVisibleTo(&w)) << "hidden only by its menu item";
}

TEST_F(WindowTest, TracingWithTheMouseTeachesAndFinishesTheCharacter) {
    using F = morvel::prog2::Feedback;
    const F A = F::ACCEPTED, C = F::COMPLETE;
    const struct {
        const char* name;
        bool rounds;
        std::vector<F> sounds;
        const char* counter;
    } rows[] = {
        {"every stroke traced finishes the character", false, {A, A, A, C}, "Done"},
        {"in practice rounds the first round is not the end", true, {A, A, A, A}, "Round 1 of 3 · Done"},
    };
    Window& w = open();  // in learn mode
    std::vector<F> played;
    w.get_feedback().liPlayed += [&](const F& what) { played.push_back(what); };
    morvel::CanvasHanzi* canvas = canvas_of(w);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        change_options(w, [&](LessonOptions& o) { o.practiceRounds = row.rounds; });
        w.on_index(INDEX_ZHONG);
        ASSERT_EQ(canvas->get_anim().strokes.size(), 4u);
        played.clear();
        for (int k = 0; k < 4; ++k) trace_stroke(canvas, k, false);
        EXPECT_EQ(played, row.sounds);
        EXPECT_TRUE(canvas->get_path_mouse().is_empty()) << "an accepted trace is cleared";
        EXPECT_EQ(canvas->counter_text(), QString::fromUtf8(row.counter));
    }
}

// A regression guard: with review on and nothing due the arrows did nothing and said nothing.
TEST_F(WindowTest, ReviewWithNothingDueMovesThroughTheLevelAndSaysWhenTheNextIsDue) {
    Window& w = open();
    QApplication::setActiveWindow(&w);
    trigger_item(w, {"Practice", "Review due characters"});
    ASSERT_TRUE(w.get_recorder().is_open());
    ASSERT_EQ(w.get_recorder().due_count(catalogue().code_points()), 0);
    auto* due = w.findChild<QLabel*>(QStringLiteral("due"));
    const std::vector<int> placed = button_places(w);
    const auto says_nothing_due = [&]() {
        settle();
        EXPECT_TRUE(due->isVisibleTo(&w));
        EXPECT_TRUE(due->text().startsWith(QStringLiteral("Nothing due"))) << due->text().toStdString();
        EXPECT_EQ(button_places(w), placed) << "no button moves with the label";
    };
    w.on_index(4);
    QTest::keyClick(&w, Qt::Key_Left);
    EXPECT_EQ(w.get_selected_index(), 3);
    says_nothing_due();
    // 一 has one stroke: once written, the label also says when the next review is due.
    w.on_index(0);
    trace_stroke(canvas_of(w), 0);
    ASSERT_TRUE(w.get_control().state().is_complete());
    EXPECT_TRUE(
        due->text().contains(QRegularExpression(QStringLiteral("^Nothing due · next in \\d+ (min|h|d)$"))))
        << due->text().toStdString();
    QTest::keyClick(&w, Qt::Key_Right);
    EXPECT_EQ(w.get_selected_index(), 1);
    says_nothing_due();
}

// The due label counts down in minutes, then hours, then days; never "next in 0 min".
TEST(DueLabel, NothingDueSaysWhenTheNextOneIs) {
    constexpr qint64 MINUTE = 60 * 1000, HOUR = 60 * MINUTE;
    const struct {
        const char* name;
        qint64 ms;
        const char* text;
    } rows[] = {
        {"none will be due", -1, "Nothing due"},
        {"seconds away reads a minute", 10 * 1000, "Nothing due · next in 1 min"},
        {"the last minutes", 59 * MINUTE, "Nothing due · next in 59 min"},
        {"an hour and a half rounds to two", 90 * MINUTE, "Nothing due · next in 2 h"},
        {"just under two days in hours", 47 * HOUR, "Nothing due · next in 47 h"},
        {"beyond in days", 74 * HOUR, "Nothing due · next in 3 d"},
    };
    ki::qt::lang::set_lang(QLocale::English);
    for (const auto& row : rows)
        EXPECT_EQ(morvel::practice::nothing_due_text(row.ms), QString::fromUtf8(row.text)) << row.name;
}

// Stroke numbers in learn mode: those of the strokes written and the current one's, none ahead.
TEST_F(WindowTest, StrokeNumbersShowWhatIsWrittenAndWhatComesNext) {
    constexpr int INDEX_SAN = 2;  // 三: three strokes, their starts well apart
    struct Row {
        const char* name;
        bool learn;
        int traced;
        std::vector<bool> numbered;  // per stroke: a number near its start
    };
    const Row rows[] = {
        {"learn mode before the first stroke", true, 0, {true, false, false}},
        {"learn mode after one stroke", true, 1, {true, true, false}},
        {"learn mode, the character done", true, 3, {true, true, true}},
        {"watch mode numbers every stroke", false, 0, {true, true, true}},
    };
    Window& w = open();
    morvel::CanvasHanzi* canvas = canvas_of(w);
    const auto toggle = [&w]() { trigger_item(w, {"Practice", "Stroke numbers"}); };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        w.get_control().set_mode_bits(MODE_LEARN, row.learn);
        w.get_control().set_mode_bits(MODE_AUTO_DRAW, false);
        w.on_index(INDEX_SAN);
        for (int k = 0; k < row.traced; ++k) trace_stroke(canvas, k, false);
        ASSERT_EQ(canvas->get_strokes_learned(), row.traced);
        const QImage plain = canvas->grab().toImage();
        toggle();
        const QImage numbered = canvas->grab().toImage();
        toggle();
        for (size_t k = 0; k < row.numbered.size(); ++k) {
            const glm::vec2 start = canvas->get_anim().strokes[k].pathAnim.point_start();
            const QRect near = QRect(to_pixel(canvas, start - glm::vec2(120.0f)),
                                     to_pixel(canvas, start + glm::vec2(120.0f)));
            const int changed =
                count_pixels(near, [&](QPoint p) { return plain.pixel(p) != numbered.pixel(p); });
            EXPECT_EQ(changed > 0, row.numbered[k]) << "stroke " << k;
        }
    }
}

// A regression guard: the mark of a practised character stood in its row's top corner, so the
// sliver of a row cut off at the bottom of the list showed a mark beside the row above it.
TEST_F(WindowTest, AListMarkNeverShowsAboveItsCharacter) {
    Window& w = open();
    w.on_index(0);
    trace_stroke(canvas_of(w), 0, false);  // 一 has one stroke: now practised and marked
    settle();
    ki::qt::GPanel* row = list_of(w)->get_row_widget(0);
    ASSERT_NE(row, nullptr);
    const QImage image = row->grab().toImage();
    const QRgb background = image.pixel(1, image.height() / 2);
    const int markLeft = image.width() - 20;
    const auto first_row_with = [&](int from, int to) {
        for (int y = 0; y < image.height(); ++y)
            for (int x = from; x < to; ++x)
                if (image.pixel(x, y) != background) return y;
        return image.height();
    };
    const int markTop = first_row_with(markLeft, image.width() - 1);
    ASSERT_LT(markTop, image.height()) << "the practised row has a mark";
    EXPECT_LE(first_row_with(ModelAppData::ROW_MARGIN, markLeft), markTop);
}

// The rule under each row took its row's background role, so it vanished in every row but the
// selected one; it shows in the line colour under selected and unselected rows, in every theme.
TEST_F(WindowTest, TheRuleUnderEveryRowShowsInTheLineColour) {
    Window& w = open();
    w.on_index(1);
    for (const unsigned int theme : {0u, 1u, 2u}) {
        w.on_change_theme(theme);
        settle();
        for (const long long index : {0LL, 1LL}) {
            SCOPED_TRACE(testing::Message() << "theme " << theme << ", row " << index);
            ki::qt::GPanel* row = list_of(w)->get_row_widget(index);
            ASSERT_NE(row, nullptr);
            QFrame* rule = nullptr;
            for (QFrame* frame : row->findChildren<QFrame*>())
                if (frame->metaObject() == &QFrame::staticMetaObject) rule = frame;
            ASSERT_NE(rule, nullptr);
            const QImage image = row->grab().toImage();
            const QPoint middle = rule->geometry().center();
            EXPECT_EQ(image.pixelColor(middle),
                      static_cast<ModelAppData*>(list_of(w)->get_model())->get_color_line());
        }
    }
}

// The hint paints the stroke over the rejected trace it answers, in every theme; it was once
// hidden under the trace's red band.
TEST_F(WindowTest, TheHintIsDrawnOverTheRejectedTrace) {
    Window& w = open();
    change_options(w, [](LessonOptions& o) { o.hintAfterMisses = 3; });
    morvel::CanvasHanzi* canvas = canvas_of(w);
    for (const unsigned int theme : {0u, 1u, 2u}) {
        SCOPED_TRACE(theme);
        w.on_change_theme(theme);
        w.on_index(INDEX_ZHONG);
        for (int i = 0; i < 3; ++i) trace_stroke(canvas, 0, true);
        ASSERT_FALSE(canvas->get_path_mouse().is_empty());
        while (w.get_control().state().hint >= 0.0f && w.get_control().state().hint < 100.0f) w.on_timer();
        const ki::math::Path& centre = canvas->get_anim().strokes[0].pathAnim;
        const QImage image = canvas->grab().toImage();
        for (const float share : {0.3f, 0.5f, 0.7f}) {
            const QColor seen =
                image.pixelColor(to_pixel(canvas, centre.point_at_length(centre.get_length() * share)));
            EXPECT_EQ(seen, canvas->get_colors().colorAnim) << share;
        }
    }
}

// Every menu item takes effect and is stored at once; hostile stored values start as sane ones,
// with a reason in the log. Either way the next start shows the same.
TEST_F(WindowTest, StoredOptionsFromEveryMenuItemAndFromAHostileStore) {
    struct Row {
        const char* name;
        bool learnMode;
        QStringList path;  // of the menu item; none: `stored` is in the store before the start
        const char* key;   // in the stored window node
        QVariant stored;
        std::function<bool(Window&)> shown;  // the value took effect in the window
        const char* logged = nullptr;
    };
    const unsigned int learn = 23, watch = 22;  // the start flags with learn mode on or off
    // clang-format off
    const Row rows[] = {
        {"outline off", true, {"Learn Mode", "Outline"}, "DRAW_CONFIG", 8u,
         [](Window& w) { return canvas_of(w)->get_draw_config() == 8u; }},
        {"the tightest tolerance says so", true, {"Learn Mode", "Stroke Tolerance", "40 · tight"}, "rCircle", 40,
         [](Window& w) { return canvas_of(w)->get_r_circle() == 40; }},
        {"slider on", false, {"Watch Mode", "Slider"}, "ControlAnim.modeFlags", watch | MODE_SLIDER, [](Window& w) {
             // Moving it holds the drawing there.
             slider_of(w)->setValue(40);
             w.on_timer();
             return slider_of(w)->isVisibleTo(&w) && canvas_of(w)->get_progress() == 40.0f;
         }},
        {"automatic drawing off", false, {"Watch Mode", "Draw Strokes Automatically"}, "ControlAnim.modeFlags",
         watch & ~MODE_AUTO_DRAW, [](Window& w) {
             // Slider and label said 0 % over a finished character once.
             return canvas_of(w)->get_progress() == 100.0f && slider_of(w)->value() == 100 &&
                    w.findChild<QLabel*>(QStringLiteral("progress"))->text() == QStringLiteral("100 %");
         }},
        {"speed 6", false, {"Watch Mode", "Auto Draw Speed", "6"}, "incSpeed", 6, [](Window& w) {
             // A timer tick draws that step, and the slider follows it.
             w.on_index(1);
             w.on_timer();
             return canvas_of(w)->get_progress() == 6.0f && slider_of(w)->value() == 6;
         }},
        {"audio auto play off", true, {"Audio Auto Play"}, "ControlAnim.modeFlags", learn & ~MODE_AUTO_PLAY,
         [](Window& w) { return !w.get_control().is_mode_bit(MODE_AUTO_PLAY); }},
        {"scrollbar on", true, {"Scrollbar"}, "flagScrollbarVisible", true,
         [](Window& w) { return list_of(w)->is_scrollbar_vert_visible(); }},
        {"translation off", true, {"Translation"}, "ControlAnim.modeFlags", learn & ~MODE_TRANSLATION,
         [](Window& w) { return !translation_panel_of(w)->isVisibleTo(&w); }},
        {"hint after 5 misses", true, {"Practice", "Hint after misses", "5"}, "practiceHintAfter", 5,
         [](Window& w) { return w.get_options().hintAfterMisses == 5; }},
        {"feedback sounds off", true, {"Practice", "Feedback sounds"}, "practiceFeedbackSounds", false,
         [](Window& w) { return !w.get_feedback().is_enabled(); }},
        {"show my strokes off", true, {"Practice", "Show my strokes"}, "practiceShowMyStrokes", false,
         [](Window& w) { return !canvas_of(w)->is_show_my_strokes(); }},
        {"practice rounds on", true, {"Practice", "Practice rounds"}, "practiceRounds", true,
         [](Window& w) { return w.get_control().state().rounds == 3; }},
        {"retention 85 % plans the reviews", true, {"Practice", "Desired retention", "85 %"}, "practiceRetention", 85,
         [](Window& w) { return w.get_recorder().store() != nullptr && w.get_recorder().store()->retention() == 0.85; }},
        {"20 new characters a day", true, {"Practice", "New characters per day", "20"}, "practiceNewPerDay", 20,
         [](Window& w) { return w.get_options().newPerDay == 20; }},
        {"start with today's session on", true, {"Practice", "Start with today's session"}, "practiceStartToday", true,
         [](Window& w) { return w.get_options().startWithToday; }},
        {"a retention not offered", true, {}, "practiceRetention", 83,
         [](Window& w) { return w.get_recorder().store() != nullptr && w.get_recorder().store()->retention() == 0.90; },
         "practiceRetention:83"},
        {"show unicode on", true, {"Show Unicode"}, "flagShowUnicode", true, [](Window& w) {
             settle();
             ki::qt::GPanel* row = list_of(w)->get_row_widget(list_of(w)->get_index_win_top());
             return row != nullptr && row->findChildren<ki::qt::GLabel*>().size() == 3;
         }},
        {"unknown mode bits", true, {}, "ControlAnim.modeFlags", 0xFFFFFFFFu,
         [](Window& w) { return w.get_control().get_mode_flags() == 0x1Fu; }, "unknown mode bits"},
        {"selected index past the end", true, {}, "selectedIndex", 5000,
         [](Window& w) { return w.get_selected_index() == 86; }, "selectedIndex:5000"},
        {"negative selected index", true, {}, "selectedIndex", -3,
         [](Window& w) { return w.get_selected_index() == 0; }, "selectedIndex:-3"},
        {"theme past the last", true, {}, "theme", 77u,
         [](Window& w) { return w.get_theme() == ki::qt::themes::THEME_NOT_SET; }, "unknown theme:77"},
        {"flag of the wrong type", true, {}, "flagShowUnicode", 3.5,
         [](Window& w) { return !model_of(w)->is_show_unicode(); }, "flagShowUnicode"},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ki::store::GNode hostile;
        if (row.path.isEmpty()) hostile.set(QString::fromLatin1(row.key), row.stored);
        GSettings::instance().set_window_node(hostile, WINDOW_NODE);
        ki::log::LogCapture capture;
        Window& w = open();
        EXPECT_EQ(canvas_of(w)->get_unicode(), catalogue().unicode_at(unsigned(w.get_selected_index())));
        if (row.path.isEmpty()) {
            EXPECT_TRUE(capture.contains(row.logged)) << capture.text();
            EXPECT_EQ(w.get_control().get_inc_speed(), 3) << "the start step until one is chosen";
        } else {
            w.get_control().set_mode_bits(MODE_LEARN, row.learnMode);
            std::unique_ptr<ki::qt::GMenu> menu(w.gen_menu_options(Window::OPTIONS_ALL));
            EXPECT_EQ(menu_item(menu.get(), {"Learn Mode"}) != nullptr, row.learnMode);
            EXPECT_EQ(menu_item(menu.get(), {"Watch Mode"}) != nullptr, !row.learnMode);
            QAction* item = menu_item(menu.get(), row.path);
            ASSERT_NE(item, nullptr);
            item->trigger();
            const ki::store::GNode stored = GSettings::instance().get_window_node(WINDOW_NODE);
            EXPECT_EQ(stored.attributes.value(QString::fromLatin1(row.key)), row.stored) << "at once";
        }
        EXPECT_TRUE(row.shown(w));
        win.reset();  // no close: only what the item saved at once reaches the next start
        EXPECT_TRUE(row.shown(open())) << "after a restart";
    }
}

TEST_F(WindowTest, TheLevelMenuSwitchesSevenLevelsEachWithItsSelectionAndAStartReadsOnlyOne) {
    const struct {
        const char* item;
        int level;
        int rows;
    } rows[] = {
        {"Level 1 · HSK 1 · 87 characters", 1, 87},   {"Level 2 · HSK 1 · 95 characters", 2, 95},
        {"Level 3 · HSK 2 · 167 characters", 3, 167}, {"Level 4 · HSK 3 · 269 characters", 4, 269},
        {"Level 5 · HSK 4 · 446 characters", 5, 446}, {"Level 6 · HSK 5 · 621 characters", 6, 621},
        {"Level 7 · HSK 6 · 978 characters", 7, 978},
    };
    {
        Window& w = open();
        const std::vector<int> placed = button_places(w);
        for (const auto& row : rows) {
            SCOPED_TRACE(row.item);
            trigger_item(w, {"Level", row.item});
            EXPECT_EQ(model_of(w)->row_count(), row.rows);
            EXPECT_EQ(catalogue().get_level().number, row.level);
            EXPECT_EQ(w.get_selected_index(), 0) << "never visited";
            // Its pinyin column was wider once: every button moved.
            EXPECT_EQ(button_places(w), placed) << "no button moves with the level";
            w.on_index(row.rows - 1);
        }
        ASSERT_TRUE(w.on_level(2));
        EXPECT_EQ(w.get_selected_index(), 94) << "each level keeps its own selection";
        EXPECT_EQ(w.findChild<QLabel*>(QStringLiteral("level"))->text(), QStringLiteral("Level 2"));
        // A copied tree without the level's files: a message, and level 2 stays.
        QTemporaryDir empty;
        ki::qt::set_res_prefix(empty.path());
        EXPECT_FALSE(w.on_level(3));
        ki::qt::set_res_prefix(QStringLiteral(":/wb/shared-res"));
        EXPECT_EQ(model_of(w)->row_count(), 95);
        EXPECT_EQ(w.get_selected_index(), 94);
        w.close();
    }
    // As main starts the program: the catalogue comes unloaded and only the stored level's files
    // are read, or those of the level the command line names.
    win.reset();
    const struct {
        QStringList arguments;
        int level, index;
    } starts[] = {{{"quenlo"}, 2, 94}, {{"quenlo", "--level", "7"}, 7, 977}};
    for (const auto& start : starts) {
        SCOPED_TRACE(start.arguments.join(' ').toStdString());
        QString error;
        const int level = Level::from_arguments(start.arguments, error);
        ASSERT_TRUE(error.isEmpty()) << error.toStdString();
        AppData unloaded(Level::shipped(1));
        Window fresh(unloaded);
        if (level > 0) fresh.start_in_level(level);
        fresh.setup();
        EXPECT_EQ(unloaded.get_level().number, start.level);
        EXPECT_EQ(fresh.get_selected_index(), start.index);
        EXPECT_EQ(canvas_of(fresh)->get_unicode(), unloaded.unicode_at(unsigned(start.index)));
    }
    ASSERT_TRUE(catalogue().switch_to(Level::shipped(1)));
}

TEST_F(WindowTest, SearchChoosesACharacterOfAnotherLevelAndEscapeGoesBack) {
    Window& w = open();
    w.on_index(INDEX_ZHONG);
    auto* field = w.findChild<QLineEdit*>(QStringLiteral("searchField"));
    ASSERT_NE(field, nullptr);
    QAction* ctrlF = nullptr;
    for (QAction* a : w.findChildren<QAction*>())
        if (a->shortcut() == QKeySequence(QStringLiteral("Ctrl+F"))) ctrlF = a;
    ASSERT_NE(ctrlF, nullptr);
    const struct {
        const char* name;
        QLocale::Language language;
        const char* query;
        const char* firstResult;
        Qt::Key key;  // Enter chooses the first result, Escape leaves
        int level;
        const char* shown;
        bool found;  // without a hit the list says so and Enter chooses nothing
    } rows[] = {
        {"pinyin with tone number, chosen", QLocale::English, "xue3", "雪  xuě  Level 3 · snow",
         Qt::Key_Return, 3, "雪", true},
        {"German meaning, chosen", QLocale::German, "Blut", "血  xuè  Stufe 6 · Blut", Qt::Key_Return, 6,
         "血", true},
        {"Russian meaning, left with Escape", QLocale::Russian, "снег", "雪  xuě  Уровень 3 · снег",
         Qt::Key_Escape, 6, "血", true},
        {"no hit, Enter", QLocale::German, "qqqq", "Kein Zeichen passt", Qt::Key_Return, 6, "血", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ki::qt::lang::set_lang(row.language);
        EXPECT_EQ(field->placeholderText(),
                  QStringList({"Search", "Suchen", "Поиск"})[row.language == QLocale::English  ? 0
                                                             : row.language == QLocale::German ? 1
                                                                                               : 2]);
        ctrlF->trigger();
        field->setText(QString::fromUtf8(row.query));  // keyClicks knows Latin keys only
        auto* results = w.findChild<QListWidget*>(QStringLiteral("searchResults"));
        ASSERT_NE(results, nullptr);
        ASSERT_GT(results->count(), 0);
        EXPECT_TRUE(results->isVisibleTo(&w));
        EXPECT_EQ(results->item(0)->text().toStdString(), row.firstResult);
        EXPECT_EQ(results->item(0)->flags() != Qt::NoItemFlags, row.found);
        if (results->count() < 5) {
            EXPECT_LT(results->height(), w.height() / 3) << "a few lines cover little";
        }
        QTest::keyClick(field, row.key);
        if (!row.found) {
            EXPECT_TRUE(results->isVisibleTo(&w)) << "Enter without a hit leaves the search open";
            QTest::keyClick(field, Qt::Key_Escape);
        }
        EXPECT_TRUE(field->text().isEmpty());
        EXPECT_FALSE(results->isVisibleTo(&w)) << "the results no longer cover the list";
        EXPECT_EQ(catalogue().get_level().number, row.level);
        EXPECT_EQ(QString(QChar(char16_t(canvas_of(w)->get_unicode()))).toStdString(), row.shown);
    }
    ASSERT_TRUE(w.on_level(1));
}

// A regression guard: an option change that only reached the in-memory store was lost when the
// program was killed before quitting.
TEST_F(WindowTest, AnOptionChangeSurvivesAKillRightAfterIt) {
    // Auto play off: no player may start in the child below, it must not need the parent's media
    // threads.
    ki::store::GNode stored;
    stored.set(QStringLiteral("ControlAnim.modeFlags"), MODE_AUTO_DRAW | MODE_SLIDER);
    GSettings::instance().set_window_node(stored, WINDOW_NODE);
    GSettings::instance().sync();
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        alarm(30);  // a hang fails the test instead of blocking it
        Window w(catalogue());
        w.setup();
        w.show();
        ki::qt::GMenu* menu = w.gen_menu_options(Window::OPTIONS_ALL);
        QAction* item = menu_item(menu, {"Show Unicode"});
        if (item == nullptr) _exit(3);  // seen by the parent as no kill
        item->trigger();
        raise(SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << status;
    ASSERT_EQ(WTERMSIG(status), SIGKILL);
    GSettings::reopen_for_tests();  // the file is read afresh, as by the next start
    EXPECT_TRUE(GSettings::instance()
                    .get_window_node(WINDOW_NODE)
                    .get<bool>(QStringLiteral("flagShowUnicode"), false));
}

// Strict judging through the mouse: a zigzag on 一 is rejected with its reason, a careful trace is
// accepted, its ink stays over the finished character, and the score is shown and recorded.
TEST_F(WindowTest, StrictJudgingRejectsAZigzagAndTheLearnersInkAndScoreStay) {
    Window& w = open();  // in learn mode
    change_options(w, [](LessonOptions& o) { o.strictJudging = true; });
    w.on_index(0);
    morvel::CanvasHanzi* canvas = canvas_of(w);
    ASSERT_EQ(canvas->get_unicode(), 0x4E00);
    ASSERT_TRUE(w.get_recorder().is_open());
    // Earlier tests may have finished 一 in the same history.
    const morvel::progress::ScoreStats before = w.get_recorder().store()->score_stats()[0x4E00];
    trace_stroke(canvas, 0, false, zigzag);
    EXPECT_EQ(canvas->get_rejection().reason, morvel::practice::Reason::NOT_SMOOTH);
    EXPECT_EQ(canvas->get_strokes_learned(), 0);

    trace_stroke(canvas, 0, false,
                 [](float share) { return glm::vec2(0.0f, 12.0f * std::sin(share * 6.28f)); });
    ASSERT_TRUE(w.get_control().state().is_complete());
    const morvel::practice::ScoreCard& card = canvas->get_score_card();
    EXPECT_EQ(card.misses(), 1);
    EXPECT_GE(card.character_score(), 80);
    EXPECT_TRUE(morvel::practice::result_text(card).startsWith(
        QStringLiteral("Score %1 · ").arg(card.character_score())));
    EXPECT_FALSE(morvel::practice::result_text(card).contains("Weakest")) << "one stroke is nobody's weakest";
    settle();
    // The learner's thin ink runs along the middle of the green stroke, 12 units below it at a
    // quarter of the way; with the option off only the green remains there.
    const ki::math::Path& centre = canvas->get_anim().strokes[0].pathAnim;
    const glm::vec2 quarter = centre.point_at_length(centre.get_length() / 4) + glm::vec2(0.0f, 12.0f);
    const auto ink_at = [&]() {
        return near_colour(canvas->grab().toImage().pixelColor(to_pixel(canvas, quarter)),
                           morvel::LearnerInk::ink_color());
    };
    EXPECT_TRUE(ink_at());
    change_options(w, [](LessonOptions& o) { o.showMyStrokes = false; });
    EXPECT_FALSE(ink_at());
    const morvel::progress::ScoreStats after = w.get_recorder().store()->score_stats()[0x4E00];
    EXPECT_EQ(after.count, before.count + 1);
    EXPECT_EQ(after.best, std::max(before.best, card.character_score()));
}

// Writing from memory: nothing of the character on the canvas or in its list row until it is
// written, traces judged strictly wherever they start, and the grade keys.
TEST_F(WindowTest, FromMemoryTheCharacterIsHiddenTracesAreJudgedAndKeysGrade) {
    using morvel::practice::Reason;
    using morvel::review::Rating;
    Window& w = open();  // in learn mode, strict judging off
    change_options(w, [](LessonOptions& o) { o.drawConfig = LessonOptions::DRAW_KNOWN; });
    w.on_index(INDEX_ZHONG);
    settle();
    morvel::CanvasHanzi* canvas = canvas_of(w);
    const auto count = [](const QImage& image, const QRect& area,
                          const std::function<bool(QColor)>& counted) {
        return count_pixels(area, [&](QPoint p) { return counted(image.pixelColor(p)); });
    };
    const auto aids = [&]() {
        const morvel::CanvasColors& colors = canvas->get_colors();
        const QImage image = canvas->grab().toImage();
        return count(image, image.rect(), [&](QColor c) {
            return c == colors.colorOutline || c == colors.colorHelperLines || c == colors.colorCircleStart;
        });
    };
    // Pixels in the text colour where the row's character stands, and where its pinyin does (a
    // practice mark may stand beside the character in its own colours).
    const auto row_ink = [&](int index) {
        settle();
        ki::qt::GPanel* row = list_of(w)->get_row_widget(index);
        const QImage image = row->grab().toImage();
        const auto area = [row](const char* name) {
            const QLabel* label = row->findChild<QLabel*>(QString::fromLatin1(name));
            return QRect(label->mapTo(row, QPoint()), label->size());
        };
        const auto ink = [text = row->palette().color(QPalette::WindowText)](QColor c) { return c == text; };
        return std::make_pair(count(image, area("char"), ink), count(image, area("pinyin"), ink));
    };
    const int aidsLearning = aids();
    const auto [glyph, pinyin] = row_ink(INDEX_ZHONG);
    const QImage neighbour = list_of(w)->get_row_widget(INDEX_ZHONG - 1)->grab().toImage();
    EXPECT_GT(aidsLearning, 1000);
    EXPECT_GT(glyph, 50);
    QTest::keyClick(&w, Qt::Key_M, Qt::ControlModifier);
    ASSERT_TRUE(w.get_flow().is_recall());
    EXPECT_EQ(aids(), 0) << "no outline, helper lines or start circle";
    const auto [glyphHidden, pinyinHidden] = row_ink(INDEX_ZHONG);
    EXPECT_EQ(glyphHidden, 0);
    EXPECT_EQ(pinyinHidden, pinyin);
    EXPECT_EQ(list_of(w)->get_row_widget(INDEX_ZHONG - 1)->grab().toImage(), neighbour)
        << "other rows unchanged";

    // One-stroke 一: each row starts it afresh from memory.
    struct Row {
        const char* name;
        std::function<glm::vec2(float)> across;
        bool reversed;
        Reason reason;
        bool written;
    };
    const Row rows[] = {
        {"a zigzag lenient judging takes is not smooth", zigzag, false, Reason::NOT_SMOOTH, false},
        {"backwards is rejected with its reason", {}, true, Reason::BACKWARDS, false},
        {"a press beside the hidden start circle is no fault",
         [r = float(canvas->get_r_circle())](float share) {
             return glm::vec2(0.0f, share == 0.0f ? 1.3f * r : 0.0f);
         },
         false, Reason::NONE, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        w.on_index(0);
        trace_stroke(canvas, 0, row.reversed, row.across);
        EXPECT_EQ(canvas->get_rejection().reason, row.reason);
        EXPECT_EQ(w.get_flow().recall().misses, row.written ? 0 : 1);
        EXPECT_EQ(w.get_flow().recall().grading, row.written);
    }
    // The last row wrote 一 and its grade waits: each key changes it (each grade below differs from
    // the one before), Space gives it and moves on.
    std::vector<GradedRecall> graded;
    w.get_flow().liGraded += [&](const GradedRecall& g) { graded.push_back(g); };
    for (const Rating rating : {Rating::AGAIN, Rating::EASY, Rating::HARD, Rating::GOOD, Rating::AGAIN}) {
        QTest::keyClick(&w, Qt::Key(Qt::Key_0 + int(rating)));
        EXPECT_EQ(w.get_flow().recall().chosen, rating);
    }
    ASSERT_TRUE(w.get_recorder().is_open());
    morvel::progress::ProgressStore& history = *w.get_recorder().store();
    history.wait_for_check();
    const int repsBefore = history.card(0x4E00).reps;
    QTest::keyClick(&w, Qt::Key_Space);
    ASSERT_EQ(graded.size(), 1u);
    EXPECT_EQ(graded[0].codePoint, 0x4E00);
    EXPECT_EQ(graded[0].rating, Rating::AGAIN);
    EXPECT_EQ(history.card(0x4E00).reps, repsBefore + 1) << "the grade is a review in the history";
    EXPECT_EQ(w.get_selected_index(), 1);
    // A click on a painted grade gives it at once.
    w.on_index(0);
    trace_stroke(canvas, 0, false);
    const ki::math::Rect view(0.0f, 0.0f, float(canvas->width()), float(canvas->height()));
    const QPoint good = morvel::recall::RecallLayer::grade_box(view, Rating::GOOD).center().toPoint();
    send_mouse(canvas, QEvent::MouseButtonPress, good, Qt::LeftButton);
    ASSERT_EQ(graded.size(), 2u);
    EXPECT_EQ(graded[1].rating, Rating::GOOD);
}
