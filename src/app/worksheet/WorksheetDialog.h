#pragma once
// The window's way to a worksheet: asks for the current character or the whole level, the
// grid, the paper and the rows, then for a file name, and writes the PDF.

#include <QDialog>
#include <QString>

class QComboBox;
class QRadioButton;
class QSpinBox;

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
