#include <ki/qt/components/GPanel.h>
#include <ki/str/xprintF.h>

#include <QApplication>
#include <QBoxLayout>
#include <QMouseEvent>
#include <algorithm>

namespace ki::qt {

GPanel::GPanel(QWidget* parent, GLAYOUT layout, const QString& name)
    : GWidget(parent, "GPanel"), ColorSetter<QWidget>(this), layoutType(layout) {
    if (!name.isEmpty()) set_name(name);
    box = layout == GLAYOUT::HORZ ? static_cast<QBoxLayout*>(new QHBoxLayout(this))
                                  : static_cast<QBoxLayout*>(new QVBoxLayout(this));
    box->setContentsMargins(0, 0, 0, 0);
    box->setSpacing(4);
}

void GPanel::add_widget(QWidget* widget, int stretch) {
    if (widget == nullptr) {
        pp_error("GPanel::add_widget, widget == NULL, panel:$", objectName());
        return;
    }
    box->addWidget(widget, stretch);
}

void GPanel::add_stretch(int stretch) {
    box->addStretch(stretch);
}

void GPanel::add_spacing(int pixels) {
    box->addSpacing(pixels);
}

void GPanel::set_margins(int left, int top, int right, int bottom) {
    box->setContentsMargins(left, top, right, bottom);
}

void GPanel::set_spacing(int spacing) {
    box->setSpacing(spacing);
}

void GPanel::adapt_margins_spacings(int font_pixel_height) {
    if (!autoSpacing) return;
    const int unit = std::max(2, font_pixel_height / 4);
    box->setContentsMargins(unit, unit, unit, unit);
    box->setSpacing(unit);
}

void GPanel::clear() {
    for (QWidget* child : findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) delete child;
}

std::string GPanel::to_string() const {
    return str::xprintF(0, "GPanel@$, $, size:$", objectName(), layoutType == GLAYOUT::HORZ ? "HORZ" : "VERT",
                        size());
}

void GPanel::mousePressEvent(QMouseEvent* ev) {
    if (ev->button() == Qt::LeftButton) {
        pressed = true;
        pressGlobal = ev->globalPosition().toPoint();
    }
    GWidget::mousePressEvent(ev);
}

void GPanel::mouseReleaseEvent(QMouseEvent* ev) {
    const bool was_pressed = pressed;
    pressed = false;
    GWidget::mouseReleaseEvent(ev);
    if (!was_pressed || ev->button() != Qt::LeftButton || !rect().contains(ev->position().toPoint())) return;
    const QPoint moved = ev->globalPosition().toPoint() - pressGlobal;
    if (moved.manhattanLength() >= QApplication::startDragDistance()) return;
    if (liMouseClick.has_listener()) liMouseClick.fire_event(ev);
}

}  // namespace ki::qt
