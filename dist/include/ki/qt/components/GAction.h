#pragma once
// A menu action that reports through listeners instead of signals.

#include <ki/Listener.h>

#include <QAction>

namespace ki::qt {

class GAction : public QAction {
    Q_OBJECT
public:
    explicit GAction(const QString& text, QObject* parent = nullptr);

    /// Fired on every trigger.
    Listener<NO_PAYLOAD> liTriggered;
    /// Fired on every trigger of a checkable action with its new checked state.
    Listener<bool> liToggled;
};

}  // namespace ki::qt
