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

}  // namespace ki::qt
