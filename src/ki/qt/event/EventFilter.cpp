#include <ki/log/GLog.h>
#include <ki/qt/event/EventFilter.h>

#include <QGestureEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPinchGesture>
#include <QWheelEvent>
#include <utility>

namespace ki::qt::event {

namespace {

const char* mouse_event_kind(QEvent::Type type) {
    switch (type) {
        case QEvent::MouseButtonPress:
            return "Press";
        case QEvent::MouseButtonRelease:
            return "Release";
        case QEvent::MouseButtonDblClick:
            return "DoubleClick";
        case QEvent::MouseMove:
            return "Move";
        default:
            return "Mouse";
    }
}

std::string button_names(Qt::MouseButtons buttons) {
    static const std::pair<Qt::MouseButton, const char*> names[] = {{Qt::LeftButton, "Left"},
                                                                    {Qt::RightButton, "Right"},
                                                                    {Qt::MiddleButton, "Middle"},
                                                                    {Qt::BackButton, "Back"},
                                                                    {Qt::ForwardButton, "Forward"}};
    std::string text;
    for (const auto& [button, name] : names) {
        if (!buttons.testFlag(button)) continue;
        if (!text.empty()) text += '|';
        text += name;
    }
    return text.empty() ? "None" : text;
}

}  // namespace

std::string mouse_event_to_string(const QMouseEvent& ev) {
    return str::xprintF(0, "$ $ at $ (global $), buttons:$", mouse_event_kind(ev.type()), button_names(ev.button()),
                        ev.position().toPoint(), ev.globalPosition().toPoint(), button_names(ev.buttons()));
}

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

void EventFilter::dispatch_key(QObject* watched, QEvent* ev) {
    // A key press that a widget ignores is offered to its parent, the same event object again:
    // a receiver that is the parent of the last one continues that press.
    auto* key = static_cast<QKeyEvent*>(ev);
    const bool same = key == lastKeyEvent && key->timestamp() == lastKeyTimestamp &&
                      lastKeyReceiver != nullptr && watched == lastKeyReceiver->parent();
    lastKeyEvent = key;
    lastKeyTimestamp = key->timestamp();
    lastKeyReceiver = watched;
    if (!same && liKeyPress.has_listener()) liKeyPress.fire_event(key->key());
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
            if (watched != nullptr && watched->isWidgetType()) dispatch_key(watched, ev);
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
