#pragma once
// Recoverable failures travel by value: an error code, the class it comes from and a message.

#include <ki/str/xprintF.h>

#include <QString>

#include <string>
#include <utility>

namespace ki {

/// Where an error code comes from. Spaced by ten so that related classes can be inserted.
enum ERROR_CLASS : unsigned int {
    EC_NO_CLASS = 0,
    EC_ERRNO = 10,
    EC_IO = 20,
    EC_APPLICATION = 30,
    EC_OPENGL = 40,
    EC_GLFW = 50,
    EC_KIR = 60,
    EC_GWEB_SOCKET = 70,
    EC_FTP = 80,
    EC_SFTP = 90,
    EC_SSH = 100,
    EC_XML = 110,
    EC_SVG = 120,
    EC_QT_CORE = 210,
    EC_QT_JSON = 220,
    EC_QT_NETWORK = 230,
    EC_QT_SQL = 240,
    EC_OTHER = 900,
};

struct GError {
    int error = 0;
    unsigned int error_class = EC_NO_CLASS;
    std::string message;

    void set_error(int code) { error = code; }
    void set_error_class(unsigned int cls) { error_class = cls; }
    void set_error(unsigned int cls, int code, const QString& msg) {
        error_class = cls;
        error = code;
        message = msg.toStdString();
    }
    template <typename... Args>
    void set_error(unsigned int cls, int code, const char* format, const Args&... args) {
        error_class = cls;
        error = code;
        message = str::xprintF(0, format, args...);
    }
    void set_error_other(int code, const QString& msg) { set_error(EC_OTHER, code, msg); }
    void set_message(const char* msg) { message = msg ? msg : ""; }
    void set_message(const std::string& msg) { message = msg; }
    bool has_message() const { return !message.empty(); }
    void copy_error(const GError& other) { *this = other; }
    void reset() {
        error = 0;
        error_class = EC_NO_CLASS;
        message.clear();
    }
    bool is_ok() const { return error == 0; }

    std::string error_class_to_string() const;
    /// "OK" or "ERR_<class>, err:<code>", then ", <message>" when there is one.
    std::string to_string() const;
    QString get_message() const { return QString::fromStdString(message); }

    bool is_class_ERRNO() const { return error_class == EC_ERRNO; }
    bool is_class_IO() const { return error_class == EC_IO; }
    bool is_class_APPLICATION() const { return error_class == EC_APPLICATION; }
    bool is_class_OPEN_GL() const { return error_class == EC_OPENGL; }
    bool is_class_SDL() const { return error_class == EC_GLFW; }
    bool is_class_KIR() const { return error_class == EC_KIR; }
    bool is_class_FTP() const { return error_class == EC_FTP; }
    bool is_class_SFTP() const { return error_class == EC_SFTP; }
    bool is_class_SSH() const { return error_class == EC_SSH; }
    bool is_class_XML() const { return error_class == EC_XML; }
    bool is_class_SVG() const { return error_class == EC_SVG; }
    bool is_class_QT_CORE() const { return error_class == EC_QT_CORE; }
    bool is_class_QT_JSON() const { return error_class == EC_QT_JSON; }
    bool is_class_QT_NET() const { return error_class == EC_QT_NETWORK; }
    bool is_class_QT_SQL() const { return error_class == EC_QT_SQL; }
    bool is_class_OTHER() const { return error_class == EC_OTHER; }
};

/// The name of an error class ("IO", "KIR", ...; "UNKNOWN_CLASS" for values not in the table).
const char* error_class_to_string(unsigned int error_class);

/// strerror's text, read under a mutex because it lives in shared storage.
std::string errno_to_string(int errnum);

/// Prints `message`, pauses five seconds so that the text can be read, and ends the process
/// with exit code 1. Callable from any thread.
[[noreturn]] void exit_fatal(const QString& message);
/// Target of KI_CHECK_NULL: reports the null pointer's expression, line and source unit, then
/// ends the process like exit_fatal.
[[noreturn]] void nullPointerHandling(const char* expression, int line, const QString& file);
/// Target of KI_CHECK_BOOL: reports the failed expression and line, then ends the process.
[[noreturn]] void boolExpressionHandling(const char* expression, int line);
/// For tests only, the program never calls it: shortens the pause of the fatal handlers.
void set_fatal_pause_for_tests(unsigned int milliseconds);

/// Sleeps the calling thread for `milliseconds`.
void gSleep(unsigned int milliseconds);
/// The date and time this unit was compiled, "Nov 22 2025 - 05:50:00".
std::string get_build_timestamp();
/// The framework's version, "2.1.6".
std::string get_kir_TOLA_version();

/// An error followed by a value; a success when the error code is 0.
template <typename T>
struct GSysResult : GError {
    T value{};

    GSysResult() = default;
    GSysResult(const T& v) : value(v) {}
    GSysResult(T&& v) : value(std::move(v)) {}
    GSysResult(const GError& e) : GError(e) {}
    static GSysResult from_error(unsigned int cls, int code, const QString& msg) {
        GSysResult r;
        r.set_error(cls, code, msg);
        return r;
    }

    bool ok() const { return error == 0; }
    explicit operator bool() const { return ok(); }
    const T& get() const { return value; }
    T& get() { return value; }
    T take() { return std::move(value); }
    const GError& get_error() const { return *this; }
};

}  // namespace ki

/// Ends the process through ki::nullPointerHandling when `ptr` is null. `source_unit` is the
/// project-relative path without extension, such as "src/ki/log/GLog"; the report names the
/// pointer as "<ptr> == NULL".
#define KI_CHECK_NULL(ptr, source_unit)                                                        \
    do {                                                                                       \
        if ((ptr) == nullptr)                                                                  \
            ::ki::nullPointerHandling(#ptr " == NULL", __LINE__, QStringLiteral(source_unit)); \
    } while (false)

/// Ends the process through ki::boolExpressionHandling when `expr` is false.
#define KI_CHECK_BOOL(expr)                                         \
    do {                                                            \
        if (!(expr)) ::ki::boolExpressionHandling(#expr, __LINE__); \
    } while (false)
