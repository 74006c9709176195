#include <ki/qt/dialogs/GMessageBox.h>

#include <QMessageBox>

namespace ki::qt {

namespace {
QMessageBox* open_box(QWidget* parent, QMessageBox::Icon icon, const QString& title, const QString& text) {
    auto* box = new QMessageBox(icon, title, text, QMessageBox::Ok, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setAttribute(Qt::WA_WindowPropagation);
    box->setTextFormat(Qt::AutoText);
    box->setTextInteractionFlags(Qt::TextBrowserInteraction);
    box->open();
    return box;
}
}  // namespace

QMessageBox* GMessageBox::show_info(QWidget* parent, const QString& title, const QString& text) {
    return open_box(parent, QMessageBox::Information, title, text);
}

QMessageBox* GMessageBox::show_warning(QWidget* parent, const QString& title, const QString& text) {
    return open_box(parent, QMessageBox::Warning, title, text);
}

}  // namespace ki::qt
