#include <ki/GError.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <thread>

namespace ki {

const char* error_class_to_string(unsigned int error_class) {
    switch (error_class) {
        case EC_NO_CLASS: return "NO_CLASS";
        case EC_ERRNO: return "ERRNO";
        case EC_IO: return "IO";
        case EC_APPLICATION: return "APPLICATION";
        case EC_OPENGL: return "OPENGL";
        case EC_GLFW: return "GLFW";
        case EC_KIR: return "KIR";
        case EC_GWEB_SOCKET: return "GWEB_SOCKET";
        case EC_FTP: return "FTP";
        case EC_SFTP: return "SFTP";
        case EC_SSH: return "SSH";
        case EC_XML: return "XML";
        case EC_SVG: return "SVG";
        case EC_QT_CORE: return "QT_CORE";
        case EC_QT_JSON: return "QT_JSON";
        case EC_QT_NETWORK: return "QT_NETWORK";
        case EC_QT_SQL: return "QT_SQL";
        case EC_OTHER: return "OTHER";
        default: return "UNKNOWN_CLASS";
    }
}

std::string GError::error_class_to_string() const { return ki::error_class_to_string(error_class); }

std::string GError::to_string() const {
    std::string out = error == 0 ? std::string("OK") : str::xprintF(0, "ERR_$, err:$", error_class_to_string(), error);
    if (!message.empty()) out += str::xprintF(0, ", $", message);
    return out;
}

std::string errno_to_string(int errnum) {
    static std::mutex mutex;
    std::lock_guard lock(mutex);
    return std::strerror(errnum);
}

namespace {

constexpr int KIR_VERSION_MAJOR = 2;
constexpr int KIR_VERSION_MINOR = 1;
constexpr int KIR_VERSION_PATCH = 6;

std::atomic<unsigned int> fatal_pause_ms{5000};

void write_out(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

[[noreturn]] void pause_and_exit(bool say_exit) {
    write_out("program will exit in 5 sec\n");
    gSleep(fatal_pause_ms.load());
    if (say_exit) write_out("program exit !\n");
    // _Exit rather than exit: the handlers may run on any thread, and static destructors
    // racing with threads that are still running would turn a clean report into a crash.
    std::_Exit(1);
}

}  // namespace

void exit_fatal(const QString& message) {
    write_out(str::xprintF(0, "$\n", message));
    pause_and_exit(true);
}

void nullPointerHandling(const char* expression, int line, const QString& file) {
    write_out(str::xprintF(0, "nullptr:$\n$\nLINE:$\n", file, expression, line));
    pause_and_exit(false);
}

void boolExpressionHandling(const char* expression, int line) {
    write_out(str::xprintF(0, "bool expression failure:\n$\nLINE:$\n", expression, line));
    pause_and_exit(true);
}

void set_fatal_pause_for_tests(unsigned int milliseconds) {
    fatal_pause_ms.store(milliseconds);
}

void gSleep(unsigned int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::string get_build_timestamp() {
    return str::xprintF(0, "$ - $", __DATE__, __TIME__);
}

std::string get_kir_TOLA_version() {
    return str::xprintF(0, "$.$.$", KIR_VERSION_MAJOR, KIR_VERSION_MINOR, KIR_VERSION_PATCH);
}

}  // namespace ki
