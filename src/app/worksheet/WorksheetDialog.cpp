#include "app/worksheet/WorksheetDialog.h"

#include <ki/qt/lang.h>

#include <QComboBox>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStandardPaths>
#include <QUrl>
#include <QVBoxLayout>
#include <memory>

#include "app/cli/CliText.h"
#include "app/worksheet/Worksheet.h"

namespace morvel {

namespace {

using ki::qt::lang::tt;

/// At most this many characters without a stroke file are named.
constexpr int MISSING_SHOWN = 20;

}  // namespace

QString WorksheetDialog::start_path(const QString& character, int level, bool wholeLevel) {
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    // A save dialog in a folder that does not exist opens in the working directory instead.
    if (folder.isEmpty() || !QDir().mkpath(folder)) folder = QDir::homePath();
    const QString base =
        wholeLevel ? tt("worksheet-level-%1", "arbeitsblatt-stufe-%1", "пропись-уровень-%1").arg(level)
                   : tt("worksheet-%1", "arbeitsblatt-%1", "пропись-%1").arg(character);
    return QDir(folder).filePath(base + QStringLiteral(".pdf"));
}

QMessageBox* WorksheetDialog::confirmation(QWidget* parent, const QString& file, const QString& skipped) {
    // The path on a line of its own: a long one would otherwise be broken mid-name.
    QString text = tt("The worksheet was saved as\n%1", "Das Arbeitsblatt wurde gespeichert als\n%1",
                      "Пропись сохранена как\n%1")
                       .arg(QDir::toNativeSeparators(file));
    if (!skipped.isEmpty())
        text += QStringLiteral("\n\n") + tt("No stroke file for %1; skipped.",
                                            "Keine Strichdatei für %1; übersprungen.",
                                            "Нет файла черт для %1; пропущено.")
                                             .arg(skipped);
    auto* box = new QMessageBox(QMessageBox::Information, tt("Worksheet", "Arbeitsblatt", "Пропись"), text,
                                QMessageBox::Ok, parent);
    QPushButton* open =
        box->addButton(tt("Open folder", "Ordner öffnen", "Открыть папку"), QMessageBox::ActionRole);
    const QUrl folder = QUrl::fromLocalFile(QFileInfo(file).absolutePath());
    QObject::connect(open, &QPushButton::clicked, box, [folder]() { folder_opener()(folder); });
    return box;
}

std::function<void(const QUrl&)>& WorksheetDialog::folder_opener() {
    static std::function<void(const QUrl&)> opener = [](const QUrl& url) { QDesktopServices::openUrl(url); };
    return opener;
}

QString WorksheetDialog::menu_text() {
    return tt("Worksheet…", "Arbeitsblatt…", "Пропись…");
}

WorksheetDialog::WorksheetDialog(QWidget* parent, const QString& character, int level) : QDialog(parent) {
    setWindowTitle(tt("Worksheet", "Arbeitsblatt", "Пропись"));
    auto* form = new QFormLayout;
    buttonCharacter = new QRadioButton(
        tt("Current character %1", "Aktuelles Schriftzeichen %1", "Текущий иероглиф %1").arg(character));
    buttonLevel = new QRadioButton(tt("Whole level %1", "Ganze Stufe %1", "Весь уровень %1").arg(level));
    buttonCharacter->setEnabled(!character.isEmpty());
    (character.isEmpty() ? buttonLevel : buttonCharacter)->setChecked(true);
    auto* scope = new QVBoxLayout;
    scope->addWidget(buttonCharacter);
    scope->addWidget(buttonLevel);
    form->addRow(tt("Print", "Drucken", "Печать"), scope);

    comboGrid = new QComboBox;
    comboGrid->addItem(tt("Tian grid (cross)", "Tian-Raster (Kreuz)", "Сетка тянь (крест)"),
                       static_cast<int>(GuideGrid::TIAN));
    comboGrid->addItem(tt("Mi grid (cross and diagonals)", "Mi-Raster (Kreuz und Diagonalen)",
                          "Сетка ми (крест и диагонали)"),
                       static_cast<int>(GuideGrid::MI));
    comboGrid->addItem(tt("Squares only", "Nur Kästchen", "Только клетки"),
                       static_cast<int>(GuideGrid::NONE));
    form->addRow(tt("Grid", "Raster", "Сетка"), comboGrid);

    comboPaper = new QComboBox;
    comboPaper->addItem(QStringLiteral("A4"), static_cast<int>(Paper::A4));
    comboPaper->addItem(QStringLiteral("Letter"), static_cast<int>(Paper::LETTER));
    if (QLocale::system().measurementSystem() == QLocale::ImperialUSSystem) comboPaper->setCurrentIndex(1);
    form->addRow(tt("Paper", "Papier", "Бумага"), comboPaper);

    spinRows = new QSpinBox;
    spinRows->setRange(WorksheetOptions::ROWS_MIN, WorksheetOptions::ROWS_MAX);
    spinRows->setValue(WorksheetOptions().rows);
    form->addRow(
        tt("Practice rows per character", "Übungszeilen je Schriftzeichen", "Строк для практики на иероглиф"),
        spinRows);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Save)->setText(tt("Save…", "Speichern…", "Сохранить…"));
    buttons->button(QDialogButtonBox::Cancel)->setText(tt("Cancel", "Abbrechen", "Отмена"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

bool WorksheetDialog::whole_level() const {
    return buttonLevel->isChecked();
}

WorksheetOptions WorksheetDialog::options() const {
    WorksheetOptions options;
    options.grid = static_cast<GuideGrid>(comboGrid->currentData().toInt());
    options.paper = static_cast<Paper>(comboPaper->currentData().toInt());
    options.rows = spinRows->value();
    options.language = ki::qt::lang::get_lang();
    return options;
}

bool WorksheetDialog::ask_and_write(QWidget* parent, const QString& character, int level) {
    WorksheetDialog dialog(parent, character, level);
    if (dialog.exec() != QDialog::Accepted) return false;
    const bool wholeLevel = dialog.whole_level();
    QString file = QFileDialog::getSaveFileName(
        parent, tt("Save worksheet", "Arbeitsblatt speichern", "Сохранить пропись"),
        start_path(character, level, wholeLevel), QStringLiteral("PDF (*.pdf)"));
    if (file.isEmpty()) return false;
    if (!file.endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive)) file += QStringLiteral(".pdf");

    const WorksheetSource source =
        wholeLevel ? WorksheetSource::from_level(level) : WorksheetSource::from_text(character);
    const QString title = tt("Worksheet", "Arbeitsblatt", "Пропись");
    if (source.entries.empty()) {
        QMessageBox::warning(
            parent, title,
            tt("No stroke file for %1.", "Keine Strichdatei für %1.", "Нет файла черт для %1.")
                .arg(cli::capped_list(source.missing, MISSING_SHOWN)));
        return false;
    }
    const ki::GSysResult<int> written = Worksheet::write_file(file, source.entries, dialog.options());
    if (!written.ok()) {
        QMessageBox::warning(parent, title,
                             tt("Cannot write '%1': %2.", "'%1' kann nicht geschrieben werden: %2.",
                                "Не удаётся записать '%1': %2.")
                                 .arg(file, written.get_message()));
        return false;
    }
    const std::unique_ptr<QMessageBox> box(
        confirmation(parent, file, cli::capped_list(source.missing, MISSING_SHOWN)));
    box->exec();
    return true;
}

}  // namespace morvel
