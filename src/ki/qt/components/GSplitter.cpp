#include <ki/log/GLog.h>
#include <ki/qt/components/GSplitter.h>

namespace ki::qt {

GSplitter::GSplitter(Qt::Orientation orientation, QWidget* parent, const QString& name)
    : QSplitter(orientation, parent), ObjectName<QWidget>(this, "GSplitter") {
    if (!name.isEmpty()) set_name(name);
    setChildrenCollapsible(false);
}

void GSplitter::add_widget(QWidget* widget, int stretch) {
    if (widget == nullptr) {
        pp_error("GSplitter::add_widget, widget == NULL, splitter:$", objectName());
        return;
    }
    addWidget(widget);
    setStretchFactor(indexOf(widget), stretch);
}

}  // namespace ki::qt
