#pragma once
// Carries a log configuration from one component to another (for instance into the log panel).

#include <ki/log/LogConfig.h>

#include <string>
#include <type_traits>

namespace ki::log {

struct LogConfigTemp {
    LogConfig config;
    bool enabled = true;

    LogConfigTemp() = default;
    explicit LogConfigTemp(const LogConfig& from) : config(from), enabled(from.is_enabled()) {}
    /// The desktop defaults with `level`; a level of 5 or more counts as disabled.
    LogConfigTemp(unsigned int level, bool on);

    std::string to_string() const;
    bool operator==(const LogConfigTemp&) const = default;
};

static_assert(std::is_trivially_copyable_v<LogConfigTemp>);

}  // namespace ki::log
