#pragma once
// The window's way to a worksheet: asks for the current character or the whole level, the
// grid, the paper and the rows, then for a file name, and writes the PDF.

#include <QDialog>
#include <QString>
#include <functional>

class QComboBox;
class QMessageBox;
class QRadioButton;
class QSpinBox;
class QUrl;

namespace morvel {

struct WorksheetOptions;

class WorksheetDialog : public QDialog {
public:
    /// The text of the menu item that opens the dialog.
    static QString menu_text();
    /// Shows the dialog for `character` (may be empty: then only the level is offered) and
    /// `level`; writes the worksheet once the user has picked a file. Returns true when one
    /// was written.
    static bool ask_and_write(QWidget* parent, const QString& character, int level);

    /// The file the save dialog proposes: in the Documents folder, created when missing (the
    /// home folder when it cannot be).
    static QString start_path(const QString& character, int level, bool wholeLevel);
    /// The box that says where the worksheet went (and what was skipped), with a button that
    /// opens the folder.
    static QMessageBox* confirmation(QWidget* parent, const QString& file, const QString& skipped);
    /// Opens a folder in the desktop's file manager; tests put their own in its place.
    static std::function<void(const QUrl&)>& folder_opener();

    WorksheetDialog(QWidget* parent, const QString& character, int level);

    bool whole_level() const;
    WorksheetOptions options() const;

private:
    QRadioButton* buttonCharacter = nullptr;
    QRadioButton* buttonLevel = nullptr;
    QComboBox* comboGrid = nullptr;
    QComboBox* comboPaper = nullptr;
    QSpinBox* spinRows = nullptr;
};

}  // namespace morvel
