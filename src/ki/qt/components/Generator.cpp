#include <ki/qt/components/GButton.h>
#include <ki/qt/components/GLabel.h>
#include <ki/qt/components/GPanel.h>
#include <ki/qt/components/GSplitter.h>
#include <ki/qt/components/Generator.h>

#include <QFrame>

namespace ki::qt {

GPanel* Generator::gen_panel(GLAYOUT layout, const QString& name, int stretch) {
    auto* panel = new GPanel(get_widget(), layout, name);
    add_widget(panel, stretch);
    return panel;
}

GButton* Generator::gen_button(const QString& icon, const QString& tool_tip, const QString& text) {
    auto* button = new GButton(get_widget(), icon, tool_tip, text);
    add_widget(button);
    return button;
}

GLabel* Generator::gen_label(const QString& text, const QString& name) {
    auto* label = new GLabel(text, get_widget());
    if (!name.isEmpty()) label->set_name(name);
    add_widget(label);
    return label;
}

GSplitter* Generator::gen_splitter(Qt::Orientation orientation, const QString& name, int stretch) {
    auto* splitter = new GSplitter(orientation, get_widget(), name);
    add_widget(splitter, stretch);
    return splitter;
}

QFrame* Generator::gen_line(Qt::Orientation orientation, int width, const QColor& color) {
    auto* line = new QFrame(get_widget());
    line->setFrameShape(QFrame::NoFrame);
    if (orientation == Qt::Horizontal)
        line->setFixedHeight(std::max(width, 1));
    else
        line->setFixedWidth(std::max(width, 1));
    line->setAutoFillBackground(true);
    // Its own role: unset, it takes its parent's, and a row filled with Base hid the line in Base.
    line->setBackgroundRole(QPalette::Window);
    QPalette pal = line->palette();
    pal.setColor(QPalette::Window, color);
    line->setPalette(pal);
    add_widget(line);
    return line;
}

}  // namespace ki::qt
