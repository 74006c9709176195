#pragma once
// The process-wide theme: numbers, names, palettes, applying a theme to the whole application,
// and the monospace font.

#include <QFont>
#include <QPalette>
#include <QString>

namespace ki::qt::themes {

constexpr unsigned int THEME_NORMAL = 0;
constexpr unsigned int THEME_DARK = 1;
constexpr unsigned int THEME_GREEN = 2;
/// Dark while the operating system is in dark mode, else normal.
constexpr unsigned int THEME_AUTO = 3;
constexpr unsigned int THEME_NOT_SET = 4;

/// A number above `get_max_theme()` is refused (logged) and the current theme stays.
void set(unsigned int th);
unsigned int get();
unsigned int get_theme();
unsigned int get_theme_type();
bool is_theme(unsigned int th);
bool is_theme_normal();
bool is_theme_dark();
bool is_theme_green();
/// The start value, set by the entry before any window exists.
void set_theme_default(unsigned int th);

void set_max_theme(unsigned int max_theme);
unsigned int get_max_theme();

/// THEME_DARK while the operating system is in dark mode, else THEME_NORMAL.
unsigned int map_theme_auto();
/// Normal, dark or green; auto by the operating system's mode at the moment of the call; any
/// other number gives the normal palette.
QPalette get_palette(unsigned int theme);
QPalette get_palette_normal();
QPalette get_palette_dark();
QPalette get_palette_green();
QPalette get_palette_dark_OLD();
/// Whether a palette shows light text on a dark window.
bool is_dark_palette(const QPalette& palette);

/// Sets the application palette of `th` and lets every widget take it up (icons named
/// through "sIcon" are reloaded in the theme's variant).
void apply_the_theme(unsigned int th);
void apply_theme(const QString& name);
/// Applies the current theme again, e.g. after the operating system switched dark mode.
void refresh_theme();
/// True while `apply_the_theme` changes the application palette, so that palette-change
/// handlers can tell our own changes from the system's.
bool is_applying_theme();

/// "normal" 0, "dark" 1, "green" 2, "auto" 3; anything else THEME_NOT_SET (logged).
unsigned int string_to_theme(const QString& name);
/// "normal", "dark", "green", "auto", "theme-not-set"; "theme-unknown:<n>" beyond.
QString theme_to_string(unsigned int th);

/// The theme variant of a resource path: "^icons/wheel.svg" with "dark" gives
/// ":/wb/shared-res/icons/dark/wheel.svg" (the theme folder goes in front of the file name).
/// "normal", "theme-not-set" and empty themes leave the path as it is; "auto" stands for
/// "dark" or "normal" by the operating system's mode.
QString make_theme_path(const QString& path, const QString& theme);

void set_mono_font_path(const QString& path);
/// Loaded once from the mono font path; "Monospace" when the file cannot be read.
QFont get_mono_font();

}  // namespace ki::qt::themes
