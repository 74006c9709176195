#pragma once
// The process-wide levelled log: a message passes the level filter, gets a running line
// number and goes to every registered appender. Any thread may log.

#include <ki/GBits.h>
#include <ki/str/xprintF.h>
#include <ki/tools/time.h>

#include <QString>

#include <string>

namespace ki::log {

class LogAppender;
struct LogConfig;

/// Lower is more severe; a message is kept when its level is <= the current level.
enum LOG_LEVEL : unsigned int {
    LOG_ERROR = 0,
    LOG_WARN = 1,
    LOG_INFO = 2,
    LOG_DEBUG = 3,
    LOG_TRACE = 4,
    LOG_OFF = 5,
};

/// What `trailler` writes in front of a message, besides the line number.
enum TRAILLER_BITS : unsigned int {
    TRAILLER_SINCE_START = 0x10,   ///< with TRAILLER_TIME: time since the log started, not wall clock
    TRAILLER_MILLISECONDS = 0x20,  ///< with TRAILLER_TIME: show milliseconds (else whole seconds)
    TRAILLER_LEVEL = 0x80,         ///< "[INF] "
    TRAILLER_TIME = 0x100,         ///< "[00:00:01.250] "
    TRAILLER_THREAD = 0x200,       ///< "[0001] ", the thread's small id
    TRAILLER_CONFIGURED = 0x1003FE,
};

/// "ERR", "WRN", "INF", "DEB", "TRA"; empty for any other value.
std::string logLevel_to_string(unsigned int level);
QString logLevel_to_qstring(unsigned int level);

/// The single entry through which every message passes. Before `configure` the text goes
/// unfiltered to standard error (levels 0 and 1) or standard output, without a prefix.
void log_string(LOG_LEVEL level, const char* text);
void log_string(LOG_LEVEL level, const std::string& text);
/// Whether a message of `level` would be kept; lets callers skip building it.
bool is_level_active(LOG_LEVEL level);

/// Reads "__log_level" from the command line, registers the console appender and starts the
/// log's clock. `gui_app` false also sets the numeric locale to "C".
void configure(int argc, char** argv, bool gui_app);
void configure();
bool is_configured();
bool is_gui_app();

/// Levels 0..4; anything else is refused with a message and the level stays.
void set_log_level(int level);
/// Level 5: nothing is logged, errors included. Only code can switch the log off; the command
/// line cannot. `set_log_level` switches it on again.
void set_log_off();
unsigned int get_log_level();
void set_log_level_default(unsigned int level);
unsigned int get_log_level_default();
/// Width of the zero-filled line number, 1..10; other values are refused.
void set_log_digits(unsigned int digits);
unsigned int get_log_digits();
/// A number (capped at 4) or a level name in any case ("warn", "DEBUG", "no"); else `fallback`.
unsigned int parse_log_level(const QString& text, unsigned int fallback);

/// The log does not own appenders; a null appender ends the process (KI_CHECK_NULL).
void add_log_appender(LogAppender* appender);
void remove_log_appender(LogAppender* appender);
/// The console appender that `configure` registers.
LogAppender* get_console_appender();

/// The prefix of a logged line: "[000042] " and, by `bits`, level tag, time stamp, thread id.
std::string trailler(unsigned int line_number, LOG_LEVEL level, const GBits<unsigned int>& bits);
QString qs_trailler(unsigned int line_number, LOG_LEVEL level, const GBits<unsigned int>& bits);
GBits<unsigned int> get_trailler_bits();
void set_trailler_bits(const GBits<unsigned int>& bits);
bool has_trailler_bits();

/// The log options that `configure` set up.
LogConfig get_log_config();

void start_log_time();
/// Microseconds since `start_log_time` (0 before the log started).
long long get_time_since_start();
/// The time since start in the compact hour form, or the local wall-clock time by the
/// strftime format `time_format`.
std::string get_time_stamp(bool since_start, const std::string& time_format, time::FORM_SECOND form);

long long process_ID();
/// The operating system's id of the calling thread.
unsigned long long get_current_threadID();

/// For tests only: back to the state at program start (not configured, level 3, no appenders,
/// line counter 0). Not for use while other threads log.
void reset_for_tests();

template <typename... Args>
void log_format(LOG_LEVEL level, const char* format, const Args&... args) {
    if (!is_level_active(level)) return;
    log_string(level, str::xprintF(0, format, args...));
}
void log_qstring(LOG_LEVEL level, const QString& text);
void log_indented(LOG_LEVEL level, unsigned int indent, const char* text);

}  // namespace ki::log

namespace ki {

inline void pp(const char* text) {
    log::log_string(log::LOG_DEBUG, text);
}
inline void pp(const std::string& text) {
    log::log_string(log::LOG_DEBUG, text);
}
inline void pp(const QString& text) {
    log::log_qstring(log::LOG_DEBUG, text);
}
inline void pp(unsigned int indent, const char* text) {
    log::log_indented(log::LOG_DEBUG, indent, text);
}
inline void pp() {
    log::log_string(log::LOG_DEBUG, "");
}
template <typename... Args>
void pp(const char* format, const Args&... args) {
    log::log_format(log::LOG_DEBUG, format, args...);
}

inline void pp_info(const char* text) {
    log::log_string(log::LOG_INFO, text);
}
inline void pp_info(const std::string& text) {
    log::log_string(log::LOG_INFO, text);
}
inline void pp_info(const QString& text) {
    log::log_qstring(log::LOG_INFO, text);
}
inline void pp_info(unsigned int indent, const char* text) {
    log::log_indented(log::LOG_INFO, indent, text);
}
inline void pp_info() {
    log::log_string(log::LOG_INFO, "");
}
template <typename... Args>
void pp_info(const char* format, const Args&... args) {
    log::log_format(log::LOG_INFO, format, args...);
}

inline void pp_warn(const char* text) {
    log::log_string(log::LOG_WARN, text);
}
inline void pp_warn(const std::string& text) {
    log::log_string(log::LOG_WARN, text);
}
inline void pp_warn(const QString& text) {
    log::log_qstring(log::LOG_WARN, text);
}
inline void pp_warn(unsigned int indent, const char* text) {
    log::log_indented(log::LOG_WARN, indent, text);
}
inline void pp_warn() {
    log::log_string(log::LOG_WARN, "");
}
template <typename... Args>
void pp_warn(const char* format, const Args&... args) {
    log::log_format(log::LOG_WARN, format, args...);
}

inline void pp_error(const char* text) {
    log::log_string(log::LOG_ERROR, text);
}
inline void pp_error(const std::string& text) {
    log::log_string(log::LOG_ERROR, text);
}
inline void pp_error(const QString& text) {
    log::log_qstring(log::LOG_ERROR, text);
}
inline void pp_error(unsigned int indent, const char* text) {
    log::log_indented(log::LOG_ERROR, indent, text);
}
inline void pp_error() {
    log::log_string(log::LOG_ERROR, "");
}
template <typename... Args>
void pp_error(const char* format, const Args&... args) {
    log::log_format(log::LOG_ERROR, format, args...);
}

inline void pp_trace(const char* text) {
    log::log_string(log::LOG_TRACE, text);
}
inline void pp_trace(const std::string& text) {
    log::log_string(log::LOG_TRACE, text);
}
inline void pp_trace(const QString& text) {
    log::log_qstring(log::LOG_TRACE, text);
}
inline void pp_trace(unsigned int indent, const char* text) {
    log::log_indented(log::LOG_TRACE, indent, text);
}
inline void pp_trace() {
    log::log_string(log::LOG_TRACE, "");
}
template <typename... Args>
void pp_trace(const char* format, const Args&... args) {
    log::log_format(log::LOG_TRACE, format, args...);
}

/// Marks a place in a run: "---- [ n ] ------" at debug level, n counting its own calls from 1.
void pp_line();
/// The same at info level: "=== [ n ] ======".
void pp_info_line();
/// An empty debug line.
void pp_empty();

/// A small id per thread (1, 2, ... in order of first use), stable for the thread's life.
unsigned int get_fast_thread_id();
unsigned int get_thread_id();
/// True on the thread that called `log::configure` (before that: Qt's main thread).
bool is_main_thread();
/// Folds a 64-bit id into four decimal digits (0..9999) by MurmurHash3's finaliser.
unsigned int reduce_id_len(unsigned long long id);

}  // namespace ki
