#pragma once
// Aids for developers and documentation: the window's state to the log, a counter kept in the
// settings, and screenshots of the window in every theme.

#include <QString>

namespace morvel::prog2 {

class Window;

class Diagnostics {
public:
    /// Lesson state and options to the log (Ctrl+Alt+1).
    static void log_state(Window& window);
    /// Counts the stored test value up by one (Ctrl+Alt+2) and saves the settings.
    static void count_test_value(Window& window);
    /// Saves the window in each theme and mode, the options menu and the About box as PNG files
    /// into `folder` (command-line option "--__screenshots <folder>"); false when the folder
    /// cannot be made.
    static bool save_screenshots(Window& window, const QString& folder);
};

}  // namespace morvel::prog2
