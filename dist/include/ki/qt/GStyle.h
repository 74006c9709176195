#pragma once
// The application's style: the platform's own, with check boxes and radio buttons outlined
// where Fusion leaves them unreadable. Fusion draws an indicator's edge a shade darker than the
// window and fills it with the base colour, which on a dark palette all but vanishes: an
// unchecked menu item then looks like a plain one.

#include <QProxyStyle>

namespace ki::qt {

class GStyle : public QProxyStyle {
public:
    /// Wraps the style Qt would pick for this platform.
    GStyle() = default;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
};

}  // namespace ki::qt
