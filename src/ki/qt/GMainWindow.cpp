#include <ki/GError.h>
#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/qt/GMainWindow.h>
#include <ki/qt/guitools/GIconCache.h>
#include <ki/qt/components/GButton.h>
#include <ki/qt/components/GMenu.h>
#include <ki/qt/components/GPanel.h>
#include <ki/qt/components/GSplitter.h>
#include <ki/qt/dialogs/GMessageBox.h>
#include <ki/qt/dialogs/GPanelLogView.h>
#include <ki/qt/guitools/GGui.h>
#include <ki/qt/lang.h>
#include <ki/tools/os.h>
#include <ki/tools/rnd.h>

#include <QAction>
#include <QBoxLayout>
#include <QCloseEvent>
#include <QCursor>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFontInfo>
#include <QFontMetrics>
#include <QGestureEvent>
#include <QLayout>
#include <QMenuBar>
#include <QMimeData>
#include <QPinchGesture>
#include <QPointer>
#include <QRegularExpression>
#include <QSet>
#include <QStatusBar>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>

namespace ki::qt {

namespace {

template <typename T>
T read_or(const store::GNode& node, const char* key, const T& fallback) {
    const QString name = QString::fromLatin1(key);
    return node.attributes.contains(name) ? node.get<T>(name, fallback) : fallback;
}

constexpr unsigned int ICON_PERCENT_MIN = 50;

int default_font_size() {
    return os::is_small_device() ? 14 : 11;
}
constexpr unsigned int ICON_PERCENT_MAX = 400;

}  // namespace

GMainWindow::GMainWindow(QWidget* parent, Qt::WindowFlags flags)
    : QMainWindow(parent, flags), BaseEventDispatcher(this) {
    setAttribute(Qt::WA_AcceptTouchEvents);
    if (QCoreApplication* app = QCoreApplication::instance()) app->installEventFilter(this);
    setAcceptDrops(true);
    // Random, so that two windows never share a Qt object name before they are set up.
    setObjectName(rnd::next_QString(8, true));
    percentIconSizeWin = unsigned(GApp::get_icon_size_percent_default());
    grabGesture(Qt::PinchGesture);
    shared_font_record() = {font().family(), font().pointSize()};
}

GMainWindow::~GMainWindow() {
    if (QCoreApplication* app = QCoreApplication::instance()) app->removeEventFilter(this);
    if (gApp != nullptr) gApp->forget_window(this);
}

void GMainWindow::setup() {
    setup_node<WindowClazz<"CMainWindow">>();
    // The stored size before the contents exist: set afterwards, it made every widget resolve
    // its font again and load font engines in a size that is never shown.
    const int size = clamp_font_size(read_or<int>(nWin, "fontSize", default_font_size()));
    if (size != get_font_size()) {
        QFont f = font();
        f.setPointSize(size);
        setFont(f);
    }
    ini_standards();
}

QString GMainWindow::get_object_name() const {
    return clazz ? clazz->get_complete_name() : objectName();
}

std::string GMainWindow::to_string() const {
    return str::xprintF(0, "GMainWindow@$", get_object_name());
}

void GMainWindow::save_state() {
    pp_trace("GMainWindow::save_state");
    nWin.set(QStringLiteral("geometry"), saveGeometry());
    nWin.set(QStringLiteral("state"), saveState(0));
    nWin.set(QStringLiteral("fontSize"), get_font_size());
    nWin.set(QStringLiteral("percentIconSizeWin"), percentIconSizeWin);
}

void GMainWindow::restore_state() {
    const unsigned int fallback = themeDefault != themes::THEME_NOT_SET ? themeDefault : theme;
    unsigned int th = read_or<unsigned int>(nWin, "theme", fallback);
    if (th == themes::THEME_NOT_SET) th = themes::get_theme_type();
    if (th > themes::THEME_NOT_SET) {
        pp_error("GMainWindow::restore_state, unknown theme:$", th);
    } else {
        theme = th;
        apply_palette(th);
    }
    if (os::is_desktop()) {
        const QByteArray geometry = read_or<QByteArray>(nWin, "geometry", {});
        if (!geometry.isEmpty()) restoreGeometry(geometry);
        const QByteArray state = read_or<QByteArray>(nWin, "state", {});
        if (!state.isEmpty()) restoreState(state, 0);
    }
    const int font_size = read_or<int>(nWin, "fontSize", default_font_size());
    if (font_size != get_font_size()) set_font_size(font_size);
    pp_trace("GMainWindow::restore_state");
    const unsigned int percent =
        read_or<unsigned int>(nWin, "percentIconSizeWin", unsigned(GApp::get_icon_size_percent_default()));
    // Clamped like set_icon_size_percent: a damaged value must not leave buttons invisible
    // or larger than the screen.
    percentIconSizeWin = std::clamp(percent, ICON_PERCENT_MIN, ICON_PERCENT_MAX);
    if (percentIconSizeWin != percent)
        pp_warn("GMainWindow::restore_state, percentIconSizeWin:$ outside $..$", percent, ICON_PERCENT_MIN,
                ICON_PERCENT_MAX);
    adapt_icons_to_theme();
}

void GMainWindow::sync_win_settings(bool withLog) {
    pp_trace("GMainWindow::sync_win_settings");
    if (withLog && panLogView != nullptr)
        nWin.attributes.set_pod(QStringLiteral("log"), panLogView->get_config());
    GSettings::instance().set_window_node(nWin, get_object_name());
}

void GMainWindow::ini_standards() {
    pp_trace("GMainWindow::ini_standards");
    setup_base_hotkeys();
    post([this]() {
        adapt_margins_spacings();
        adapt_icons_to_theme();
        adapt_log_view();
    });
}

void GMainWindow::post_ini() {
    if (postIniCallback) postIniCallback();
}

void GMainWindow::show() {
    QWidget::show();
    const GArgv& args = GApp::get_argv();
    if (!args.has_key(QStringLiteral("__bounds"))) return;
    const QStringList parts = args.value_string(QStringLiteral("__bounds"))
                                  .split(QRegularExpression(QStringLiteral("[,x\\s]+")), Qt::SkipEmptyParts);
    QList<int> numbers;
    for (const QString& part : parts) {
        bool ok = false;
        const int n = part.toInt(&ok);
        if (ok) numbers.append(n);
    }
    if (numbers.size() != 4 || numbers[2] <= 0 || numbers[3] <= 0) {
        pp_error("GMainWindow::show, __bounds '$' is not x,y,w,h",
                 args.value_string(QStringLiteral("__bounds")));
        return;
    }
    const QRect r(numbers[0], numbers[1], numbers[2], numbers[3]);
    pp("__bounds, r:$", r);
    setGeometry(r);
}

void GMainWindow::post(std::function<void()> fn) {
    QCoreApplication* app = QCoreApplication::instance();
    if (app == nullptr) return;
    QMetaObject::invokeMethod(
        app,
        [guard = QPointer<GMainWindow>(this), fn = std::move(fn)]() {
            if (guard) fn();
        },
        Qt::QueuedConnection);
}

void GMainWindow::apply_palette(unsigned int th) {
    if (th == themes::THEME_NOT_SET) {
        unset_palette();
        QToolTip::setPalette(QApplication::palette());
        return;
    }
    const QPalette pal = themes::get_palette(th);
    setPalette(pal);
    // Tool tips are windows of their own and take only this palette.
    QToolTip::setPalette(pal);
}

void GMainWindow::set_theme(unsigned int th, unsigned int) {
    if (th > themes::THEME_NOT_SET) {
        pp_error("GMainWindow::set_theme, theme:$ is unknow", th);
        return;
    }
    if (th == themes::THEME_NOT_SET) pp_warn("GMainWindow::set_theme, theme == themes::THEME_NOT_SET");
    theme = th;
    apply_palette(th);
    nWin.set(QStringLiteral("theme"), theme);
    adapt_icons_to_theme();
    adapt_log_view();
    adapt_themes();
    GApp::sync_app_settings(true);
    post([this, th]() {
        on_change_theme(th);
        if (liTheme.has_listener()) liTheme.fire_event(th);
    });
}

unsigned int GMainWindow::get_theme_shown() const {
    unsigned int th = theme == themes::THEME_NOT_SET ? themes::get_theme_type() : theme;
    if (th == themes::THEME_AUTO) th = themes::map_theme_auto();
    return th;
}

namespace {
GMainWindow* checked_window(QWidget* widget) {
    return GMainWindow::window_from_widget(widget);
}
}  // namespace

bool GMainWindow::is_theme_normal(QWidget* widget) {
    const GMainWindow* win = checked_window(widget);
    return win != nullptr && win->is_theme_normal();
}
bool GMainWindow::is_theme_dark(QWidget* widget) {
    const GMainWindow* win = checked_window(widget);
    return win != nullptr && win->is_theme_dark();
}
bool GMainWindow::is_theme_auto(QWidget* widget) {
    const GMainWindow* win = checked_window(widget);
    return win != nullptr && win->is_theme_auto();
}
bool GMainWindow::is_theme_green(QWidget* widget) {
    const GMainWindow* win = checked_window(widget);
    return win != nullptr && win->is_theme_green();
}

void GMainWindow::set_theme_default(unsigned int th) {
    pp("GMainWindow::set_theme_default, theme:$", th);
    themeDefault = th;
}

void GMainWindow::update_auto_theme() {
    if (theme != themes::THEME_AUTO) return;
    apply_palette(theme);
    adapt_icons_to_theme();
    adapt_log_view();
    adapt_themes();
    post([this]() {
        on_change_theme(themes::THEME_AUTO);
        if (liTheme.has_listener()) liTheme.fire_event(themes::THEME_AUTO);
    });
}

void GMainWindow::on_rotate_themes() {
    pp_trace("GMainWindow::on_rotate_themes");
    const unsigned int current = theme == themes::THEME_NOT_SET ? themes::get_theme_type() : theme;
    unsigned int next = themes::THEME_NORMAL;
    if (current == themes::THEME_NORMAL)
        next = themes::THEME_DARK;
    else if (current == themes::THEME_DARK)
        next = themes::THEME_GREEN;
    set_theme(next);
}

int GMainWindow::get_font_size() const {
    const int size = font().pointSize();
    return size > 0 ? size : QFontInfo(font()).pointSize();
}

void GMainWindow::set_font_size(int size) {
    if (size < FONT_SIZE_MIN)
        pp_warn("GMainWindow::set_font_size, cannot be smaller");
    else if (size > FONT_SIZE_MAX)
        pp_warn("GMainWindow::set_font_size, cannot be BIGGER");
    size = clamp_font_size(size);
    const int old = get_font_size();
    if (size == clamp_font_size(old)) return;
    QFont f = font();
    f.setPointSize(size);
    setFont(f);
    adapt_margins_spacings();
    adapt_icons_to_theme();
    LayoutEvent ev{width(), height(), old, size, LayoutEvent::KIND_FONT};
    do_layout_all(ev);
}

void GMainWindow::gui_scale(GUISCALE step) {
    const bool bigger = step == GUISCALE::BIGGER;
    const int size = next_font_size(get_font_size(), bigger);
    pp("GMainWindow::gui_scale:$, sz:$", bigger ? "BIGGER" : "SMALLER", size);
    set_font_size(size);
}

void GMainWindow::set_icon_size_percent(unsigned int percent) {
    percent = std::clamp(percent, ICON_PERCENT_MIN, ICON_PERCENT_MAX);
    if (percent == percentIconSizeWin) return;
    percentIconSizeWin = percent;
    adapt_icons_to_theme();
    LayoutEvent ev{width(), height(), get_font_size(), get_font_size(), LayoutEvent::KIND_ICON_SIZE};
    do_layout_all(ev);
}

QSize GMainWindow::get_icon_size() const {
    const int edge = icon_edge(QFontMetrics(font()).height(), percentIconSizeWin);
    return {edge, edge};
}

void GMainWindow::do_layout_all(LayoutEvent& ev) {
    for (GWidget* widget : findChildren<GWidget*>()) widget->do_layout(ev);
}

void GMainWindow::adapt_icons_to_theme() {
    adapt_icons(this, get_theme_shown());
    adapt_icon_sizes(this, get_icon_size());
}

void GMainWindow::adapt_log_view() {
    if (panLogView != nullptr) panLogView->adapt();
}

void GMainWindow::adapt_margins_spacings() {
    const int height = QFontMetrics(font()).height();
    for (GPanel* panel : findChildren<GPanel*>()) panel->adapt_margins_spacings(height);
}

void GMainWindow::mouse_move(QMouseEvent* ev) {
    pp_trace("GMainWindow::mouse_move, ev:$", ev);
}

GPanel* GMainWindow::gen_main_panel(GLAYOUT layout) {
    if (auto* old = qobject_cast<GPanel*>(centralWidget());
        old != nullptr && old->objectName() == QLatin1String("main"))
        pp_error("GMainWindow::gen_main_panel, already called!");
    auto* panel = new GPanel(this, layout, QStringLiteral("main"));
    setCentralWidget(panel);
    return panel;
}

GPanel* GMainWindow::get_main_panel() const {
    if (centralWidget() == nullptr) {
        pp_error("GMainWindow::get_main_panel, centralWidget() == nullpr");
        return nullptr;
    }
    return qobject_cast<GPanel*>(centralWidget());
}

QMenuBar* GMainWindow::gen_menu_bar() {
    return menuBar();
}

QStatusBar* GMainWindow::gen_status_bar() {
    return statusBar();
}

QDockWidget* GMainWindow::gen_dock(const QString& title, const QString& name, Qt::DockWidgetAreas areas) {
    auto* dock = new QDockWidget(title, this);
    dock->setObjectName(name);
    dock->setAllowedAreas(areas);
    Qt::DockWidgetArea area = Qt::RightDockWidgetArea;
    for (Qt::DockWidgetArea candidate :
         {Qt::RightDockWidgetArea, Qt::LeftDockWidgetArea, Qt::BottomDockWidgetArea, Qt::TopDockWidgetArea}) {
        if (areas & candidate) {
            area = candidate;
            break;
        }
    }
    addDockWidget(area, dock);
    return dock;
}

QAction* GMainWindow::gen_action(const QKeySequence& keys) {
    auto* action = new QAction(this);
    action->setShortcut(keys);
    action->setShortcutContext(Qt::WindowShortcut);
    addAction(action);
    return action;
}

QAction* GMainWindow::gen_action(const QString& keys) {
    const QKeySequence sequence = QKeySequence::fromString(keys, QKeySequence::PortableText);
    if (sequence.isEmpty() || sequence[0].key() == Qt::Key_unknown)
        pp_error("GMainWindow::create_action, '$' parsing problems", keys);
    QAction* action = gen_action(sequence);
    action->setObjectName(keys);
    return action;
}

void GMainWindow::setup_base_hotkeys() {
    // Standard keys differ by platform and may repeat an explicit one below; a sequence bound
    // twice would be ambiguous and fire neither action.
    QSet<QString> bound;
    auto bind = [this, &bound](const QList<QKeySequence>& sequences, auto handler) {
        QList<QKeySequence> fresh;
        for (const QKeySequence& seq : sequences) {
            const QString text = seq.toString(QKeySequence::PortableText);
            if (seq.isEmpty() || bound.contains(text)) continue;
            bound.insert(text);
            fresh.append(seq);
        }
        if (fresh.isEmpty()) return;
        QAction* action = gen_action(fresh.first());
        action->setShortcuts(fresh);
        connect(action, &QAction::triggered, this, handler);
    };
    auto keys = [](const char* text) {
        return QList<QKeySequence>{QKeySequence::fromString(QString::fromLatin1(text))};
    };

    bind(keys("F11"), [this]() { on_toggle_fullscreen(); });
    bind(keys(os::is_wasm() ? "Alt+L" : "Ctrl+L"), [this]() { on_logger(); });
    bind(keys("Ctrl+Alt+Q"), [this]() { on_reset_config_and_quit(); });
    bind(keys("ctrl+shift+d"), []() { GSettings::dump(); });
    bind(keys(os::is_wasm() ? "Alt+T" : "Ctrl+Shift+T"), [this]() { on_rotate_themes(); });
    bind(QKeySequence::keyBindings(QKeySequence::HelpContents), [this]() { on_help(); });
    bind(QKeySequence::keyBindings(QKeySequence::Close), [this]() { on_close(); });
    bind(QKeySequence::keyBindings(QKeySequence::New), [this]() { on_new_window(); });
    bind(QKeySequence::keyBindings(QKeySequence::Open), [this]() { on_open(); });
    bind(QKeySequence::keyBindings(QKeySequence::FullScreen), [this]() { on_toggle_fullscreen(); });
    bind(QKeySequence::keyBindings(QKeySequence::SelectAll), [this]() { on_select_all(); });
    bind(QKeySequence::keyBindings(QKeySequence::ZoomIn), [this]() { gui_scale(GUISCALE::BIGGER); });
    bind(QKeySequence::keyBindings(QKeySequence::ZoomOut), [this]() { gui_scale(GUISCALE::SMALLER); });
}

void GMainWindow::on_new_window() {
    pp("GMainWindow::on_new_window - overwrite me");
}
void GMainWindow::on_toggle_fullscreen() {
    toggle_full_screen(this, false);
}
void GMainWindow::on_close() {
    QWidget::close();
}
void GMainWindow::on_open() {
    pp_trace("GMainWindow::on_open");
}
void GMainWindow::on_select_all() {
    pp_trace("GMainWindow::on_select_all");
}

void GMainWindow::on_help() {
    GMessageBox::show_info(this, QStringLiteral("About KIR"),
                           str::qprintF("KIR/TOLA - v $", get_kir_TOLA_version()));
}

void GMainWindow::on_reset_config_and_quit() {
    pp_trace("GMainWindow::on_reset_config_and_quit");
    GApp::reset_settings_and_quit();
}

void GMainWindow::on_logger() {
    if (panLog == nullptr) {
        pp("GMainWindow::on_logger, panLogger == nullptr");
        return;
    }
    pp("GMainWindow::on_logger, toggle panLog");
    panLog->setHidden(!panLog->isHidden());
}

bool GMainWindow::is_logger_visible() const {
    return panLog != nullptr && !panLog->isHidden();
}

GPanel* GMainWindow::gen_log_panel(Generator* parent) {
    if (panLog != nullptr) {
        pp_error("GMainWindow::gen_log_panel, already called");
        return nullptr;
    }
    auto* panel = dynamic_cast<GPanel*>(parent);
    if (panel == nullptr) {
        pp_error("GMainWindow::gen_log_panel, parent must be GPanel | GPanelLogView");
        return nullptr;
    }
    GSplitter* splitter = panel->gen_splitter(Qt::Vertical, QStringLiteral("splitter"), 1);
    GPanel* content = splitter->gen_panel(GLAYOUT::VERT, QStringLiteral("content"), 1);
    panLog = splitter->gen_panel(GLAYOUT::VERT, QStringLiteral("panLog"), 0);
    const log::LogConfig config =
        nWin.attributes.contains(QStringLiteral("log"))
            ? nWin.attributes.get_pod<log::LogConfig>(QStringLiteral("log"), GPanelLogView::default_config())
            : GPanelLogView::default_config();
    panLogView = new GPanelLogView(panLog, config);
    panLog->add_widget(panLogView, 1);
    panLog->setHidden(true);
    splitter->setSizes({700, 250});
    return content;
}

void GMainWindow::gen_log_control(GPanel* parent, bool with_icons, const QString& options_icon,
                                  const QString& options_label, bool vertical) {
    auto* bar = new GPanel(parent, vertical ? GLAYOUT::VERT : GLAYOUT::HORZ, QStringLiteral("panOptionLog"));
    if (parent == panLog)
        parent->get_layout()->insertWidget(0, bar);
    else
        parent->add_widget(bar);
    panOptionLog = bar;
    GButton* clear =
        bar->gen_button(with_icons ? QStringLiteral("^icons/delete.svg") : QString(),
                        QStringLiteral("Clears Log Panel"), with_icons ? QString() : QStringLiteral("clear"));
    GButton* copy =
        bar->gen_button(with_icons ? QStringLiteral("^icons/copy.svg") : QString(),
                        QStringLiteral("copy to clipboard"), with_icons ? QString() : QStringLiteral("copy"));
    GButton* line = bar->gen_button(with_icons ? QStringLiteral("^icons/minus1.svg") : QString(),
                                    QStringLiteral("Creates a Debug Line"),
                                    with_icons ? QString() : QStringLiteral("line"));
    GButton* options =
        bar->gen_button(with_icons ? options_icon : QString(), QStringLiteral("Options (Logging,Themes,...)"),
                        with_icons ? QString() : options_label);
    if (with_icons && !options_label.isEmpty()) options->setToolTip(options_label);
    bar->add_stretch();
    clear->liClick += [this]() { panLogView->clear_log(); };
    copy->liClick += [this]() { panLogView->copy_to_clipboard(); };
    line->liClick += [this]() { panLogView->add_debug_line(); };
    options->liClick += [this]() { on_menu_options(OPTIONS_ALL); };
}

void GMainWindow::log_panel_control(GPanel* parent, const QString& options_text) {
    if (panLog == nullptr) {
        pp_error("\npanLog == nullptr\nNeed to call gen_log_panel of GMainWindow first !\n");
        return;
    }
    if (panOptionLog != nullptr) {
        pp_error("GMainWindow::log_panel_control called TWICE");
        return;
    }
    gen_log_control(parent != nullptr ? parent : panLog, false, {},
                    options_text.isEmpty() ? QStringLiteral("options") : options_text, false);
}

void GMainWindow::log_panel_control_icons(GPanel* parent, const QString& options_icon,
                                          const QString& options_tip, int vertical) {
    if (panLog == nullptr) {
        pp_error("GMainWindow::log_panel_control_icons, panLog == nullptr, call gen_log_panel(...) first !");
        return;
    }
    if (panOptionLog != nullptr) {
        pp_error("GMainWindow::log_panel_control called TWICE");
        return;
    }
    gen_log_control(parent != nullptr ? parent : panLog, true,
                    options_icon.isEmpty() ? QStringLiteral("^icons/wheel.svg") : options_icon, options_tip,
                    vertical != 0);
}

void GMainWindow::on_log_options() {
    gen_menu_options(OPTIONS_LOG)->popup(QCursor::pos());
}

void GMainWindow::on_menu_options(int flags) {
    gen_menu_options(flags)->popup(QCursor::pos());
}

GMenu* GMainWindow::gen_menu_options(int flags) {
    pp("GMainWindow::on_menu_options, w:$, flagGui:$, cfg: ($)", get_object_name(),
       (flags & OPTIONS_GUI) != 0,
       panLogView != nullptr ? panLogView->get_config().to_string() : std::string("no log panel"));
    auto* menu = new GMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    on_menu_options_top(menu);
    if (flags & OPTIONS_GUI) add_gui_options(menu);
    if ((flags & OPTIONS_LOG) && panLog != nullptr) {
        if (flags & OPTIONS_GUI) menu->gen_separator();
        add_log_options(menu);
    }
    on_menu_options_bottom(menu);
    return menu;
}

void GMainWindow::add_gui_options(GMenu* menu) {
    using lang::tt;
    GMenu* themes_menu = menu->gen_sub_menu(tt("Theme", "Design", "Тема"), GMenu::MENU_EXCLUSIVE);
    const std::pair<unsigned int, QString> theme_items[] = {
        {themes::THEME_NORMAL, tt("Normal", "Normal", "Обычная")},
        {themes::THEME_DARK, tt("Dark", "Dunkel", "Тёмная")},
        {themes::THEME_GREEN, tt("Green", "Green", "Зелёная")},
        {themes::THEME_AUTO, tt("Auto", "Automatisch", "Как в системе")},
    };
    for (const auto& [number, label] : theme_items) {
        themes_menu->gen_action(label, true, theme == number,
                                [this, number = number]() { set_theme(number); });
    }

    GMenu* lang_menu = menu->gen_sub_menu(tt("Language", "Sprache", "Язык"), GMenu::MENU_EXCLUSIVE);
    const std::pair<QLocale::Language, QString> lang_items[] = {
        {QLocale::English, tt("English", "Englisch", "Английский")},
        {QLocale::German, tt("German", "Deutsch", "Немецкий")},
        {QLocale::Russian, tt("Russian", "Russisch", "Русский")},
    };
    for (const auto& [language, label] : lang_items) {
        lang_menu->gen_action(label, true, lang::get_lang() == language, [language = language]() {
            lang::set_lang(language);
            GApp::nApp.set(QStringLiteral("lang"), int(language));
            GApp::sync_app_settings(false);
        });
    }

    GMenu* font_menu =
        menu->gen_sub_menu(tt("Font Size", "Schriftgröße", "Размер шрифта"), GMenu::MENU_EXCLUSIVE);
    for (int size = FONT_SIZE_MIN; size <= FONT_SIZE_MAX; ++size) {
        font_menu->gen_action(QString::number(size), true, get_font_size() == size, [this, size]() {
            set_font_size(size);
            GApp::sync_app_settings(true);
        });
    }

    GMenu* icon_menu =
        menu->gen_sub_menu(tt("Icon Size", "Symbolgröße", "Размер значков"), GMenu::MENU_EXCLUSIVE);
    for (unsigned int percent : {100u, 120u, 140u, 160u, 180u, 200u, 220u, 250u, 300u}) {
        icon_menu->gen_action(str::qprintF("$%", percent), true, percentIconSizeWin == percent,
                              [this, percent]() {
                                  set_icon_size_percent(percent);
                                  GApp::sync_app_settings(true);
                              });
    }
}

void GMainWindow::add_log_options(GMenu* menu) {
    using lang::tt;
    menu->gen_action(tt("Logging", "Protokollierung", "Журнал"), true, is_logger_visible(),
                     [this](const bool&) { on_logger(); });
    GMenu* levels = menu->gen_sub_menu(tt("Log Options", "Protokollierungsoptionen", "Настройки журнала"),
                                       GMenu::MENU_EXCLUSIVE);
    const unsigned int current = panLogView->get_config().logLevel;
    for (unsigned int level = log::LOG_ERROR; level <= log::LOG_TRACE; ++level) {
        levels->gen_action(log::logLevel_to_qstring(level), true, current == level, [this, level]() {
            log::LogConfig config = panLogView->get_config();
            config.logLevel = level;
            panLogView->set_config(config);
            sync_win_settings(true);
        });
    }
}

void GMainWindow::on_global_wheel_event(QWheelEvent* ev) {
    const int delta = ev->angleDelta().y();
    if (delta == 0) return;
    gui_scale(delta > 0 ? GUISCALE::BIGGER : GUISCALE::SMALLER);
}

void GMainWindow::on_gesture_event(QGestureEvent* ev) {
    pp_trace("GMainWindow::on_gesture_event");
    if (auto* pinch = static_cast<QPinchGesture*>(ev->gesture(Qt::PinchGesture)))
        pp("GMainWindow::on_gesture_event, scaleFactor:$", pinch->scaleFactor());
}

void GMainWindow::set_window_icon(const QString& path, const QSize& size) {
    const QString resolved = get_res_path(path);
    if (!QFile::exists(resolved)) {
        pp_error("GMainWindow::set_icon, icon not valid, '$'", path);
        return;
    }
    const bool stored = resolved.startsWith(QLatin1String(":/")) && resolved.endsWith(QLatin1String(".svg"));
    QIcon icon = stored ? icon_cache::make(resolved) : QIcon(resolved);
    if (icon.isNull()) {
        pp_error("GMainWindow::set_icon, icon.isNull(), path '$'", path);
        return;
    }
    if (size.isValid()) icon = QIcon(icon.pixmap(size));
    setWindowIcon(icon);
}

void GMainWindow::set_delete_on_close(bool on) {
    setAttribute(Qt::WA_DeleteOnClose, on);
}

void GMainWindow::unset_palette() {
    setPalette(QPalette());
}

QList<QWidget*> GMainWindow::get_children(bool recursive) const {
    return findChildren<QWidget*>(QString(),
                                  recursive ? Qt::FindChildrenRecursively : Qt::FindDirectChildrenOnly);
}

GMainWindow* GMainWindow::from_widget(QWidget* widget) {
    return widget != nullptr ? qobject_cast<GMainWindow*>(widget->window()) : nullptr;
}

GMainWindow* GMainWindow::window_from_widget(const QWidget* widget) {
    if (widget == nullptr) {
        pp_error("widget == NULL");
        return nullptr;
    }
    for (const QWidget* w = widget; w != nullptr; w = w->parentWidget()) {
        if (auto* win = qobject_cast<const GMainWindow*>(w)) return const_cast<GMainWindow*>(win);
    }
    return nullptr;
}

void GMainWindow::resize_trick() {
    pp_trace("GMainWindow::resize_trick, 1");
    post([this]() {
        if (QWidget* central = centralWidget()) central->updateGeometry();
        if (layout() != nullptr) layout()->activate();
        update();
    });
}

bool GMainWindow::event(QEvent* ev) {
    dispatch_event(ev);
    if (ev->type() == QEvent::Gesture)
        on_gesture_event(static_cast<QGestureEvent*>(ev));
    else if (ev->type() == QEvent::MouseMove)
        mouse_move(static_cast<QMouseEvent*>(ev));
    return QMainWindow::event(ev);
}

bool GMainWindow::eventFilter(QObject* watched, QEvent* ev) {
    if (ev->type() == QEvent::Wheel && watched != nullptr && watched->isWidgetType()) {
        auto* wheel = static_cast<QWheelEvent*>(ev);
        if ((wheel->modifiers() & Qt::ControlModifier) &&
            window_from_widget(static_cast<QWidget*>(watched)) == this) {
            on_global_wheel_event(wheel);
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, ev);
}

void GMainWindow::moveEvent(QMoveEvent* ev) {
    QMainWindow::moveEvent(ev);
    if (liMove.has_listener()) liMove.fire_event(ev);
}

void GMainWindow::resizeEvent(QResizeEvent* ev) {
    QMainWindow::resizeEvent(ev);
    pp_trace("GMainWindow::resizeEvent, @$, size:$", get_object_name(), size());
    if (liResize.has_listener()) liResize.fire_event(size());
}

void GMainWindow::closeEvent(QCloseEvent* ev) {
    pp_trace("GMainWindow::closeEvent");
    ev->accept();
    cleanup();
    save_state();
    sync_win_settings(false);
    if (liClosed.has_listener()) liClosed.fire_event();
}

void GMainWindow::dragEnterEvent(QDragEnterEvent* ev) {
    if (ev->mimeData() != nullptr && ev->mimeData()->hasUrls()) {
        pp_trace("GMainWindow::dragEnterEvent, URLs");
        ev->acceptProposedAction();
    }
}

void GMainWindow::dropEvent(QDropEvent* ev) {
    if (ev->mimeData() == nullptr || !ev->mimeData()->hasUrls()) return;
    const QList<QUrl> urls = ev->mimeData()->urls();
    pp("GMainWindow::dropEvent, urls:$", urls.size());
    if (urls.isEmpty()) return;
    const QString first = urls.first().toLocalFile();
    if (liDropFile.has_listener()) liDropFile.fire_event(first);
    if (liDropUrls.has_listener()) liDropUrls.fire_event(urls);
    ev->acceptProposedAction();
}

void GMainWindow::showEvent(QShowEvent* ev) {
    QMainWindow::showEvent(ev);
    if (shownOnce) return;
    shownOnce = true;
    adapt_icons_to_theme();
}

void GMainWindow::changeEvent(QEvent* ev) {
    switch (ev->type()) {
        case QEvent::PaletteChange:
            post([this]() {
                adapt_icons_to_theme();
                adapt_log_view();
            });
            break;
        case QEvent::WindowStateChange: {
            const Qt::WindowStates state = windowState();
            if (state & Qt::WindowMinimized) {
                if (liMinimized.has_listener()) liMinimized.fire_event();
            } else if (state & Qt::WindowFullScreen) {
                if (liFullScreen.has_listener()) liFullScreen.fire_event();
            } else if (state & Qt::WindowMaximized) {
                if (liMaximized.has_listener()) liMaximized.fire_event();
            } else if (liNormal.has_listener()) {
                liNormal.fire_event();
            }
            break;
        }
        case QEvent::ActivationChange:
            if (liActivated.has_listener()) liActivated.fire_event(isActiveWindow());
            break;
        default:
            break;
    }
    QMainWindow::changeEvent(ev);
}

}  // namespace ki::qt
