#pragma once
// The controls below the canvas: the translation line, the button bar (Options, Fullscreen,
// Play Sound, Previous, Next, Show/Hide List, Learn, then the "due" and pinyin labels) and the
// drawing-progress slider with its label. They show what the window hands them and report
// clicks; the lesson state stays in the window's model.

#include <QString>
#include <functional>
#include <type_traits>
#include <vector>

class QFont;

namespace ki::qt {
class GButton;
class GLabel;
class GPanel;
template <typename T>
requires std::is_arithmetic_v<T>
class GenericSlider;
}  // namespace ki::qt

namespace morvel::prog2 {

class LessonControls {
public:
    /// What a click does; every action is set by the window.
    struct Actions {
        std::function<void()> options, fullScreen, sound, previous, next, list, learn;
        /// The slider moved by hand to this percentage.
        std::function<void(unsigned int)> slider;
    };

    /// Builds the three rows at the end of `column`; the widgets belong to it.
    LessonControls(ki::qt::GPanel* column, const Actions& actions);

    /// Tool tips in the current language.
    void retranslate();
    /// Translation and pinyin 1.3 times the window's font. The pinyin label gets the width of
    /// the widest of `pinyins` and of the longest syllables, so the buttons before it never move
    /// when the pinyin or the level changes.
    void fit_fonts(const QFont& windowFont, std::vector<QString> pinyins);
    /// Pinyin and sound button of the character now shown.
    void show_character(const QString& pinyin, bool recorded);
    void show_translation(const QString& meaning);
    /// The learn button's icon and which of the rows are seen.
    void show_mode(bool learn, bool slider, bool translation);
    /// Slider and label at `progress` percent; the slider does not report this move.
    void show_progress(float progress);
    void show_list_shown(bool shown);
    /// The buttons of writing from memory: on and off, and "Show me" (seen only while on).
    void on_recall(const std::function<void()>& toggle, const std::function<void()>& showMe);
    void show_recall(bool on);
    /// The button of today's session, and its progress line above the translation (hidden when
    /// `line` is empty).
    void on_today(const std::function<void()>& toggle);
    void show_today(bool on, const QString& line);
    /// The "12 due" label; hidden when `shown` is false.
    void show_due(bool shown, const QString& text);
    /// The "due" label gets the width of the widest of `samples`, so that no button moves when
    /// its text changes. Again after a change of language or font.
    void fit_due(const std::vector<QString>& samples);

private:
    ki::qt::GLabel* labelToday = nullptr;
    ki::qt::GPanel* panTranslation = nullptr;
    ki::qt::GLabel* labelTranslation = nullptr;
    ki::qt::GButton* buttonOptions = nullptr;
    ki::qt::GButton* buttonFullScreen = nullptr;
    ki::qt::GButton* buttonSound = nullptr;
    ki::qt::GButton* buttonPrev = nullptr;
    ki::qt::GButton* buttonNext = nullptr;
    ki::qt::GButton* buttonList = nullptr;
    ki::qt::GButton* buttonLearn = nullptr;
    ki::qt::GButton* buttonRecall = nullptr;
    ki::qt::GButton* buttonShowMe = nullptr;
    ki::qt::GButton* buttonToday = nullptr;
    ki::qt::GLabel* labelDue = nullptr;
    ki::qt::GLabel* labelPinyin = nullptr;
    ki::qt::GPanel* panSlider = nullptr;
    ki::qt::GenericSlider<unsigned int>* slider = nullptr;
    ki::qt::GLabel* labelProgress = nullptr;
};

}  // namespace morvel::prog2
