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

}  // namespace morvel
