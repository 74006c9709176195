#include <ki/log/GLog.h>

#include <cstdio>

namespace ki::log {

// Until the levelled log with appenders exists, messages go straight to the console:
// errors and warnings to standard error, the rest to standard output.
void log_string(LOG_LEVEL level, const char* text) {
    std::FILE* out = level <= LOG_WARN ? stderr : stdout;
    std::fputs(text ? text : "nullptr", out);
    std::fputc('\n', out);
}

void log_string(LOG_LEVEL level, const std::string& text) { log_string(level, text.c_str()); }

}  // namespace ki::log
