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

protected:
    bool event(QEvent* event) override;

private:
    void update_style();
    /// An icon alone names nothing to a screen reader: a button without text is named by its
    /// tooltip, in the language the tooltip is in, unless it was given a name of its own.
    void name_from_tool_tip();

    QString nameFromToolTip;
};

}  // namespace ki::qt
