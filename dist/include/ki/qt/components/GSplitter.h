#pragma once
// A splitter that generates its panes like a panel does.

#include <ki/qt/components/Generator.h>
#include <ki/qt/ext/ObjectName.h>

#include <QSplitter>

namespace ki::qt {

class GSplitter : public QSplitter, public Generator, public ObjectName<QWidget> {
    Q_OBJECT
public:
    explicit GSplitter(Qt::Orientation orientation, QWidget* parent = nullptr, const QString& name = {});

    QWidget* get_widget() override { return this; }
    /// Appends a pane; `stretch` is its share of spare room.
    void add_widget(QWidget* widget, int stretch = 0) override;
};

}  // namespace ki::qt
