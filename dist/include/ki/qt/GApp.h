#pragma once
// The application object: one per process, built by the entry before any window. It owns the
// application-wide event filter, the open main windows and the listeners through which the
// program hears of application-level events, and keeps the process-wide settings node.

#include <ki/GAtomic.h>
#include <ki/Listener.h>
#include <ki/qt/GOrientationDetector.h>
#include <ki/qt/GTimer.h>
#include <ki/qt/event/EventFilter.h>
#include <ki/qt/guitools/GWindowPalette.h>
#include <ki/store/GNode.h>
#include <ki/tools/GArgv.h>

#include <QApplication>
#include <QLocale>
#include <QPalette>
#include <QPointF>
#include <QString>
#include <atomic>
#include <set>
#include <vector>

namespace ki::qt {

class GMainWindow;

class GApp : public QApplication {
    Q_OBJECT
public:
    /// `args` may be null: the command line is then parsed from argc/argv.
    GApp(int& argc, char** argv, ki::GArgv* args);
    ~GApp() override;

    /// Sets organisation and application name and loads the application node; call before
    /// the GApp is built.
    static void prepare_settings(const QString& organisation, unsigned int version, bool flag,
                                 const QString& applicationName);
    /// Stores the application node and, with `allWindows`, the state of every visible window.
    static void sync_app_settings(bool allWindows);
    static void reset_settings_and_quit();

    /// Null is reported and ignored; a window already known is left alone.
    void add_window(GMainWindow* win);
    /// False for null or unknown windows; otherwise fires liWindowRemoved once.
    bool remove_window(GMainWindow* win);
    /// Drops a window that is being destroyed without a close, firing nothing.
    void forget_window(GMainWindow* win) { windows.erase(win); }
    bool has_window(GMainWindow* win) const { return windows.contains(win); }
    std::size_t get_window_count() const { return windows.size(); }
    /// The main windows among the top-level widgets, in Qt's order.
    static std::vector<GMainWindow*> get_windows(bool visibleOnly);

    /// Applies a theme application-wide; asking again for the last applied theme does nothing.
    void set_theme(unsigned int theme);
    unsigned int get_theme() const { return theme; }

    static void set_app_version(unsigned int major, unsigned int minor, unsigned int patch);
    static bool has_app_version();
    /// "major.minor.patch".
    static QString get_app_version();
    static QString get_app_name();

    /// Asks the system now: its colour scheme (Qt 6.5+) or, before that, whether the palette
    /// the system gave is dark.
    static bool ask_OS_theme_dark_mode();
    bool is_os_theme_dark_mode() const { return flag_OS_theme_dark.load(); }

    static int get_font_size();
    static int get_icon_size_percent_default() { return percentIconSize; }
    static void set_icon_size_percent_default(int percent);

    static ki::store::GNode& get_node() { return nApp; }
    event::EventFilter& get_event_filter() { return eventFilter; }
    const event::EventFilter& get_event_filter() const { return eventFilter; }
    static const ki::GArgv& get_argv() { return argv; }

    static Qt::ScreenOrientation get_screen_orientation();
    static QString screen_orientation_to_string(Qt::ScreenOrientation orientation);
    static bool is_screen_orient_HORZ();
    static bool is_screen_orient_VERT();
    static bool is_screen_orient_HORZ_INVERT();
    static bool is_screen_orient_VERT_INVERT();
    static QString app_state_to_string(int state);

    static void set_Locale_C(bool on) { flagLocaleC = on; }
    static bool is_Locale_C() { return flagLocaleC; }
    static void set_GL_Share_context(bool on) { flagShareGLContext = on; }
    static bool is_GL_Share_context() { return flagShareGLContext; }

    /// Reads "lang" from a settings node: 1..346 as a QLocale::Language, anything else English.
    static QLocale::Language lang_from_node(const ki::store::GNode& node);

    /// Version and environment lines at start-up.
    static void show_basic_env();

    Listener<int> liKey;
    Listener<float> liPinchScale;
    Listener<float> liWheel;
    Listener<QPointF> liPinchCenter;
    Listener<NO_PAYLOAD> liSpare;
    /// The system's colour scheme changed; true for dark.
    Listener<bool> liDarkMode;
    Listener<GMainWindow*> liWindowRemoved;
    /// Every Qt::ApplicationState change.
    Listener<int> liAppState;

    static inline ki::store::GNode nApp;
    static inline ki::GArgv argv;
    static inline unsigned int versionAppMajor = 0;
    static inline unsigned int versionAppMinor = 0;
    static inline unsigned int versionAppPatch = 0;
    static inline bool flagLocaleC = true;
    static inline bool flagShareGLContext = false;
    static inline int percentIconSize = 160;
    /// Starts as "not set" so that the first theme asked for is applied.
    static inline unsigned int themeOld = 4;

protected:
    bool event(QEvent* ev) override;

private:
    void on_app_state(Qt::ApplicationState state);
    void on_dark_mode(bool dark);
    void on_system_palette_changed();
    static bool is_palette_dark_by_system();

    event::EventFilter eventFilter;
    WindowPaletteFilter windowPalettes;
    GOrientationDetector orientationDetector;
    std::set<GMainWindow*> windows;
    unsigned int theme = 0;
    GAtomic<bool> flag_OS_theme_dark{false};
    GTimer timer;
    // What the system's palette said before any theme of ours was applied (Qt < 6.5).
    bool systemPaletteDark = false;
    bool readingSystemPalette = false;
};

/// The one application object; null before it is built and after it is destroyed.
inline GApp* gApp = nullptr;

}  // namespace ki::qt
