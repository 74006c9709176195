#pragma once
// The part shared by every container of the widget layer: it takes widgets and generates the
// common children (panels, buttons, labels, splitters, lines) straight into itself.

#include <QColor>
#include <QString>
#include <Qt>

class QFrame;
class QWidget;

namespace ki::qt {

class GButton;
class GLabel;
class GPanel;
class GSplitter;

/// Layout of a panel's children.
enum class GLAYOUT { HORZ, VERT };

class Generator {
public:
    virtual ~Generator() = default;

    /// The container as a widget, the Qt parent of everything generated into it.
    virtual QWidget* get_widget() = 0;
    /// Takes `widget` as a child and puts it at the end; `stretch` shares spare room.
    virtual void add_widget(QWidget* widget, int stretch = 0) = 0;

    GPanel* gen_panel(GLAYOUT layout, const QString& name = {}, int stretch = 0);
    /// An icon button ("^icons/..." name, may be empty) with tool tip and optional text.
    GButton* gen_button(const QString& icon, const QString& tool_tip, const QString& text = {});
    GLabel* gen_label(const QString& text, const QString& name = {});
    GSplitter* gen_splitter(Qt::Orientation orientation, const QString& name, int stretch = 1);
    /// A line across the container, `width` pixels thick, in `color`.
    QFrame* gen_line(Qt::Orientation orientation, int width, const QColor& color);
};

}  // namespace ki::qt
