#pragma once
// Questions about the platform the program runs on.

#include <QString>

namespace ki::os {

constexpr bool is_wasm() {
#if defined(Q_OS_WASM)
    return true;
#else
    return false;
#endif
}

constexpr bool is_android() {
#if defined(Q_OS_ANDROID)
    return true;
#else
    return false;
#endif
}

constexpr bool is_ios() {
#if defined(Q_OS_IOS)
    return true;
#else
    return false;
#endif
}

/// Phones and tablets: bigger fonts and icons by default.
constexpr bool is_small_device() { return is_android() || is_ios(); }
constexpr bool is_desktop() { return !is_small_device() && !is_wasm(); }

/// Inside a sandbox (Flatpak, Snap, WebAssembly, a phone) the process may be ended without a
/// quit, so settings are saved earlier.
bool is_sandboxed();

/// The program's name: the application name when set, else the executable's base name.
QString get_program_name_qs();

/// A one-line description of the operating system and CPU architecture.
QString get_os_description();

QString get_android_version();

}  // namespace ki::os
