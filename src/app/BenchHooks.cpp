#include "app/BenchHooks.h"

#include <ki/log/GLog.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QMetaObject>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace morvel {

namespace {

// Taken while the program's statics are initialised: the fallback origin of the start-up time.
const std::chrono::steady_clock::time_point staticInitTime = std::chrono::steady_clock::now();

void print_line(const QByteArray& line) {
    std::fputs(line.constData(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

class FirstFrameProbe : public QObject {
public:
    FirstFrameProbe(QWidget& window, int count, std::function<void(int)> select)
        : QObject(&window), window(&window), count(count), select(std::move(select)) {}

    bool eventFilter(QObject* watched, QEvent* ev) override {
        if (!seen && watched == window && ev->type() == QEvent::Paint) {
            seen = true;
            // Queued: the frame is finished (painted and flushed) when the loop comes back.
            QTimer::singleShot(0, this, [this] { on_first_frame(); });
        }
        return QObject::eventFilter(watched, ev);
    }

private:
    void on_first_frame() {
        print_line("quenlo-bench first-frame-ms:" +
                   QByteArray::number(BenchHooks::ms_since_launch(), 'f', 1));
        // A profile of the start-up alone ends here: work queued behind the frame (the history,
        // the sound module) is not the frame's.
        if (qgetenv(BenchHooks::ENV_VISIT) == "0") std::_Exit(0);
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < count && window; ++i) {
            select(i);
            // Painted now, as the learner sees each selection.
            window->repaint();
        }
        const double ms = static_cast<double>(timer.nsecsElapsed()) / 1e6;
        print_line("quenlo-bench visited:" + QByteArray::number(count) +
                   " ms:" + QByteArray::number(ms, 'f', 1));
        QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                                  Qt::QueuedConnection);
    }

    QPointer<QWidget> window;
    int count;
    std::function<void(int)> select;
    bool seen = false;
};

}  // namespace

bool BenchHooks::is_startup_requested() {
    return qgetenv(ENV_STARTUP) == "1";
}

bool BenchHooks::arm_startup(QWidget& window, int count, std::function<void(int)> select) {
    if (!is_startup_requested()) return false;
    if (!select || count < 0) {
        ki::pp_warn("BenchHooks::arm_startup, no way to select characters, count:$", count);
        count = 0;
    }
    // QUENLO_BENCH_VISIT=0 stops at the first frame (the program ends there, see on_first_frame).
    if (qgetenv(ENV_VISIT) == "0") count = 0;
    window.installEventFilter(new FirstFrameProbe(window, count, std::move(select)));
    return true;
}

double BenchHooks::ms_since_launch() {
    bool ok = false;
    const double t0 = qgetenv(ENV_T0).toDouble(&ok);
    if (ok && t0 > 0.0) {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        return std::chrono::duration<double, std::milli>(now).count() - t0 * 1000.0;
    }
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - staticInitTime)
        .count();
}

}  // namespace morvel
