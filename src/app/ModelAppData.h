#pragma once
// The rows of the character list: one panel per catalogue entry with the character, its
// pinyin and optionally its code point, built only when the row scrolls into view.

#include <ki/Listener.h>
#include <ki/qt/components/otf/GModel.h>

#include <QColor>
#include <QFont>
#include <QString>
#include <functional>

#include "app/progress/ProgressTypes.h"

namespace morvel::prog2 {

class AppData;

class ModelAppData : public ki::qt::otf::GModel {
public:
    /// Point size of the character in a row.
    static constexpr int CHAR_POINT_SIZE = 26;
    static constexpr int ROW_MARGIN = 5;

    /// `textFont` is the font of the rows' pinyin: the list's own, which the rows inherit.
    explicit ModelAppData(AppData& data, QObject* parent = nullptr, const QFont& textFont = QFont());

    long long row_count() const override;
    /// The height of a row as its fonts make it (or as pinned by `set_row_height`).
    int get_row_height(int row) const override;
    ki::qt::GPanel* gen_panel_row(long long row, ki::qt::otf::PanelData* data) override;

    /// Line and selection colours for the theme (auto resolved by the system's mode).
    void on_change_theme(unsigned int theme);

    bool is_show_unicode() const { return showUnicode; }
    /// Adds or drops the code-point label; call `update_model` to rebuild the rows.
    void set_show_unicode(bool on);
    /// The row whose character is hidden (written from memory): it shows only the pinyin. -1
    /// for none; call `update_model` to rebuild the rows.
    void set_hidden_row(long long row) { hiddenRow = row; }
    long long get_hidden_row() const { return hiddenRow; }
    /// Pins the row height in pixels; 0 measures it from the fonts again.
    void set_row_height(int pixels);

    const QFont& get_font() const { return font; }
    const QColor& get_color_selection() const { return colorSelection; }
    const QColor& get_color_line() const { return colorLine; }

    /// The family for the characters: a system CJK font, else the bundled writing font.
    /// Chosen once per run.
    static QString chin_font_family();

    /// A click on a row (not ending a drag), with the row's index.
    ki::Listener<int> liRowClicked;

    /// What the practice history knows of a code point, for the mark in its row: mastery, due.
    using MarkOf = std::function<std::pair<progress::Mastery, bool>(int codePoint)>;
    void set_mark_of(MarkOf provider) { markOf = std::move(provider); }

private:
    void update_row_height();

    AppData& data;
    QFont font;
    QFont textFont;
    bool showUnicode = false;
    QColor colorLine;
    QColor colorSelection;
    int pinnedRowHeight = 0;
    long long hiddenRow = -1;
    MarkOf markOf;
};

}  // namespace morvel::prog2
