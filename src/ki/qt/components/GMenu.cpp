#include <ki/qt/components/GMenu.h>

#include <QActionGroup>
#include <utility>

namespace ki::qt {

GMenu::GMenu(QWidget* parent, const QString& title)
    : QMenu(title, parent), ObjectName<QWidget>(this, "GMenu") {
    // A popup is a window of its own: without this it would not take the palette of the
    // themed window that opens it.
    setAttribute(Qt::WA_WindowPropagation);
}

GMenu* GMenu::gen_sub_menu(const QString& text, int flags) {
    auto* sub = new GMenu(this, text);
    if (flags & MENU_EXCLUSIVE) {
        sub->group = new QActionGroup(sub);
        sub->group->setExclusive(true);
    }
    addMenu(sub);
    return sub;
}

GAction* GMenu::add_item(const QString& text, bool checkable, bool checked) {
    auto* action = new GAction(text, this);
    action->setCheckable(checkable);
    if (checkable) action->setChecked(checked);
    if (checkable && group != nullptr) group->addAction(action);
    addAction(action);
    return action;
}

GAction* GMenu::gen_action(const QString& text, bool checkable, bool checked,
                           Listener<bool>::Callback handler) {
    GAction* action = add_item(text, checkable, checked);
    if (handler) action->liToggled += std::move(handler);
    return action;
}

GAction* GMenu::gen_action(const QString& text, bool checkable, bool checked,
                           Listener<NO_PAYLOAD>::CallbackNoPayload handler) {
    GAction* action = add_item(text, checkable, checked);
    if (handler) action->liTriggered += std::move(handler);
    return action;
}

GAction* GMenu::gen_action(const QString& text, Listener<NO_PAYLOAD>::CallbackNoPayload handler) {
    return gen_action(text, false, false, std::move(handler));
}

QAction* GMenu::gen_separator() {
    return addSeparator();
}

QAction* GMenu::find_action(const QString& text) const {
    for (QAction* action : actions()) {
        if (action->text() == text) return action;
        if (auto* sub = qobject_cast<GMenu*>(action->menu())) {
            if (QAction* found = sub->find_action(text)) return found;
        }
    }
    return nullptr;
}

}  // namespace ki::qt
