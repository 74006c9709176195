#pragma once
// The appender that writes every logged line, with the log's trailer, to standard output.

#include <ki/log/LogAppender.h>

namespace ki::log {

class LogConsole : public LogAppender {
public:
    void log_string(unsigned int line_number, LOG_LEVEL level, const char* text) override;
};

}  // namespace ki::log
