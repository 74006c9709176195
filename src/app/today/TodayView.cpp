#include "app/today/TodayView.h"

#include <ki/log/GLog.h>
#include <ki/qt/dialogs/GMessageBox.h>
#include <ki/qt/lang.h>

#include <QAction>
#include <QDate>
#include <QEvent>
#include <QLocale>
#include <QTimer>

#include "app/ChinChar.h"
#include "app/Level.h"
#include "app/Window.h"
#include "app/controls/LessonControls.h"
#include "app/lesson/TodaySession.h"
#include "app/progress/LessonRecorder.h"
#include "app/progress/ProgressStore.h"

namespace morvel::prog2 {

using ki::qt::lang::tt;

namespace today {

QString button_text() {
    return tt("Today's session: due reviews, then new characters (Ctrl+T)",
              "Heutige Sitzung: fällige Wiederholungen, dann neue Zeichen (Strg+T)",
              "Сегодняшнее занятие: повторения, затем новые иероглифы (Ctrl+T)");
}

QString progress_text(const review::PlanProgress& progress) {
    return tt("%1 reviews · %2 new · %3 left", "%1 wiederholt · %2 neu · %3 übrig",
              "повторено: %1 · новых: %2 · осталось: %3")
        .arg(progress.reviews)
        .arg(progress.fresh)
        .arg(progress.left);
}

QString summary_text(const TodaySummary& s, int today) {
    const QString share = s.graded > 0 ? QStringLiteral("%1 %").arg(qRound(100.0 * s.notAgain / s.graded))
                                       : QStringLiteral("–");
    const long long seconds = s.elapsedMs / 1000;
    const QString time = QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
    QString next;
    if (s.nextDueDay < 0)
        next = QStringLiteral("–");
    else if (s.nextDueDay <= today)
        next = tt("today", "heute", "сегодня");
    else if (s.nextDueDay == today + 1)
        next = tt("tomorrow", "morgen", "завтра");
    else
        next = QLocale(ki::qt::lang::get_lang())
                   .toString(QDate(1970, 1, 1).addDays(s.nextDueDay), QLocale::ShortFormat);
    const QStringList lines = {
        tt("Reviewed: %1", "Wiederholt: %1", "Повторено: %1").arg(s.reviewed),
        tt("Not \"Again\": %1", "Nicht „Nochmal“: %1", "Не «Снова»: %1").arg(share),
        tt("New characters: %1", "Neue Zeichen: %1", "Новых иероглифов: %1").arg(s.fresh),
        tt("Time: %1", "Zeit: %1", "Время: %1").arg(time),
        tt("Next review due: %1", "Nächste Wiederholung fällig: %1", "Следующее повторение: %1").arg(next),
        tt("Days in a row: %1", "Tage in Folge: %1", "Дней подряд: %1").arg(s.streak),
    };
    return lines.join(QLatin1Char('\n'));
}

}  // namespace today

namespace {

QString title() {
    return tt("Today's session", "Heutige Sitzung", "Сегодняшнее занятие");
}

// The window saves the lesson mode when it closes: a session still running hands the learner's
// own mode back first, not the one of its current step.
class EndOnClose : public QObject {
public:
    EndOnClose(QObject* window, TodaySession& running) : QObject(window), session(running) {
        window->installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* ev) override {
        if (ev->type() == QEvent::Close) session.stop();
        return false;
    }

private:
    TodaySession& session;
};

}  // namespace

TodayView::TodayView(const Parts& p) : parts(p) {
    Window* window = parts.window;
    today = std::make_unique<TodaySession>(
        window->get_flow(), window->get_control(),
        [window](int ms, std::function<void()> then) { QTimer::singleShot(ms, window, std::move(then)); });
    today->liShow += [this](const int& code) { show(code); };
    today->liChanged += [this]() { refresh(); };
    today->liFinished += [this](const TodaySummary& summary) {
        const progress::ProgressStore* store = parts.window->get_recorder().store();
        ki::qt::GMessageBox::show_info(parts.window, title(),
                                       today::summary_text(summary, store ? store->local_today() : 0));
    };
    parts.controls->on_today([this]() { toggle(); });
    closeFilter = new EndOnClose(window, *today);
    ki::qt::lang::get_listener().set(listenerKey, [this](const int&) { refresh(); });
    QObject::connect(window->gen_action(QString::fromLatin1(KEY_TODAY)), &QAction::triggered, window,
                     [this]() { toggle(); });
}

TodayView::~TodayView() {
    delete closeFilter;
    ki::qt::lang::get_listener().remove(listenerKey);
}

const std::vector<int>& TodayView::characters() {
    if (!all.empty()) return all;
    for (int level = 1; level <= Level::COUNT; ++level) {
        for (const ChinChar& row : basic_table_from_file(Level::shipped(level).file, -1)) {
            const int code = static_cast<int>(row.unicode);
            if (code == 0 || !levelOf.emplace(code, level).second) continue;
            all.push_back(code);
        }
    }
    return all;
}

void TodayView::toggle() {
    if (today->is_active()) return today->stop();
    progress::ProgressStore* store = parts.window->get_recorder().store();
    if (store == nullptr || !parts.window->get_recorder().is_open()) {
        ki::qt::GMessageBox::show_info(
            parts.window, title(),
            tt("The practice history is not available.", "Der Übungsverlauf ist nicht verfügbar.",
               "История занятий недоступна."));
        return;
    }
    if (!today->start(*store, characters(), parts.window->get_options().newPerDay))
        ki::qt::GMessageBox::show_info(
            parts.window, title(),
            tt("Nothing is due today, and today's new characters are done.",
               "Heute ist nichts fällig, und die neuen Zeichen für heute sind geschafft.",
               "Сегодня повторять нечего, и новые иероглифы на сегодня пройдены."));
}

void TodayView::history_opened() {
    progress::LessonRecorder& recorder = parts.window->get_recorder();
    if (!parts.window->get_options().startWithToday || !recorder.is_open() || today->is_active()) return;
    if (recorder.due_count(characters()) == 0) return;
    today->start(*recorder.store(), characters(), parts.window->get_options().newPerDay);
}

void TodayView::show(int codePoint) {
    const auto it = levelOf.find(codePoint);
    if (it == levelOf.end()) {
        ki::pp_warn("TodayView::show, $ is in no level", codePoint);
        return;
    }
    // Another level is shown first, as a search hit of another level is.
    if (parts.window->on_level(it->second)) parts.window->select_unicode(codePoint);
}

void TodayView::refresh() {
    parts.controls->show_today(today->is_active(),
                               today->is_active() ? today::progress_text(today->progress()) : QString());
    // Writing from memory shows the meaning and plays the recording as its prompt.
    parts.window->on_mode_changed();
    // A review plays its recording when shown; a new character only when it is recalled.
    const TodaySession::Step step = today->step();
    if (step == TodaySession::Step::RECALL && lastStep == TodaySession::Step::TRACE)
        parts.window->on_play_sound();
    lastStep = step;
}

}  // namespace morvel::prog2
