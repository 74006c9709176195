#include <ki/qt/GMainWindow.h>
#include <ki/qt/components/GButton.h>
#include <ki/qt/guitools/GGui.h>
#include <ki/str/xprintF.h>

namespace ki::qt {

GButton::GButton(QWidget* parent, const QString& icon, const QString& tool_tip, const QString& text)
    : QToolButton(parent), ObjectName<QWidget>(this, "GButton") {
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus);
    // The text first: a button with one is not named by its tooltip.
    if (!text.isEmpty()) setText(text);
    if (!tool_tip.isEmpty()) setToolTip(tool_tip);
    if (!icon.isEmpty()) set_icon(icon);
    update_style();
    connect(this, &QToolButton::clicked, this, [this](bool checked) {
        if (isCheckable() && liToggled.has_listener()) liToggled.fire_event(checked);
        if (liClick.has_listener()) liClick.fire_event();
    });
}

void GButton::set_icon(const QString& icon) {
    ki::qt::set_icon(this, icon);
    // Buttons made after the window's set-up take its icon size here.
    if (parentWidget() != nullptr) {
        if (const GMainWindow* win = GMainWindow::window_from_widget(this)) setIconSize(win->get_icon_size());
    }
    update_style();
}

bool GButton::event(QEvent* event) {
    if (event->type() == QEvent::ToolTipChange) name_from_tool_tip();
    return QToolButton::event(event);
}

void GButton::name_from_tool_tip() {
    if (!text().isEmpty() || accessibleName() != nameFromToolTip) return;
    nameFromToolTip = toolTip();
    setAccessibleName(nameFromToolTip);
}

QString GButton::get_icon_name() const {
    return property(PROPERTY_ICON).toString();
}

std::string GButton::to_string() const {
    return str::xprintF(0, "GButton@$, icon:'$', text:'$'", objectName(), get_icon_name(), text());
}

void GButton::update_style() {
    const bool has_icon = !icon().isNull();
    const bool has_text = !text().isEmpty();
    if (has_icon && has_text)
        setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    else if (has_text)
        setToolButtonStyle(Qt::ToolButtonTextOnly);
    else
        setToolButtonStyle(Qt::ToolButtonIconOnly);
}

}  // namespace ki::qt
