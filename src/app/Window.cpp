#include "app/Window.h"

#include <ki/log/GLog.h>
#include <ki/qt/GApp.h>
#include <ki/qt/GSound.h>
#include <ki/qt/GSoundEffect.h>
#include <ki/qt/components/GButton.h>
#include <ki/qt/components/GLabel.h>
#include <ki/qt/components/GMenu.h>
#include <ki/qt/components/GPanel.h>
#include <ki/qt/components/otf/GDataScroller.h>
#include <ki/qt/dialogs/GMessageBox.h>
#include <ki/qt/dialogs/GPanelLogView.h>
#include <ki/qt/guitools/GGui.h>
#include <ki/qt/lang.h>
#include <ki/str/xprintF.h>
#include <ki/tools/GSettings.h>
#include <ki/tools/file.h>
#include <ki/tools/os.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFontMetrics>
#include <QMessageBox>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyle>
#include <algorithm>
#include <cmath>

#include "app/AppData.h"
#include "app/ModelAppData.h"
#include "app/morvel.h"
#include "app/stroke/Anim.h"
#include "app/stroke/CanvasHanzi.h"

namespace morvel::prog2 {

using ki::qt::lang::tt;

namespace {

constexpr const char* ICON_SOUND_ON = "^icons/sound_on.svg";
constexpr const char* ICON_SOUND_OFF = "^icons/sound_off.svg";
constexpr const char* ICON_STROKE = "^icons/stroke.svg";
constexpr const char* ICON_STROKE_NOT = "^icons/stroke-not.svg";
constexpr const char* ICON_HIDE = "^icons/hide.svg";
constexpr const char* ICON_SHOW = "^icons/show.svg";
constexpr const char* QUIET_CLIP = ":/wb/shared-res/sounds/quiet.wav";
constexpr const char* WEB_ADDRESS = "https://qlo.de/quenlo";
constexpr unsigned int DRAW_CONFIG_KNOWN =
    CanvasHanzi::DRAW_OUTLINE | CanvasHanzi::DRAW_HELPER_CIRCLES | CanvasHanzi::DRAW_HELPER_LINES;

// A key that is absent is no fault on a first run; one of the wrong type is logged by get().
template <typename T>
T read_or(const ki::store::GNode& node, const char* key, const T& fallback) {
    const QString name = QString::fromLatin1(key);
    return node.attributes.contains(name) ? node.get<T>(name, fallback) : fallback;
}

void banner(const char* title) {
    ki::pp("***********************************");
    ki::pp(title);
    ki::pp("***********************************");
}

}  // namespace

Window::Window(AppData& appData) : data(appData) {
    control.liModeChanged += [this]() { on_mode_changed(); };
    connect(&timer, &QTimer::timeout, this, [this]() { on_timer(); });
    ki::qt::lang::get_listener().set(listener_key(), [this](const int&) { retranslate(); });
}

Window::~Window() {
    timer.stop();
    ki::qt::lang::get_listener().remove(listener_key());
    if (ki::qt::gApp != nullptr) {
        ki::qt::event::EventFilter& filter = ki::qt::gApp->get_event_filter();
        filter.liMousePress.remove(listener_key());
        filter.liMouseMove.remove(listener_key());
        filter.liMouseRelease.remove(listener_key());
    }
}

std::string Window::listener_key() const {
    return "Window@" + std::to_string(reinterpret_cast<quintptr>(this));
}

void Window::setup() {
    setup_node<ki::qt::WindowClazz<"WinHanzi">>();
    GMainWindow::setup();
    ini();
    restore_state();
    post_ini();
    if (ki::qt::gApp != nullptr) ki::qt::gApp->add_window(this);
}

long long Window::get_selected_index() const {
    return model != nullptr ? model->get_selected_index() : -1;
}

void Window::ini() {
    using ki::qt::GLAYOUT;
    setWindowTitle(ki::str::qprintF("quenlo $", get_morvel_version()));
    set_window_icon(QStringLiteral("^icons/quenlo.svg"));

    ki::qt::GPanel* mainPanel = gen_main_panel(GLAYOUT::VERT);
    mainPanel->set_spacing(0);
    mainPanel->set_margins(0);
    ki::qt::GPanel* content = gen_log_panel(mainPanel);
    ki::qt::GPanel* body = content->gen_panel(GLAYOUT::HORZ, QStringLiteral("body"), 1);
    body->set_margins(6);
    body->set_spacing(6);

    panList = body->gen_panel(GLAYOUT::HORZ, QStringLiteral("list"));
    panList->set_margins(0);
    scroller = new ki::qt::otf::GDataScroller(panList);
    scroller->setFrameShadow(QFrame::Sunken);
    panList->add_widget(scroller, 1);
    model = new ModelAppData(data, this);
    scroller->ini(model);

    ki::qt::GPanel* right = body->gen_panel(GLAYOUT::VERT, QStringLiteral("right"), 1);
    right->set_margins(0);
    right->set_spacing(4);
    canvas = new CanvasHanzi(right);
    right->add_widget(canvas, 1);
    canvas->config_load(nWin);
    canvas->listenerStrokeLearned += [this]() { on_event_stroke_learned(); };
    const unsigned int first = static_cast<unsigned int>(std::max(0LL, model->get_selected_index()));
    ki::GSysResult<Anim> anim = Anim::build_from_file(data.svg_file_path_at(first));
    ki::pp("::build_anim $", anim.ok() ? std::string("ok") : anim.to_string());
    if (anim.ok()) canvas->set_anim(anim.take());

    panTranslation = right->gen_panel(GLAYOUT::HORZ, QStringLiteral("translatation"));
    panTranslation->set_margins(8, 2, 8, 2);
    labelTranslation = panTranslation->gen_label({}, QStringLiteral("translation"));
    labelTranslation->setAlignment(Qt::AlignCenter);
    labelTranslation->setWordWrap(true);
    labelTranslation->setTextInteractionFlags(Qt::TextSelectableByMouse);
    panTranslation->add_widget(labelTranslation, 1);

    ki::qt::GPanel* buttons = right->gen_panel(GLAYOUT::HORZ, QStringLiteral("buttons"));
    buttons->set_margins(2, 0, 2, 0);
    buttons->set_spacing(ki::os::is_small_device() ? 14 : 6);
    buttonOptions = buttons->gen_button(QStringLiteral("^icons/wheel.svg"), {});
    buttonFullScreen = buttons->gen_button(QStringLiteral("^icons/expand.svg"), {});
    buttonList = buttons->gen_button(QString::fromLatin1(ICON_HIDE), {});
    buttonLearn = buttons->gen_button(QString::fromLatin1(ICON_STROKE), {});
    buttons->add_stretch();
    buttonPrev = buttons->gen_button(QStringLiteral("^icons/ar_left.svg"), {});
    buttonSound = buttons->gen_button(QString::fromLatin1(ICON_SOUND_ON), {});
    buttonNext = buttons->gen_button(QStringLiteral("^icons/ar_right.svg"), {});
    buttons->add_stretch();
    labelPinyin = buttons->gen_label({}, QStringLiteral("pinyin"));
    labelPinyin->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    buttonOptions->liClick += [this]() { on_menu_options(OPTIONS_ALL); };
    buttonFullScreen->liClick += [this]() { on_toggle_fullscreen(); };
    buttonSound->liClick += [this]() { on_play_sound(); };
    buttonPrev->liClick += [this]() { inc_sel_index(true); };
    buttonNext->liClick += [this]() { inc_sel_index(false); };
    buttonList->liClick += [this]() { on_toggle_list(); };
    buttonLearn->liClick += [this]() {
        control.set_mode_bits(MODE_LEARN, !control.is_mode_bit(MODE_LEARN));
        save_settings_now();
    };

    panButtons2 = right->gen_panel(GLAYOUT::HORZ, QStringLiteral("buttons2"));
    panButtons2->set_margins(8, 0, 8, 4);
    panButtons2->add_spacing(8);
    slider = new ki::qt::GenericSlider<unsigned int>(panButtons2, 0, 100);
    panButtons2->add_widget(slider, 1);
    panButtons2->add_spacing(8);
    labelProgress = panButtons2->gen_label(QStringLiteral("100 %"), QStringLiteral("progress"));
    labelProgress->setMinimumWidth(labelProgress->fontMetrics().horizontalAdvance(QStringLiteral("100 %")));
    labelProgress->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    slider->liValue += [this](const unsigned int& value) { on_slider(value); };

    retranslate();
    update_fonts();
    ki::pp("--------------------");
    scroller->set_scrollbar_vert_visible(flagScrollbarVisible);
    ini_filter_global_mouse();
    timer.setInterval(TIMER_INTERVAL_MS);
    timer.start();
}

void Window::retranslate() {
    if (buttonOptions == nullptr) return;
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
    if (control.is_mode_bit(MODE_TRANSLATION) && model->get_selected_index() >= 0)
        update_translation(static_cast<int>(model->get_selected_index()));
}

void Window::update_fonts() {
    // Set explicitly, so they no longer inherit: follow the window's size by hand.
    QFont larger = font();
    if (larger.pointSizeF() > 0) larger.setPointSizeF(larger.pointSizeF() * 1.3);
    labelTranslation->setFont(larger);
    labelPinyin->setFont(larger);
    update_list_width();
}

void Window::update_list_width() {
    if (panList == nullptr || model == nullptr) return;
    // Wide enough for the character and the longest pinyin of one syllable, not more.
    const int glyph = QFontMetrics(model->get_font()).horizontalAdvance(QChar(0x4E2D));
    const int text = fontMetrics().horizontalAdvance(QStringLiteral("zhuàng")) + fontMetrics().height();
    int width = std::max(glyph * 2, text) + 2 * ModelAppData::ROW_MARGIN;
    if (flagScrollbarVisible) width += scroller->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    panList->setFixedWidth(width + 2 * scroller->frameWidth());
}

void Window::changeEvent(QEvent* ev) {
    GMainWindow::changeEvent(ev);
    if (ev->type() == QEvent::FontChange && labelTranslation != nullptr) update_fonts();
}

void Window::post_ini() {
    on_change_theme(get_theme_shown());
    apply_mode(control.get_mode_flags(), ~0u);
    const long long selected = std::max(0LL, model->get_selected_index());
    // The recording of the first character waits for the first frame: loading the audio
    // stack takes longer than everything else the window needs before it can be seen.
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
    canvas->clear_path_mouse();
    canvas->set_anim(anim.take());
    control.set_mode_bits(MODE_PAUSED, false);
    const float progress = control.is_mode_bit(MODE_LEARN | MODE_AUTO_DRAW) ? 0.0f : 100.0f;
    canvas->set_progress(progress);
    slider->set_value_no_notify(0);
    update_progress_label(0.0f);
    canvas->set_unicode(entry.unicode);
    canvas->set_index_stroke(0);
    canvas->update();

    const bool recorded = sound_exists(entry.unicode);
    buttonSound->setEnabled(recorded);
    buttonSound->set_icon(QString::fromLatin1(recorded ? ICON_SOUND_ON : ICON_SOUND_OFF));
    labelPinyin->setText(entry.chinChar.pinyin);
    if (control.is_mode_bit(MODE_TRANSLATION)) update_translation(index);
    if (!control.is_mode_bit(MODE_AUTO_PLAY)) return;
    if (deferAutoPlay)
        autoPlayPending = true;
    else
        on_play_sound();
}

void Window::paintEvent(QPaintEvent* ev) {
    GMainWindow::paintEvent(ev);
    if (!autoPlayPending) return;
    autoPlayPending = false;
    // Queued: the frame being painted reaches the screen first.
    QTimer::singleShot(0, this, [this]() {
        if (control.is_mode_bit(MODE_AUTO_PLAY)) on_play_sound();
    });
}

void Window::update_translation(int index) {
    const ChinChar& chin = data.appObject_at(static_cast<unsigned int>(index)).chinChar;
    QString meaning;
    switch (ki::qt::lang::get_lang()) {
        case QLocale::English:
            meaning = chin.english;
            break;
        case QLocale::German:
            meaning = chin.german;
            break;
        case QLocale::Russian:
            meaning = chin.russian;
            break;
        default:
            break;
    }
    labelTranslation->setText(meaning);
}

void Window::inc_sel_index(bool flagUp) {
    ki::pp("Window::inc_sel_index, flagUp:$", flagUp);
    const long long current = model->get_selected_index();
    long long next = current;
    if (flagUp) {
        if (current <= 0) return;
        next = current - 1;
    } else {
        if (current >= model->row_count() - 1) return;
        next = current + 1;
    }
    model->set_selected_index(next);
    scroller->ensure_visible(next);
    scroller->update_model();
    on_index(static_cast<int>(next));
}

QString Window::sound_path(int unicode) {
    return ki::str::qprintF(":/wb/shared-res/zh/fono/$.mp3", unicode);
}

bool Window::sound_exists(int unicode) const {
    return ki::io::file::exists(sound_path(unicode));
}

void Window::on_play_sound() {
    if (sound == nullptr) {
        sound = new ki::qt::GSound(this);
        sound->ini();
    }
    if (ki::os::is_android() && quietEffect == nullptr) {
        // Kept looping for the whole run: the audio output then stays open between recordings,
        // so their first syllable is not cut off.
        quietEffect = new ki::qt::GSoundEffect(this);
        quietEffect->ini();
        quietEffect->play_endless(QString::fromLatin1(QUIET_CLIP));
    }
    const int code = canvas->get_unicode();
    if (!sound_exists(code)) {
        ki::pp("Window::on_play_sound, unicode:$ sound ?", code);
        return;
    }
    ki::pp("Window::on_play_sound, unicode:$", code);
    const QString path = sound_path(code);
    ki::pp("Window::on_play_sound '$'", path);
    sound->play_sound(path);
}

void Window::on_mode_changed() {
    ki::pp("Window::on_mode_changed");
    // Called while the control announces: the new word is still pending.
    const unsigned int flags = control.get_mode_flags_pending();
    apply_mode(flags, flags ^ control.get_mode_flags());
}

void Window::apply_mode(unsigned int flags, unsigned int changed) {
    if (canvas == nullptr) return;
    const bool learn = (flags & MODE_LEARN) != 0;
    canvas->set_learn_mode(learn);
    if ((changed & (MODE_LEARN | MODE_AUTO_DRAW)) != 0) {
        const float progress = (flags & (MODE_LEARN | MODE_AUTO_DRAW)) != 0 ? 0.0f : 100.0f;
        canvas->set_progress(progress);
        slider->set_value_no_notify(static_cast<unsigned int>(progress));
        update_progress_label(progress);
    }
    if ((changed & MODE_LEARN) != 0) {
        canvas->clear_path_mouse();
        canvas->set_index_stroke(0);
    }
    buttonLearn->set_icon(QString::fromLatin1(learn ? ICON_STROKE : ICON_STROKE_NOT));
    panButtons2->setVisible((flags & MODE_SLIDER) != 0);
    const bool translation = (flags & MODE_TRANSLATION) != 0;
    panTranslation->setVisible(translation);
    if (translation && (changed & MODE_TRANSLATION) != 0 && model->get_selected_index() >= 0)
        update_translation(static_cast<int>(model->get_selected_index()));
    canvas->update();
}

void Window::on_timer() {
    if ((control.get_mode_flags() & (MODE_AUTO_DRAW | MODE_PAUSED)) != MODE_AUTO_DRAW) return;
    if (canvas->get_progress() >= 100.0f) return;
    const float progress = std::min(100.0f, canvas->get_progress() + static_cast<float>(incProgress));
    canvas->set_progress(progress);
    slider->set_value_no_notify(static_cast<unsigned int>(progress));
    update_progress_label(progress);
    canvas->update();
}

void Window::on_slider(unsigned int value) {
    // The learner took over: the timer must not move the character on under the slider.
    control.set_mode_bits(MODE_PAUSED, true);
    canvas->set_progress(static_cast<float>(value));
    update_progress_label(static_cast<float>(value));
}

void Window::update_progress_label(float progress) {
    labelProgress->setText(ki::str::qprintF("$ %", static_cast<int>(progress)));
}

void Window::on_set_strokes_learned(int n) {
    ki::pp("Window::on_set_strokes_learned <$>", n);
    canvas->set_index_stroke(n);
    canvas->update();
}

void Window::on_event_stroke_learned() {
    canvas->set_index_stroke(canvas->get_strokes_learned() + 1);
    canvas->clear_path_mouse();
    if (canvas->is_hieroglyphe_drawn()) ki::pp("hieroglyphe done");
    canvas->update();
}

void Window::on_toggle_list() {
    const bool show = panList->isHidden();
    panList->setVisible(show);
    buttonList->set_icon(QString::fromLatin1(show ? ICON_HIDE : ICON_SHOW));
}

void Window::save_settings_now() {
    ki::qt::sync_app(true);
}

void Window::on_change_theme(unsigned int theme) {
    const unsigned int shown = theme >= ki::qt::themes::THEME_NOT_SET ? get_theme_shown() : theme;
    const bool osDark = ki::qt::gApp != nullptr && ki::qt::gApp->is_os_theme_dark_mode();
    if (canvas != nullptr) canvas->on_change_theme(shown, osDark);
    if (model != nullptr) model->on_change_theme(shown);
    if (scroller != nullptr) scroller->update_model();
}

void Window::save_state() {
    banner("*** Window::save_state ************");
    if (model == nullptr) {
        GMainWindow::save_state();
        return;
    }
    nWin.set(QString::fromLatin1(KEY_SHOW_UNICODE), model->is_show_unicode());
    nWin.set(QString::fromLatin1(KEY_SCROLLBAR_VISIBLE), flagScrollbarVisible);
    nWin.set(QString::fromLatin1(KEY_VAL_TEST), QVariant::fromValue(valTest));
    nWin.set(QString::fromLatin1(KEY_SELECTED_INDEX),
             static_cast<int>(std::max(0LL, model->get_selected_index())));
    canvas->config_save(nWin);
    control.set_inc_speed(incProgress);
    control.config_save(nWin);
    GMainWindow::save_state();
}

void Window::restore_state() {
    banner("*** Window::restore_state *********");
    GMainWindow::restore_state();
    if (model == nullptr) return;
    model->set_show_unicode(read_or<bool>(nWin, KEY_SHOW_UNICODE, false));
    flagScrollbarVisible = read_or<bool>(nWin, KEY_SCROLLBAR_VISIBLE, false);
    valTest = read_or<uint32_t>(nWin, KEY_VAL_TEST, 0);
    scroller->set_scrollbar_vert_visible(flagScrollbarVisible);
    update_list_width();

    canvas->config_load(nWin);
    const int radius = canvas->get_r_circle();
    if (radius < R_CIRCLE_STORED_MIN || radius > R_CIRCLE_STORED_MAX) {
        ki::pp_warn("Window::restore_state, rCircle:$ outside $..$, using $", radius, R_CIRCLE_STORED_MIN,
                    R_CIRCLE_STORED_MAX, CanvasHanzi::R_CIRCLE_DEFAULT);
        canvas->set_r_circle(CanvasHanzi::R_CIRCLE_DEFAULT);
    }
    const unsigned int drawConfig = canvas->get_draw_config();
    if ((drawConfig & ~DRAW_CONFIG_KNOWN) != 0) {
        ki::pp_warn("Window::restore_state, unknown DRAW_CONFIG bits in $, keeping $", drawConfig,
                    drawConfig & DRAW_CONFIG_KNOWN);
        canvas->set_draw_config(drawConfig & DRAW_CONFIG_KNOWN);
    }

    control.config_load(nWin);
    const unsigned int flags = control.get_mode_flags();
    if ((flags & ~MODE_KNOWN) != 0) {
        ki::pp_warn("Window::restore_state, unknown mode bits in $, keeping $", flags, flags & MODE_KNOWN);
        control.set_mode_flags(flags & MODE_KNOWN);
    }
    // The step stays at its start value until the learner has chosen one.
    const QVariant speed = nWin.attributes.value(QStringLiteral("incSpeed"));
    if (speed.metaType() == QMetaType::fromType<int>()) incProgress = control.get_inc_speed();

    const int size = static_cast<int>(data.size());
    const int stored = read_or<int>(nWin, KEY_SELECTED_INDEX, 0);
    int selected = stored;
    if (stored < 0 || (size > 0 && stored >= size)) {
        selected = std::clamp(stored, 0, std::max(0, size - 1));
        ki::pp_warn("Window::restore_state, selectedIndex:$ outside the $ characters, using $", stored, size,
                    selected);
    }
    model->set_selected_index(selected);
}

void Window::setup_base_hotkeys() {
    GMainWindow::setup_base_hotkeys();
    QAction* left = gen_action(QStringLiteral("left"));
    left->setShortcuts({QKeySequence(Qt::Key_Left), QKeySequence(Qt::Key_PageUp)});
    connect(left, &QAction::triggered, this, [this]() {
        ki::pp("left");
        inc_sel_index(true);
    });
    QAction* right = gen_action(QStringLiteral("right"));
    right->setShortcuts({QKeySequence(Qt::Key_Right), QKeySequence(Qt::Key_PageDown)});
    connect(right, &QAction::triggered, this, [this]() {
        ki::pp("right");
        inc_sel_index(false);
    });
    QAction* test1 = gen_action(QStringLiteral("Ctrl+Alt+1"));
    connect(test1, &QAction::triggered, this, [this]() { on_test1(); });
    QAction* test2 = gen_action(QStringLiteral("Ctrl+Alt+2"));
    connect(test2, &QAction::triggered, this, [this]() { on_test2(); });
}

void Window::ini_filter_global_mouse() {
    if (ki::qt::gApp == nullptr) {
        ki::pp_error("Window::ini_filter_global_mouse, no application object");
        return;
    }
    ki::qt::event::EventFilter& filter = ki::qt::gApp->get_event_filter();
    filter.liMousePress.set(listener_key(), [this](QMouseEvent* const& ev) { on_hook_press(ev); });
    filter.liMouseMove.set(listener_key(), [this](QMouseEvent* const& ev) { on_hook_move(ev); });
    filter.liMouseRelease.set(listener_key(), [this](QMouseEvent* const& ev) { on_hook_release(ev); });
}

void Window::on_hook_press(QMouseEvent* ev) {
    const QPoint global = ev->globalPosition().toPoint();
    // Every press starts afresh: a press elsewhere (a trace on the canvas) must not drag the
    // list from an old position.
    tracking = false;
    dragged = false;
    if (!scroller->contains_global_point(global)) return;
    ki::pp("HOOK, press, mouse at:$", global);
    ptPress = global;
    topIndexPress = scroller->get_index_win_top();
    tracking = true;
}

void Window::on_hook_move(QMouseEvent* ev) {
    if ((ev->buttons() & Qt::LeftButton) == 0 || !tracking) return;
    const QPoint global = ev->globalPosition().toPoint();
    const QPoint diff = global - ptPress;
    if (std::abs(diff.y()) > dragThreshold) {
        ki::pp("HOOK, move, mouse BIGGER diff:$ - so disable now", diff);
        dragged = true;
        const int rowHeight = std::max(1, model->get_row_height(20));
        const long long rows = diff.y() / rowHeight;
        ki::pp("diffINdex:$", rows);
        scroller->update_index_win_top(topIndexPress - rows);
    } else {
        ki::pp("HOOK, move, mouse at:$, ptDiff:$", global, diff);
    }
}

void Window::on_hook_release(QMouseEvent* ev) {
    if (!tracking) return;
    ki::pp("HOOK, released, mouse at:$", ev->globalPosition().toPoint());
    post([this]() {
        if (!dragged) return;
        dragged = false;
        tracking = false;
        scroller->update_model();
    });
}

void Window::on_menu_options_top(ki::qt::GMenu* menu) {
    using ki::qt::GMenu;
    if (control.is_mode_bit(MODE_LEARN)) {
        GMenu* learn = menu->gen_sub_menu(tt("Learn Mode", "Lernmodus", "Режим обучения"));
        const std::pair<unsigned int, QString> aids[] = {
            {CanvasHanzi::DRAW_OUTLINE, tt("Outline", "Umriss", "Контур")},
            {CanvasHanzi::DRAW_HELPER_CIRCLES, tt("Helper Circles", "Hilfskreise", "Вспомогательные круги")},
            {CanvasHanzi::DRAW_HELPER_LINES, tt("Helper Lines", "Hilfslinien", "Вспомогательные линии")},
        };
        for (const auto& [bit, label] : aids) {
            learn->gen_action(label, true, (canvas->get_draw_config() & bit) != 0,
                              [this, bit = bit](const bool& on) {
                                  canvas->set_draw_config_bits(bit, on);
                                  canvas->update();
                                  save_settings_now();
                              });
        }
        GMenu* tolerance = learn->gen_sub_menu(tt("Stroke Tolerance", "Strichtoleranz", "Допуск черты"),
                                               GMenu::MENU_EXCLUSIVE);
        for (int radius = R_CIRCLE_MENU_MIN; radius <= R_CIRCLE_MENU_MAX; radius += R_CIRCLE_MENU_STEP) {
            tolerance->gen_action(ki::str::qprintF("$", radius), true, canvas->get_r_circle() == radius,
                                  [this, radius]() {
                                      canvas->set_r_circle(radius);
                                      canvas->update();
                                      save_settings_now();
                                  });
        }
    } else {
        GMenu* watch = menu->gen_sub_menu(tt("Watch Mode", "Beobachtungsmodus", "Режим просмотра"));
        watch->gen_action(tt("Slider", "Schieberegler", "Ползунок"), true, control.is_mode_bit(MODE_SLIDER),
                          [this](const bool& on) {
                              control.set_mode_bits(MODE_SLIDER, on);
                              save_settings_now();
                          });
        watch->gen_action(
            tt("Draw Strokes Automatically", "Striche automatisch zeichnen", "Рисовать черты автоматически"),
            true, control.is_mode_bit(MODE_AUTO_DRAW), [this](const bool& on) {
                control.set_mode_bits(MODE_AUTO_DRAW, on);
                save_settings_now();
            });
        GMenu* speed = watch->gen_sub_menu(tt("Auto Draw Speed", "Automatische Zeichengeschwindigkeit",
                                              "Скорость автоматического рисования"),
                                           GMenu::MENU_EXCLUSIVE);
        for (int step = ControlAnim::INC_SPEED_MIN; step <= ControlAnim::INC_SPEED_MAX; ++step) {
            speed->gen_action(ki::str::qprintF("$", step), true, incProgress == step, [this, step]() {
                incProgress = step;
                control.set_inc_speed(step);
                save_settings_now();
            });
        }
    }
    menu->gen_separator();
    menu->gen_action(tt("Audio Auto Play", "Audio automatisch abspielen", "Автовоспроизведение звука"), true,
                     control.is_mode_bit(MODE_AUTO_PLAY), [this](const bool& on) {
                         control.set_mode_bits(MODE_AUTO_PLAY, on);
                         save_settings_now();
                     });
    menu->gen_separator();
    menu->gen_action(tt("Scrollbar", "Bildlaufleiste", "Полоса прокрутки"), true, flagScrollbarVisible,
                     [this](const bool& on) {
                         flagScrollbarVisible = on;
                         scroller->set_scrollbar_vert_visible(on);
                         update_list_width();
                         save_settings_now();
                     });
    menu->gen_action(tt("Translation", "Übersetzung", "Перевод"), true, control.is_mode_bit(MODE_TRANSLATION),
                     [this](const bool& on) {
                         control.set_mode_bits(MODE_TRANSLATION, on);
                         save_settings_now();
                     });
    menu->gen_action(tt("Show Unicode", "Unicode anzeigen", "Показывать Unicode"), true,
                     model->is_show_unicode(), [this](const bool& on) {
                         model->set_show_unicode(on);
                         model->update_model();
                         save_settings_now();
                     });
    menu->gen_separator();
}

void Window::on_menu_options_bottom(ki::qt::GMenu* menu) {
    menu->gen_separator();
    menu->gen_action(tt("About", "Über", "О программе"), [this]() { on_help(); });
}

void Window::on_help() {
    QString text = ki::str::qprintF("Quenlo - v $ \n", get_morvel_version());
    if (ki::os::is_android()) text += QStringLiteral("Android:") + ki::os::get_android_version() + u'\n';
    text += u'\n';
    text +=
        tt("Have fun learning Chinese!", "Viel Spaß beim Chinesisch lernen!", "Удачи в изучении китайского!");
    text += u'\n';
    text += tt("Stroke by stroke, every day a little more.", "Strich für Strich, jeden Tag ein wenig mehr.",
               "Черта за чертой, каждый день понемногу.");
    text += QStringLiteral("\n\n");
    text += tt("On the Internet at", "Im Internet unter", "В интернете на");
    text += u' ';
    text += QString::fromLatin1(WEB_ADDRESS);
    ki::qt::GMessageBox::show_info(this, tt("About", "Über", "О программе"), text);
}

void Window::on_test1() {
    ki::pp("Window::on_test1, control:$, drawConfig:$, rCircle:$, selected:$, incProgress:$",
           control.to_string(), canvas->get_draw_config(), canvas->get_r_circle(),
           model->get_selected_index(), incProgress);
}

void Window::on_test2() {
    ++valTest;
    ki::pp("Window::on_test2, valTest:$", valTest);
    save_settings_now();
}

void Window::save_screenshots(const QString& folder) {
    if (!QDir().mkpath(folder)) {
        ki::pp_error("Window::save_screenshots, cannot create '$'", folder);
        return;
    }
    auto settle = []() {
        for (int i = 0; i < 10; ++i) QCoreApplication::processEvents();
    };
    auto save = [&folder](QWidget* widget, const QString& name) {
        const QString file = QDir(folder).filePath(name + QStringLiteral(".png"));
        if (widget->grab().save(file))
            ki::pp_info("Window::save_screenshots, saved '$'", file);
        else
            ki::pp_error("Window::save_screenshots, cannot write '$'", file);
    };
    auto save_menu = [&](const QString& name) {
        ki::qt::GMenu* menu = gen_menu_options(OPTIONS_ALL);
        menu->popup(mapToGlobal(QPoint(40, 40)));
        settle();
        save(menu, name);
        menu->close();
    };
    auto save_about = [&](const QString& name) {
        on_help();
        settle();
        for (QWidget* top : QApplication::topLevelWidgets()) {
            if (auto* box = qobject_cast<QMessageBox*>(top); box != nullptr && box->isVisible()) {
                save(box, name);
                box->close();
            }
        }
    };
    const unsigned int themeBefore = get_theme();
    const unsigned int flagsBefore = control.get_mode_flags();
    const long long selectedBefore = model->get_selected_index();
    const QLocale::Language langBefore = ki::qt::lang::get_lang();
    for (QLocale::Language language : {QLocale::English, QLocale::Russian}) {
        ki::qt::lang::set_lang(language);
        const QString suffix = language == QLocale::English ? QString() : QStringLiteral("_ru");
        for (unsigned int theme :
             {ki::qt::themes::THEME_NORMAL, ki::qt::themes::THEME_DARK, ki::qt::themes::THEME_GREEN}) {
            set_theme(theme);
            const QString name = ki::qt::themes::theme_to_string(theme) + suffix;
            control.set_mode_flags(MODE_TRANSLATION | MODE_AUTO_DRAW | MODE_SLIDER);
            on_index(7);
            for (int tick = 0; tick < 20; ++tick) on_timer();
            settle();
            save(this, QStringLiteral("quenlo_watch_") + name);
            control.set_mode_flags(MODE_LEARN | MODE_TRANSLATION);
            on_set_strokes_learned(2);
            settle();
            save(this, QStringLiteral("quenlo_learn_") + name);
            save_menu(QStringLiteral("quenlo_menu_") + name);
        }
        save_about(QStringLiteral("quenlo_about") + suffix);
    }
    ki::qt::lang::set_lang(langBefore);
    control.set_mode_flags(flagsBefore);
    set_theme(themeBefore);
    if (selectedBefore >= 0) on_index(static_cast<int>(selectedBefore));
}

}  // namespace morvel::prog2
