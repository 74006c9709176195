#include <ki/log/LogConsole.h>

#include <cstdio>

namespace ki::log {

void LogConsole::log_string(unsigned int line_number, LOG_LEVEL level, const char* text) {
    std::string line = trailler(line_number, level, get_trailler_bits());
    line += text ? text : "nullptr";
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stdout);
    // Errors and warnings must not sit in a buffer when the program goes down right after.
    if (level <= LOG_WARN) std::fflush(stdout);
}

}  // namespace ki::log
