#pragma once
// A sink of logged lines. The log calls appenders one at a time, with the log mutex held and
// line numbers strictly increasing; an appender must not log from inside `log_string`.

#include <ki/log/GLog.h>

#include <atomic>

namespace ki::log {

class LogAppender {
public:
    LogAppender() = default;
    LogAppender(const LogAppender&) = delete;
    LogAppender& operator=(const LogAppender&) = delete;
    virtual ~LogAppender() = default;

    /// `text` may be null.
    virtual void log_string(unsigned int line_number, LOG_LEVEL level, const char* text) = 0;

    /// A disabled appender stays registered but receives nothing.
    bool is_enabled() const { return enabled.load(std::memory_order_relaxed); }
    void set_enabled(bool on) { enabled.store(on, std::memory_order_relaxed); }

private:
    std::atomic<bool> enabled{true};
};

}  // namespace ki::log
