#include <gtest/gtest.h>
#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/qt/GMainWindow.h>
#include <ki/qt/components/GButton.h>
#include <ki/qt/components/GMenu.h>
#include <ki/qt/components/GPanel.h>
#include <ki/qt/components/GenericSlider.h>
#include <ki/qt/dialogs/GPanelLogView.h>
#include <ki/qt/guitools/GFontPreload.h>
#include <ki/qt/lang.h>
#include <ki/qt/themes.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFontDatabase>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProcess>
#include <QSet>
#include <algorithm>
#include <functional>
#include <memory>

using namespace ki::qt;
namespace th = ki::qt::themes;

namespace {

// A window with a settings section of its own, so that class numbers and stored state do not
// depend on which other tests ran before.
template <ClazzName NAME>
class TestWindow : public GMainWindow {
public:
    // The set-up order a subclass follows; show() is left to each test.
    void setup() override {
        setup_node<WindowClazz<NAME>>();
        GMainWindow::setup();
        ini();
        restore_state();
        post_ini();
        gApp->add_window(this);
    }
    void restore_state() override {
        ++restores;
        GMainWindow::restore_state();
    }
    void do_layout_all(LayoutEvent& ev) override {
        ++layouts;
        lastLayout = ev;
        GMainWindow::do_layout_all(ev);
    }
    int layouts = 0;
    int restores = 0;
    LayoutEvent lastLayout;
};

// A window with the log panel as its content.
template <ClazzName NAME>
struct LogWindow : TestWindow<NAME> {
    void ini() override { content = this->gen_log_panel(this->gen_main_panel(GLAYOUT::VERT)); }
    GPanel* content = nullptr;
};

class GuiTest : public testing::Test {
protected:
    void TearDown() override { th::set(themeBefore); }
    const unsigned int themeBefore = th::get_theme();
};

}  // namespace

// The child (tests/main.cpp) destroys a window after the application object; under
// AddressSanitizer a touch of the freed object fails it.
TEST_F(GuiTest, WindowDestroyedAfterTheApplicationObject) {
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--window-after-app")});
    ASSERT_TRUE(child.waitForFinished(60000));
    EXPECT_EQ(child.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(child.exitCode(), 0) << child.readAllStandardError().right(3000).toStdString();
}

TEST_F(GuiTest, FontSizeIsClampedAndAnUnchangedSizeDoesNotRelayout) {
    const struct Row {
        const char* name;
        int start, asked, expected, layouts;
    } rows[] = {
        {"below the minimum gives 8", 11, 5, 8, 1},
        {"clamped to the current size does nothing", 20, 30, 20, 0},
        {"a size inside the range is taken", 11, 12, 12, 1},
    };
    TestWindow<"TestFont"> win;
    win.setup();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        win.set_font_size(row.start);
        win.layouts = 0;
        win.set_font_size(row.asked);
        EXPECT_EQ(win.get_font_size(), row.expected);
        EXPECT_EQ(win.layouts, row.layouts);
        if (row.layouts == 0) continue;
        EXPECT_EQ(win.lastLayout.kind, LayoutEvent::KIND_FONT);
        EXPECT_EQ(win.lastLayout.font_size_old, row.start);
        EXPECT_EQ(win.lastLayout.font_size_new, row.expected);
    }
}

TEST_F(GuiTest, ThemeRotationFromEveryStartValue) {
    const struct Row {
        const char* name;
        unsigned int start, module, expected;
    } rows[] = {
        {"normal goes to dark", th::THEME_NORMAL, th::THEME_NORMAL, th::THEME_DARK},
        {"dark goes to green", th::THEME_DARK, th::THEME_NORMAL, th::THEME_GREEN},
        {"auto is left for normal", th::THEME_AUTO, th::THEME_DARK, th::THEME_NORMAL},
        {"not set starts from the module's dark", th::THEME_NOT_SET, th::THEME_DARK, th::THEME_GREEN},
    };
    TestWindow<"TestRotate"> win;
    win.setup();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        th::set(row.module);
        win.set_theme(row.start);
        win.on_rotate_themes();
        EXPECT_EQ(win.get_theme(), row.expected);
        EXPECT_EQ(win.palette().color(QPalette::Window),
                  th::get_palette(row.expected).color(QPalette::Window));
    }
}

// The same application theme is not applied again: every widget would be repainted for nothing.
TEST_F(GuiTest, TheSameApplicationThemeIsAppliedOnce) {
    gApp->set_theme(th::THEME_NORMAL);
    gApp->set_theme(th::THEME_DARK);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), QColor(53, 53, 53));
    QApplication::setPalette(QPalette());  // the system's palette, also for the tests that follow
    gApp->set_theme(th::THEME_DARK);
    EXPECT_NE(QApplication::palette().color(QPalette::Window), QColor(53, 53, 53));
    GApp::themeOld = th::THEME_NOT_SET;
}

TEST_F(GuiTest, StoredLanguageOutOfRangeFallsBackToEnglish) {
    const struct Row {
        const char* name;
        QVariant stored;
        QLocale::Language expected;
    } rows[] = {
        {"zero", QVariant(0), QLocale::English},
        {"one past the last language", QVariant(347), QLocale::English},
        {"the last language", QVariant(346), QLocale::Language(346)},
        {"text instead of a number", QVariant(QStringLiteral("94")), QLocale::English},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ki::store::GNode node;
        node.set("lang", row.stored);
        EXPECT_EQ(GApp::lang_from_node(node), row.expected);
    }
    lang::set_lang(QLocale::French);
    EXPECT_EQ(lang::tt("a", "b", "c"), "a") << "languages without texts read English";
    lang::set_lang(QLocale::English);
}

// Qt's standard dialogs speak the learner's language too, as far as ours do.
TEST_F(GuiTest, QtsOwnDialogTextsFollowTheLanguage) {
    const struct Row {
        QLocale::Language language;
        const char* yes;
        const char* cancel;
    } rows[] = {
        {QLocale::German, "&Ja", "Abbrechen"},
        {QLocale::Russian, "&Да", "Отмена"},
        {QLocale::French, "&Yes", "Cancel"},
        {QLocale::English, "&Yes", "Cancel"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(QLocale::languageToString(row.language).toStdString());
        lang::set_lang(row.language);
        QMessageBox box(QMessageBox::Question, QStringLiteral("t"), QStringLiteral("?"),
                        QMessageBox::Yes | QMessageBox::Cancel);
        EXPECT_EQ(box.button(QMessageBox::Yes)->text(), QString::fromUtf8(row.yes));
        EXPECT_EQ(box.button(QMessageBox::Cancel)->text(), QString::fromUtf8(row.cancel));
    }
}

TEST_F(GuiTest, OptionsMenuShowsTheCurrentSettingsAndChangesThem) {
    TestWindow<"TestMenu"> win;
    win.setup();
    win.set_theme(th::THEME_DARK);
    win.set_font_size(12);
    win.set_icon_size_percent(200);
    std::unique_ptr<GMenu> menu(win.gen_menu_options(GMainWindow::OPTIONS_ALL));
    const std::pair<const char*, bool> items[] = {{"Dark", true},   {"Normal", false}, {"Green", false},
                                                  {"12", true},     {"11", false},     {"200%", true},
                                                  {"English", true}};
    for (const auto& [text, checked] : items) {
        SCOPED_TRACE(text);
        QAction* action = menu->find_action(text);
        ASSERT_NE(action, nullptr);
        EXPECT_EQ(action->isChecked(), checked);
    }
    menu->find_action("Green")->trigger();
    EXPECT_EQ(win.get_theme(), th::THEME_GREEN);
    menu->find_action("14")->trigger();
    EXPECT_EQ(win.get_font_size(), 14);
}

// The lesson moves its slider with every frame and must not hear that as the learner's move.
TEST_F(GuiTest, SliderHearsTheLearnerNotTheProgram) {
    GenericSlider<unsigned int> slider(nullptr, 0, 100);
    std::vector<unsigned int> heard;
    slider.liValue += [&](const unsigned int& v) { heard.push_back(v); };
    slider.set_value_no_notify(70);
    slider.setValue(40);  // as a drag moves it
    EXPECT_EQ(heard, std::vector<unsigned int>{40});
}

TEST_F(GuiTest, GarbageWindowSettingsAreSurvivedWithDefaults) {
    const struct Row {
        const char* name;
        const char* key;
        QVariant value;
        std::function<void(const GMainWindow&)> check;
    } rows[] = {
        {"font size stored as text", "fontSize", QVariant(QStringLiteral("big")),
         [](const GMainWindow& w) { EXPECT_EQ(w.get_font_size(), 11); }},
        {"geometry that is no geometry", "geometry", QVariant(QByteArray("\x01\x02garbage", 9)),
         [](const GMainWindow& w) { EXPECT_EQ(w.size(), QSize(300, 200)); }},
        {"icon size far too large", "percentIconSizeWin", QVariant(100000u),
         [](const GMainWindow& w) { EXPECT_EQ(w.get_icon_size_percent(), 400u); }},
        {"icon size of the wrong type", "percentIconSizeWin", QVariant(-5),
         [](const GMainWindow& w) { EXPECT_EQ(w.get_icon_size_percent(), 160u); }},
        {"log configuration that is no record", "log", QVariant(12),
         [](const GMainWindow& w) {
             ASSERT_NE(w.get_panel_log_view(), nullptr);
             EXPECT_EQ(w.get_panel_log_view()->get_config(), GPanelLogView::default_config());
         }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ki::store::GNode stored;
        stored.set(row.key, row.value);
        GSettings::instance().set_window_node(stored, "TestGarbage_0");
        LogWindow<"TestGarbage"> win;
        win.resize(300, 200);
        win.setup();
        row.check(win);
    }
}

// What one window lifetime sets, the next reads back: size, font, icon size, theme and the log
// panel's configuration.
TEST_F(GuiTest, WindowStateAndLogPanelSurviveIntoTheNextLifetime) {
    const QString store = GSettings::instance().fileName();
    ASSERT_TRUE(store.startsWith(qEnvironmentVariable("XDG_CONFIG_HOME"))) << store.toStdString();
    GSettings::instance().remove("Window/TestState_0");
    ki::log::set_log_level(ki::log::LOG_INFO);  // the panel is read below; the suite runs at warnings
    {
        LogWindow<"TestState"> first;
        first.setup();
        ASSERT_NE(first.content, nullptr);
        EXPECT_FALSE(first.is_logger_visible());
        EXPECT_EQ(first.get_panel_log_view()->findChild<QPlainTextEdit*>(), nullptr)
            << "the text view is built when the log is first shown";
        ki::pp_info("logged while the panel was closed");
        first.on_logger();
        EXPECT_TRUE(first.is_logger_visible());
        first.show();
        QCoreApplication::processEvents();
        const auto* text = first.get_panel_log_view()->findChild<QPlainTextEdit*>();
        ASSERT_NE(text, nullptr);
        EXPECT_TRUE(text->isVisible());
        EXPECT_TRUE(first.get_panel_log_view()->get_text().contains("logged while the panel was closed"));
        ki::log::LogConfig config = first.get_panel_log_view()->get_config();
        config.logLevel = ki::log::LOG_WARN;
        config.fontSize = 14;
        first.get_panel_log_view()->set_config(config);
        first.sync_win_settings(true);
        first.resize(640, 480);
        first.set_font_size(15);
        first.set_icon_size_percent(220);
        first.set_theme(th::THEME_GREEN);
        first.close();
    }
    LogWindow<"TestState"> again;
    again.setup();
    ASSERT_EQ(again.get_object_name(), "TestState_0");
    EXPECT_EQ(again.get_font_size(), 15);
    EXPECT_EQ(again.get_icon_size_percent(), 220u);
    EXPECT_EQ(again.get_theme(), th::THEME_GREEN);
    EXPECT_EQ(again.palette().color(QPalette::Window), QColor(30, 50, 30));
    EXPECT_EQ(again.size(), QSize(640, 480));
    EXPECT_EQ(again.get_panel_log_view()->get_config().logLevel, unsigned(ki::log::LOG_WARN));
    EXPECT_EQ(again.get_panel_log_view()->get_text_view()->font().pointSize(), 14) << "restored and applied";
}

TEST_F(GuiTest, HotkeysAreUniqueAndNamedActionsParse) {
    TestWindow<"TestKeys"> win;
    win.setup();
    QSet<QString> seen;
    for (QAction* action : win.actions()) {
        for (const QKeySequence& key : action->shortcuts()) {
            const QString text = key.toString(QKeySequence::PortableText);
            EXPECT_FALSE(seen.contains(text))
                << "ambiguous shortcut, neither action would fire: " << text.toStdString();
            seen.insert(text);
        }
    }
    for (const char* key : {"Ctrl+L", "Ctrl+Alt+Q", "F11", "Ctrl+Shift+D", "Ctrl+Shift+T"})
        EXPECT_TRUE(seen.contains(key)) << key;
}

// The button shows the icon of the theme (whether each theme's icons are readable is checked with
// the resources), and the outline of an unchecked box differs clearly from the window.
TEST_F(GuiTest, ButtonIconsFollowTheThemeAndCheckBoxesAreReadable) {
    TestWindow<"TestIcons"> win;
    GButton* button = win.gen_main_panel(GLAYOUT::HORZ)->gen_button("^icons/wheel.svg", "Options");
    win.setup();
    const struct Row {
        const char* name;
        unsigned int theme;
        const char* icon;
    } rows[] = {
        {"normal", th::THEME_NORMAL, ":/wb/shared-res/icons/wheel.svg"},
        {"dark", th::THEME_DARK, ":/wb/shared-res/icons/dark/wheel.svg"},
        {"green", th::THEME_GREEN, ":/wb/shared-res/icons/green/wheel.svg"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        win.set_theme(row.theme);
        EXPECT_EQ(button->icon().pixmap(48, 48).toImage(), QIcon(row.icon).pixmap(48, 48).toImage());
        EXPECT_EQ(button->iconSize(), win.get_icon_size());
        QCheckBox box;
        box.setPalette(th::get_palette(row.theme));
        box.resize(box.sizeHint());
        const QImage image = box.grab().toImage();
        const int window = box.palette().color(QPalette::Window).lightness();
        int strongest = 0;  // the indicator sits at the left edge
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < std::min(image.width(), image.height()); ++x)
                strongest = std::max(strongest, std::abs(image.pixelColor(x, y).lightness() - window));
        EXPECT_GT(strongest, 40);
    }
    const qint64 green = button->icon().cacheKey();
    win.set_theme(th::THEME_NORMAL);
    EXPECT_NE(button->icon().cacheKey(), green);
    win.set_theme(th::THEME_GREEN);
    EXPECT_EQ(button->icon().cacheKey(), green) << "an icon is built once per theme, then reused";
}

TEST_F(GuiTest, AWindowIsSavedOnQuitWhenShownAndLeavesTheApplicationWhenClosed) {
    GSettings::instance().remove("Window/TestQuit_0");
    GSettings::instance().remove("Window/TestQuit_1");
    TestWindow<"TestQuit"> shown, hidden;
    shown.setup();
    hidden.setup();  // adds the window
    EXPECT_EQ(shown.restores, 1) << "the base's setup() restores nothing itself";
    EXPECT_TRUE(gApp->has_window(&hidden));
    shown.show();
    // What a real quit does: the application object saves on aboutToQuit.
    QMetaObject::invokeMethod(qApp, "aboutToQuit", Qt::DirectConnection);
    EXPECT_TRUE(GSettings::instance().get_window_node(shown.get_object_name()).attributes.contains("geometry"));
    EXPECT_FALSE(GSettings::instance().get_window_node(hidden.get_object_name()).attributes.contains("geometry"));
    hidden.show();
    hidden.close();
    EXPECT_FALSE(gApp->has_window(&hidden));
}

// The start-up's fontconfig thread is waited for once whatever the caller does (a second join
// or none at all would end the program), and Qt's fonts work after it.
TEST_F(GuiTest, FontPreloadIsWaitedForOnceAndLeavesTheFontsUsable) {
    for (const int waits : {0, 1, 2}) {
        SCOPED_TRACE(waits);
        {
            ki::qt::FontPreload preload;
            for (int i = 0; i < waits; ++i) preload.wait();
        }
        EXPECT_TRUE(QFontDatabase::families().contains(QStringLiteral("Noto Sans CJK SC")));
    }
}

// Dialogs, message boxes and popups are windows of their own, to which Qt hands no palette:
// each shows in its window's theme, or keeps a palette of its own.
TEST_F(GuiTest, WindowsOpenedOverAThemedWindowShowItsColours) {
    TestWindow<"TestDialogs"> win;
    win.setup();
    const QPalette custom(Qt::red);
    for (const unsigned int theme : {th::THEME_NORMAL, th::THEME_DARK, th::THEME_GREEN}) {
        SCOPED_TRACE(theme);
        win.set_theme(theme);
        const QColor window = th::get_palette(theme).color(QPalette::Window);

        QDialog dialog(&win);
        auto* combo = new QComboBox(&dialog);
        combo->addItems({QStringLiteral("one"), QStringLiteral("two")});
        dialog.show();
        EXPECT_EQ(dialog.palette().color(QPalette::Window), window) << "a dialog";

        QMessageBox box(QMessageBox::Question, QStringLiteral("t"), QStringLiteral("?"), QMessageBox::Yes,
                        &dialog);
        box.show();
        EXPECT_EQ(box.palette().color(QPalette::Window), window) << "a box over the dialog";

        combo->showPopup();
        QWidget* popup = combo->view()->window();
        ASSERT_TRUE(popup->isVisible());
        const QImage items = combo->view()->viewport()->grab().toImage();
        // The second row is not selected: drawn as a menu item, on the theme's window colour.
        EXPECT_EQ(items.pixelColor(items.width() - 3, items.height() - 3), window) << "the combo box's items";
        combo->hidePopup();

        QDialog own(&win);
        own.setPalette(custom);
        own.show();
        EXPECT_EQ(own.palette().color(QPalette::Window), custom.color(QPalette::Window))
            << "a palette of its own";
    }
    QWidget plain;
    QDialog overPlain(&plain);
    overPlain.show();
    EXPECT_EQ(overPlain.palette(), QApplication::palette(&overPlain)) << "over a window without a theme";
}
