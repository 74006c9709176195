#include "app/search/SearchPanel.h"

#include <ki/qt/guitools/GFontPreload.h>
#include <ki/qt/lang.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "app/search/CharacterSearch.h"

namespace morvel::search {

namespace {
constexpr int ROLE_LEVEL = Qt::UserRole;
constexpr int ROLE_CODE = Qt::UserRole + 1;
}  // namespace

SearchPanel::SearchPanel(QWidget* parent) : QWidget(parent) {
    using ki::qt::lang::tt;
    setObjectName(QStringLiteral("search"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    {
        const ki::qt::AppFontScope scope(font());
        edit = new QLineEdit(this);
    }
    edit->setObjectName(QStringLiteral("searchField"));
    // Reached by Ctrl+F or a click only: the arrow keys stay with the character list.
    edit->setFocusPolicy(Qt::ClickFocus);
    // The list below decides the column's width, not the field.
    edit->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    layout->addWidget(edit);
    retranslate();

    connect(edit, &QLineEdit::textChanged, this, [this](const QString& text) { on_text(text); });
    connect(edit, &QLineEdit::returnPressed, this, [this]() {
        if (list != nullptr) choose(list->currentRow() < 0 ? 0 : list->currentRow());
    });
    edit->installEventFilter(this);
    // Where the learner was before the search took the focus; Escape goes back there.
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* old, QWidget* now) {
        if (now == edit && old != nullptr && old != list) focusBefore = old;
    });
}

SearchPanel::~SearchPanel() = default;

QListWidget* SearchPanel::results_list() {
    // Made with the first search: the start-up paints no result list.
    if (list != nullptr) return list;
    list = new QListWidget(this);
    list->setObjectName(QStringLiteral("searchResults"));
    list->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    // Wide enough for character, pinyin, meaning and level while it is shown.
    list->setMinimumWidth(list->fontMetrics().horizontalAdvance(QStringLiteral("M")) * 28);
    list->setFocusPolicy(Qt::ClickFocus);
    list->setTextElideMode(Qt::ElideRight);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // It floats over the canvas: a plain line in the text colour sets it apart in every theme,
    // where the style's sunken frame all but vanished on the dark one.
    list->setFrameStyle(QFrame::Box | QFrame::Plain);
    list->setLineWidth(1);
    list->hide();
    connect(list, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { choose(list->row(item)); });
    connect(list, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { choose(list->row(item)); });
    list->installEventFilter(this);
    return list;
}

void SearchPanel::retranslate() {
    using ki::qt::lang::tt;
    edit->setPlaceholderText(tt("Search", "Suchen", "Поиск"));
    // The placeholder is gone once something is typed; a screen reader keeps the field's name.
    edit->setAccessibleName(edit->placeholderText());
    edit->setToolTip(tt("Search all levels (Ctrl+F)", "Alle Stufen durchsuchen (Strg+F)",
                        "Поиск по всем уровням (Ctrl+F)"));
    if (searching) on_text(edit->text());
}

void SearchPanel::start() {
    edit->setFocus(Qt::ShortcutFocusReason);
    edit->selectAll();
}

bool SearchPanel::is_searching() const {
    return searching;
}

void SearchPanel::on_text(const QString& text) {
    using ki::qt::lang::tt;
    // The clear button shows only over text: made with the first one, it keeps its icon out of
    // the start-up.
    if (!text.isEmpty() && !edit->isClearButtonEnabled()) edit->setClearButtonEnabled(true);
    const bool now = !text.trimmed().isEmpty();
    if (!now && list == nullptr) return;
    if (now && !index) index = std::make_unique<CharacterSearch>(CharacterSearch::of_shipped_levels());
    results_list()->clear();
    if (now) {
        const QLocale::Language language = ki::qt::lang::get_lang();
        const QString level = tt("Level %1", "Stufe %1", "Уровень %1");
        for (const Hit& hit : index->find(text, language)) {
            // The level before the meaning: a long meaning is cut at the end, the level stays.
            const QString line = QStringLiteral("%1  %2  %3 · %4")
                                     .arg(hit.row.character(), hit.row.pinyin, level.arg(hit.level),
                                          hit.row.meaning(language));
            auto* item = new QListWidgetItem(line, list);
            item->setToolTip(line);
            item->setData(ROLE_LEVEL, hit.level);
            item->setData(ROLE_CODE, int(hit.row.unicode));
        }
        if (list->count() > 0) {
            list->setCurrentRow(0);
        } else {
            // Said rather than an empty box, and nothing Enter could choose.
            auto* none = new QListWidgetItem(
                tt("No character matches", "Kein Zeichen passt", "Ни один иероглиф не подходит"), list);
            none->setFlags(Qt::NoItemFlags);
        }
    }
    if (now) place_results();
    if (now == searching) return;
    searching = now;
    list->setVisible(now);
}

void SearchPanel::place_results() {
    // Over the window from below the field down, wider than the narrow list column.
    QWidget* host = window();
    if (list->parentWidget() != host) list->setParent(host);
    const QPoint at = edit->mapTo(host, QPoint(0, edit->height() + 2));
    const int width = std::min(std::max(edit->width(), list->minimumWidth()), host->width() - at.x());
    // As tall as its lines, at most down to the window's bottom: a few hits cover little.
    const int room = std::max(80, host->height() - at.y() - 8);
    const int lines = list->count() * std::max(1, list->sizeHintForRow(0)) + 2 * list->frameWidth();
    list->setGeometry(at.x(), at.y(), width, std::min(room, lines));
    list->raise();
}

void SearchPanel::choose(int row) {
    const QListWidgetItem* item = list != nullptr ? list->item(row) : nullptr;
    if (item == nullptr || !item->data(ROLE_CODE).isValid()) return;
    const int level = item->data(ROLE_LEVEL).toInt();
    const int code = item->data(ROLE_CODE).toInt();
    close_search();
    if (onChosen) onChosen(level, code);
}

void SearchPanel::close_search() {
    edit->clear();  // hides the results through on_text
    QWidget* back = focusBefore.data();
    focusBefore = nullptr;
    if (back != nullptr && back->isVisible())
        back->setFocus(Qt::OtherFocusReason);
    else
        edit->clearFocus();
}

bool SearchPanel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return QWidget::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Escape) {
        close_search();
        return true;
    }
    if (watched == edit && (key->key() == Qt::Key_Down || key->key() == Qt::Key_Up) && list != nullptr &&
        list->count() > 0) {
        const int step = key->key() == Qt::Key_Down ? 1 : -1;
        list->setCurrentRow(std::clamp(list->currentRow() + step, 0, list->count() - 1));
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace morvel::search
