#include <ki/log/LogConsole.h>

namespace ki::log {

void LogConsole::log_string(unsigned int line_number, LOG_LEVEL level, const char* text) {
    std::string line = trailler(line_number, level, get_trailler_bits());
    line += text ? text : "nullptr";
    line += '\n';
    // One write per line, flushed at once: a file or pipe is block-buffered, and a line left
    // in the buffer is lost or cut off when the program ends abruptly.
    std::fwrite(line.data(), 1, line.size(), sink);
    std::fflush(sink);
}

}  // namespace ki::log
