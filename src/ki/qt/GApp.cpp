#include <ki/GError.h>
#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/qt/GMainWindow.h>
#include <ki/qt/GStyle.h>
#include <ki/qt/lang.h>
#include <ki/qt/themes.h>
#include <ki/store/GType.h>
#include <ki/tools/GSettings.h>
#include <ki/tools/os.h>

#include <QFont>
#include <QScopedValueRollback>
#include <QScreen>
#include <QStyleHints>
#include <QWindow>
#include <clocale>
#include <glm/detail/setup.hpp>

namespace ki::qt {

GApp::GApp(int& argc, char** argv_in, ki::GArgv* args) : QApplication(argc, argv_in) {
    installEventFilter(&eventFilter);
    installEventFilter(&windowPalettes);
    setStyle(new GStyle);
    if (flagLocaleC) std::setlocale(LC_NUMERIC, "C");
    ki::store::register_gtype_meta_type();
    gApp = this;

    if (args == nullptr) {
        argv.set_arguments(argc, argv_in);
        argv.parse();
    } else if (args != &argv) {
        argv = *args;
    }
    log::configure(argc, argv_in, true);
    show_basic_env();

    connect(this, &QCoreApplication::aboutToQuit, this, []() { sync_app_settings(true); });
    connect(this, &QGuiApplication::applicationStateChanged, this,
            [this](Qt::ApplicationState state) { on_app_state(state); });
    if (os::is_sandboxed()) {
        // A sandboxed process may be ended without a quit: save whenever the focus leaves us.
        connect(this, &QGuiApplication::focusWindowChanged, this, [](QWindow* focus) {
            if (focus == nullptr) sync_app_settings(true);
        });
    }
    eventFilter.liKeyPress += [this](const int& key) {
        if (liKey.has_listener()) liKey.fire_event(key);
    };
    eventFilter.liPinchCenter += [this](const QPointF& center) {
        if (liPinchCenter.has_listener()) liPinchCenter.fire_event(center);
    };
    eventFilter.liPinchScale += [this](const float& scale) {
        if (liPinchScale.has_listener()) liPinchScale.fire_event(scale);
    };
    eventFilter.liWheel += [this](const float& degrees) {
        if (liWheel.has_listener()) liWheel.fire_event(degrees);
    };

    lang::set_lang(lang_from_node(nApp));

    systemPaletteDark = themes::is_dark_palette(QGuiApplication::palette());
    flag_OS_theme_dark = ask_OS_theme_dark_mode();
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    connect(styleHints(), &QStyleHints::colorSchemeChanged, this, [this](Qt::ColorScheme scheme) {
        const bool dark = scheme == Qt::ColorScheme::Dark;
        flag_OS_theme_dark = dark;
        if (liDarkMode.has_listener()) liDarkMode.fire_event(dark);
    });
#endif
    pp("GApp::GApp, flag_OS_theme_dark:$", flag_OS_theme_dark);
    liDarkMode.append("GApp", [this](const bool& dark) { on_dark_mode(dark); });
}

GApp::~GApp() {
    removeEventFilter(&eventFilter);
    removeEventFilter(&windowPalettes);
    for (GMainWindow* win : windows) win->liClosed.remove("GApp");
    // Windows and themes may still ask for the application object after this one is gone.
    gApp = nullptr;
}

void GApp::prepare_settings(const QString& organisation, unsigned int version, bool flag,
                            const QString& applicationName) {
    QCoreApplication::setOrganizationName(organisation);
    QCoreApplication::setApplicationName(applicationName);
    if (GSettings::flagDebug)
        GSettings::instance().clear_config();
    else
        GSettings::instance().check_update_config(version, flag);
    nApp = GSettings::instance().get_app_node();
}

void GApp::sync_app_settings(bool allWindows) {
    GSettings::instance().set_app_node(nApp);
    if (allWindows) {
        for (GMainWindow* win : get_windows(true)) {
            win->save_state();
            win->sync_win_settings(false);
        }
    }
    // To the disk now: a process that is killed later must not lose what was saved here.
    GSettings::instance().sync();
}

void GApp::reset_settings_and_quit() {
    pp_trace("GApp::reset_settings_and_quit");
    GSettings::instance().clear_config();
    QCoreApplication::quit();
}

void GApp::add_window(GMainWindow* win) {
    if (win == nullptr) {
        // Reported like a broken invariant, but the program goes on without the window.
        pp_error("win == NULL, src/ki/qt/GApp, line:$", __LINE__);
        return;
    }
    if (windows.contains(win)) return;
    windows.insert(win);
    win->liClosed.append("GApp", [this, win]() { remove_window(win); });
}

bool GApp::remove_window(GMainWindow* win) {
    if (win == nullptr) {
        pp_error("win == NULL, src/ki/qt/GApp, line:$", __LINE__);
        return false;
    }
    pp("GApp::remove_window, remove win:$", win->to_string());
    if (windows.erase(win) == 0) return false;
    if (liWindowRemoved.has_listener()) liWindowRemoved.fire_event(win);
    return true;
}

std::vector<GMainWindow*> GApp::get_windows(bool visibleOnly) {
    std::vector<GMainWindow*> found;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* win = dynamic_cast<GMainWindow*>(widget);
        if (win == nullptr || (visibleOnly && !win->isVisible())) continue;
        found.push_back(win);
    }
    return found;
}

void GApp::set_theme(unsigned int new_theme) {
    theme = new_theme;
    if (new_theme == themeOld) return;
    themes::apply_the_theme(new_theme);
    themeOld = new_theme;
}

void GApp::set_app_version(unsigned int major, unsigned int minor, unsigned int patch) {
    versionAppMajor = major;
    versionAppMinor = minor;
    versionAppPatch = patch;
}

bool GApp::has_app_version() {
    return versionAppMajor != 0 || versionAppMinor != 0 || versionAppPatch != 0;
}

QString GApp::get_app_version() {
    return str::qprintF("$.$.$", versionAppMajor, versionAppMinor, versionAppPatch);
}

QString GApp::get_app_name() {
    return os::get_program_name_qs();
}

bool GApp::is_palette_dark_by_system() {
    if (gApp != nullptr) return gApp->systemPaletteDark;
    return themes::is_dark_palette(QGuiApplication::palette());
}

bool GApp::ask_OS_theme_dark_mode() {
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    return QGuiApplication::styleHints()->colorScheme() == Qt::ColorScheme::Dark;
#else
    return is_palette_dark_by_system();
#endif
}

int GApp::get_font_size() {
    return QApplication::font().pointSize();
}

void GApp::set_icon_size_percent_default(int percent) {
    if (percent < 10 || percent > 1000) {
        pp_warn("GApp::set_icon_size_percent_default, out of range:$", percent);
        return;
    }
    percentIconSize = percent;
}

Qt::ScreenOrientation GApp::get_screen_orientation() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? screen->orientation() : Qt::PrimaryOrientation;
}

QString GApp::screen_orientation_to_string(Qt::ScreenOrientation orientation) {
    switch (orientation) {
        case Qt::PortraitOrientation:
            return QStringLiteral("PORTRAIT");
        case Qt::LandscapeOrientation:
            return QStringLiteral("LANDSCAPE");
        case Qt::InvertedLandscapeOrientation:
            return QStringLiteral("INVERTED-LANDSCAPE");
        case Qt::InvertedPortraitOrientation:
            return QStringLiteral("INVERTED-PORTRAIT");
        case Qt::PrimaryOrientation:
            return QStringLiteral("PRIMARY-ORIENTATION");
        default:
            return QStringLiteral("UNKNOWN-ORIENT");
    }
}

bool GApp::is_screen_orient_HORZ() {
    return get_screen_orientation() == Qt::LandscapeOrientation;
}
bool GApp::is_screen_orient_VERT() {
    return get_screen_orientation() == Qt::PortraitOrientation;
}
bool GApp::is_screen_orient_HORZ_INVERT() {
    return get_screen_orientation() == Qt::InvertedLandscapeOrientation;
}
bool GApp::is_screen_orient_VERT_INVERT() {
    return get_screen_orientation() == Qt::InvertedPortraitOrientation;
}

QString GApp::app_state_to_string(int state) {
    switch (state) {
        case Qt::ApplicationSuspended:
            return QStringLiteral("SUSPENDED");
        case Qt::ApplicationHidden:
            return QStringLiteral("HIDDEN");
        case Qt::ApplicationInactive:
            return QStringLiteral("INACTIVE");
        case Qt::ApplicationActive:
            return QStringLiteral("ACTIVE");
        default:
            return str::qprintF("UNKNOWN_APP_STATE:$", state);
    }
}

QLocale::Language GApp::lang_from_node(const ki::store::GNode& node) {
    if (!node.attributes.contains(QStringLiteral("lang"))) return QLocale::English;
    const int value = node.get<int>(QStringLiteral("lang"), QLocale::English);
    return value >= 1 && value <= 346 ? QLocale::Language(value) : QLocale::English;
}

void GApp::show_basic_env() {
    pp_info("KIR/TOLA:$, $", get_kir_TOLA_version(), get_build_timestamp());
    pp("GLM Version: $.$.$", GLM_VERSION_MAJOR, GLM_VERSION_MINOR, GLM_VERSION_PATCH);
    pp_info("$ / Qt:$", os::get_os_description(), QT_VERSION_STR);
    const unsigned int config = GSettings::instance().get_config_version();
    if (!has_app_version())
        pp_info("program: '$', config:$", get_app_name(), config);
    else
        pp_info("program: '$', version:$, config:$", get_app_name(), get_app_version(), config);
}

bool GApp::event(QEvent* ev) {
    if (ev->type() == QEvent::ApplicationPaletteChange && !themes::is_applying_theme() &&
        !readingSystemPalette)
        on_system_palette_changed();
    return QApplication::event(ev);
}

void GApp::on_app_state(Qt::ApplicationState state) {
    if (os::is_sandboxed() && (state == Qt::ApplicationHidden || state == Qt::ApplicationInactive))
        sync_app_settings(true);
    if (liAppState.has_listener()) liAppState.fire_event(int(state));
}

void GApp::on_dark_mode(bool dark) {
    pp("GApp::on_dark_mode, dark:$", dark);
    // Wait until the palette change that told us has been delivered everywhere.
    QMetaObject::invokeMethod(
        this,
        []() {
            if (themes::is_theme(themes::THEME_AUTO) && themeOld == themes::THEME_AUTO)
                themes::refresh_theme();
            for (GMainWindow* win : get_windows(false)) win->update_auto_theme();
        },
        Qt::QueuedConnection);
}

void GApp::on_system_palette_changed() {
#if QT_VERSION < QT_VERSION_CHECK(6, 5, 0)
    QPalette system = QGuiApplication::palette();
    if (QCoreApplication::testAttribute(Qt::AA_SetPalette)) {
        // Our theme covers the window roles: look beneath it by dropping it for a moment.
        const QScopedValueRollback guard(readingSystemPalette, true);
        const QPalette ours = system;
        QApplication::setPalette(QPalette());
        system = QGuiApplication::palette();
        QApplication::setPalette(ours);
    }
    const bool dark = themes::is_dark_palette(system);
    if (dark == systemPaletteDark) return;
    systemPaletteDark = dark;
    flag_OS_theme_dark = dark;
    if (liDarkMode.has_listener()) liDarkMode.fire_event(dark);
#endif
}

}  // namespace ki::qt
