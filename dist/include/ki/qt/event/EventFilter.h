#pragma once
// The application-wide event filter: publishes every mouse press, move, release and double
// click once per user action, whichever widget receives it, plus wheel, pinch and key events.
// Watched names, objects and event types are logged as a debugging aid.

#include <ki/Listener.h>
#include <ki/str/xprintF.h>

#include <QEvent>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QSet>
#include <QString>
#include <string>

class QMouseEvent;

namespace ki::qt::event {

class EventFilter : public QObject {
    Q_OBJECT
public:
    explicit EventFilter(QObject* parent = nullptr);

    bool eventFilter(QObject* watched, QEvent* ev) override;

    void watch_object_name(const QString& name) { watchedNames.insert(name); }
    void watch_object(QObject* object) { watchedObjects.insert(object); }
    void watch_event_type(QEvent::Type type) { watchedTypes.insert(type); }
    void clear_watches();

    Listener<QMouseEvent*> liMousePress;
    Listener<QMouseEvent*> liMouseMove;
    Listener<QMouseEvent*> liMouseRelease;
    Listener<QMouseEvent*> liMouseDoubleClick;
    /// The centre of a pinch gesture, in global coordinates.
    Listener<QPointF> liPinchCenter;
    /// The scale factor of a pinch step.
    Listener<float> liPinchScale;
    /// Vertical wheel turns in degrees (positive away from the user).
    Listener<float> liWheel;
    /// The key of every key press.
    Listener<int> liKeyPress;

private:
    bool is_watched(QObject* watched, QEvent::Type type) const;
    void dispatch_mouse(QMouseEvent* ev);
    void dispatch_key(QObject* watched, QEvent* ev);

    QSet<QString> watchedNames;
    QSet<QObject*> watchedObjects;
    QSet<int> watchedTypes;

    // A mouse event reaches the filter once for its window and again for each widget it is
    // offered to; these identify the one already published.
    int lastType = 0;
    quint64 lastTimestamp = 0;
    QPointF lastGlobal;
    // The same for a key press as it propagates from a widget to its parents.
    const QEvent* lastKeyEvent = nullptr;
    quint64 lastKeyTimestamp = 0;
    QPointer<QObject> lastKeyReceiver;
};

/// How `$` prints a mouse event: kind, button, position in the receiver and on the screen,
/// buttons held, for example "Press Left at 12,5 (global 112,105), buttons:Left".
std::string mouse_event_to_string(const QMouseEvent& ev);

}  // namespace ki::qt::event

template <>
inline void ki::obj_to_stream<QMouseEvent>(std::ostringstream& os, const QMouseEvent& ev) {
    os << ki::qt::event::mouse_event_to_string(ev);
}
