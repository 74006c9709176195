#pragma once
// Message boxes that take the theme of the window that opens them.

#include <QString>

class QMessageBox;
class QWidget;

namespace ki::qt {

class GMessageBox {
public:
    /// Opens an information box and returns at once; the box deletes itself when closed.
    /// Rich text (links) is allowed in `text`.
    static QMessageBox* show_info(QWidget* parent, const QString& title, const QString& text);
    static QMessageBox* show_warning(QWidget* parent, const QString& title, const QString& text);
};

}  // namespace ki::qt
