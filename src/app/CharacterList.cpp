#include "app/CharacterList.h"

#include <ki/qt/components/GLabel.h>
#include <ki/qt/components/GPanel.h>
#include <ki/qt/components/otf/GDataScroller.h>

#include <QFontMetrics>
#include <QStyle>
#include <algorithm>

#include "app/ModelAppData.h"

namespace morvel::prog2 {

CharacterList::CharacterList(ki::qt::GPanel* parent, AppData& data, QObject* owner, MarkOf markOf,
                             const std::function<QWidget*(ki::qt::GPanel*)>& between) {
    panel = parent->gen_panel(ki::qt::GLAYOUT::VERT, QStringLiteral("list"));
    panel->set_margins(0);
    panel->set_spacing(2);
    title = panel->gen_label({}, QStringLiteral("level"));
    title->setAlignment(Qt::AlignCenter);
    title->setWordWrap(true);
    panel->add_widget(between(panel), 0);
    view = new ki::qt::otf::GDataScroller(panel);
    view->setFrameShadow(QFrame::Sunken);
    panel->add_widget(view, 1);
    rows = new ModelAppData(data, owner, view->font());
    rows->set_mark_of(std::move(markOf));
}

void CharacterList::show_title(const QString& text) {
    title->setText(text);
}

bool CharacterList::toggle() {
    const bool show = panel->isHidden();
    panel->setVisible(show);
    return show;
}

void CharacterList::apply(bool showUnicode, bool scrollbar, const QFontMetrics& text) {
    if (showUnicode != rows->is_show_unicode()) {
        rows->set_show_unicode(showUnicode);
        rows->update_model();
    }
    scrollbarShown = scrollbar;
    view->set_scrollbar_vert_visible(scrollbar);
    fit_width(text);
}

void CharacterList::fit_width(const QFontMetrics& text) {
    // Wide enough for the character and the longest pinyin of one syllable, not more.
    const int glyph = QFontMetrics(rows->get_font()).horizontalAdvance(QChar(0x4E2D));
    const int pinyin = text.horizontalAdvance(QStringLiteral("zhuàng")) + text.height();
    int width = std::max(glyph * 2, pinyin) + 2 * ModelAppData::ROW_MARGIN;
    if (scrollbarShown) width += view->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    panel->setFixedWidth(width + 2 * view->frameWidth());
}

void CharacterList::on_change_theme(unsigned int theme) {
    rows->on_change_theme(theme);
    view->update_model();
}

}  // namespace morvel::prog2
