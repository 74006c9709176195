#pragma once
// The window's part of the options menu: the aids of the current mode, audio, list and
// translation items. Every item shows the current value of one field of the options record and
// hands a changed record back; the window applies and saves it.

#include <QString>
#include <functional>

#include "app/lesson/LessonOptions.h"

namespace ki::qt {
class GMenu;
}

namespace morvel::prog2 {

struct OptionsMenuHost {
    /// The options as they are now (read when an item is triggered, not when it was built).
    std::function<LessonOptions()> options;
    /// Takes a changed record: apply it and save it at once.
    std::function<void(const LessonOptions&)> apply;
    /// Starts tracing the current character again.
    std::function<void()> again;
    /// Shows another level.
    std::function<void(int)> level;
    /// Asks for and writes a worksheet.
    std::function<void()> worksheet;
    /// Opens the progress panel.
    std::function<void()> progress;
};

/// Tolerance radii and drawing speeds the menu offers.
inline constexpr int R_CIRCLE_MENU_MIN = 40;
inline constexpr int R_CIRCLE_MENU_MAX = 200;
inline constexpr int R_CIRCLE_MENU_STEP = 20;

/// Appends the items of the menu's top part, in their fixed order.
void fill_options_menu_top(ki::qt::GMenu* menu, const OptionsMenuHost& host);

/// The About box: version, a greeting, the practice hotkeys and where the program lives online.
QString about_text();

}  // namespace morvel::prog2
