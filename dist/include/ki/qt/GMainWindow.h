#pragma once
// The base of every top-level window: its own settings node stored under a class-and-number
// name, a theme, a font size and an icon size that persist, the standard hotkeys, the options
// menu, the log panel, drag and drop of files, and listeners for its state changes.
//
// Set-up order: construct, then the subclass's set-up calls `setup()` (a subclass that wants
// its own settings section calls `setup_node<WindowClazz<"Name">>()` first), builds its
// contents, calls `restore_state()`, `show()` and `post_ini()`, and registers the window with
// `GApp::add_window`.

#include <ki/Listener.h>
#include <ki/qt/LayoutEvent.h>
#include <ki/qt/WindowClazz.h>
#include <ki/qt/components/Generator.h>
#include <ki/qt/event/BaseEventDispatcher.h>
#include <ki/qt/themes.h>
#include <ki/store/GNode.h>
#include <ki/tools/GSettings.h>

#include <QKeySequence>
#include <QList>
#include <QMainWindow>
#include <QPoint>
#include <QPointF>
#include <QSize>
#include <QSizeF>
#include <QUrl>
#include <functional>
#include <memory>
#include <string>

class QAction;
class QDockWidget;
class QGestureEvent;
class QMenuBar;
class QMoveEvent;
class QStatusBar;
class QWheelEvent;

namespace ki::qt {

class GMenu;
class GPanel;
class GPanelLogView;

class GMainWindow : public QMainWindow, public event::BaseEventDispatcher {
    Q_OBJECT
public:
    enum class GUISCALE { SMALLER = 0, BIGGER = 1 };
    /// Sections of the options menu (`on_menu_options` flags).
    enum OPTIONS_MENU : int {
        OPTIONS_GUI = 0x01,  ///< theme, language, font and icon size
        OPTIONS_LOG = 0x02,  ///< log panel and log options
        OPTIONS_ALL = 0xFF,
    };

    explicit GMainWindow(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~GMainWindow() override;

    /// Creates the class-name object (drawing the window's number) and loads the settings node
    /// stored under the resulting name. Only the first call counts.
    template <typename CLAZZ>
    void setup_node() {
        if (clazz) return;
        clazz = std::make_unique<CLAZZ>();
        nWin = GSettings::instance().get_window_node(get_object_name());
    }

    /// Binds the settings ("CMainWindow" unless bound before) and runs `ini_standards`; the
    /// rest of the set-up is the subclass's (see the order above).
    virtual void setup();
    /// "<class>_<number>" once set up, else the Qt object name.
    virtual QString get_object_name() const;
    virtual void save_state();
    virtual void restore_state();
    virtual void on_log_options();
    virtual QString get_type_name() const { return QStringLiteral("GMainWindow"); }
    /// The log panel's control bar with icons; `options_icon` and `options_tip` make its
    /// options button, `vertical` non-zero stacks the buttons.
    virtual void log_panel_control_icons(GPanel* parent, const QString& options_icon,
                                         const QString& options_tip, int vertical);
    virtual void setup_base_hotkeys();
    virtual void on_new_window();
    virtual void on_toggle_fullscreen();
    virtual void on_close();
    virtual void on_open();
    virtual void on_logger();
    virtual void on_help();
    virtual void on_select_all();
    virtual std::string to_string() const;
    /// Ctrl + wheel anywhere in the window changes the font size.
    virtual void on_global_wheel_event(QWheelEvent* ev);
    virtual void cleanup() {}
    virtual void ini_standards();
    virtual void post_ini();
    virtual void on_menu_options_top(GMenu*) {}
    /// Opens the options menu at the mouse.
    virtual void on_menu_options(int flags = OPTIONS_ALL);
    virtual void on_menu_options_bottom(GMenu*) {}
    virtual void on_reset_config_and_quit();
    virtual void on_gesture_event(QGestureEvent* ev);
    /// Calls `do_layout` of every framework widget of the window.
    virtual void do_layout_all(LayoutEvent& ev);
    /// Runs after a theme change has been applied, from the event loop.
    virtual void on_change_theme(unsigned int) {}
    virtual void adapt_icons_to_theme();
    virtual void adapt_log_view();
    virtual void adapt_themes() {}
    virtual void adapt_margins_spacings();
    virtual void mouse_move(QMouseEvent* ev);

    /// Builds the window's contents; the subclass's set-up calls it before `restore_state`.
    virtual void ini() {}

    /// QWidget::show, then the "__bounds x,y,w,h" geometry from the command line if given.
    void show();
    /// Stores the settings node (with the log panel's configuration when `withLog`).
    void sync_win_settings(bool withLog);

    /// 0 normal, 1 dark, 2 green, 3 auto, 4 not set (inherit the application's palette).
    void set_theme(unsigned int theme, unsigned int flags = 0);
    unsigned int get_theme() const { return theme; }
    QString get_theme_string() const { return themes::theme_to_string(theme); }
    /// The theme actually shown: auto resolved by the system, not-set by the application's.
    unsigned int get_theme_shown() const;
    bool is_theme_normal() const { return theme == themes::THEME_NORMAL; }
    bool is_theme_dark() const { return theme == themes::THEME_DARK; }
    bool is_theme_auto() const { return theme == themes::THEME_AUTO; }
    bool is_theme_green() const { return theme == themes::THEME_GREEN; }
    static bool is_theme_normal(QWidget* widget);
    static bool is_theme_dark(QWidget* widget);
    static bool is_theme_auto(QWidget* widget);
    static bool is_theme_green(QWidget* widget);
    /// The theme used when the settings hold none.
    void set_theme_default(unsigned int theme);
    /// Applies auto again after the system switched dark mode.
    void update_auto_theme();
    /// normal → dark → green → normal; auto goes to normal.
    void on_rotate_themes();

    /// Clamped to FONT_SIZE_MIN..FONT_SIZE_MAX (warning when outside); the same size again
    /// does nothing at all.
    void set_font_size(int size);
    int get_font_size() const;
    void gui_scale(GUISCALE step);
    unsigned int get_icon_size_percent() const { return percentIconSizeWin; }
    /// Clamped to 50..400 percent of the font height.
    void set_icon_size_percent(unsigned int percent);
    QSize get_icon_size() const;

    GPanel* gen_main_panel(GLAYOUT layout);
    GPanel* get_main_panel() const;
    QMenuBar* gen_menu_bar();
    QStatusBar* gen_status_bar();
    QDockWidget* gen_dock(const QString& title, const QString& name, Qt::DockWidgetAreas areas);
    /// A window action whose shortcut is `keys` ("left", "Ctrl+L", ...).
    QAction* gen_action(const QString& keys);
    QAction* gen_action(const QKeySequence& keys);
    void set_window_icon(const QString& path, const QSize& size = {});

    void set_delete_on_close(bool on);
    bool is_delete_on_close() const { return testAttribute(Qt::WA_DeleteOnClose); }
    bool has_its_own_palette() const { return testAttribute(Qt::WA_SetPalette); }
    void unset_palette();
    QList<QWidget*> get_children(bool recursive) const;
    QList<QWidget*> get_all_widgets() const { return get_children(true); }
    static GMainWindow* from_widget(QWidget* widget);
    /// The main window a widget belongs to (through popups too); null for null or none.
    static GMainWindow* window_from_widget(const QWidget* widget);
    /// Makes the window lay itself out again once the event loop runs.
    void resize_trick();

    /// Splits `parent` (a GPanel) into the returned content panel above and the log panel
    /// below, in a splitter named "splitter". The log panel starts hidden (Ctrl+L shows it).
    GPanel* gen_log_panel(Generator* parent);
    /// The log panel's control bar with text buttons; `options_text` names the options button.
    void log_panel_control(GPanel* parent, const QString& options_text);
    GPanelLogView* get_panel_log_view() const { return panLogView; }
    bool is_logPanel_enabled() const { return panLog != nullptr; }
    bool is_logger_visible() const;

    /// The options menu as `on_menu_options` opens it; owned by the window, deleted on close.
    GMenu* gen_menu_options(int flags);

    store::GNode& get_node() { return nWin; }
    const store::GNode& get_node() const { return nWin; }

    void set_post_ini(std::function<void()> callback) { postIniCallback = std::move(callback); }

    Listener<bool> liActivated;
    Listener<NO_PAYLOAD> liMinimized;
    Listener<NO_PAYLOAD> liMaximized;
    Listener<NO_PAYLOAD> liFullScreen;
    Listener<NO_PAYLOAD> liNormal;
    /// Fired at the end of closeEvent; GApp removes the window here.
    Listener<NO_PAYLOAD> liClosed;
    Listener<NO_PAYLOAD> liSpare;
    Listener<bool> liSpareBool;
    /// The theme, after a theme change, from the event loop.
    Listener<unsigned int> liTheme;
    Listener<QSize> liResize;
    Listener<QSizeF> liSizeF;
    Listener<QPoint> liPoint;
    Listener<QPointF> liPointF;
    Listener<QMoveEvent*> liMove;
    /// The first dropped local file.
    Listener<QString> liDropFile;
    Listener<QList<QUrl>> liDropUrls;

protected:
    bool event(QEvent* ev) override;
    bool eventFilter(QObject* watched, QEvent* ev) override;
    void moveEvent(QMoveEvent* ev) override;
    void resizeEvent(QResizeEvent* ev) override;
    void closeEvent(QCloseEvent* ev) override;
    void dragEnterEvent(QDragEnterEvent* ev) override;
    void dropEvent(QDropEvent* ev) override;
    void showEvent(QShowEvent* ev) override;
    void changeEvent(QEvent* ev) override;

    /// Gives the window the palette of `th` (none for THEME_NOT_SET) without storing it.
    void apply_palette(unsigned int th);
    /// Runs `fn` once the event loop gets to it, unless the window is gone by then.
    void post(std::function<void()> fn);

    store::GNode nWin;
    store::GNode nWin2;
    unsigned int theme = themes::THEME_NOT_SET;
    unsigned int themeDefault = themes::THEME_NOT_SET;
    unsigned int percentIconSizeWin = 160;
    std::unique_ptr<WindowClazzBase> clazz;
    GPanel* panLog = nullptr;
    GPanelLogView* panLogView = nullptr;
    GPanel* panOptionLog = nullptr;

private:
    void gen_log_control(GPanel* parent, bool with_icons, const QString& options_icon,
                         const QString& options_label, bool vertical);
    void add_gui_options(GMenu* menu);
    void add_log_options(GMenu* menu);

    std::function<void()> postIniCallback;
    bool shownOnce = false;
};

}  // namespace ki::qt
