#include "app/controls/LessonControls.h"

#include <ki/qt/components/GButton.h>
#include <ki/qt/components/GLabel.h>
#include <ki/qt/components/GPanel.h>
#include <ki/qt/components/GenericSlider.h>
#include <ki/qt/guitools/GFontPreload.h>
#include <ki/qt/lang.h>
#include <ki/str/xprintF.h>
#include <ki/tools/os.h>

#include <QFontMetrics>
#include <algorithm>

#include "app/recall/RecallLayer.h"
#include "app/today/TodayView.h"

namespace morvel::prog2 {

using ki::qt::lang::tt;

namespace {

constexpr const char* ICON_SOUND_ON = "^icons/sound_on.svg";
constexpr const char* ICON_SOUND_OFF = "^icons/sound_off.svg";
constexpr const char* ICON_STROKE = "^icons/stroke.svg";
constexpr const char* ICON_STROKE_NOT = "^icons/stroke-not.svg";
constexpr const char* ICON_HIDE = "^icons/hide.svg";
constexpr const char* ICON_SHOW = "^icons/show.svg";

}  // namespace

LessonControls::LessonControls(ki::qt::GPanel* column, const Actions& actions) {
    using ki::qt::GLAYOUT;
    labelToday = column->gen_label({}, QStringLiteral("today"));
    labelToday->setAlignment(Qt::AlignCenter);
    labelToday->setVisible(false);
    panTranslation = column->gen_panel(GLAYOUT::HORZ, QStringLiteral("translatation"));
    panTranslation->set_margins(8, 2, 8, 2);
    labelTranslation = panTranslation->gen_label({}, QStringLiteral("translation"));
    labelTranslation->setAlignment(Qt::AlignCenter);
    labelTranslation->setWordWrap(true);
    labelTranslation->setTextInteractionFlags(Qt::TextSelectableByMouse);
    panTranslation->add_widget(labelTranslation, 1);

    ki::qt::GPanel* buttons = column->gen_panel(GLAYOUT::HORZ, QStringLiteral("buttons"));
    buttons->set_margins(2, 0, 2, 0);
    buttons->set_spacing(ki::os::is_small_device() ? 14 : 6);
    buttonOptions = buttons->gen_button(QStringLiteral("^icons/wheel.svg"), {});
    buttonFullScreen = buttons->gen_button(QStringLiteral("^icons/expand.svg"), {});
    buttons->add_stretch();
    buttonSound = buttons->gen_button(QString::fromLatin1(ICON_SOUND_ON), {});
    buttonPrev = buttons->gen_button(QStringLiteral("^icons/ar_left.svg"), {});
    buttonNext = buttons->gen_button(QStringLiteral("^icons/ar_right.svg"), {});
    buttons->add_stretch();
    buttonList = buttons->gen_button(QString::fromLatin1(ICON_HIDE), {});
    buttonLearn = buttons->gen_button(QString::fromLatin1(ICON_STROKE), {});
    buttonRecall = buttons->gen_button(QStringLiteral("^icons/help.svg"), {});
    buttonRecall->setCheckable(true);
    buttonShowMe = buttons->gen_button(QStringLiteral("^icons/show.svg"), {});
    // Its place is kept while it is hidden, so no button moves when writing from memory starts.
    QSizePolicy keep = buttonShowMe->sizePolicy();
    keep.setRetainSizeWhenHidden(true);
    buttonShowMe->setSizePolicy(keep);
    buttonShowMe->setVisible(false);
    buttonToday = buttons->gen_button(QStringLiteral("^icons/play.svg"), {});
    buttonToday->setCheckable(true);
    labelDue = buttons->gen_label({}, QStringLiteral("due"));
    labelDue->setVisible(false);
    labelDue->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    labelPinyin = buttons->gen_label({}, QStringLiteral("pinyin"));
    labelPinyin->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    const std::pair<ki::qt::GButton*, const std::function<void()>*> clicks[] = {
        {buttonOptions, &actions.options}, {buttonFullScreen, &actions.fullScreen},
        {buttonSound, &actions.sound},     {buttonPrev, &actions.previous},
        {buttonNext, &actions.next},       {buttonList, &actions.list},
        {buttonLearn, &actions.learn},
    };
    for (const auto& [button, action] : clicks) button->liClick += *action;

    panSlider = column->gen_panel(GLAYOUT::HORZ, QStringLiteral("buttons2"));
    panSlider->set_margins(8, 0, 8, 4);
    panSlider->add_spacing(8);
    slider = new ki::qt::GenericSlider<unsigned int>(panSlider, 0, 100);
    slider->setObjectName(QStringLiteral("progressSlider"));
    panSlider->add_widget(slider, 1);
    panSlider->add_spacing(8);
    labelProgress = panSlider->gen_label(QStringLiteral("100 %"), QStringLiteral("progress"));
    labelProgress->setMinimumWidth(labelProgress->fontMetrics().horizontalAdvance(QStringLiteral("100 %")));
    labelProgress->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    slider->liValue += actions.slider;
}

void LessonControls::retranslate() {
    buttonOptions->setToolTip(tt("Options", "Optionen", "Настройки"));
    buttonFullScreen->setToolTip(tt("Toggle fullscreen", "Vollbild umschalten", "Полноэкранный режим"));
    buttonSound->setToolTip(tt("Play Sound", "Ton abspielen", "Воспроизвести звук"));
    buttonPrev->setToolTip(tt("Previous Hieroglyph", "Vorheriges Schriftzeichen", "Предыдущий иероглиф"));
    buttonNext->setToolTip(tt("Next Hieroglyph", "Nächstes Schriftzeichen", "Следующий иероглиф"));
    buttonList->setToolTip(tt("Show/Hide List", "Liste anzeigen/ausblenden", "Показать/скрыть список"));
    buttonLearn->setToolTip(tt("Learn the correct strokes in the correct order",
                               "Lerne die richtigen Striche in der richtigen Reihenfolge",
                               "Учите правильные черты в правильном порядке"));
    slider->setToolTip(tt("Drawing progress", "Zeichenfortschritt", "Ход рисования"));
    // Named for screen readers as the icon-only buttons are, by what its tooltip says.
    slider->setAccessibleName(slider->toolTip());
    buttonRecall->setToolTip(recall::mode_text());
    buttonShowMe->setToolTip(recall::show_me_text());
    buttonToday->setToolTip(today::button_text());
}

void LessonControls::on_recall(const std::function<void()>& toggle, const std::function<void()>& showMe) {
    buttonRecall->liClick += toggle;
    buttonShowMe->liClick += showMe;
}

void LessonControls::show_recall(bool on) {
    buttonRecall->setChecked(on);
    buttonShowMe->setVisible(on);
}

void LessonControls::on_today(const std::function<void()>& toggle) {
    buttonToday->liClick += toggle;
}

void LessonControls::show_today(bool on, const QString& line) {
    buttonToday->setChecked(on);
    labelToday->setVisible(!line.isEmpty());
    labelToday->setText(line);
}

void LessonControls::fit_fonts(const QFont& windowFont, std::vector<QString> pinyins) {
    // Set explicitly, so they no longer inherit: the window calls this again when its font changes.
    QFont larger = windowFont;
    if (larger.pointSizeF() > 0) larger.setPointSizeF(larger.pointSizeF() * 1.3);
    labelTranslation->setFont(larger);
    labelPinyin->setFont(larger);
    // The longest syllables of Mandarin in every tone join in, so that the width is the same in
    // every level: the buttons keep their places when the learner changes level too.
    for (const char* syllable : {"zhuāng", "zhuáng", "zhuǎng", "zhuàng", "chuāng", "chuáng", "chuǎng",
                                 "chuàng", "shuāng", "shuáng", "shuǎng", "shuàng"})
        pinyins.push_back(QString::fromUtf8(syllable));
    // Measuring every pinyin of a large level costs milliseconds at start-up; the widest is
    // among the longest, so only those are measured.
    const size_t measured = std::min<size_t>(pinyins.size(), 24);
    std::partial_sort(pinyins.begin(), pinyins.begin() + static_cast<std::ptrdiff_t>(measured), pinyins.end(),
                      [](const QString& a, const QString& b) { return a.size() > b.size(); });
    int widest = 0;
    const QFontMetrics metrics(larger);
    for (size_t i = 0; i < measured; ++i) widest = std::max(widest, metrics.horizontalAdvance(pinyins[i]));
    labelPinyin->setFixedWidth(widest + metrics.averageCharWidth());
}

void LessonControls::show_character(const QString& pinyin, bool recorded) {
    buttonSound->setEnabled(recorded);
    buttonSound->set_icon(QString::fromLatin1(recorded ? ICON_SOUND_ON : ICON_SOUND_OFF));
    labelPinyin->setText(pinyin);
}

void LessonControls::show_translation(const QString& meaning) {
    // Selectable, the label makes a new document for each text, laid out first in the
    // application's font.
    const ki::qt::AppFontScope scope(labelTranslation->font());
    labelTranslation->setText(meaning);
}

void LessonControls::show_mode(bool learn, bool slider, bool translation) {
    buttonLearn->set_icon(QString::fromLatin1(learn ? ICON_STROKE : ICON_STROKE_NOT));
    panSlider->setVisible(slider);
    panTranslation->setVisible(translation);
}

void LessonControls::show_progress(float progress) {
    slider->set_value_no_notify(static_cast<unsigned int>(progress));
    labelProgress->setText(ki::str::qprintF("$ %", static_cast<int>(progress)));
}

void LessonControls::show_list_shown(bool shown) {
    buttonList->set_icon(QString::fromLatin1(shown ? ICON_HIDE : ICON_SHOW));
}

void LessonControls::fit_due(const std::vector<QString>& samples) {
    const QFontMetrics metrics(labelDue->font());
    int widest = 0;
    for (const QString& text : samples) widest = std::max(widest, metrics.horizontalAdvance(text));
    labelDue->setFixedWidth(widest + metrics.averageCharWidth());
}

void LessonControls::show_due(bool shown, const QString& text) {
    labelDue->setVisible(shown);
    if (shown) labelDue->setText(text);
}

}  // namespace morvel::prog2
