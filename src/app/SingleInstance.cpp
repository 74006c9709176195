#include "app/SingleInstance.h"

#include <ki/log/GLog.h>

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QTextStream>
#include <QThread>
#include <QWidget>

namespace morvel {

namespace {

constexpr const char* ASK = "raise\n";
constexpr const char* ANSWER = "raised\n";

}  // namespace

SingleInstance::SingleInstance(const QString& folder)
    : lockPath(QDir(folder).filePath(QStringLiteral("quenlo.lock"))),
      serverName(QStringLiteral("quenlo-") +
                 QString::fromLatin1(
                     QCryptographicHash::hash(QDir(folder).absolutePath().toUtf8(), QCryptographicHash::Sha1)
                         .toHex()
                         .left(20))) {}

SingleInstance::~SingleInstance() = default;

bool SingleInstance::claim() {
    QDir().mkpath(QFileInfo(lockPath).path());
    lock = std::make_unique<QLockFile>(lockPath);
    // Never stale by age, only when the process that holds it is gone (a killed run).
    lock->setStaleLockTime(0);
    if (!lock->tryLock(0)) {
        if (lock->error() == QLockFile::LockFailedError) return false;
        ki::pp_warn("SingleInstance::claim, lock '$' cannot be made; a second window is not prevented",
                    lockPath);
        return true;
    }
    server = std::make_unique<QLocalServer>();
    server->setSocketOptions(QLocalServer::UserAccessOption);
    // The lock is ours, so a socket of that name was left by a run that was killed.
    QLocalServer::removeServer(serverName);
    if (!server->listen(serverName)) {
        ki::pp_warn("SingleInstance::claim, '$' cannot listen: $", serverName, server->errorString());
        return true;
    }
    QObject::connect(server.get(), &QLocalServer::newConnection, server.get(), [this]() {
        while (QLocalSocket* socket = server->nextPendingConnection()) {
            QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            QObject::connect(socket, &QLocalSocket::readyRead, socket, [this, socket]() {
                if (!socket->canReadLine()) return;
                if (socket->readLine() != ASK) {
                    socket->disconnectFromServer();
                    return;
                }
                if (onRaise) onRaise();
                socket->write(ANSWER);
                socket->flush();
            });
        }
    });
    return true;
}

bool SingleInstance::ask_to_raise(int timeoutMs) const {
    QElapsedTimer timer;
    timer.start();
    const auto left = [&] { return std::max(1, timeoutMs - static_cast<int>(timer.elapsed())); };
    while (timer.elapsed() < timeoutMs) {
        QLocalSocket socket;
        socket.connectToServer(serverName);
        if (socket.waitForConnected(left())) {
            socket.write(ASK);
            if (!socket.waitForBytesWritten(left())) return false;
            while (!socket.canReadLine())
                if (!socket.waitForReadyRead(left())) return false;
            return socket.readLine() == ANSWER;
        }
        // Between taking the lock and listening the first instance cannot be reached yet.
        QThread::msleep(100);
    }
    return false;
}

int SingleInstance::hand_over() const {
    if (ask_to_raise()) {
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
