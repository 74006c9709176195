#pragma once
// Small helpers of the widget layer: resource names, themed icons, font and icon sizes,
// settings sync and full screen.

#include <QIcon>
#include <QSize>
#include <QString>

class QAbstractButton;
class QWidget;

namespace ki::qt {

/// The resource root that "^name" paths resolve below, for example ":/wb/shared-res".
void set_res_prefix(const QString& prefix);
QString get_res_prefix();
/// "^icons/x.svg" gives "<prefix>/icons/x.svg"; any other path is returned unchanged.
QString get_res_path(const QString& name);

/// The path of the theme's variant of an icon when that file exists, else the plain path.
QString get_icon_path(const QString& name, unsigned int theme);
/// The icon for the theme; an empty icon, with a log line, when the file does not exist.
QIcon get_icon(const QString& name, unsigned int theme);
/// The theme a widget is shown in: its main window's theme, else the application's.
unsigned int get_widget_theme(const QWidget* widget);

/// Name of the widget property in which a button keeps its "^icons/..." icon name, so that
/// the icon can be reloaded for another theme.
inline constexpr const char* PROPERTY_ICON = "sIcon";
/// Sets the button's icon by name and keeps the name in PROPERTY_ICON.
void set_icon(QAbstractButton* button, const QString& name);
/// Reloads the icon of every button below `root` (root included) that has PROPERTY_ICON.
void adapt_icons(QWidget* root, unsigned int theme);
/// Gives every button below `root` that has PROPERTY_ICON the icon size `size`.
void adapt_icon_sizes(QWidget* root, const QSize& size);

/// The font of the most recently built main window, kept for framework parts that size
/// themselves before or outside a window.
struct FontRecord {
    QString family;
    int pointSize = 0;
};
FontRecord& shared_font_record();

inline constexpr int FONT_SIZE_MIN = 8;
inline constexpr int FONT_SIZE_MAX = 20;
int clamp_font_size(int size);
/// The next font size up or down, kept within FONT_SIZE_MIN..FONT_SIZE_MAX.
int next_font_size(int size, bool bigger);
/// The icon edge in pixels for a font of `font_pixel_height` and an icon size in percent of it.
int icon_edge(int font_pixel_height, unsigned int percent);

/// Saves the application node and, with `all_windows`, every visible main window.
void sync_app(bool all_windows);
/// Full screen on or off; leaving full screen returns to maximised when `maximized_after`.
void toggle_full_screen(QWidget* window, bool maximized_after);

}  // namespace ki::qt
