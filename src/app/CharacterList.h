#pragma once
// The column of the character list: the level's name over the scrolling list of its characters
// with their practice marks, as wide as a character and the longest pinyin of one syllable.

#include <QString>
#include <functional>
#include <utility>

#include "app/progress/ProgressTypes.h"

class QFontMetrics;
class QObject;
class QWidget;

namespace ki::qt {
class GLabel;
class GPanel;
namespace otf {
class GDataScroller;
}
}  // namespace ki::qt

namespace morvel::prog2 {

class AppData;
class ModelAppData;

class CharacterList {
public:
    using MarkOf = std::function<std::pair<progress::Mastery, bool>(int codePoint)>;

    /// Builds the column at the end of `parent`, whose widgets own it; the model belongs to
    /// `owner`. `markOf` answers each row's mastery and whether it is due; `between` makes the
    /// widget that stands between the title and the list (the search field).
    CharacterList(ki::qt::GPanel* parent, AppData& data, QObject* owner, MarkOf markOf,
                  const std::function<QWidget*(ki::qt::GPanel*)>& between);

    ModelAppData* model() const { return rows; }
    ki::qt::otf::GDataScroller* scroller() const { return view; }
    void show_title(const QString& text);
    /// Shows a hidden column and hides a shown one; returns whether it is shown now.
    bool toggle();
    /// The code points beside the characters and the scroll bar, as chosen; `text` is the
    /// window's font, which the width follows.
    void apply(bool showUnicode, bool scrollbar, const QFontMetrics& text);
    void fit_width(const QFontMetrics& text);
    void on_change_theme(unsigned int theme);

private:
    ki::qt::GPanel* panel;
    ki::qt::GLabel* title;
    ki::qt::otf::GDataScroller* view;
    ModelAppData* rows;
    bool scrollbarShown = false;
};

}  // namespace morvel::prog2
