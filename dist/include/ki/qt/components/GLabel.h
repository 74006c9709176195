#pragma once
// A text label of the widget layer.

#include <ki/qt/ext/ColorSetter.h>
#include <ki/qt/ext/ObjectName.h>

#include <QLabel>

namespace ki::qt {

class GLabel : public QLabel, public ObjectName<QWidget>, public ColorSetter<QWidget> {
    Q_OBJECT
public:
    explicit GLabel(const QString& text = {}, QWidget* parent = nullptr);

    /// The label's own point size; 0 or less goes back to the inherited font.
    void set_font_point_size(int size);
};

}  // namespace ki::qt
