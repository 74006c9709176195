#pragma once
// A popup menu that generates its items; handlers are listeners of the items.

#include <ki/Listener.h>
#include <ki/qt/components/GAction.h>
#include <ki/qt/ext/ObjectName.h>

#include <QMenu>

class QActionGroup;

namespace ki::qt {

class GMenu : public QMenu, public ObjectName<QWidget> {
    Q_OBJECT
public:
    /// Flags of `gen_sub_menu`.
    enum MENU_FLAGS : int {
        MENU_NONE = 0,
        /// The checkable items of the sub-menu form a group: checking one unchecks the others.
        MENU_EXCLUSIVE = 0x01,
    };

    explicit GMenu(QWidget* parent = nullptr, const QString& title = {});

    GMenu* gen_sub_menu(const QString& text, int flags = MENU_NONE);
    /// A checkable item reports its new state to `handler`; a plain item reports `true`.
    GAction* gen_action(const QString& text, bool checkable, bool checked, Listener<bool>::Callback handler);
    GAction* gen_action(const QString& text, bool checkable, bool checked,
                        Listener<NO_PAYLOAD>::CallbackNoPayload handler);
    /// A plain item.
    GAction* gen_action(const QString& text, Listener<NO_PAYLOAD>::CallbackNoPayload handler);
    QAction* gen_separator();

    /// The item of that text, searched through the sub-menus too; null when there is none.
    QAction* find_action(const QString& text) const;

private:
    GAction* add_item(const QString& text, bool checkable, bool checked);

    QActionGroup* group = nullptr;
};

}  // namespace ki::qt
