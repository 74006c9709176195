#pragma once
// The user-visible log options. Trivially copyable, so that a settings node can carry it as a
// record.

#include <string>
#include <type_traits>

namespace ki::log {

struct LogConfig {
    unsigned int digits = 6;
    unsigned int logLevel = 3;
    /// Trailer bits of the log panel (TRAILLER_BITS).
    unsigned int logControl = 0;
    /// Font size of the log panel.
    unsigned int fontSize = 10;
    bool autoScrollHorz = false;

    /// The desktop defaults (on Android with the larger panel font).
    void ini();
    /// The defaults for small screens: three-digit line numbers, larger font.
    void ini_mobile();
    /// False when the level switches logging off.
    bool is_enabled() const { return logLevel < 5; }
    /// Logs the fields, one per line, under "LogConfig:".
    void show() const;
    std::string to_string() const;
    /// Hooks for a store of its own; the settings node that carries the record persists it.
    void write_to_settings() const {}
    void read_from_settings() {}

    bool operator==(const LogConfig&) const = default;
};

static_assert(std::is_trivially_copyable_v<LogConfig>);

// Registered as a store record type by ki::store::register_builtin_types().

}  // namespace ki::log
