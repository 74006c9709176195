#include "app/ModelAppData.h"

#include <ki/log/GLog.h>
#include <ki/qt/components/GLabel.h>
#include <ki/qt/components/GPanel.h>
#include <ki/qt/themes.h>
#include <ki/str/xprintF.h>

#include <QFontDatabase>
#include <QFontMetrics>
#include <QPainter>

#include "app/AppData.h"
#include "app/progress/ProgressMark.h"
#include "app/morvel.h"

namespace morvel::prog2 {

namespace {

// The practice state of a row, at its right edge beside the character: at mid-height, so that
// the sliver of a row cut off at the list's bottom never shows a mark without its character.
class RowMark : public QWidget {
public:
    RowMark(QWidget* row, progress::Mastery mastery, bool due) : QWidget(row), mastery(mastery), due(due) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        row->installEventFilter(this);
        place();
    }

protected:
    bool eventFilter(QObject* watched, QEvent* ev) override {
        if (watched == parentWidget() && ev->type() == QEvent::Resize) place();
        return false;
    }
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        progress::ProgressMark::paint(painter, QRectF(rect()), mastery, due, palette());
    }

private:
    void place() {
        const int side = SIZE;
        setGeometry(parentWidget()->width() - side - 2, (parentWidget()->height() - side) / 2, side, side);
    }
    static constexpr int SIZE = 16;
    progress::Mastery mastery;
    bool due;
};

}  // namespace

namespace {

constexpr const char* BUNDLED_FONT = ":/wb/shared-res/fonts/LXGWWenKai-Regular.ttf";
constexpr const char* ROW_CLICK = "ModelAppData";

}  // namespace

ModelAppData::ModelAppData(AppData& appData, QObject* parent, const QFont& rowTextFont)
    : GModel(parent), data(appData), textFont(rowTextFont) {
    font = QFont(chin_font_family());
    font.setPointSize(CHAR_POINT_SIZE);
    // One Han character per label needs no shaping: the glyphs come out the same, and the big
    // layout tables of a CJK font are neither copied nor walked (about 1 MB and a good part of
    // the list's first paint).
    font.setStyleStrategy(QFont::PreferNoShaping);
    on_change_theme(ki::qt::themes::get_theme_type());
    // In the list's font: measured in the application's, the first height loaded a font engine
    // for a size the list never shows.
    update_row_height();
}

QString ModelAppData::chin_font_family() {
    static const QString family = []() -> QString {
        if (!sChinFont1.isEmpty()) return sChinFont1;
        const QStringList cjk = QFontDatabase::families(QFontDatabase::SimplifiedChinese);
        for (const char* name : {"Noto Sans CJK SC", "Noto Serif CJK SC"}) {
            if (cjk.contains(QLatin1String(name))) return QString::fromLatin1(name);
        }
        if (!cjk.isEmpty()) return cjk.first();
        ki::pp_warn("ModelAppData::chin_font_family, no system CJK font, registering '$'", BUNDLED_FONT);
        return reg_ttf_file(QString::fromLatin1(BUNDLED_FONT));
    }();
    return family;
}

long long ModelAppData::row_count() const {
    return data.size();
}

int ModelAppData::get_row_height(int) const {
    return pinnedRowHeight > 0 ? pinnedRowHeight : rowHeight;
}

void ModelAppData::set_row_height(int pixels) {
    pinnedRowHeight = std::max(0, pixels);
}

void ModelAppData::set_show_unicode(bool on) {
    showUnicode = on;
    update_row_height();
}

void ModelAppData::update_row_height() {
    const int textLines = showUnicode ? 2 : 1;
    rowHeight =
        2 * ROW_MARGIN + QFontMetrics(font).height() + textLines * QFontMetrics(textFont).height() + 1;
}

void ModelAppData::on_change_theme(unsigned int theme) {
    ki::pp("ModelAppData::on_change_theme");
    if (theme == ki::qt::themes::THEME_AUTO) theme = ki::qt::themes::map_theme_auto();
    switch (theme) {
        case ki::qt::themes::THEME_DARK:
            colorLine = QColor(72, 72, 76);
            colorSelection = QColor(44, 74, 118);
            break;
        case ki::qt::themes::THEME_GREEN:
            colorLine = QColor(52, 84, 52);
            colorSelection = QColor(58, 104, 58);
            break;
        default:
            colorLine = QColor(222, 222, 226);
            colorSelection = QColor(202, 224, 250);
            break;
    }
}

ki::qt::GPanel* ModelAppData::gen_panel_row(long long row, ki::qt::otf::PanelData* panelData) {
    ki::qt::GPanel* panel = GModel::gen_panel_row(row, panelData);
    if (row == selIndex) {
        // Our own soft selection instead of the strong highlight, with the normal text on it.
        QPalette pal = panel->palette();
        pal.setColor(QPalette::WindowText, pal.color(QPalette::Text));
        panel->setPalette(pal);
        panel->setBackgroundRole(QPalette::Window);
        panel->set_color(QPalette::Window, colorSelection);
    }
    panel->set_margins(ROW_MARGIN);
    panel->set_spacing(0);
    if (row < 0 || row >= row_count()) return panel;
    const AppObject& entry = data.appObject_at(static_cast<unsigned int>(row));
    if (entry.is_empty()) return panel;
    if (panelData != nullptr && panelData->parent != nullptr && panelData->parent->font() != textFont) {
        textFont = panelData->parent->font();
        update_row_height();
    }

    ki::qt::GPanel* column = panel->gen_panel(ki::qt::GLAYOUT::VERT, QStringLiteral("column"));
    column->set_margins(0);
    column->set_spacing(0);
    const bool hidden = row == hiddenRow;
    // A hidden character keeps its row's height, so the list does not move when it comes back.
    ki::qt::GLabel* character = column->gen_label(
        hidden ? QString() : QString(QChar(char16_t(entry.unicode))), QStringLiteral("char"));
    character->setFont(font);
    character->setAlignment(Qt::AlignCenter);
    ki::qt::GLabel* pinyin = column->gen_label(entry.chinChar.pinyin, QStringLiteral("pinyin"));
    pinyin->setAlignment(Qt::AlignCenter);
    if (showUnicode && !hidden) {
        ki::qt::GLabel* code = column->gen_label(QString::number(entry.unicode), QStringLiteral("unicode"));
        code->setAlignment(Qt::AlignCenter);
        code->setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    panel->gen_line(Qt::Horizontal, 1, colorLine);
    if (markOf) {
        const auto [mastery, due] = markOf(entry.unicode);
        if (mastery != progress::Mastery::NEW || due) new RowMark(panel, mastery, due);
    }
    for (QWidget* widget :
         {static_cast<QWidget*>(character), static_cast<QWidget*>(pinyin), static_cast<QWidget*>(column)})
        widget->setAttribute(Qt::WA_TransparentForMouseEvents);
    if (!hidden) panel->setToolTip(ki::str::qprintF("unicode:$", entry.unicode));

    const int index = static_cast<int>(row);
    panel->liMouseClick.set(ROW_CLICK, [this, index](QMouseEvent* const&) {
        if (liRowClicked.has_listener()) liRowClicked.fire_event(index);
        // The click is still being delivered to this row: rebuild once it is done.
        update_model();
    });
    return panel;
}

}  // namespace morvel::prog2
