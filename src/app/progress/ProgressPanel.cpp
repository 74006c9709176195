#include "app/progress/ProgressPanel.h"

#include <ki/qt/lang.h>

#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QVBoxLayout>
#include <algorithm>
#include <limits>
#include <map>

#include "app/progress/ForecastChart.h"
#include "app/progress/ProgressChart.h"
#include "app/progress/ProgressCsv.h"
#include "app/progress/ProgressMark.h"
#include "app/progress/ProgressRules.h"

namespace morvel::progress {

using ki::qt::lang::tt;

namespace {

constexpr int ROLE_SORT = Qt::UserRole;
constexpr int ROLE_CODE_POINT = Qt::UserRole + 1;
/// Never-completed characters sort after every real due day.
constexpr qint64 NEVER_DUE = std::numeric_limits<qint64>::max();
/// What a memory column shows for a character never reviewed.
const QString NO_VALUE = QStringLiteral("—");

QStandardItem* cell(const QString& text, const QVariant& sortKey, int codePoint) {
    auto* item = new QStandardItem(text);
    item->setEditable(false);
    item->setData(sortKey, ROLE_SORT);
    item->setData(codePoint, ROLE_CODE_POINT);
    return item;
}

QPixmap mark_pixmap(Mastery mastery, bool due, const QPalette& palette, qreal ratio) {
    const int side = 16;
    QPixmap pixmap(QSize(side, side) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    ProgressMark::paint(painter, QRectF(0, 0, side, side), mastery, due, palette);
    return pixmap;
}

}  // namespace

ProgressPanel::ProgressPanel(ProgressStore& progressStore, std::vector<ChinChar> levelChars, QWidget* parent)
    : QDialog(parent), store(progressStore), chars(std::move(levelChars)) {
    // A window of its own does not inherit the theme's palette from its parent: taken here, so
    // that the table is read once with the right colours.
    if (parent != nullptr) setPalette(parent->palette());
    setWindowTitle(tt(QStringLiteral("Progress"), QStringLiteral("Fortschritt"), QStringLiteral("Прогресс")));

    model = new QStandardItemModel(0, COL_COUNT, this);
    model->setSortRole(ROLE_SORT);
    model->setHorizontalHeaderLabels({
        tt(QStringLiteral("Character"), QStringLiteral("Zeichen"), QStringLiteral("Иероглиф")),
        tt(QStringLiteral("Pinyin"), QStringLiteral("Pinyin"), QStringLiteral("Пиньинь")),
        tt(QStringLiteral("State"), QStringLiteral("Stand"), QStringLiteral("Состояние")),
        tt(QStringLiteral("Completions"), QStringLiteral("Abschlüsse"), QStringLiteral("Пройдено")),
        tt(QStringLiteral("Misses"), QStringLiteral("Fehler"), QStringLiteral("Ошибки")),
        tt(QStringLiteral("Last practised"), QStringLiteral("Zuletzt geübt"),
           QStringLiteral("Последняя практика")),
        tt(QStringLiteral("Due"), QStringLiteral("Fällig"), QStringLiteral("Повтор")),
        tt(QStringLiteral("Stability (days)"), QStringLiteral("Stabilität (Tage)"),
           QStringLiteral("Стабильность (дни)")),
        tt(QStringLiteral("Difficulty (1–10)"), QStringLiteral("Schwierigkeit (1–10)"),
           QStringLiteral("Сложность (1–10)")),
        tt(QStringLiteral("Average score"), QStringLiteral("Mittlere Wertung"),
           QStringLiteral("Средняя оценка")),
        tt(QStringLiteral("Best score"), QStringLiteral("Beste Wertung"), QStringLiteral("Лучшая оценка")),
    });
    tableView = new QTableView(this);
    tableView->setModel(model);
    tableView->setSortingEnabled(true);
    // Level order, and the header says so (Qt's default indicator is descending).
    tableView->sortByColumn(COL_CHARACTER, Qt::AscendingOrder);
    tableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    tableView->setSelectionMode(QAbstractItemView::SingleSelection);
    tableView->verticalHeader()->hide();
    tableView->verticalHeader()->setDefaultSectionSize(fontMetrics().height() * 3 / 2);
    tableView->horizontalHeader()->setStretchLastSection(true);
    connect(tableView, &QTableView::clicked, this,
            [this](const QModelIndex& index) { liSelect.fire_event(index.data(ROLE_CODE_POINT).toInt()); });

    missedList = new QListWidget(this);
    connect(missedList, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { liSelect.fire_event(item->data(ROLE_CODE_POINT).toInt()); });
    auto* missedColumn = new QVBoxLayout;
    missedColumn->addWidget(
        new QLabel(tt(QStringLiteral("Missed most often"), QStringLiteral("Am häufigsten verfehlt"),
                      QStringLiteral("Чаще всего ошибки")),
                   this));
    missedColumn->addWidget(missedList);

    auto* top = new QHBoxLayout;
    top->addWidget(tableView, 4);
    top->addLayout(missedColumn, 1);

    chartView = new ProgressChart(this);
    forecastView = new ForecastChart(this);
    retentionLabel = new QLabel(this);
    auto* forecastColumn = new QVBoxLayout;
    forecastColumn->addWidget(retentionLabel);
    forecastColumn->addWidget(forecastView, 1);
    auto* charts = new QHBoxLayout;
    charts->addWidget(chartView, 3);
    charts->addLayout(forecastColumn, 2);

    auto* exportButton = new QPushButton(
        tt(QStringLiteral("Export…"), QStringLiteral("Exportieren…"), QStringLiteral("Экспорт…")), this);
    auto* resetButton =
        new QPushButton(tt(QStringLiteral("Reset progress…"), QStringLiteral("Fortschritt zurücksetzen…"),
                           QStringLiteral("Сбросить прогресс…")),
                        this);
    auto* closeButton = new QPushButton(
        tt(QStringLiteral("Close"), QStringLiteral("Schließen"), QStringLiteral("Закрыть")), this);
    resetButton->setEnabled(store.is_recording());
    connect(exportButton, &QPushButton::clicked, this, &ProgressPanel::on_export);
    connect(resetButton, &QPushButton::clicked, this, &ProgressPanel::on_reset);
    connect(closeButton, &QPushButton::clicked, this, &QDialog::accept);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(exportButton);
    buttons->addWidget(resetButton);
    buttons->addStretch(1);
    buttons->addWidget(closeButton);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top, 3);
    layout->addLayout(charts, 1);
    layout->addLayout(buttons);
    resize(1080, 700);
    refresh();
}

void ProgressPanel::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    // The constructor's own hand-over comes before the table exists; its first read follows.
    if (event->type() == QEvent::PaletteChange && model != nullptr) refresh();
}

void ProgressPanel::refresh() {
    const int today = store.local_today();
    const QPalette pal = palette();
    const qreal ratio = devicePixelRatioF();
    // One pixmap per mark kind, not one per row.
    std::map<std::pair<Mastery, bool>, QIcon> marks;
    const auto mark = [&](Mastery mastery, bool due) {
        auto [it, added] = marks.try_emplace({mastery, due});
        if (added) it->second = QIcon(mark_pixmap(mastery, due, pal, ratio));
        return it->second;
    };
    const QString dueText = tt(QStringLiteral("now"), QStringLiteral("jetzt"), QStringLiteral("сейчас"));
    // Dates in the interface language, not the system's.
    const QLocale locale(ki::qt::lang::get_lang());

    model->removeRows(0, model->rowCount());
    model->setRowCount(static_cast<int>(chars.size()));
    std::vector<CharSummary> missed;
    const std::map<int, ScoreStats> scores = store.score_stats();
    int row = 0;
    for (const ChinChar& ch : chars) {
        const CharSummary s = store.summary(ch.unicode);
        const review::Card card = store.card(ch.unicode);
        const Mastery mastery = ProgressRules::mastery(s, card);
        const bool due = ProgressRules::is_due(card, today);
        const bool scheduled = card.state != review::CardState::NEW;
        const int cp = ch.unicode;
        model->setItem(row, COL_CHARACTER, cell(ch.character(), cp, cp));
        model->setItem(row, COL_PINYIN, cell(ch.pinyin, ch.pinyin, cp));
        QStandardItem* state = cell(mastery_text(mastery), static_cast<int>(mastery) * 2 + (due ? 1 : 0), cp);
        state->setIcon(mark(mastery, due));
        model->setItem(row, COL_STATE, state);
        model->setItem(row, COL_COMPLETIONS, cell(QString::number(s.completions), s.completions, cp));
        model->setItem(row, COL_MISSES, cell(QString::number(s.misses), s.misses, cp));
        const QDateTime lastPractised = QDateTime::fromMSecsSinceEpoch(s.lastPractisedMs);
        const QString last = s.lastPractisedMs == 0
                                 ? QString()
                                 : locale.toString(lastPractised.date(), QLocale::ShortFormat) +
                                       lastPractised.toString(QStringLiteral(" HH:mm"));
        model->setItem(row, COL_LAST, cell(last, s.lastPractisedMs, cp));
        const QString dueCell =
            !scheduled ? NO_VALUE
            : due      ? dueText
                       : locale.toString(QDate(1970, 1, 1).addDays(card.due), QLocale::ShortFormat);
        QStandardItem* dueItem = cell(dueCell, scheduled ? card.due : NEVER_DUE, cp);
        if (due) dueItem->setForeground(ProgressMark::accent(pal));
        model->setItem(row, COL_DUE, dueItem);
        // Unreviewed characters sort below every card, as unscored ones do below every score.
        const auto memoryCell = [&](double value) {
            return scheduled ? cell(locale.toString(value, 'f', 1), value, cp) : cell(NO_VALUE, -1.0, cp);
        };
        model->setItem(row, COL_STABILITY, memoryCell(card.stability));
        model->setItem(row, COL_DIFFICULTY, memoryCell(card.difficulty));
        const auto scored = scores.find(cp);
        const ScoreStats score = scored == scores.end() ? ScoreStats{} : scored->second;
        // Unscored characters sort below every score.
        const auto scoreCell = [&](int value) {
            return cell(value < 0 ? QString() : QString::number(value), value, cp);
        };
        model->setItem(row, COL_AVERAGE_SCORE, scoreCell(score.average));
        model->setItem(row, COL_BEST_SCORE, scoreCell(score.best));
        if (s.misses > 0) missed.push_back(s);
        ++row;
    }
    // The rows came back in level order: sort them as the header shows.
    const QHeaderView* header = tableView->horizontalHeader();
    if (header->sortIndicatorSection() >= 0)
        model->sort(header->sortIndicatorSection(), header->sortIndicatorOrder());
    tableView->resizeColumnsToContents();

    std::stable_sort(missed.begin(), missed.end(),
                     [](const CharSummary& a, const CharSummary& b) { return a.misses > b.misses; });
    missedList->clear();
    for (size_t i = 0; i < missed.size() && i < MOST_MISSED; ++i) {
        const ChinChar ch = from_unicode(chars, missed[i].codePoint);
        auto* item = new QListWidgetItem(
            QStringLiteral("%1  %2   %3").arg(ch.character(), ch.pinyin).arg(missed[i].misses), missedList);
        item->setData(ROLE_CODE_POINT, missed[i].codePoint);
    }

    chartView->set_days(store.last_days(CHART_DAYS));
    forecastView->set_counts(store.due_forecast(CHART_DAYS), today);
    retentionLabel->setText(retention_text(store.measured_retention(CHART_DAYS)));
}

void ProgressPanel::on_export() {
    const QString path = QFileDialog::getSaveFileName(
        this,
        tt(QStringLiteral("Export progress"), QStringLiteral("Fortschritt exportieren"),
           QStringLiteral("Экспорт прогресса")),
        QDir::home().filePath(QStringLiteral("quenlo-progress.csv")), QStringLiteral("CSV (*.csv)"));
    if (path.isEmpty()) return;
    const QString error = ProgressCsv::write(store.file_path(), path);
    if (!error.isEmpty()) QMessageBox::warning(this, windowTitle(), error);
}

void ProgressPanel::on_reset() {
    const auto answer = QMessageBox::question(
        this, windowTitle(),
        tt(QStringLiteral("Forget all recorded practice? A backup copy of the file is kept next to it."),
           QStringLiteral("Alle aufgezeichneten Übungen vergessen? Eine Sicherungskopie der Datei bleibt "
                          "daneben erhalten."),
           QStringLiteral("Забыть всю записанную практику? Резервная копия файла останется рядом с ним.")),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer != QMessageBox::Yes) return;
    const QString backup = store.reset();
    if (backup.isEmpty()) {
        QMessageBox::warning(this, windowTitle(),
                             tt(QStringLiteral("The progress could not be reset."),
                                QStringLiteral("Der Fortschritt konnte nicht zurückgesetzt werden."),
                                QStringLiteral("Не удалось сбросить прогресс.")));
        return;
    }
    refresh();
}

QString ProgressPanel::notice_text(ProgressStore::Notice notice, const QString& path) {
    switch (notice) {
        case ProgressStore::Notice::NONE:
            return {};
        case ProgressStore::Notice::DAMAGED_MOVED_ASIDE:
            return tt(QStringLiteral(
                          "The progress file was damaged. It was moved aside as %1 and a new one was begun."),
                      QStringLiteral(
                          "Die Fortschrittsdatei war beschädigt. Sie wurde als %1 beiseitegelegt, eine neue "
                          "wurde begonnen."),
                      QStringLiteral("Файл прогресса был повреждён. Он сохранён как %1, начат новый."))
                .arg(path);
        case ProgressStore::Notice::NOT_WRITABLE:
            return tt(QStringLiteral("Progress cannot be saved in %1. Practice goes on without recording."),
                      QStringLiteral(
                          "Der Fortschritt kann nicht in %1 gespeichert werden. Das Üben geht ohne "
                          "Aufzeichnung weiter."),
                      QStringLiteral("Прогресс нельзя сохранить в %1. Занятия продолжаются без записи."))
                .arg(path);
        case ProgressStore::Notice::NEWER_VERSION:
            return tt(QStringLiteral(
                          "The progress file %1 comes from a newer version of quenlo. It is only read; new "
                          "practice is not recorded."),
                      QStringLiteral(
                          "Die Fortschrittsdatei %1 stammt von einer neueren Version von quenlo. Sie wird "
                          "nur gelesen; neue Übungen werden nicht aufgezeichnet."),
                      QStringLiteral(
                          "Файл прогресса %1 создан более новой версией quenlo. Он только читается, новая "
                          "практика не записывается."))
                .arg(path);
        case ProgressStore::Notice::WRITES_FAILING:
            // One line of the notice area: short enough for the narrowest window.
            return tt(QStringLiteral(
                          "Practice not saved yet (%1): it is kept and saved once that works again."),
                      QStringLiteral("Übungen noch nicht gespeichert (%1): sie bleiben erhalten und werden "
                                     "nachgeholt."),
                      QStringLiteral("Практика пока не сохранена (%1): она сохранится, когда это станет "
                                     "возможно."))
                .arg(path);
        case ProgressStore::Notice::CAUGHT_UP:
            return tt(QStringLiteral("All practice is saved again."),
                      QStringLiteral("Alle Übungen sind wieder gespeichert."),
                      QStringLiteral("Вся практика снова сохранена."));
    }
    return {};
}

QString ProgressPanel::due_count_text(int count) {
    return tt(QStringLiteral("%1 due"), QStringLiteral("%1 fällig"), QStringLiteral("%1 к повторению"))
        .arg(count);
}

QString ProgressPanel::retention_text(std::optional<double> share) {
    const QString figure = share ? QStringLiteral("%1 %").arg(qRound(*share * 100.0)) : NO_VALUE;
    return tt(QStringLiteral("Retention (30 days): %1"), QStringLiteral("Behalten (30 Tage): %1"),
              QStringLiteral("Удержание (30 дней): %1"))
        .arg(figure);
}

QString ProgressPanel::mastery_text(Mastery mastery) {
    switch (mastery) {
        case Mastery::NEW:
            return tt(QStringLiteral("new"), QStringLiteral("neu"), QStringLiteral("новый"));
        case Mastery::LEARNING:
            return tt(QStringLiteral("learning"), QStringLiteral("lernend"), QStringLiteral("изучается"));
        case Mastery::KNOWN:
            return tt(QStringLiteral("known"), QStringLiteral("gekonnt"), QStringLiteral("выучен"));
    }
    return {};
}

}  // namespace morvel::progress
