#pragma once
// The search field above the character list and its result list. The result list lies over
// the window below the field while a query is typed; choosing a hit hands it to `onChosen`,
// Escape hands the list back. The index over every level is built on first use.

#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>

class QLineEdit;
class QListWidget;

namespace morvel::search {

class CharacterSearch;

class SearchPanel : public QWidget {
public:
    explicit SearchPanel(QWidget* parent);
    ~SearchPanel() override;

    /// Ctrl+F: focus the field with its text selected.
    void start();
    /// Closes the search: empty field, no result list; focus goes back where it was.
    void close_search();
    bool is_searching() const;
    /// Texts in the current language; open results are listed again in it.
    void retranslate();

    /// A hit was chosen: its level and code point.
    std::function<void(int level, int unicode)> onChosen;

    QLineEdit* field() const { return edit; }
    /// The result list, made with the first search (null before it).
    QListWidget* results() const { return list; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void on_text(const QString& text);
    void choose(int row);
    /// The result list lies over the window below the field, as wide as its lines need.
    void place_results();
    QListWidget* results_list();

    QLineEdit* edit = nullptr;
    QListWidget* list = nullptr;
    std::unique_ptr<CharacterSearch> index;
    QPointer<QWidget> focusBefore;
    bool searching = false;
};

}  // namespace morvel::search
