#pragma once
// One-time application set-up and small helpers around the level's characters.

#include <QString>

#include <string>

namespace morvel {

/// The family of the registered writing font; empty until ini() registers it, so it also marks
/// that initialisation has run.
extern QString sChinFont1;

/// "0.9.8": shown in the window title and the About box.
std::string get_morvel_version();

/// One-time initialisation, after the application object exists and the resource prefix is set.
/// Only WebAssembly builds register the bundled writing font here; desktop builds use the
/// system's CJK fonts, so on the desktop this may be called any number of times silently.
void ini();

/// Registers a TrueType file and returns its first family, or "" (logged) on failure.
QString reg_ttf_file(const QString& path);

/// The 87 characters of level 1, ten to a line separated by blanks, lines separated by "\n".
QString create_chin_block_simple();
/// The same characters without any separator.
QString create_chin_line_simple();

/// Logs every UTF-16 unit of `text`: the unit, its hex and its decimal value.
void show_unicode(unsigned int indent, const QString& text);

}  // namespace morvel
