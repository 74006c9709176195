#pragma once
// The program's window: it builds the character list, the canvas, the translation line and the
// button bars, and wires them to the lesson state (ControlAnim) and the options record. The
// parts do the work; the window connects them and keeps the learner's choices between runs.

#include <ki/qt/GMainWindow.h>

#include <QTimer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/lesson/DueReview.h"
#include "app/lesson/FeedbackSounds.h"
#include "app/lesson/LessonFlow.h"
#include "app/lesson/LessonOptions.h"
#include "app/lesson/Pronunciation.h"
#include "app/stroke/ControlAnim.h"

namespace ki::qt {
class GPanel;
namespace otf {
class GDataScroller;
}
}  // namespace ki::qt

namespace morvel {
class CanvasHanzi;
namespace search {
class SearchPanel;
}
namespace progress {
class LessonRecorder;
}
}  // namespace morvel

namespace morvel::prog2 {

class AppData;
class Diagnostics;
class LessonControls;
class CharacterList;
class ModelAppData;
class RecallView;
class TodayView;

class Window : public ki::qt::GMainWindow {
    Q_OBJECT
public:
    static constexpr int TIMER_INTERVAL_MS = 100;
    static constexpr int DRAG_THRESHOLD = 4;

    /// `data` must outlive the window. Handed over unloaded, it is loaded by `setup` with the
    /// stored level.
    explicit Window(AppData& data);
    ~Window() override;

    /// Binds the settings section "WinHanzi", runs the framework's set-up, builds the window,
    /// restores its state, finishes with post_ini and registers with the application. The
    /// caller shows the window.
    void setup() override;
    /// Before `setup`: start in level `number` (1 .. Level::COUNT), kept like a choice made in
    /// the Level menu.
    void start_in_level(int number);
    /// Called in `setup` once the level is loaded, before the first widget that measures text:
    /// the start-up waits there for the fonts it loads meanwhile.
    std::function<void()> beforeFirstText;
    /// Called once, right after the first frame has been painted.
    std::function<void()> afterFirstFrame;
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
    long long get_selected_index() const;

    void on_play_sound();

    /// Brings slider, translation line and learn button in line with the mode word.
    void on_mode_changed();
    /// Advances the automatic drawing by one step; runs every TIMER_INTERVAL_MS.
    void on_timer();
    /// Shows level `number` (1 .. Level::COUNT) with its own selected character; a level whose
    /// files are missing gives a message and the level stays as it was. Returns whether it is
    /// shown.
    bool on_level(int number);
    /// The progress panel of the current level (Ctrl+P); a click in it selects a character.
    void on_progress();
    /// Selects and shows the character `code` of the current level; nothing when it has none.
    void select_unicode(int code);
    /// The practice history; open once the window has been shown.
    progress::LessonRecorder& get_recorder() { return *recorder; }
    /// Lets the character list be dragged vertically anywhere inside it.

    /// The lesson state: mode, position, strokes traced.
    ControlAnim& get_control() { return control; }
    /// What comes next: rounds, hints, the next character, review.
    LessonFlow& get_flow() { return flow; }
    /// The learn-mode effect sounds; tests listen to what is played.
    FeedbackSounds& get_feedback() { return feedback; }
    /// The options as they are now; `apply_options` changes, shows and saves them.
    LessonOptions get_options() const;
    void apply_options(const LessonOptions& next);

protected:
    void changeEvent(QEvent* ev) override;
    void paintEvent(QPaintEvent* ev) override;

private:
    friend class Diagnostics;

    void on_lesson_changed(const LessonChange& change);
    /// Selects `index` in the list, scrolls it into view and shows it.
    void select(int index);
    /// Hands a judged trace to the practice history.
    void record_trace(bool accepted);
    void update_translation(int index);
    void update_title();
    /// The "12 due" label and the list marks, after the history changed.
    void update_progress_view();
    void update_fonts();
    void retranslate();
    /// Writes every setting to the store now, so that no change waits for the quit.
    void save_settings_now();

    AppData& data;
    ControlAnim control;
    LessonFlow flow;
    LessonOptions options;
    CanvasHanzi* canvas = nullptr;
    ModelAppData* model = nullptr;
    ki::qt::otf::GDataScroller* scroller = nullptr;
    search::SearchPanel* search = nullptr;
    std::unique_ptr<CharacterList> list;
    std::unique_ptr<LessonControls> controls;
    std::unique_ptr<RecallView> recall;
    std::unique_ptr<TodayView> today;
    Pronunciation pronunciation;
    FeedbackSounds feedback;
    std::unique_ptr<progress::LessonRecorder> recorder;
    DueReview review;
    // The start-up selection's recording is played after the first frame (see post_ini).
    bool deferAutoPlay = false;
    bool autoPlayPending = false;
    // The practice history is opened once, after the first frame.
    bool historyPending = false;
    int ticks = 0;
    const std::string listenerKey = "Window@" + std::to_string(reinterpret_cast<quintptr>(this));
    QTimer timer;
};

}  // namespace morvel::prog2
