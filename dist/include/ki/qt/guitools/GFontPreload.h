#pragma once
// Fontconfig's start, moved beside the program's own.
//
// The first text a Qt program lays out makes Qt's font database call FcInit(): fontconfig
// parses its XML configuration and maps the caches of every font folder, several milliseconds
// of every start during which nothing else happens. FcInit() touches no Qt state, so a thread
// can run it while the program reads its settings, creates the application and loads its
// data; Qt's own call then finds fontconfig ready.
//
// Call wait() before the first text is measured or painted: fontconfig stays correct if Qt
// gets there first, but it then loads its configuration a second time. Without fontconfig
// (another platform, or built without it) this does nothing.

#include <memory>

class QFont;

namespace ki::qt {

class FontPreload {
public:
    /// Starts fontconfig on a thread of its own.
    FontPreload();
    /// Waits for it, when wait() was not called.
    ~FontPreload();
    FontPreload(const FontPreload&) = delete;
    FontPreload& operator=(const FontPreload&) = delete;

    /// Returns once fontconfig is loaded (at once after the first call).
    void wait();

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

/// While it lives, the application's default font is `font`. Some Qt widgets lay out their
/// (empty) text once in the application's font while they are made, before they take their
/// own: a line edit's text, a selectable label's document. Made inside this scope with the
/// font they will show, they load no font engine for a size no widget shows (a millisecond of
/// the first frame each size). Only QGuiApplication's font is swapped: no widget is told, so
/// only what reads the application font meanwhile sees it; no top-level widget may be made
/// inside the scope, since it would keep the swapped font. Qt counts the swap as a font the
/// program chose: a desktop theme that changes its font while the program runs is no longer
/// followed by the application font (the main window sets its own size anyway).
class AppFontScope {
public:
    explicit AppFontScope(const QFont& font);
    ~AppFontScope();
    AppFontScope(const AppFontScope&) = delete;
    AppFontScope& operator=(const AppFontScope&) = delete;

private:
    std::unique_ptr<QFont> previous;
};

}  // namespace ki::qt
