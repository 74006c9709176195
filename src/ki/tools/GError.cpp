#include <ki/GError.h>

#include <cstring>
#include <mutex>

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

}  // namespace ki
