#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/qt/guitools/GGui.h>
#include <ki/qt/themes.h>

#include <QAbstractButton>
#include <QApplication>
#include <QFontDatabase>
#include <QScopedValueRollback>
#include <QStyle>
#include <QWidget>
#include <cstdio>
#include <optional>

namespace ki::qt::themes {

namespace {

unsigned int theTheme = THEME_NORMAL;
unsigned int maxTheme = THEME_AUTO;
QString sMonoFontPath = QStringLiteral("^fonts/SourceCodePro-Regular.ttf");
bool applying = false;

// Roles the tables leave open come from the style's standard palette, not from the current
// application palette, so a palette never inherits colours from the theme applied before it.
QPalette base_palette() {
    if (QApplication::style() != nullptr) return QApplication::style()->standardPalette();
    return QPalette(QColor(239, 239, 239));
}

void set_all(QPalette& pal, QPalette::ColorRole role, const QColor& color) {
    pal.setColor(QPalette::All, role, color);
}

void set_active_inactive(QPalette& pal, QPalette::ColorRole role, const QColor& color) {
    pal.setColor(QPalette::Active, role, color);
    pal.setColor(QPalette::Inactive, role, color);
}

QPalette build_normal() {
    QPalette pal = base_palette();
    set_all(pal, QPalette::Window, QColor(239, 239, 239));
    set_all(pal, QPalette::WindowText, Qt::black);
    set_all(pal, QPalette::Base, Qt::white);
    set_all(pal, QPalette::AlternateBase, QColor(247, 247, 247));
    set_all(pal, QPalette::ToolTipBase, Qt::white);
    set_all(pal, QPalette::ToolTipText, Qt::black);
    set_all(pal, QPalette::Text, Qt::black);
    set_all(pal, QPalette::Button, QColor(239, 239, 239));
    set_all(pal, QPalette::ButtonText, Qt::black);
    set_all(pal, QPalette::Highlight, QColor(76, 163, 224));
    set_all(pal, QPalette::HighlightedText, Qt::white);
    for (auto role : {QPalette::Text, QPalette::ButtonText, QPalette::WindowText})
        pal.setColor(QPalette::Disabled, role, QColor(120, 120, 120));
    for (auto role : {QPalette::Base, QPalette::Button})
        pal.setColor(QPalette::Disabled, role, QColor(240, 240, 240));
    set_active_inactive(pal, QPalette::Light, Qt::white);
    set_active_inactive(pal, QPalette::Midlight, QColor(245, 245, 245));
    set_active_inactive(pal, QPalette::Mid, QColor(200, 200, 200));
    set_active_inactive(pal, QPalette::Dark, QColor(160, 160, 160));
    set_active_inactive(pal, QPalette::Shadow, QColor(105, 105, 105));
    return pal;
}

QPalette build_dark() {
    QPalette pal = base_palette();
    set_active_inactive(pal, QPalette::Window, QColor(53, 53, 53));
    set_active_inactive(pal, QPalette::WindowText, Qt::white);
    set_active_inactive(pal, QPalette::Base, QColor(35, 35, 35));
    set_active_inactive(pal, QPalette::AlternateBase, QColor(53, 53, 53));
    set_active_inactive(pal, QPalette::Text, Qt::white);
    set_active_inactive(pal, QPalette::Button, QColor(53, 53, 53));
    set_active_inactive(pal, QPalette::ButtonText, Qt::white);
    set_active_inactive(pal, QPalette::Highlight, QColor(42, 130, 218));
    set_active_inactive(pal, QPalette::HighlightedText, Qt::black);
    set_active_inactive(pal, QPalette::PlaceholderText, QColor(200, 200, 200));
    set_active_inactive(pal, QPalette::ToolTipBase, QColor(53, 53, 53));
    set_active_inactive(pal, QPalette::ToolTipText, Qt::white);
    set_active_inactive(pal, QPalette::Light, QColor(110, 110, 110));
    set_active_inactive(pal, QPalette::Midlight, QColor(90, 90, 90));
    set_active_inactive(pal, QPalette::Mid, QColor(75, 75, 75));
    set_active_inactive(pal, QPalette::Dark, QColor(45, 45, 45));
    set_active_inactive(pal, QPalette::Shadow, QColor(20, 20, 20));
    for (auto role :
         {QPalette::Window, QPalette::Base, QPalette::AlternateBase, QPalette::Button, QPalette::ToolTipBase})
        pal.setColor(QPalette::Disabled, role, QColor(45, 45, 45));
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        pal.setColor(QPalette::Disabled, role, QColor(130, 130, 130));
    pal.setColor(QPalette::Disabled, QPalette::Highlight, QColor(80, 80, 80));
    pal.setColor(QPalette::Disabled, QPalette::HighlightedText, QColor(160, 160, 160));
    pal.setColor(QPalette::Disabled, QPalette::PlaceholderText, QColor(120, 120, 120));
    return pal;
}

QPalette build_green() {
    QPalette pal = base_palette();
    set_all(pal, QPalette::Window, QColor(30, 50, 30));
    set_all(pal, QPalette::WindowText, QColor(200, 255, 200));
    set_all(pal, QPalette::Base, QColor(25, 40, 25));
    set_all(pal, QPalette::AlternateBase, QColor(35, 60, 35));
    set_all(pal, QPalette::Text, QColor(220, 255, 220));
    set_all(pal, QPalette::Button, QColor(40, 70, 40));
    set_all(pal, QPalette::ButtonText, QColor(220, 255, 220));
    set_all(pal, QPalette::Highlight, QColor(60, 160, 60));
    set_all(pal, QPalette::HighlightedText, Qt::black);
    set_all(pal, QPalette::PlaceholderText, QColor(200, 200, 200));
    set_all(pal, QPalette::Light, QColor(110, 110, 110));
    set_all(pal, QPalette::Midlight, QColor(90, 90, 90));
    set_all(pal, QPalette::Mid, QColor(75, 75, 75));
    set_all(pal, QPalette::Dark, QColor(45, 45, 45));
    set_all(pal, QPalette::Shadow, QColor(20, 20, 20));
    return pal;
}

QPalette build_dark_old() {
    QPalette pal = base_palette();
    set_all(pal, QPalette::Window, QColor(45, 45, 45));
    set_all(pal, QPalette::WindowText, QColor(212, 212, 212));
    set_all(pal, QPalette::Base, QColor(30, 30, 30));
    set_all(pal, QPalette::AlternateBase, QColor(45, 45, 45));
    set_all(pal, QPalette::Text, QColor(212, 212, 212));
    set_all(pal, QPalette::Button, QColor(45, 45, 45));
    set_all(pal, QPalette::ButtonText, QColor(212, 212, 212));
    set_all(pal, QPalette::Highlight, QColor(38, 79, 120));
    set_all(pal, QPalette::HighlightedText, Qt::white);
    return pal;
}

const QPalette& cached(std::optional<QPalette>& slot, QPalette (*build)()) {
    if (!slot) slot = build();
    return *slot;
}

std::optional<QPalette> palNormal;
std::optional<QPalette> palDark;
std::optional<QPalette> palGreen;
std::optional<QPalette> palDarkOld;
std::optional<QFont> fontMono;

}  // namespace

void set(unsigned int th) {
    if (th > maxTheme) {
        pp_error("kir::qt::theme::set, th > maxTheme, $ > $", th, maxTheme);
        return;
    }
    theTheme = th;
}

unsigned int get() {
    return theTheme;
}
unsigned int get_theme() {
    return theTheme;
}
unsigned int get_theme_type() {
    return theTheme;
}
bool is_theme(unsigned int th) {
    return theTheme == th;
}
bool is_theme_normal() {
    return theTheme == THEME_NORMAL;
}
bool is_theme_dark() {
    return theTheme == THEME_DARK;
}
bool is_theme_green() {
    return theTheme == THEME_GREEN;
}
void set_theme_default(unsigned int th) {
    set(th);
}

void set_max_theme(unsigned int max_theme) {
    maxTheme = max_theme;
}
unsigned int get_max_theme() {
    return maxTheme;
}

unsigned int map_theme_auto() {
    const bool dark = gApp != nullptr ? gApp->is_os_theme_dark_mode() : GApp::ask_OS_theme_dark_mode();
    return dark ? THEME_DARK : THEME_NORMAL;
}

QPalette get_palette(unsigned int theme) {
    switch (theme) {
        case THEME_DARK:
            return get_palette_dark();
        case THEME_GREEN:
            return get_palette_green();
        case THEME_AUTO:
            return map_theme_auto() == THEME_DARK ? get_palette_dark() : get_palette_normal();
        default:
            return get_palette_normal();
    }
}

QPalette get_palette_normal() {
    return cached(palNormal, build_normal);
}
QPalette get_palette_dark() {
    return cached(palDark, build_dark);
}
QPalette get_palette_green() {
    return cached(palGreen, build_green);
}
QPalette get_palette_dark_OLD() {
    return cached(palDarkOld, build_dark_old);
}

bool is_dark_palette(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

void apply_the_theme(unsigned int th) {
    if (th > get_max_theme()) {
        log::log_format(log::LOG_DEBUG, "kirt::qt::theme::apply_the_theme, theTheme > get_max_theme(), $ > $",
                        th, get_max_theme());
        return;
    }
    log::log_format(log::LOG_DEBUG, "kir::qt::theme::apply_the_theme:$, $", theme_to_string(theTheme),
                    theme_to_string(th));
    theTheme = th;
    if (QApplication::instance() == nullptr) return;
    {
        const QScopedValueRollback guard(applying, true);
        QApplication::setPalette(get_palette(th));
    }
    for (QWidget* widget : QApplication::allWidgets()) {
        auto* button = qobject_cast<QAbstractButton*>(widget);
        const QVariant icon = widget->property(PROPERTY_ICON);
        // A button in a window with a theme of its own keeps that theme's icons.
        if (button != nullptr && icon.isValid())
            button->setIcon(get_icon(icon.toString(), get_widget_theme(button)));
        widget->update();
    }
}

void apply_theme(const QString& name) {
    apply_the_theme(string_to_theme(name));
}

void refresh_theme() {
    apply_the_theme(theTheme);
}

bool is_applying_theme() {
    return applying;
}

unsigned int string_to_theme(const QString& name) {
    if (name == QLatin1String("normal")) return THEME_NORMAL;
    if (name == QLatin1String("dark")) return THEME_DARK;
    if (name == QLatin1String("green")) return THEME_GREEN;
    if (name == QLatin1String("auto")) return THEME_AUTO;
    pp_warn("themes::string_to_theme, unknown theme '$'", name);
    return THEME_NOT_SET;
}

QString theme_to_string(unsigned int th) {
    switch (th) {
        case THEME_NORMAL:
            return QStringLiteral("normal");
        case THEME_DARK:
            return QStringLiteral("dark");
        case THEME_GREEN:
            return QStringLiteral("green");
        case THEME_AUTO:
            return QStringLiteral("auto");
        case THEME_NOT_SET:
            return QStringLiteral("theme-not-set");
        default:
            return QStringLiteral("theme-unknown:%1").arg(th);
    }
}

QString make_theme_path(const QString& path, const QString& theme) {
    const QString resolved = get_res_path(path);
    QString folder = theme;
    if (folder == QLatin1String("auto")) folder = theme_to_string(map_theme_auto());
    if (folder.isEmpty() || folder == QLatin1String("normal") || folder == theme_to_string(THEME_NOT_SET))
        return resolved;
    QStringList toks = resolved.split(QLatin1Char('/'));
    // ":", "wb", "shared-res", "icons", "x.svg": a bare file name has no folder to sit beside.
    if (toks.size() < 4) {
        pp_trace("make_theme_path, toks.size() < 4");
        return resolved;
    }
    toks.insert(toks.size() - 1, folder);
    return toks.join(QLatin1Char('/'));
}

void set_mono_font_path(const QString& path) {
    sMonoFontPath = path;
    fontMono.reset();
}

QFont get_mono_font() {
    if (fontMono) return *fontMono;
    const int id = QFontDatabase::addApplicationFont(get_res_path(sMonoFontPath));
    const QStringList families = id < 0 ? QStringList() : QFontDatabase::applicationFontFamilies(id);
    QFont font;
    if (families.isEmpty()) {
        // Written out, not logged: it must show even when the log level hides debug lines.
        std::fputs("PROBLEM READING FONT\n", stdout);
        std::fflush(stdout);
        font = QFont(QStringLiteral("Monospace"));
    } else {
        font = QFont(families.first());
    }
    font.setStyleHint(QFont::TypeWriter);
    fontMono = font;
    return font;
}

}  // namespace ki::qt::themes
