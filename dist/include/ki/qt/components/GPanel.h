#pragma once
// A widget with a box layout: the building block of every window, and the row widget of the
// row scroller (with its click listener).

#include <ki/Listener.h>
#include <ki/qt/GWidget.h>
#include <ki/qt/components/Generator.h>
#include <ki/qt/ext/ColorSetter.h>

#include <QPoint>

class QBoxLayout;
class QMouseEvent;

namespace ki::qt {

class GPanel : public GWidget, public Generator, public ColorSetter<QWidget> {
    Q_OBJECT
public:
    explicit GPanel(QWidget* parent = nullptr, GLAYOUT layout = GLAYOUT::VERT, const QString& name = {});

    QWidget* get_widget() override { return this; }
    void add_widget(QWidget* widget, int stretch = 0) override;
    void add_stretch(int stretch = 1);
    void add_spacing(int pixels);

    GLAYOUT get_layout_type() const { return layoutType; }
    QBoxLayout* get_layout() const { return box; }

    void set_margins(int left, int top, int right, int bottom);
    void set_margins(int all) { set_margins(all, all, all, all); }
    void set_spacing(int spacing);
    /// With auto spacing on, `adapt_margins_spacings` sizes margins and spacing from the font.
    void set_auto_spacing(bool on) { autoSpacing = on; }
    void adapt_margins_spacings(int font_pixel_height);

    /// Deletes every child widget.
    void clear();

    std::string to_string() const;

    /// A press and release inside the panel without moving further than the platform's drag
    /// distance; presses that became drags are not clicks.
    Listener<QMouseEvent*> liMouseClick;

protected:
    void mousePressEvent(QMouseEvent* ev) override;
    void mouseReleaseEvent(QMouseEvent* ev) override;

private:
    QBoxLayout* box = nullptr;
    GLAYOUT layoutType = GLAYOUT::VERT;
    bool autoSpacing = false;
    bool pressed = false;
    QPoint pressGlobal;
};

}  // namespace ki::qt
