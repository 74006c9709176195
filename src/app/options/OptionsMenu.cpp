#include "app/options/OptionsMenu.h"

#include <ki/qt/components/GMenu.h>
#include <ki/qt/lang.h>
#include <ki/str/xprintF.h>
#include <ki/tools/os.h>

#include <utility>
#include <vector>

#include "app/Level.h"
#include "app/morvel.h"
#include "app/practice/PracticeTexts.h"
#include "app/review/SessionPlan.h"
#include "app/stroke/ControlAnim.h"
#include "app/worksheet/WorksheetDialog.h"

namespace morvel::prog2 {

using ki::qt::GMenu;
using ki::qt::lang::tt;

namespace {

// A check item over one bit of a bit field of the record.
void gen_bit(GMenu* menu, const OptionsMenuHost& host, const QString& label, unsigned int LessonOptions::*field,
             unsigned int bit) {
    menu->gen_action(label, true, (host.options().*field & bit) != 0, [host, field, bit](const bool& on) {
        LessonOptions next = host.options();
        next.*field = on ? (next.*field | bit) : (next.*field & ~bit);
        host.apply(next);
    });
}

void gen_flag(GMenu* menu, const OptionsMenuHost& host, const QString& label, bool LessonOptions::*field) {
    menu->gen_action(label, true, host.options().*field, [host, field](const bool& on) {
        LessonOptions next = host.options();
        next.*field = on;
        host.apply(next);
    });
}

// An exclusive sub-menu of labelled values of one int field.
void gen_choice(GMenu* menu, const OptionsMenuHost& host, const QString& title, int LessonOptions::*field,
                const std::vector<std::pair<int, QString>>& choices) {
    GMenu* values = menu->gen_sub_menu(title, GMenu::MENU_EXCLUSIVE);
    for (const auto& [value, label] : choices) {
        values->gen_action(label, true, host.options().*field == value, [host, field, value = value]() {
            LessonOptions next = host.options();
            next.*field = value;
            host.apply(next);
        });
    }
}

// Numbered values, each labelled with its number alone.
void gen_values(GMenu* menu, const OptionsMenuHost& host, const QString& title, int LessonOptions::*field,
                int first, int last, int step) {
    std::vector<std::pair<int, QString>> choices;
    for (int value = first; value <= last; value += step) choices.emplace_back(value, ki::str::qprintF("$", value));
    gen_choice(menu, host, title, field, choices);
}

void fill_practice_menu(GMenu* menu, const OptionsMenuHost& host) {
    using practice::label_text;
    using L = practice::PracticeLabel;
    GMenu* practice = menu->gen_sub_menu(label_text(L::MENU));
    std::vector<std::pair<int, QString>> hints;
    for (const int value : practice::HINT_AFTER_MISSES_VALUES)
        hints.emplace_back(value, value == 0 ? label_text(L::HINT_OFF) : QString::number(value));
    gen_choice(practice, host, label_text(L::HINT_AFTER_MISSES), &LessonOptions::hintAfterMisses, hints);
    gen_flag(practice, host, label_text(L::FEEDBACK_SOUNDS), &LessonOptions::feedbackSounds);
    gen_flag(practice, host, label_text(L::STROKE_NUMBERS), &LessonOptions::strokeNumbers);
    gen_flag(practice, host, label_text(L::NEXT_WHEN_DONE), &LessonOptions::nextWhenDone);
    gen_flag(practice, host, label_text(L::STRICT_JUDGING), &LessonOptions::strictJudging);
    gen_flag(practice, host, label_text(L::SHOW_MY_STROKES), &LessonOptions::showMyStrokes);
    gen_choice(practice, host, label_text(L::PRACTICE_GRID), &LessonOptions::practiceGrid,
               {{LessonOptions::GRID_SQUARES, label_text(L::GRID_SQUARES)},
                {LessonOptions::GRID_TIAN, label_text(L::GRID_TIAN)},
                {LessonOptions::GRID_MI, label_text(L::GRID_MI)}});
    gen_flag(practice, host, label_text(L::PRACTICE_ROUNDS), &LessonOptions::practiceRounds);
    gen_flag(practice, host,
             tt("Review due characters", "Fällige Zeichen wiederholen", "Повторять иероглифы по расписанию"),
             &LessonOptions::reviewDue);
    std::vector<std::pair<int, QString>> retentions;
    for (const int percent : LessonOptions::RETENTION_CHOICES)
        retentions.emplace_back(percent, QStringLiteral("%1 %").arg(percent));
    gen_choice(practice, host, tt("Desired retention", "Gewünschte Erinnerungsquote", "Желаемое запоминание"),
               &LessonOptions::desiredRetention, retentions);
    std::vector<std::pair<int, QString>> perDay;
    for (const int count : review::SessionPlan::NEW_LIMITS) perDay.emplace_back(count, QString::number(count));
    gen_choice(practice, host, tt("New characters per day", "Neue Zeichen pro Tag", "Новых иероглифов в день"),
               &LessonOptions::newPerDay, perDay);
    gen_flag(practice, host,
             tt("Start with today's session", "Mit der heutigen Sitzung beginnen", "Начинать с сегодняшнего занятия"),
             &LessonOptions::startWithToday);
    practice->gen_separator();
    practice->gen_action(label_text(L::AGAIN), [host]() { host.again(); });
}

}  // namespace

void fill_options_menu_top(GMenu* menu, const OptionsMenuHost& host) {
    if ((host.options().modeFlags & MODE_LEARN) != 0) {
        GMenu* learn = menu->gen_sub_menu(tt("Learn Mode", "Lernmodus", "Режим обучения"));
        gen_bit(learn, host, tt("Outline", "Umriss", "Контур"), &LessonOptions::drawConfig,
                LessonOptions::DRAW_OUTLINE);
        gen_bit(learn, host, tt("Helper Circles", "Hilfskreise", "Вспомогательные круги"), &LessonOptions::drawConfig,
                LessonOptions::DRAW_HELPER_CIRCLES);
        gen_bit(learn, host, tt("Helper Lines", "Hilfslinien", "Вспомогательные линии"), &LessonOptions::drawConfig,
                LessonOptions::DRAW_HELPER_LINES);
        std::vector<std::pair<int, QString>> tolerances;
        for (int radius = R_CIRCLE_MENU_MIN; radius <= R_CIRCLE_MENU_MAX; radius += R_CIRCLE_MENU_STEP)
            tolerances.emplace_back(radius,
                                    practice::tolerance_text(radius, R_CIRCLE_MENU_MIN, R_CIRCLE_MENU_MAX,
                                                             LessonOptions{}.rCircle));
        gen_choice(learn, host, tt("Stroke Tolerance", "Strichtoleranz", "Допуск черты"),
                   &LessonOptions::rCircle, tolerances);
    } else {
        GMenu* watch = menu->gen_sub_menu(tt("Watch Mode", "Beobachtungsmodus", "Режим просмотра"));
        gen_bit(watch, host, tt("Slider", "Schieberegler", "Ползунок"), &LessonOptions::modeFlags, MODE_SLIDER);
        gen_bit(watch, host,
                tt("Draw Strokes Automatically", "Striche automatisch zeichnen", "Рисовать черты автоматически"),
                &LessonOptions::modeFlags, MODE_AUTO_DRAW);
        gen_values(watch, host,
                   tt("Auto Draw Speed", "Automatische Zeichengeschwindigkeit", "Скорость автоматического рисования"),
                   &LessonOptions::incSpeed, ControlAnim::INC_SPEED_MIN, ControlAnim::INC_SPEED_MAX, 1);
    }
    menu->gen_separator();
    gen_bit(menu, host, tt("Audio Auto Play", "Audio automatisch abspielen", "Автовоспроизведение звука"),
            &LessonOptions::modeFlags, MODE_AUTO_PLAY);
    menu->gen_separator();
    gen_flag(menu, host, tt("Scrollbar", "Bildlaufleiste", "Полоса прокрутки"), &LessonOptions::scrollbarVisible);
    gen_bit(menu, host, tt("Translation", "Übersetzung", "Перевод"), &LessonOptions::modeFlags, MODE_TRANSLATION);
    gen_flag(menu, host, tt("Show Unicode", "Unicode anzeigen", "Показывать Unicode"), &LessonOptions::showUnicode);
    menu->gen_separator();
    fill_practice_menu(menu, host);
    GMenu* levels = menu->gen_sub_menu(tt("Level", "Stufe", "Уровень"), GMenu::MENU_EXCLUSIVE);
    for (int number = 1; number <= Level::COUNT; ++number) {
        const QString label = tt("Level %1 · HSK %2 · %3 characters", "Stufe %1 · HSK %2 · %3 Zeichen",
                                 "Уровень %1 · HSK %2 · %3 иероглифов")
                                  .arg(number)
                                  .arg(Level::hsk(number))
                                  .arg(Level::shipped(number).size());
        levels->gen_action(label, true, host.options().level == number, [host, number]() { host.level(number); });
    }
    menu->gen_action(WorksheetDialog::menu_text(), [host]() { host.worksheet(); });
    menu->gen_action(tt("Progress…", "Fortschritt…", "Прогресс…"), [host]() { host.progress(); });
    menu->gen_separator();
}

QString about_text() {
    QString text = ki::str::qprintF("Quenlo - v $ \n", get_morvel_version());
    if (ki::os::is_android()) text += QStringLiteral("Android:") + ki::os::get_android_version() + u'\n';
    text += u'\n';
    text +=
        tt("Have fun learning Chinese!", "Viel Spaß beim Chinesisch lernen!", "Удачи в изучении китайского!");
    text += u'\n';
    text += tt("Stroke by stroke, every day a little more.", "Strich für Strich, jeden Tag ein wenig mehr.",
               "Черта за чертой, каждый день понемногу.");
    text += QStringLiteral("\n\n");
    text += tt("Ctrl+R: trace again · Shift+Right/Left: one stroke on/back while watching · Ctrl+P: progress",
               "Strg+R: noch einmal · Umschalt+Rechts/Links: im Zuschauen einen Strich vor/zurück · "
               "Strg+P: Fortschritt",
               "Ctrl+R: ещё раз · Shift+Вправо/Влево: при просмотре на черту вперёд/назад · Ctrl+P: прогресс");
    text += u'\n';
    text += tt("Ctrl+M: write from memory · Ctrl+H: show me · 1–4: grade · Space: accept",
               "Strg+M: aus dem Gedächtnis · Strg+H: zeig es mir · 1–4: Bewertung · Leertaste: übernehmen",
               "Ctrl+M: по памяти · Ctrl+H: покажи · 1–4: оценка · пробел: принять");
    text += u'\n';
    text += tt("Ctrl+T: today's session (due reviews, then new characters)",
               "Strg+T: heutige Sitzung (fällige Wiederholungen, dann neue Zeichen)",
               "Ctrl+T: сегодняшнее занятие (повторения, затем новые иероглифы)");
    text += QStringLiteral("\n\n");
    text += tt("On the Internet at", "Im Internet unter", "В интернете на");
    text += u' ';
    text += QStringLiteral("https://qlo.de/quenlo");
    return text;
}

}  // namespace morvel::prog2
