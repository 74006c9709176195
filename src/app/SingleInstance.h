#pragma once
// One window per user: the first start holds a lock file and listens on a local socket; a later
// start finds the lock taken, asks the first one to raise its window and ends. The headless
// commands never get here, so they run beside an open window.
// The socket is a plain Unix domain socket watched by a QSocketNotifier: Qt Network would map
// a dozen libraries (Kerberos, libproxy) into every start for this one line of talk.

#include <QString>
#include <functional>
#include <memory>

class QSocketNotifier;
class QWidget;

namespace morvel {

class SingleInstance {
public:
    /// The lock file lives in `folder` (the application data folder); the socket's name is
    /// made from it, so each user (and each data folder) has its own.
    explicit SingleInstance(const QString& folder);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// True when no other instance runs: this one then holds the lock and listens. Also true,
    /// with a log line, when the lock file cannot be made at all (an unwritable folder).
    bool claim();
    /// Writes this process's id into the held lock file, for whoever looks at it; nothing when
    /// no lock is held. Apart from `claim`: emptying and writing the file waits for the file
    /// system's journal (a third of a millisecond, at times several), which a start spends
    /// better after its first frame.
    void name_holder();
    /// Asks the instance holding the lock to raise its window, and to show `level` when it is
    /// above 0; false when it does not answer within `timeoutMs` (it may still be starting, so
    /// connecting is tried again meanwhile).
    bool ask_to_raise(int timeoutMs = 5000, int level = 0) const;
    /// For a start that found the lock taken: asks, prints one line and returns the exit code.
    int hand_over(int level = 0) const;
    /// Called on the GUI thread when a later start asked for the window.
    std::function<void()> onRaise;
    /// Called on the GUI thread after `onRaise` when that start also named a level.
    std::function<void(int level)> onLevel;

    /// Brings `window` to the front, restored when it was minimised.
    static void raise(QWidget& window);

private:
    /// Takes the waiting connections and answers each one's request.
    void accept_pending();

    QString lockPath;
    QString socketPath;
    int lockFd = -1;
    int listening = -1;
    std::unique_ptr<QSocketNotifier> notifier;
};

}  // namespace morvel
