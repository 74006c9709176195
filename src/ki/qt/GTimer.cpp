#include <ki/qt/GTimer.h>

namespace ki::qt {

GTimer::GTimer() {
    QObject::connect(&timer, &QTimer::timeout, &timer, [this]() {
        if (liTimeout.has_listener()) liTimeout.fire_event();
    });
}

void GTimer::start(int milliseconds, bool single_shot) {
    if (milliseconds < 0) {
        pp_error("GTimer::start, interval < 0, $", milliseconds);
        return;
    }
    timer.setSingleShot(single_shot);
    timer.start(milliseconds);
}

}  // namespace ki::qt
