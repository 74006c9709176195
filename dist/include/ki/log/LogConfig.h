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
    /// Spelled out and zero: the record is stored byte by byte, and equal configurations must
    /// give equal bytes (and MD5s), which compiler padding would not.
    unsigned char reserved[3] = {};

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

    /// The options only; `reserved` is no option.
    bool operator==(const LogConfig& other) const {
        return digits == other.digits && logLevel == other.logLevel && logControl == other.logControl &&
               fontSize == other.fontSize && autoScrollHorz == other.autoScrollHorz;
    }
};

static_assert(std::is_trivially_copyable_v<LogConfig>);
static_assert(sizeof(LogConfig) == 4 * sizeof(unsigned int) + 4, "LogConfig must have no padding");

// Registered as a store record type at static initialisation (ki::store::register_builtin_types).

}  // namespace ki::log
