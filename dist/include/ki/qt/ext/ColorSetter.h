#pragma once
// Gives a widget colours of its own on top of the theme. An invalid colour drops the widget's
// own colours, so that it follows the theme again.

#include <QColor>
#include <QPalette>
#include <QWidget>

namespace ki::qt {

template <typename T>
class ColorSetter {
public:
    virtual ~ColorSetter() = default;

    void set_color(QPalette::ColorRole role, const QColor& color) {
        if (!color.isValid()) {
            self->setPalette(QPalette());
            return;
        }
        QPalette pal = self->palette();
        pal.setColor(role, color);
        self->setPalette(pal);
    }
    /// Fills the background with `color`.
    void set_background(const QColor& color) {
        set_color(self->backgroundRole(), color);
        if (color.isValid()) self->setAutoFillBackground(true);
    }
    void set_text_color(const QColor& color) { set_color(self->foregroundRole(), color); }

protected:
    explicit ColorSetter(T* widget) : self(widget) {}

private:
    T* self;
};

}  // namespace ki::qt
