#include <ki/qt/components/GLabel.h>

namespace ki::qt {

GLabel::GLabel(const QString& text, QWidget* parent)
    : QLabel(text, parent), ObjectName<QWidget>(this, "GLabel"), ColorSetter<QWidget>(this) {}

void GLabel::set_font_point_size(int size) {
    if (size <= 0) {
        setFont(QFont());
        setAttribute(Qt::WA_SetFont, false);
        return;
    }
    QFont f = font();
    f.setPointSize(size);
    setFont(f);
}

}  // namespace ki::qt
