#pragma once
// An appender that keeps the logged lines in memory, registered for its own lifetime; made for
// tests that check what was logged. Lines reach appenders only after `configure`.

#include <ki/log/LogAppender.h>

#include <mutex>
#include <string>
#include <vector>

namespace ki::log {

// Final: it registers itself in its constructor, so no derived part may be half-built then.
class LogCapture final : public LogAppender {
public:
    struct Line {
        unsigned int number = 0;
        LOG_LEVEL level = LOG_DEBUG;
        std::string text;
        bool operator==(const Line&) const = default;
    };

    LogCapture();
    ~LogCapture() override;

    void log_string(unsigned int line_number, LOG_LEVEL level, const char* text) override;

    std::vector<Line> lines() const;
    /// The texts only, joined with "\n".
    std::string text() const;
    /// Number of captured lines whose text contains `part`.
    int count(const std::string& part) const;
    bool contains(const std::string& part) const { return count(part) > 0; }
    void clear();

private:
    mutable std::mutex mutex;
    std::vector<Line> captured;
};

}  // namespace ki::log
