#include "app/Window.h"

#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/qt/components/GMenu.h>
#include <ki/qt/components/GPanel.h>
#include <ki/qt/components/otf/GDataScroller.h>
#include <ki/qt/dialogs/GMessageBox.h>
#include <ki/qt/guitools/GGui.h>
#include <ki/qt/lang.h>
#include <ki/str/xprintF.h>

#include <QAction>
#include <QStatusBar>
#include <algorithm>

#include "app/AppData.h"
#include "app/CharacterList.h"
#include "app/Diagnostics.h"
#include "app/ModelAppData.h"
#include "app/controls/LessonControls.h"
#include "app/lesson/LevelSource.h"
#include "app/morvel.h"
#include "app/options/OptionsMenu.h"
#include "app/practice/Rejection.h"
#include "app/progress/LessonRecorder.h"
#include "app/progress/ProgressPanel.h"
#include "app/recall/RecallView.h"
#include "app/search/SearchPanel.h"
#include "app/stroke/Anim.h"
#include "app/stroke/CanvasHanzi.h"
#include "app/today/TodayView.h"
#include "app/worksheet/WorksheetDialog.h"

namespace morvel::prog2 {

using ki::qt::lang::tt;

Window::Window(AppData& appData)
    : data(appData),
      flow(control,
           [this](int ms, std::function<void()> then) { QTimer::singleShot(ms, this, std::move(then)); }),
      pronunciation(this),
      feedback(this, [this]() { return pronunciation.is_playing(); }),
      recorder(std::make_unique<progress::LessonRecorder>()),
      review(*recorder, [this]() { return data.code_points(); }) {
    control.liChanged += [this](const LessonChange& change) { on_lesson_changed(change); };
    flow.set_source(
        std::make_unique<LevelSource>([this]() { return static_cast<int>(model->row_count()); },
                                      [this](int from, int step) { return review.next_due(from, step); }));
    flow.liShow += [this](const int& index) { select(index); };
    flow.liFeedback += [this](const Feedback& what) { feedback.play(what); };
    flow.liClearTrace += [this]() { canvas->clear_path_mouse(); };
    flow.liFinished += [this](const int& round) {
        recorder->completed(round, canvas->get_score_card().character_score());
        update_progress_view();
    };
    flow.liHint += [this]() { recorder->hint_shown(); };
    // A recall accepted with its grade is one review of the character's card.
    flow.liGraded.append("history", [this](const GradedRecall& recall) {
        recorder->graded(recall.codePoint, recall.rating, recall.durationMs);
    });
    flow.set_median([this](int code) { return recorder->median_recall_ms(code); });
    connect(&timer, &QTimer::timeout, this, [this]() { on_timer(); });
    ki::qt::lang::get_listener().set(listenerKey, [this](const int&) { retranslate(); });
}

Window::~Window() {
    timer.stop();
    ki::qt::lang::get_listener().remove(listenerKey);
}

void Window::setup() {
    setup_node<ki::qt::WindowClazz<"WinHanzi">>();
    GMainWindow::setup();
    // An unloaded catalogue gets the level the learner left off in: start-up reads only its files.
    if (data.empty() && !data.switch_to(Level::shipped(LessonOptions::stored_level(nWin)))) data.load();
    if (beforeFirstText) beforeFirstText();
    ini();
    restore_state();
    post_ini();
    if (ki::qt::gApp != nullptr) ki::qt::gApp->add_window(this);
}

void Window::start_in_level(int number) {
    // Written where the set-up reads the stored level.
    setup_node<ki::qt::WindowClazz<"WinHanzi">>();
    nWin.set(QStringLiteral("level"), number);
}

long long Window::get_selected_index() const {
    return model != nullptr ? model->get_selected_index() : -1;
}

void Window::ini() {
    using ki::qt::GLAYOUT;
    update_title();
    set_window_icon(QStringLiteral("^icons/quenlo.svg"));

    ki::qt::GPanel* mainPanel = gen_main_panel(GLAYOUT::VERT);
    mainPanel->set_spacing(0);
    mainPanel->set_margins(0);
    ki::qt::GPanel* content = gen_log_panel(mainPanel);
    ki::qt::GPanel* body = content->gen_panel(GLAYOUT::HORZ, QStringLiteral("body"), 1);
    body->set_margins(6);
    body->set_spacing(6);

    list = std::make_unique<CharacterList>(
        body, data, this,
        [this](int code) { return std::make_pair(recorder->mastery(code), recorder->is_due(code)); },
        [this](ki::qt::GPanel* column) { return search = new search::SearchPanel(column); });
    model = list->model();
    scroller = list->scroller();
    search->onChosen = [this](int level, int code) {
        if (level == data.get_level().number || on_level(level)) select_unicode(code);
    };
    model->liRowClicked += [this](const int& index) {
        // The list has already moved its selection: the canvas tells what was shown.
        const bool shown = canvas->get_unicode() == data.unicode_at(static_cast<unsigned int>(index));
        if (!shown || !flow.again_if_learning()) on_index(index);
    };
    scroller->ini(model);

    ki::qt::GPanel* right = body->gen_panel(GLAYOUT::VERT, QStringLiteral("right"), 1);
    right->set_margins(0);
    right->set_spacing(4);
    canvas = new CanvasHanzi(right);
    right->add_widget(canvas, 1);
    canvas->config_load(nWin);
    canvas->set_lesson(&control);
    canvas->set_captions(true);
    canvas->listenerStrokeLearned += [this]() {
        record_trace(true);
        flow.stroke_accepted();
    };
    canvas->listenerStrokeRejected += [this]() {
        record_trace(false);
        flow.stroke_rejected();
    };
    const unsigned int first = static_cast<unsigned int>(std::max(0LL, model->get_selected_index()));
    ki::GSysResult<Anim> anim = Anim::build_from_file(data.svg_file_path_at(first));
    ki::pp("::build_anim $", anim.ok() ? std::string("ok") : anim.to_string());
    if (anim.ok()) canvas->set_anim(anim.take());

    controls = std::make_unique<LessonControls>(
        right, LessonControls::Actions{
                   [this]() { on_menu_options(OPTIONS_ALL); }, [this]() { on_toggle_fullscreen(); },
                   [this]() { on_play_sound(); }, [this]() { flow.move(-1); }, [this]() { flow.move(+1); },
                   [this]() { controls->show_list_shown(list->toggle()); },
                   [this]() {
                       flow.set_learn(!control.is_mode_bit(MODE_LEARN));
                       save_settings_now();
                   },
                   [this](unsigned int value) { control.set_from_slider(value); }});
    recall = std::make_unique<RecallView>(RecallView::Parts{this, canvas, model, scroller, controls.get()});
    today = std::make_unique<TodayView>(TodayView::Parts{this, controls.get()});

    retranslate();
    update_fonts();
    scroller->set_scrollbar_vert_visible(options.scrollbarVisible);
    scroller->enable_drag(DRAG_THRESHOLD);
    timer.setInterval(TIMER_INTERVAL_MS);
    timer.start();
}

void Window::retranslate() {
    if (controls == nullptr) return;
    controls->retranslate();
    search->retranslate();
    controls->fit_due(DueReview::widest_labels());
    update_title();
    if (control.is_mode_bit(MODE_TRANSLATION) && model->get_selected_index() >= 0)
        update_translation(static_cast<int>(model->get_selected_index()));
    controls->show_due(review.is_active(), review.label());
    // Its caption and the reason of a rejected trace are worded when painted.
    canvas->update();
}

void Window::update_fonts() {
    std::vector<QString> pinyins;
    for (unsigned int i = 0; i < data.size(); ++i) pinyins.push_back(data.appObject_at(i).chinChar.pinyin);
    controls->fit_fonts(font(), std::move(pinyins));
    controls->fit_due(DueReview::widest_labels());
    list->fit_width(fontMetrics());
}

void Window::changeEvent(QEvent* ev) {
    GMainWindow::changeEvent(ev);
    if (ev->type() == QEvent::FontChange && controls != nullptr) update_fonts();
}

void Window::post_ini() {
    on_change_theme(get_theme_shown());
    on_mode_changed();
    const long long selected = std::max(0LL, model->get_selected_index());
    // The first recording waits for the first frame: loading the audio stack takes longest.
    deferAutoPlay = true;
    on_index(static_cast<int>(selected));
    deferAutoPlay = false;
    scroller->ensure_visible(selected);
    GMainWindow::post_ini();
}

void Window::on_index(int index) {
    ki::pp("Window::on_index, index:$", index);
    if (index < 0) {
        ki::pp_warn("Window::on_index, index:$ is negative", index);
        return;
    }
    const AppObject& entry = data.appObject_at(static_cast<unsigned int>(index));
    if (ki::log::is_level_active(ki::log::LOG_DEBUG)) ki::pp("click on:$", entry.to_string());
    if (entry.is_empty()) return;
    ki::GSysResult<Anim> anim =
        Anim::build_from_file(data.svg_file_path_at(static_cast<unsigned int>(index)));
    if (!anim.ok()) return;

    model->set_selected_index(index);
    flow.shown(index, entry.unicode);
    canvas->clear_path_mouse();
    canvas->set_anim(anim.take());
    canvas->set_unicode(entry.unicode);
    std::vector<float> lengths;
    for (const AnimStroke& stroke : canvas->get_anim().strokes)
        lengths.push_back(stroke.pathAnim.get_length());
    control.select(std::move(lengths));
    recorder->character_started(data.get_level().number, entry.unicode);
    // Also when the state did not change: the slider may have been moved by hand.
    controls->show_progress(control.get_progress());

    controls->show_character(entry.chinChar.pinyin, Pronunciation::exists(entry.unicode));
    // Writing from memory, the meaning and the recording are the prompt.
    if (control.is_mode_bit(MODE_TRANSLATION) || flow.is_recall()) update_translation(index);
    if (!control.is_mode_bit(MODE_AUTO_PLAY) && !flow.is_recall()) return;
    if (deferAutoPlay)
        autoPlayPending = true;
    else
        on_play_sound();
}

void Window::paintEvent(QPaintEvent* ev) {
    GMainWindow::paintEvent(ev);
    if (!historyPending) {
        historyPending = true;
        // Checking the history file takes longer than a frame: it waits until the window is seen.
        QTimer::singleShot(0, this, [this]() {
            // Notices during practice (writes failing, saved again) go to the notice area, which
            // is seen only while it holds one.
            QStatusBar* bar = gen_status_bar();
            bar->hide();
            connect(bar, &QStatusBar::messageChanged, bar,
                    [bar](const QString& text) { bar->setVisible(!text.isEmpty()); });
            recorder->liNotice += [bar](const progress::LessonRecorder::Notice& notice) {
                bar->showMessage(notice.text, notice.lasting ? 0 : 10'000);
            };
            const QString notice = recorder->open();
            if (!notice.isEmpty())
                ki::qt::GMessageBox::show_info(this, tt("Progress", "Fortschritt", "Прогресс"), notice);
            update_progress_view();
            today->history_opened();
            if (afterFirstFrame) afterFirstFrame();
        });
    }
    if (!autoPlayPending) return;
    autoPlayPending = false;
    // Queued: the frame being painted reaches the screen first.
    QTimer::singleShot(0, this, [this]() {
        if (control.is_mode_bit(MODE_AUTO_PLAY)) on_play_sound();
    });
}

void Window::update_title() {
    setWindowTitle(ki::str::qprintF("quenlo $", get_morvel_version()));
    // The level stands over the list, where the learner looks for the characters.
    if (list != nullptr)
        list->show_title(tt("Level %1", "Stufe %1", "Уровень %1").arg(data.get_level().number));
}

bool Window::on_level(int number) {
    const int current = data.get_level().number;
    if (number == current) return true;
    LessonOptions next = get_options();
    if (!data.switch_to(Level::shipped(number))) {
        ki::qt::GMessageBox::show_warning(
            this, tt("Level", "Stufe", "Уровень"),
            tt("The characters of level %1 could not be loaded. Level %2 stays.",
               "Die Zeichen der Stufe %1 konnten nicht geladen werden. Es bleibt bei Stufe %2.",
               "Не удалось загрузить иероглифы уровня %1. Остаётся уровень %2.")
                .arg(number)
                .arg(current));
        return false;
    }
    next.level = number;
    const int selected = next.clamp_selection(number, static_cast<int>(data.size()));
    options = next;
    model->set_selected_index(selected);
    scroller->update_index_win_top(0);
    scroller->update_model();
    update_title();
    update_fonts();
    on_index(selected);
    scroller->ensure_visible(selected);
    save_settings_now();
    return true;
}

void Window::update_translation(int index) {
    const ChinChar& chin = data.appObject_at(static_cast<unsigned int>(index)).chinChar;
    controls->show_translation(chin.meaning(ki::qt::lang::get_lang()));
}

void Window::select(int index) {
    model->set_selected_index(index);
    scroller->ensure_visible(index);
    scroller->update_model();
    on_index(index);
}

void Window::update_progress_view() {
    controls->show_due(review.is_active(), review.label());
    scroller->update_model();
}

void Window::on_progress() {
    if (!recorder->is_open()) return;
    std::vector<ChinChar> chars;
    for (unsigned int i = 0; i < data.size(); ++i) chars.push_back(data.appObject_at(i).chinChar);
    auto* panel = new progress::ProgressPanel(*recorder->store(), std::move(chars), this);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->liSelect += [this](const int& code) { select_unicode(code); };
    panel->show();
}

void Window::select_unicode(int code) {
    if (const int index = data.index_of(code); index >= 0) select(index);
}

void Window::on_play_sound() {
    pronunciation.play(canvas->get_unicode());
}

void Window::on_mode_changed() {
    ki::pp("Window::on_mode_changed");
    const unsigned int flags = control.get_mode_flags_pending();
    const bool translation = (flags & MODE_TRANSLATION) != 0 || flow.is_recall();
    controls->show_mode((flags & MODE_LEARN) != 0, (flags & MODE_SLIDER) != 0, translation);
    if (translation && model->get_selected_index() >= 0)
        update_translation(static_cast<int>(model->get_selected_index()));
    canvas->update();
}

void Window::on_lesson_changed(const LessonChange& change) {
    if (canvas == nullptr) return;
    const unsigned int changed = change.changed_bits();
    if ((changed & MODE_LEARN) != 0) canvas->clear_path_mouse();
    if ((changed & ~MODE_PAUSED) != 0) on_mode_changed();
    if (change.after.progress != change.before.progress) controls->show_progress(change.after.progress);
    canvas->update();
}

void Window::on_timer() {
    control.tick();
    // Characters fall due as time passes, and "next in 5 h" counts down.
    if (++ticks % (60 * 1000 / TIMER_INTERVAL_MS) == 0 && review.is_active()) update_progress_view();
}

void Window::record_trace(bool accepted) {
    const QString reason = accepted ? QString() : practice::reason_key(canvas->get_rejection().reason);
    // The aids the learner sees now, as the practice history counts them.
    const unsigned int aids = progress::LessonRecorder::aids_of(
        canvas->aids_shown(), canvas->get_guide_grid() != LessonOptions::GRID_SQUARES);
    recorder->trace(control.get_strokes_learned(), accepted, reason, canvas->get_r_circle(), aids,
                    canvas->get_last_score());
}

void Window::save_settings_now() {
    ki::qt::sync_app(true);
}

void Window::on_change_theme(unsigned int theme) {
    const unsigned int shown = theme >= ki::qt::themes::THEME_NOT_SET ? get_theme_shown() : theme;
    const bool osDark = ki::qt::gApp != nullptr && ki::qt::gApp->is_os_theme_dark_mode();
    if (canvas != nullptr) canvas->on_change_theme(shown, osDark);
    if (list != nullptr) list->on_change_theme(shown);
}

LessonOptions Window::get_options() const {
    LessonOptions current = options;
    current.modeFlags = control.get_mode_flags();
    current.incSpeed = control.get_inc_speed();
    if (canvas != nullptr) {
        current.drawConfig = canvas->get_draw_config();
        current.rCircle = canvas->get_r_circle();
    }
    if (model != nullptr) {
        current.showUnicode = model->is_show_unicode();
        current.level = data.get_level().number;
        current.selection_of(current.level) = static_cast<int>(std::max(0LL, model->get_selected_index()));
    }
    return current;
}

void Window::apply_options(const LessonOptions& next) {
    const LessonOptions before = get_options();
    options = next;
    canvas->set_draw_config(next.drawConfig);
    canvas->set_r_circle(next.rCircle);
    canvas->set_strict(next.strictJudging);
    canvas->set_show_my_strokes(next.showMyStrokes);
    canvas->set_stroke_numbers(next.strokeNumbers);
    canvas->set_guide_grid(next.practiceGrid);
    list->apply(next.showUnicode, next.scrollbarVisible, fontMetrics());
    if (next.incSpeed != before.incSpeed) control.set_inc_speed(next.incSpeed);
    control.set_mode_flags(next.modeFlags);
    flow.set_options(next);
    feedback.set_enabled(next.feedbackSounds);
    review.set_on(next.reviewDue);
    recorder->set_retention(next.desiredRetention / 100.0);
    if (controls != nullptr && next.reviewDue != before.reviewDue) update_progress_view();
    canvas->update();
}

void Window::save_state() {
    ki::pp("*** Window::save_state ***");
    if (model != nullptr) get_options().save(nWin);
    GMainWindow::save_state();
}

void Window::restore_state() {
    ki::pp("*** Window::restore_state ***");
    GMainWindow::restore_state();
    if (model == nullptr) return;
    LessonOptions stored = LessonOptions::load(nWin);
    if (stored.level != data.get_level().number) {
        if (data.switch_to(Level::shipped(stored.level))) {
            scroller->update_model();
            update_fonts();
        } else {
            stored.level = data.get_level().number;
        }
    }
    const int selected = stored.clamp_selection(stored.level, static_cast<int>(data.size()));
    update_title();
    // The step stays at its start value until the learner has chosen one.
    if (!stored.incSpeedStored) stored.incSpeed = control.get_inc_speed();
    model->set_selected_index(selected);
    apply_options(stored);
}

void Window::setup_base_hotkeys() {
    GMainWindow::setup_base_hotkeys();
    const struct {
        const char* name;
        QList<QKeySequence> keys;  // when they differ from the name
        std::function<void()> run;
    } actions[] = {
        {"left", {Qt::Key_Left, Qt::Key_PageUp}, [this]() { flow.move(-1); }},
        {"right", {Qt::Key_Right, Qt::Key_PageDown}, [this]() { flow.move(+1); }},
        {"Ctrl+R", {}, [this]() { flow.again(); }},
        {"Ctrl+P", {}, [this]() { on_progress(); }},
        {"Ctrl+F", {}, [this]() { search->start(); }},
        {"Shift+Right", {}, [this]() { control.step_stroke(true); }},
        {"Shift+Left", {}, [this]() { control.step_stroke(false); }},
        {"Ctrl+Alt+1", {}, [this]() { Diagnostics::log_state(*this); }},
        {"Ctrl+Alt+2", {}, [this]() { Diagnostics::count_test_value(*this); }},
    };
    for (const auto& [name, keys, run] : actions) {
        QAction* action = gen_action(QString::fromLatin1(name));
        if (!keys.isEmpty()) action->setShortcuts(keys);
        connect(action, &QAction::triggered, this, run);
    }
}

void Window::on_menu_options_top(ki::qt::GMenu* menu) {
    fill_options_menu_top(
        menu, {[this]() { return get_options(); },
               [this](const LessonOptions& next) {
                   apply_options(next);
                   save_settings_now();
               },
               [this]() { flow.again(); }, [this](int number) { on_level(number); },
               [this]() {
                   const long long selected = get_selected_index();
                   const QString character =
                       selected < 0
                           ? QString()
                           : data.appObject_at(static_cast<unsigned int>(selected)).chinChar.character();
                   WorksheetDialog::ask_and_write(this, character, data.get_level().number);
               },
               [this]() { on_progress(); }});
}

void Window::on_menu_options_bottom(ki::qt::GMenu* menu) {
    menu->gen_separator();
    menu->gen_action(tt("About", "Über", "О программе"), [this]() { on_help(); });
}

void Window::on_help() {
    ki::qt::GMessageBox::show_info(this, tt("About", "Über", "О программе"), about_text());
}

}  // namespace morvel::prog2
