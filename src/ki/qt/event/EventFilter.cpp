#include <ki/log/GLog.h>
#include <ki/qt/event/EventFilter.h>

#include <QGestureEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPinchGesture>
#include <QWheelEvent>

namespace ki::qt::event {

EventFilter::EventFilter(QObject* parent) : QObject(parent) {}

void EventFilter::clear_watches() {
    watchedNames.clear();
    watchedObjects.clear();
    watchedTypes.clear();
}

bool EventFilter::is_watched(QObject* watched, QEvent::Type type) const {
    if (watchedTypes.contains(int(type))) return true;
    if (watchedObjects.contains(watched)) return true;
    return !watchedNames.isEmpty() && watchedNames.contains(watched->objectName());
}

void EventFilter::dispatch_mouse(QMouseEvent* ev) {
    const QPointF global = ev->globalPosition();
    if (int(ev->type()) == lastType && ev->timestamp() == lastTimestamp && global == lastGlobal) return;
    lastType = int(ev->type());
    lastTimestamp = ev->timestamp();
    lastGlobal = global;
    switch (ev->type()) {
        case QEvent::MouseButtonPress:
            if (liMousePress.has_listener()) liMousePress.fire_event(ev);
            break;
        case QEvent::MouseMove:
            if (liMouseMove.has_listener()) liMouseMove.fire_event(ev);
            break;
        case QEvent::MouseButtonRelease:
            if (liMouseRelease.has_listener()) liMouseRelease.fire_event(ev);
            break;
        case QEvent::MouseButtonDblClick:
            if (liMouseDoubleClick.has_listener()) liMouseDoubleClick.fire_event(ev);
            break;
        default:
            break;
    }
}

bool EventFilter::eventFilter(QObject* watched, QEvent* ev) {
    const QEvent::Type type = ev->type();
    if (watched != nullptr &&
        (!watchedTypes.isEmpty() || !watchedObjects.isEmpty() || !watchedNames.isEmpty()) &&
        is_watched(watched, type)) {
        pp("EventFilter, watched:'$', event:$", watched->objectName(), int(type));
    }
    switch (type) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseMove:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
            dispatch_mouse(static_cast<QMouseEvent*>(ev));
            break;
        case QEvent::Wheel:
            // Only the widget's copy: the window's copy would count every turn twice.
            if (watched != nullptr && watched->isWidgetType() && liWheel.has_listener() && ev->spontaneous())
                liWheel.fire_event(static_cast<QWheelEvent*>(ev)->angleDelta().y() / 8.0f);
            break;
        case QEvent::KeyPress:
            if (watched != nullptr && watched->isWidgetType() && liKeyPress.has_listener())
                liKeyPress.fire_event(static_cast<QKeyEvent*>(ev)->key());
            break;
        case QEvent::Gesture: {
            auto* gesture = static_cast<QGestureEvent*>(ev);
            if (auto* pinch = static_cast<QPinchGesture*>(gesture->gesture(Qt::PinchGesture))) {
                if (liPinchCenter.has_listener()) liPinchCenter.fire_event(pinch->centerPoint());
                if (liPinchScale.has_listener()) liPinchScale.fire_event(float(pinch->scaleFactor()));
            }
            break;
        }
        default:
            break;
    }
    return QObject::eventFilter(watched, ev);
}

}  // namespace ki::qt::event
