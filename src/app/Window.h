#pragma once
// The program's window: the scrolling character list, the canvas on which the character is
// drawn or traced, the translation line, the button bars and the options menu. It owns the
// animation control and keeps the learner's options and selection between runs.

#include <ki/qt/GMainWindow.h>
#include <ki/qt/components/GenericSlider.h>

#include <QPoint>
#include <QTimer>
#include <cstdint>

#include "app/stroke/ControlAnim.h"

class QMouseEvent;

namespace ki::qt {
class GButton;
class GLabel;
class GPanel;
class GSound;
class GSoundEffect;
namespace otf {
class GDataScroller;
}
}  // namespace ki::qt

namespace morvel {
class CanvasHanzi;
}

namespace morvel::prog2 {

class AppData;
class ModelAppData;

class Window : public ki::qt::GMainWindow {
    Q_OBJECT
public:
    /// Bits of the animation control's mode word.
    static constexpr unsigned int MODE_LEARN = 0x01;
    static constexpr unsigned int MODE_TRANSLATION = 0x02;
    static constexpr unsigned int MODE_AUTO_PLAY = 0x04;
    static constexpr unsigned int MODE_SLIDER = 0x08;
    static constexpr unsigned int MODE_AUTO_DRAW = 0x10;
    /// Automatic drawing held (the learner moved the slider); cleared on every selection.
    static constexpr unsigned int MODE_PAUSED = 0x20;
    static constexpr unsigned int MODE_KNOWN = 0x3F;

    static constexpr int TIMER_INTERVAL_MS = 100;
    static constexpr int INC_PROGRESS_DEFAULT = 3;
    static constexpr int DRAG_THRESHOLD = 4;
    /// Tolerance radii the options menu offers, and the range accepted from the settings.
    static constexpr int R_CIRCLE_MENU_MIN = 40;
    static constexpr int R_CIRCLE_MENU_MAX = 200;
    static constexpr int R_CIRCLE_MENU_STEP = 20;
    static constexpr int R_CIRCLE_STORED_MIN = 10;
    static constexpr int R_CIRCLE_STORED_MAX = 400;

    static constexpr const char* KEY_SHOW_UNICODE = "flagShowUnicode";
    static constexpr const char* KEY_SCROLLBAR_VISIBLE = "flagScrollbarVisible";
    static constexpr const char* KEY_VAL_TEST = "valTest";
    static constexpr const char* KEY_SELECTED_INDEX = "selectedIndex";

    /// `data` must outlive the window.
    explicit Window(AppData& data);
    ~Window() override;

    /// Binds the settings section "WinHanzi", runs the framework's set-up, builds the window,
    /// restores its state, finishes with post_ini and registers with the application. The
    /// caller shows the window.
    void setup() override;
    void ini() override;
    void post_ini() override;
    void save_state() override;
    void restore_state() override;
    void setup_base_hotkeys() override;
    void on_help() override;
    void on_change_theme(unsigned int theme) override;
    void on_menu_options_top(ki::qt::GMenu* menu) override;
    void on_menu_options_bottom(ki::qt::GMenu* menu) override;

    /// Shows catalogue entry `index`; a character whose strokes cannot be built changes nothing.
    void on_index(int index);
    /// One character back (`flagUp`) or on; stops at both ends.
    void inc_sel_index(bool flagUp);

    void on_play_sound();
    bool sound_exists(int unicode) const;
    /// ":/wb/shared-res/zh/fono/<code>.mp3".
    static QString sound_path(int unicode);

    /// Brings canvas, slider, translation line and learn button in line with the mode word.
    void on_mode_changed();
    /// Advances the automatic drawing by one step; runs every TIMER_INTERVAL_MS.
    void on_timer();
    void on_set_strokes_learned(int n);
    void on_event_stroke_learned();
    /// Lets the character list be dragged vertically anywhere inside it.
    void ini_filter_global_mouse();

    /// Debugging aids: the state to the log, and a counter kept in the settings.
    void on_test1();
    void on_test2();

    /// Saves the window in each theme and mode, the options menu and the About box as PNG
    /// files into `folder` (command-line option "--__screenshots <folder>").
    void save_screenshots(const QString& folder);

    ControlAnim& get_control() { return control; }
    CanvasHanzi* get_canvas() const { return canvas; }
    ModelAppData* get_model() const { return model; }
    ki::qt::otf::GDataScroller* get_scroller() const { return scroller; }
    ki::qt::GButton* get_button_sound() const { return buttonSound; }
    ki::qt::GenericSlider<unsigned int>* get_slider() const { return slider; }
    ki::qt::GLabel* get_label_translation() const { return labelTranslation; }
    ki::qt::GPanel* get_panel_translation() const { return panTranslation; }
    ki::qt::GSound* get_sound() const { return sound; }
    int get_inc_progress() const { return incProgress; }
    bool is_scrollbar_visible() const { return flagScrollbarVisible; }
    long long get_selected_index() const;

protected:
    void changeEvent(QEvent* ev) override;
    void paintEvent(QPaintEvent* ev) override;

private:
    void apply_mode(unsigned int flags, unsigned int changed);
    void update_translation(int index);
    void update_progress_label(float progress);
    void update_fonts();
    void update_list_width();
    void retranslate();
    void on_toggle_list();
    void on_slider(unsigned int value);
    /// Writes every setting to the store now, so that no change waits for the quit.
    void save_settings_now();
    void on_hook_press(QMouseEvent* ev);
    void on_hook_move(QMouseEvent* ev);
    void on_hook_release(QMouseEvent* ev);
    std::string listener_key() const;

    AppData& data;
    ControlAnim control;
    CanvasHanzi* canvas = nullptr;
    ModelAppData* model = nullptr;
    ki::qt::otf::GDataScroller* scroller = nullptr;
    ki::qt::GenericSlider<unsigned int>* slider = nullptr;
    ki::qt::GLabel* labelProgress = nullptr;
    ki::qt::GLabel* labelPinyin = nullptr;
    ki::qt::GPanel* panList = nullptr;
    ki::qt::GPanel* panTranslation = nullptr;
    ki::qt::GLabel* labelTranslation = nullptr;
    ki::qt::GPanel* panButtons2 = nullptr;
    ki::qt::GButton* buttonOptions = nullptr;
    ki::qt::GButton* buttonFullScreen = nullptr;
    ki::qt::GButton* buttonSound = nullptr;
    ki::qt::GButton* buttonPrev = nullptr;
    ki::qt::GButton* buttonNext = nullptr;
    ki::qt::GButton* buttonList = nullptr;
    ki::qt::GButton* buttonLearn = nullptr;
    ki::qt::GSound* sound = nullptr;
    ki::qt::GSoundEffect* quietEffect = nullptr;
    // The start-up selection's recording is played after the first frame (see post_ini).
    bool deferAutoPlay = false;
    bool autoPlayPending = false;
    QTimer timer;

    bool flagScrollbarVisible = true;
    uint32_t valTest = 0;
    int incProgress = INC_PROGRESS_DEFAULT;

    QPoint ptPress;
    int dragThreshold = DRAG_THRESHOLD;
    bool dragged = false;
    bool tracking = false;
    long long topIndexPress = 0;
};

}  // namespace morvel::prog2
