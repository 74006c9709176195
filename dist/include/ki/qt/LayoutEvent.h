#pragma once
// What changed when a window asks its widgets to lay themselves out again.

#include <string>

namespace ki::qt {

struct LayoutEvent {
    enum KIND : int { KIND_NONE = 0, KIND_RESIZE = 1, KIND_FONT = 2, KIND_THEME = 3, KIND_ICON_SIZE = 4 };

    int width = 0;  ///< the window's size in pixels
    int height = 0;
    int font_size_old = 0;
    int font_size_new = 0;
    int kind = KIND_NONE;

    bool is_font_change() const { return kind == KIND_FONT; }
    std::string to_string() const;
    bool operator==(const LayoutEvent&) const = default;
};

}  // namespace ki::qt
