#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/qt/GMainWindow.h>
#include <ki/qt/guitools/GGui.h>
#include <ki/qt/guitools/GIconCache.h>
#include <ki/qt/themes.h>

#include <QAbstractButton>
#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QIcon>
#include <QWidget>
#include <algorithm>

namespace ki::qt {

namespace {
QString resPrefix = QStringLiteral(":/wb/shared-res");

// Icons from the compiled-in resources, by path and theme. Building one parses its SVG, and a
// window sets the same few dozen icons at start-up, on every theme change and on selections;
// resources never change, so each is built once. Only the GUI thread touches icons. Emptied
// with the application object: their pixmaps must not outlive it.
QHash<QString, QIcon>& resource_icons() {
    static QHash<QString, QIcon> icons;
    static const bool cleared = [] {
        qAddPostRoutine([] { icons.clear(); });
        return true;
    }();
    (void)cleared;
    return icons;
}

bool is_resource_path(const QString& path) {
    return path.startsWith(QLatin1String(":/"));
}

// Setting an icon lays the button out again: skipped when the very same icon is shown.
void show_icon(QAbstractButton* button, const QIcon& icon) {
    if (button->icon().cacheKey() != icon.cacheKey() || icon.isNull()) button->setIcon(icon);
}
}  // namespace

void set_res_prefix(const QString& prefix) {
    resPrefix = prefix;
    while (resPrefix.endsWith(QLatin1Char('/'))) resPrefix.chop(1);
}

FontRecord& shared_font_record() {
    static FontRecord record;
    return record;
}

QString get_res_prefix() {
    return resPrefix;
}

QString get_res_path(const QString& name) {
    if (!name.startsWith(QLatin1Char('^'))) return name;
    return resPrefix + QLatin1Char('/') + name.mid(1);
}

QString get_icon_path(const QString& name, unsigned int theme) {
    const QString plain = get_res_path(name);
    const unsigned int shown = theme == themes::THEME_AUTO ? themes::map_theme_auto() : theme;
    if (shown == themes::THEME_NORMAL || shown >= themes::THEME_AUTO) return plain;
    const QString variant = themes::make_theme_path(name, themes::theme_to_string(shown));
    // Not every icon has theme variants; the plain one is better than none.
    return QFile::exists(variant) ? variant : plain;
}

QIcon get_icon(const QString& name, unsigned int theme) {
    const QString plain = get_res_path(name);
    // The theme as shown, so that "auto" follows the desktop's current choice.
    const unsigned int shown = theme == themes::THEME_AUTO ? themes::map_theme_auto() : theme;
    QString key;
    if (is_resource_path(plain)) {
        key = plain + QLatin1Char('|') + QString::number(shown);
        const auto found = resource_icons().constFind(key);
        if (found != resource_icons().cend()) return *found;
    }
    const QString path = get_icon_path(name, shown);
    if (!QFile::exists(path)) {
        pp_error("GGui::get_icon, icon not found, '$' ($)", name, path);
        return {};
    }
    // Compiled-in SVG icons are drawn from stored renderings; a file may change under us.
    QIcon icon = key.isEmpty() || !path.endsWith(QLatin1String(".svg")) ? QIcon(path) : icon_cache::make(path);
    if (!key.isEmpty()) resource_icons().insert(key, icon);
    return icon;
}

unsigned int get_widget_theme(const QWidget* widget) {
    const GMainWindow* win = widget != nullptr ? GMainWindow::window_from_widget(widget) : nullptr;
    if (win != nullptr && win->get_theme() != themes::THEME_NOT_SET) return win->get_theme();
    return themes::get_theme_type();
}

void set_icon(QAbstractButton* button, const QString& name) {
    if (button == nullptr) {
        pp_error("GGui::set_icon, button == NULL, icon '$'", name);
        return;
    }
    button->setProperty(PROPERTY_ICON, name);
    show_icon(button, get_icon(name, get_widget_theme(button)));
}

namespace {
template <typename Fn>
void for_icon_buttons(QWidget* root, Fn fn) {
    if (root == nullptr) return;
    auto visit = [&](QWidget* widget) {
        auto* button = qobject_cast<QAbstractButton*>(widget);
        if (button == nullptr) return;
        const QVariant name = button->property(PROPERTY_ICON);
        if (name.isValid()) fn(button, name.toString());
    };
    visit(root);
    for (QWidget* child : root->findChildren<QWidget*>()) visit(child);
}
}  // namespace

void adapt_icons(QWidget* root, unsigned int theme) {
    for_icon_buttons(root, [theme](QAbstractButton* button, const QString& name) {
        show_icon(button, get_icon(name, theme));
    });
}

void adapt_icon_sizes(QWidget* root, const QSize& size) {
    for_icon_buttons(root, [size](QAbstractButton* button, const QString&) { button->setIconSize(size); });
}

int clamp_font_size(int size) {
    return std::clamp(size, FONT_SIZE_MIN, FONT_SIZE_MAX);
}

int next_font_size(int size, bool bigger) {
    return clamp_font_size(clamp_font_size(size) + (bigger ? 1 : -1));
}

int icon_edge(int font_pixel_height, unsigned int percent) {
    const long long edge = (static_cast<long long>(std::max(font_pixel_height, 1)) * percent + 50) / 100;
    return static_cast<int>(std::clamp<long long>(edge, 8, 512));
}

void sync_app(bool all_windows) {
    GApp::sync_app_settings(all_windows);
}

void toggle_full_screen(QWidget* window, bool maximized_after) {
    if (window == nullptr) {
        pp_error("GGui::toggle_full_screen, window == NULL");
        return;
    }
    if (window->isFullScreen()) {
        if (maximized_after)
            window->showMaximized();
        else
            window->showNormal();
    } else {
        window->showFullScreen();
    }
}

}  // namespace ki::qt
