#pragma once
// The appender that writes every logged line, with the log's trailer, to standard output.

#include <ki/log/LogAppender.h>

#include <cstdio>

namespace ki::log {

class LogConsole : public LogAppender {
public:
    /// `sink` stays the caller's; standard output unless given.
    explicit LogConsole(std::FILE* out = stdout) : sink(out) {}

    void log_string(unsigned int line_number, LOG_LEVEL level, const char* text) override;

private:
    std::FILE* sink;
};

}  // namespace ki::log
