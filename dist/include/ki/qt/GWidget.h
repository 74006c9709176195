#pragma once
// The framework's widget base: a QWidget that publishes its resizes, palette and font changes
// through listeners and can be laid out again by its window after a font or theme change.

#include <ki/Listener.h>
#include <ki/qt/LayoutEvent.h>
#include <ki/qt/ext/ObjectName.h>

#include <QSize>
#include <QWidget>
#include <string>

namespace ki::qt {

class GWidget : public QWidget, public ObjectName<QWidget> {
    Q_OBJECT
public:
    explicit GWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = {});

    /// Called by the main window on every framework widget after a font, icon size or theme
    /// change. Empty here; subclasses (canvases, panels) override it with `override`.
    virtual void do_layout(LayoutEvent& ev);
    /// Called whenever the widget's palette changed, a new theme above all.
    virtual void on_theme_changed();

    std::string to_string() const;

    Listener<QSize> liResize;      ///< the new size, after every resize
    Listener<NO_PAYLOAD> liTheme;  ///< the palette changed
    Listener<int> liFont;          ///< the new font point size

protected:
    /// For subclasses: their generated object names start with `type_name`.
    GWidget(QWidget* parent, const char* type_name);

    void resizeEvent(QResizeEvent* ev) override;
    void changeEvent(QEvent* ev) override;
};

}  // namespace ki::qt
