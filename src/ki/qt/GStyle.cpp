#include <ki/qt/GStyle.h>
#include <ki/qt/themes.h>

#include <QPainter>
#include <QStyleOption>

namespace ki::qt {

void GStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                           const QWidget* widget) const {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (element != PE_IndicatorCheckBox && element != PE_IndicatorRadioButton) return;
    if (option == nullptr || painter == nullptr || !themes::is_dark_palette(option->palette)) return;
    if (baseStyle()->name() != QLatin1String("fusion")) return;
    QColor edge = option->palette.color(QPalette::WindowText);
    if (!(option->state & State_Enabled)) edge = option->palette.color(QPalette::Disabled, QPalette::WindowText);
    edge.setAlpha(140);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);
    painter->setPen(QPen(edge, 1.0));
    painter->setBrush(Qt::NoBrush);
    const QRectF box = QRectF(option->rect).adjusted(0.5, 0.5, -1.5, -1.5);
    if (element == PE_IndicatorRadioButton)
        painter->drawEllipse(box);
    else
        painter->drawRoundedRect(box, 1.5, 1.5);
    painter->restore();
}

}  // namespace ki::qt
