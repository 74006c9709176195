#pragma once
// A flat tool button with a theme-following "^icons/..." icon, a tool tip and a click listener.

#include <ki/Listener.h>
#include <ki/qt/ext/ObjectName.h>

#include <QToolButton>

namespace ki::qt {

class GButton : public QToolButton, public ObjectName<QWidget> {
    Q_OBJECT
public:
    explicit GButton(QWidget* parent = nullptr, const QString& icon = {}, const QString& tool_tip = {},
                     const QString& text = {});

    /// "^icons/..." name; the icon follows the theme of the button's window.
    void set_icon(const QString& icon);
    QString get_icon_name() const;

    std::string to_string() const;

    Listener<NO_PAYLOAD> liClick;
    /// The new checked state of a checkable button.
    Listener<bool> liToggled;

private:
    void update_style();
};

}  // namespace ki::qt
