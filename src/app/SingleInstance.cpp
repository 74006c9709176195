#include "app/SingleInstance.h"

#include <ki/log/GLog.h>

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTextStream>
#include <QThread>
#include <QWidget>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace morvel {

namespace {

constexpr char ASK[] = "raise\n";
constexpr char ANSWER[] = "raised\n";
// Sent after the answer, so that a running instance of an earlier version, which closes the
// connection once it answered, still raises its window.
constexpr char LEVEL[] = "level ";

// The socket's address, or false when the path is too long for one.
bool to_address(const QString& path, sockaddr_un& address) {
    const QByteArray bytes = QFile::encodeName(path);
    std::memset(&address, 0, sizeof address);
    address.sun_family = AF_UNIX;
    if (bytes.size() >= static_cast<qsizetype>(sizeof address.sun_path)) return false;
    std::memcpy(address.sun_path, bytes.constData(), static_cast<size_t>(bytes.size()));
    return true;
}

// Waits up to `ms` for `events` on `fd`.
bool wait_for(int fd, short events, int ms) {
    pollfd watched{fd, events, 0};
    int result = 0;
    do {
        result = ::poll(&watched, 1, ms);
    } while (result < 0 && errno == EINTR);
    return result > 0;
}

// One line (with its newline) from `fd`, read within `ms`; empty when none came.
QByteArray read_line(int fd, int ms) {
    QElapsedTimer timer;
    timer.start();
    QByteArray line;
    while (!line.endsWith('\n') && line.size() < 64) {
        const int left = ms - static_cast<int>(timer.elapsed());
        if (left <= 0 || !wait_for(fd, POLLIN, left)) return {};
        char buffer[64];
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (got <= 0) return {};
        line.append(buffer, got);
    }
    return line;
}

bool write_all(int fd, const char* text) {
    size_t left = std::strlen(text);
    while (left > 0) {
        const ssize_t put = ::send(fd, text, left, MSG_NOSIGNAL);
        if (put < 0 && errno == EINTR) continue;
        if (put < 0 && errno == EAGAIN && wait_for(fd, POLLOUT, 1000)) continue;
        if (put <= 0) return false;
        text += put;
        left -= static_cast<size_t>(put);
    }
    return true;
}

}  // namespace

SingleInstance::SingleInstance(const QString& folder)
    : lockPath(QDir(folder).filePath(QStringLiteral("quenlo.lock"))),
      socketPath(QDir(QDir::tempPath())
                     .filePath(QStringLiteral("quenlo-") +
                               QString::fromLatin1(QCryptographicHash::hash(QDir(folder).absolutePath().toUtf8(),
                                                                            QCryptographicHash::Sha1)
                                                       .toHex()
                                                       .left(20)))) {}

SingleInstance::~SingleInstance() {
    notifier.reset();
    if (listening >= 0) {
        ::close(listening);
        ::unlink(QFile::encodeName(socketPath).constData());
    }
    // Closing releases the lock; the file stays, a later start locks it again.
    if (lockFd >= 0) ::close(lockFd);
}

bool SingleInstance::claim() {
    QDir().mkpath(QFileInfo(lockPath).path());
    // A lock the kernel holds for this process: it ends with the process however that ends, so
    // it is never stale, and taking it syncs nothing to disk (QLockFile waits for its file to
    // reach the disk, a millisecond or more of every start).
    const int fd = ::open(QFile::encodeName(lockPath).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0 || ::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        if (fd >= 0) ::close(fd);
        if (fd >= 0 && error == EWOULDBLOCK) return false;
        ki::pp_warn("SingleInstance::claim, lock '$' cannot be made ($); a second window is not prevented",
                    lockPath, std::strerror(error));
        return true;
    }
    lockFd = fd;
    sockaddr_un address{};
    if (!to_address(socketPath, address)) {
        ki::pp_warn("SingleInstance::claim, socket path '$' is too long; a second start cannot reach this one",
                    socketPath);
        return true;
    }
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    // The lock is ours, so a socket of that name was left by a run that was killed.
    ::unlink(address.sun_path);
    // Only this user may connect: the socket is made without rights for the others.
    const mode_t mask = ::umask(077);
    const bool bound =
        socket >= 0 && ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::umask(mask);
    if (!bound || ::listen(socket, 4) != 0) {
        ki::pp_warn("SingleInstance::claim, '$' cannot listen: $", socketPath, std::strerror(errno));
        if (socket >= 0) ::close(socket);
        return true;
    }
    listening = socket;
    notifier = std::make_unique<QSocketNotifier>(socket, QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this]() { accept_pending(); });
    return true;
}

void SingleInstance::name_holder() {
    if (lockFd < 0) return;
    const QByteArray pid = QByteArray::number(static_cast<qint64>(::getpid())) + '\n';
    if (::ftruncate(lockFd, 0) != 0 ||
        ::pwrite(lockFd, pid.constData(), static_cast<size_t>(pid.size()), 0) != pid.size())
        ki::pp_warn("SingleInstance::name_holder, lock '$' holds no process id", lockPath);
}

void SingleInstance::accept_pending() {
    for (;;) {
        const int peer = ::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        if (peer < 0) return;  // none left (EAGAIN) or gone
        // A later start writes its request at once; one that does not is not waited for long.
        if (read_line(peer, 500) == ASK) {
            if (onRaise) onRaise();
            // The asker writes its level at once or closes the connection.
            if (write_all(peer, ANSWER)) {
                const QByteArray more = read_line(peer, 500);
                bool ok = false;
                const int level = more.startsWith(LEVEL) ? more.mid(sizeof LEVEL - 1).trimmed().toInt(&ok) : 0;
                if (ok && level > 0 && onLevel) onLevel(level);
            }
        }
        ::close(peer);
    }
}

bool SingleInstance::ask_to_raise(int timeoutMs, int level) const {
    sockaddr_un address{};
    if (!to_address(socketPath, address)) return false;
    QElapsedTimer timer;
    timer.start();
    const auto left = [&] { return std::max(1, timeoutMs - static_cast<int>(timer.elapsed())); };
    while (timer.elapsed() < timeoutMs) {
        const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (fd < 0) return false;
        if (::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
            const bool answered = write_all(fd, ASK) && read_line(fd, left()) == ANSWER;
            if (answered && level > 0) write_all(fd, (LEVEL + QByteArray::number(level) + '\n').constData());
            ::close(fd);
            return answered;
        }
        ::close(fd);
        // Between taking the lock and listening the first instance cannot be reached yet.
        QThread::msleep(100);
    }
    return false;
}

int SingleInstance::hand_over(int level) const {
    if (ask_to_raise(5000, level)) {
        QTextStream(stdout) << "quenlo: already running; its window was brought to the front\n";
        return 0;
    }
    QTextStream(stderr) << "quenlo: already running (lock '" << lockPath << "'), but it does not answer\n";
    return 1;
}

void SingleInstance::raise(QWidget& window) {
    window.setWindowState((window.windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    window.show();
    window.raise();
    window.activateWindow();
}

}  // namespace morvel
