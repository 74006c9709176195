#pragma once
// A timer that reports through a listener.

#include <ki/Listener.h>

#include <QTimer>

namespace ki::qt {

class GTimer {
public:
    GTimer();
    GTimer(const GTimer&) = delete;
    GTimer& operator=(const GTimer&) = delete;

    /// Starts (or restarts) with `milliseconds`; a negative interval is refused (logged).
    void start(int milliseconds, bool single_shot = false);
    void stop() { timer.stop(); }
    bool is_active() const { return timer.isActive(); }
    int get_interval() const { return timer.interval(); }

    Listener<NO_PAYLOAD> liTimeout;

private:
    QTimer timer;
};

}  // namespace ki::qt
