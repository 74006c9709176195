#include <ki/log/LogConfigTemp.h>

#include <ki/str/xprintF.h>

namespace ki::log {

LogConfigTemp::LogConfigTemp(unsigned int level, bool on) {
    config.ini();
    config.logLevel = level;
    enabled = on && config.is_enabled();
}

std::string LogConfigTemp::to_string() const {
    return str::xprintF(0, "LogConfigTemp, enabled:$, $", enabled, config.to_string());
}

}  // namespace ki::log
