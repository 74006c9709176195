#include <ki/qt/components/GAction.h>

namespace ki::qt {

GAction::GAction(const QString& text, QObject* parent) : QAction(text, parent) {
    connect(this, &QAction::triggered, this, [this](bool checked) {
        if (liToggled.has_listener()) liToggled.fire_event(isCheckable() ? checked : true);
        if (liTriggered.has_listener()) liTriggered.fire_event();
    });
}

}  // namespace ki::qt
