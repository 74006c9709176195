#include <ki/log/LogCapture.h>

namespace ki::log {

LogCapture::LogCapture() {
    add_log_appender(this);
}

LogCapture::~LogCapture() {
    remove_log_appender(this);
}

void LogCapture::log_string(unsigned int line_number, LOG_LEVEL level, const char* text) {
    std::lock_guard lock(mutex);
    captured.push_back({line_number, level, text ? text : "nullptr"});
}

std::vector<LogCapture::Line> LogCapture::lines() const {
    std::lock_guard lock(mutex);
    return captured;
}

std::string LogCapture::text() const {
    std::lock_guard lock(mutex);
    std::string out;
    for (size_t i = 0; i < captured.size(); ++i) {
        if (i > 0) out += '\n';
        out += captured[i].text;
    }
    return out;
}

int LogCapture::count(const std::string& part) const {
    std::lock_guard lock(mutex);
    int n = 0;
    for (const Line& line : captured)
        if (line.text.find(part) != std::string::npos) ++n;
    return n;
}

void LogCapture::clear() {
    std::lock_guard lock(mutex);
    captured.clear();
}

}  // namespace ki::log
