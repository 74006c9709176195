#include <ki/log/LogConfig.h>

#include <ki/log/GLog.h>

#include <QtGlobal>

namespace ki::log {

void LogConfig::ini() {
    digits = 6;
    logLevel = LOG_DEBUG;
    logControl = 0x3DE;
    autoScrollHorz = false;
#if defined(Q_OS_ANDROID)
    fontSize = 13;
#else
    fontSize = 10;
#endif
}

void LogConfig::ini_mobile() {
    ini();
    digits = 3;
    fontSize = 13;
}

void LogConfig::show() const {
    pp("LogConfig:");
    pp("   logControl:$", logControl);
    pp("   digits:$", digits);
    pp("   logLevel:$", logLevel);
    pp("   fontSize:$", fontSize);
    pp("   autoScrollHorz:$", autoScrollHorz);
}

std::string LogConfig::to_string() const {
    if (!is_enabled())
        return str::xprintF(0, "LogConfig, DISABLED,  $, logControl:$, digits:$, autoScrollHorz:$", logLevel,
                            logControl, digits, autoScrollHorz);
    return str::xprintF(0, "LogConfig, $, logControl:$, digits:$, autoScrollHorz:$", logLevel, logControl,
                        digits, autoScrollHorz);
}

}  // namespace ki::log
