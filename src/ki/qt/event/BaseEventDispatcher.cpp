#include <ki/qt/event/BaseEventDispatcher.h>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

namespace ki::qt::event {

namespace {
template <typename P, typename E>
bool fire(Listener<P>& listener, E* ev) {
    if (!listener.has_listener()) return false;
    listener.fire_event(ev);
    return true;
}
}  // namespace

bool BaseEventDispatcher::dispatch_event(QEvent* ev) {
    if (ev == nullptr) return false;
    switch (ev->type()) {
        case QEvent::KeyPress:
            return fire(liKeyPress, static_cast<QKeyEvent*>(ev));
        case QEvent::KeyRelease:
            return fire(liKeyRelease, static_cast<QKeyEvent*>(ev));
        case QEvent::MouseButtonPress:
            return fire(liMousePressed, static_cast<QMouseEvent*>(ev));
        case QEvent::MouseButtonRelease:
            return fire(liMouseReleased, static_cast<QMouseEvent*>(ev));
        case QEvent::MouseMove:
            return fire(liMouseMoved, static_cast<QMouseEvent*>(ev));
        case QEvent::Wheel:
            return fire(liWheel, static_cast<QWheelEvent*>(ev));
        default:
            return false;
    }
}

}  // namespace ki::qt::event
