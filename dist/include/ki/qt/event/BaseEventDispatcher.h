#pragma once
// The bridge from a widget's Qt events to listeners, mixed into the main window.

#include <ki/Listener.h>

class QEvent;
class QKeyEvent;
class QMouseEvent;
class QWheelEvent;
class QWidget;

namespace ki::qt::event {

class BaseEventDispatcher {
public:
    explicit BaseEventDispatcher(QWidget* target = nullptr) : dispatchTarget(target) {}
    virtual ~BaseEventDispatcher() = default;

    /// Fires the listener of the event's kind; returns true when some listener took it.
    /// Events are never consumed: the widget handles them as usual afterwards.
    bool dispatch_event(QEvent* ev);

    void set_dispatch_target(QWidget* target) { dispatchTarget = target; }
    QWidget* get_dispatch_target() const { return dispatchTarget; }

    Listener<QKeyEvent*> liKeyPress;
    Listener<QKeyEvent*> liKeyRelease;
    Listener<QMouseEvent*> liMousePressed;
    Listener<QMouseEvent*> liMouseReleased;
    Listener<QMouseEvent*> liMouseMoved;
    Listener<QWheelEvent*> liWheel;

protected:
    QWidget* dispatchTarget = nullptr;
};

}  // namespace ki::qt::event
