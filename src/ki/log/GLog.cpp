#include <ki/log/GLog.h>

#include <ki/GError.h>
#include <ki/log/LogConfig.h>
#include <ki/log/LogConsole.h>
#include <ki/tools/GArgv.h>

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <clocale>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <set>

namespace ki::log {

namespace {

constexpr unsigned int MIN_DIGITS = 1;
constexpr unsigned int MAX_DIGITS = 10;
constexpr const char* TIME_FORMAT = "%H:%M:%S";

// The fast path (filtering, trailer pieces) reads only these atomics; constant initialisation
// makes them usable from other units' static initialisers.
constinit std::atomic<bool> configured{false};
constinit std::atomic<bool> gui_app{false};
constinit std::atomic<unsigned int> current_level{LOG_DEBUG};
constinit std::atomic<unsigned int> default_level{LOG_DEBUG};
constinit std::atomic<unsigned int> digits{6};
constinit std::atomic<unsigned int> trailler_bits{0};
constinit std::atomic<long long> start_time{0};
constinit std::atomic<unsigned int> main_thread_id{0};
constinit std::atomic<unsigned int> pp_line_counter{0};
constinit std::atomic<unsigned int> pp_info_line_counter{0};

// An appender that logs would otherwise deadlock on the log mutex.
thread_local bool inside_appenders = false;

// Everything the log mutex guards.
struct Sinks {
    std::mutex mutex;
    unsigned int line_counter = 0;
    std::set<LogAppender*> appenders;
    LogConfig config;
};

Sinks& sinks() {
    static Sinks instance;
    return instance;
}

LogConsole& console() {
    static LogConsole instance;
    return instance;
}

// Not yet configured (or logging from inside an appender): the bare text, nothing else.
void write_raw(LOG_LEVEL level, const char* text) {
    std::string line = text ? text : "nullptr";
    line += '\n';
    std::FILE* out = level <= LOG_WARN ? stderr : stdout;
    std::fwrite(line.data(), 1, line.size(), out);
}

void refuse_level(long long level) {
    const std::string msg = str::xprintF(0, "set_log_level out of range 0-4, level:$ ?\n", level);
    std::fwrite(msg.data(), 1, msg.size(), stdout);
}

}  // namespace

std::string logLevel_to_string(unsigned int level) {
    switch (level) {
        case LOG_ERROR:
            return "ERR";
        case LOG_WARN:
            return "WRN";
        case LOG_INFO:
            return "INF";
        case LOG_DEBUG:
            return "DEB";
        case LOG_TRACE:
            return "TRA";
        default:
            return {};
    }
}

QString logLevel_to_qstring(unsigned int level) {
    return QString::fromStdString(logLevel_to_string(level));
}

bool is_level_active(LOG_LEVEL level) {
    if (!configured.load(std::memory_order_acquire)) return true;
    const unsigned int current = current_level.load(std::memory_order_relaxed);
    return current < LOG_OFF && level <= current;
}

void log_string(LOG_LEVEL level, const char* text) {
    if (!configured.load(std::memory_order_acquire)) {
        write_raw(level, text);
        return;
    }
    if (!is_level_active(level)) return;
    if (inside_appenders) {
        write_raw(level, text);
        return;
    }
    Sinks& s = sinks();
    std::lock_guard lock(s.mutex);
    const unsigned int number = ++s.line_counter;
    struct InsideGuard {
        InsideGuard() { inside_appenders = true; }
        ~InsideGuard() { inside_appenders = false; }
    } guard;
    for (LogAppender* appender : s.appenders)
        if (appender->is_enabled()) appender->log_string(number, level, text);
}

void log_string(LOG_LEVEL level, const std::string& text) {
    log_string(level, text.c_str());
}

void log_qstring(LOG_LEVEL level, const QString& text) {
    if (!is_level_active(level)) return;
    log_string(level, text.toStdString());
}

void log_indented(LOG_LEVEL level, unsigned int indent, const char* text) {
    if (!is_level_active(level)) return;
    log_string(level, std::string(indent, ' ') + (text ? text : "nullptr"));
}

void configure(int argc, char** argv, bool gui) {
    gui_app.store(gui);
    if (!gui) std::setlocale(LC_NUMERIC, "C");

    GArgv args;
    args.set_arguments(argc, argv);
    const bool parsed = args.parse();

    start_log_time();
    main_thread_id.store(get_fast_thread_id());

    trailler_bits.store(TRAILLER_CONFIGURED);
    add_log_appender(&console());

    LogConfig config;
    config.ini();
    {
        Sinks& s = sinks();
        std::lock_guard lock(s.mutex);
        s.config = config;
    }

    if (parsed) {
        if (args.has_key(QStringLiteral("__log_level"))) {
            const unsigned int level =
                parse_log_level(args.value_string(QStringLiteral("__log_level")), LOG_INFO);
            if (level >= LOG_OFF)
                refuse_level(level);
            else
                current_level.store(level);
        }
    } else {
        std::fputs("log::configure, GArgv parser error\n", stdout);
    }

#if defined(Q_OS_ANDROID) || defined(Q_OS_IOS)
    set_log_digits(3);
#endif

    configured.store(true, std::memory_order_release);
}

void configure() {
    configure(0, nullptr, false);
}

bool is_configured() {
    return configured.load();
}

bool is_gui_app() {
    return gui_app.load();
}

void set_log_level(int level) {
    if (level < 0 || level >= static_cast<int>(LOG_OFF)) {
        refuse_level(level);
        return;
    }
    current_level.store(static_cast<unsigned int>(level));
}

void set_log_off() {
    current_level.store(LOG_OFF);
}

unsigned int get_log_level() {
    return current_level.load();
}

void set_log_level_default(unsigned int level) {
    if (level >= LOG_OFF) {
        refuse_level(level);
        return;
    }
    default_level.store(level);
}

unsigned int get_log_level_default() {
    return default_level.load();
}

void set_log_digits(unsigned int n) {
    if (n < MIN_DIGITS || n > MAX_DIGITS) {
        pp_warn("log::set_log_digits, out of range 1-10, digits:$", n);
        return;
    }
    digits.store(n);
}

unsigned int get_log_digits() {
    return digits.load();
}

unsigned int parse_log_level(const QString& text, unsigned int fallback) {
    bool is_number = false;
    const qlonglong number = text.trimmed().toLongLong(&is_number, 10);
    if (is_number)
        return number < 0 ? fallback : static_cast<unsigned int>(std::min<qlonglong>(number, LOG_TRACE));

    const QString name = text.toLower();
    if (name == u"err" || name == u"error") return LOG_ERROR;
    if (name == u"wrn" || name == u"warn" || name == u"warning") return LOG_WARN;
    if (name == u"inf" || name == u"in" || name == u"info") return LOG_INFO;
    if (name == u"deb" || name == u"debug") return LOG_DEBUG;
    if (name == u"tra" || name == u"trace") return LOG_TRACE;
    if (name == u"no" || name == u"nop") return LOG_OFF;
    return fallback;
}

void add_log_appender(LogAppender* appender) {
    KI_CHECK_NULL(appender, "src/ki/log/GLog");
    Sinks& s = sinks();
    std::lock_guard lock(s.mutex);
    s.appenders.insert(appender);
}

void remove_log_appender(LogAppender* appender) {
    KI_CHECK_NULL(appender, "src/ki/log/GLog");
    Sinks& s = sinks();
    std::lock_guard lock(s.mutex);
    s.appenders.erase(appender);
}

LogAppender* get_console_appender() {
    return &console();
}

std::string trailler(unsigned int line_number, LOG_LEVEL level, const GBits<unsigned int>& bits) {
    std::string out =
        str::sprintF("[%0*u] ", static_cast<int>(digits.load(std::memory_order_relaxed)), line_number);
    if (bits.is_set(TRAILLER_LEVEL)) {
        out += '[';
        out += logLevel_to_string(level);
        out += "] ";
    }
    if (bits.is_set(TRAILLER_TIME)) {
        const auto form = bits.is_set(TRAILLER_MILLISECONDS) ? time::FORM_MILLISECONDS : time::FORM_SECONDS;
        out += '[';
        out += get_time_stamp(bits.is_set(TRAILLER_SINCE_START), TIME_FORMAT, form);
        out += "] ";
    }
    if (bits.is_set(TRAILLER_THREAD)) out += str::sprintF("[%04u] ", get_fast_thread_id());
    return out;
}

QString qs_trailler(unsigned int line_number, LOG_LEVEL level, const GBits<unsigned int>& bits) {
    return QString::fromStdString(trailler(line_number, level, bits));
}

GBits<unsigned int> get_trailler_bits() {
    return trailler_bits.load(std::memory_order_relaxed);
}

void set_trailler_bits(const GBits<unsigned int>& bits) {
    trailler_bits.store(bits.value());
}

bool has_trailler_bits() {
    return get_trailler_bits().has_bits();
}

LogConfig get_log_config() {
    Sinks& s = sinks();
    std::lock_guard lock(s.mutex);
    return s.config;
}

void start_log_time() {
    start_time.store(time::now());
}

long long get_time_since_start() {
    const long long start = start_time.load(std::memory_order_relaxed);
    return start == 0 ? 0 : time::now() - start;
}

std::string get_time_stamp(bool since_start, const std::string& time_format, time::FORM_SECOND form) {
    if (since_start) return time::format_compact_hour(get_time_since_start(), form);
    const std::time_t now = std::time(nullptr);
    std::tm local{};
#if defined(_WIN32)
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    char buffer[512];
    const size_t n = std::strftime(buffer, sizeof buffer, time_format.c_str(), &local);
    return std::string(buffer, n);
}

long long process_ID() {
    return QCoreApplication::applicationPid();
}

unsigned long long get_current_threadID() {
    return static_cast<unsigned long long>(reinterpret_cast<quintptr>(QThread::currentThreadId()));
}

void reset_for_tests() {
    configured.store(false);
    gui_app.store(false);
    current_level.store(LOG_DEBUG);
    default_level.store(LOG_DEBUG);
    digits.store(6);
    trailler_bits.store(0);
    start_time.store(0);
    main_thread_id.store(0);
    pp_line_counter.store(0);
    pp_info_line_counter.store(0);
    Sinks& s = sinks();
    std::lock_guard lock(s.mutex);
    s.line_counter = 0;
    s.appenders.clear();
    s.config = LogConfig{};
}

}  // namespace ki::log

namespace ki {

void pp_line() {
    const unsigned int n = ++log::pp_line_counter;
    pp("---- [ $ ] ------", n);
}

void pp_info_line() {
    const unsigned int n = ++log::pp_info_line_counter;
    pp_info("=== [ $ ] ======", n);
}

void pp_empty() {
    log::log_string(log::LOG_DEBUG, "");
}

unsigned int get_fast_thread_id() {
    static std::atomic<unsigned int> next_id{1};
    thread_local const unsigned int id = next_id.fetch_add(1);
    return id;
}

unsigned int get_thread_id() {
    return get_fast_thread_id();
}

bool is_main_thread() {
    const unsigned int main_id = log::main_thread_id.load();
    if (main_id != 0) return main_id == get_fast_thread_id();
    const QCoreApplication* app = QCoreApplication::instance();
    return app != nullptr && QThread::currentThread() == app->thread();
}

unsigned int reduce_id_len(unsigned long long id) {
    id ^= id >> 33;
    id *= 0xff51afd7ed558ccdULL;
    id ^= id >> 33;
    id *= 0xc4ceb9fe1a85ec53ULL;
    id ^= id >> 33;
    return static_cast<unsigned int>(id & 0xffffffffULL) % 10000U;
}

}  // namespace ki
