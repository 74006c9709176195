#include <ki/qt/GWidget.h>
#include <ki/str/xprintF.h>

#include <QEvent>
#include <QResizeEvent>

namespace ki::qt {

GWidget::GWidget(QWidget* parent, Qt::WindowFlags flags)
    : QWidget(parent, flags), ObjectName<QWidget>(this, "GWidget") {}

GWidget::GWidget(QWidget* parent, const char* type_name)
    : QWidget(parent), ObjectName<QWidget>(this, type_name) {}

void GWidget::do_layout(LayoutEvent&) {}

void GWidget::on_theme_changed() {
    if (liTheme.has_listener()) liTheme.fire_event();
    update();
}

std::string GWidget::to_string() const {
    return str::xprintF(0, "GWidget@$, size:$", objectName(), size());
}

void GWidget::resizeEvent(QResizeEvent* ev) {
    QWidget::resizeEvent(ev);
    if (liResize.has_listener()) liResize.fire_event(ev->size());
}

void GWidget::changeEvent(QEvent* ev) {
    QWidget::changeEvent(ev);
    if (ev->type() == QEvent::PaletteChange)
        on_theme_changed();
    else if (ev->type() == QEvent::FontChange && liFont.has_listener())
        liFont.fire_event(font().pointSize());
}

}  // namespace ki::qt
