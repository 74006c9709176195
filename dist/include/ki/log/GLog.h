#pragma once
// The process-wide levelled log: a message passes the level filter, gets a running line
// number and goes to every registered appender.

#include <ki/str/xprintF.h>

#include <QString>

#include <string>

namespace ki::log {

/// Lower is more severe; a message is kept when its level is <= the current level.
enum LOG_LEVEL : unsigned int {
    LOG_ERROR = 0,
    LOG_WARN = 1,
    LOG_INFO = 2,
    LOG_DEBUG = 3,
    LOG_TRACE = 4,
    LOG_OFF = 5,
};

/// The single entry through which every message passes.
void log_string(LOG_LEVEL level, const char* text);
void log_string(LOG_LEVEL level, const std::string& text);

}  // namespace ki::log

namespace ki {

#define KI_LOG_LEVEL_FUNCTIONS(NAME, LEVEL)                                                  \
    inline void NAME(const char* text) { log::log_string(LEVEL, text); }                     \
    inline void NAME(const std::string& text) { log::log_string(LEVEL, text); }              \
    inline void NAME(const QString& text) { log::log_string(LEVEL, text.toStdString()); }    \
    inline void NAME(unsigned int indent, const char* text) {                                \
        log::log_string(LEVEL, str::xprintF(indent, "$", text));                             \
    }                                                                                        \
    template <typename... Args>                                                              \
    void NAME(const char* format, const Args&... args) {                                     \
        log::log_string(LEVEL, str::xprintF(0, format, args...));                            \
    }

KI_LOG_LEVEL_FUNCTIONS(pp, log::LOG_DEBUG)
KI_LOG_LEVEL_FUNCTIONS(pp_info, log::LOG_INFO)
KI_LOG_LEVEL_FUNCTIONS(pp_warn, log::LOG_WARN)
KI_LOG_LEVEL_FUNCTIONS(pp_error, log::LOG_ERROR)
KI_LOG_LEVEL_FUNCTIONS(pp_trace, log::LOG_TRACE)

#undef KI_LOG_LEVEL_FUNCTIONS

/// An empty debug line.
inline void pp() { log::log_string(log::LOG_DEBUG, ""); }

}  // namespace ki
