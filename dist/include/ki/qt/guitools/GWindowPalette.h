#pragma once
// Qt hands a palette down to child widgets but never across a window boundary: a dialog, a
// message box or a file dialog opened over a window with a theme of its own shows the
// application's colours, a light box over a dark window. Installed on the application, this
// filter gives every such window, each time it is shown, the palette of the window it opens over,
// unless it has a palette of its own (a combo box's popup counts as having none).
//
// Windows that carry WA_WindowPropagation already follow their parent; this covers the ones
// Qt's static helpers (QMessageBox::question, QFileDialog::getSaveFileName) make.

#include <QObject>

namespace ki::qt {

class WindowPaletteFilter : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* ev) override;
};

}  // namespace ki::qt
