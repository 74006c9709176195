#include "app/practice/PracticeTexts.h"

#include <ki/qt/lang.h>

#include <QLocale>
#include <algorithm>
#include <iterator>

#include "app/stroke/ControlAnim.h"

namespace morvel::practice {

namespace {

struct Texts {
    const char* english;
    const char* german;
    const char* russian;
};

QString tt(const Texts& t) {
    return ki::qt::lang::tt(QString::fromUtf8(t.english), QString::fromUtf8(t.german),
                            QString::fromUtf8(t.russian));
}

// In the order of PracticeLabel.
constexpr Texts LABELS[] = {
    {"Practice", "Üben", "Практика"},
    {"Hint after misses", "Hinweis nach Fehlversuchen", "Подсказка после ошибок"},
    {"Off", "Aus", "Выкл."},
    {"Feedback sounds", "Rückmeldetöne", "Звуки отклика"},
    {"Stroke numbers", "Strichnummern", "Номера черт"},
    {"Next character when done", "Nächstes Zeichen, wenn fertig", "Следующий иероглиф после завершения"},
    {"Strict judging", "Strenge Bewertung", "Строгая проверка"},
    {"Practice grid", "Übungsraster", "Сетка для письма"},
    {"Squares", "Kästchen", "Клетки"},
    {"Tian 田", "Tian 田", "Тянь 田"},
    {"Mi 米", "Mi 米", "Ми 米"},
    {"Practice rounds", "Übungsrunden", "Тренировочные круги"},
    {"Show my strokes", "Meine Striche zeigen", "Показывать мои черты"},
    {"Again", "Nochmal", "Ещё раз"},
};
static_assert(std::size(LABELS) == static_cast<size_t>(PracticeLabel::AGAIN) + 1, "one text per label");

}  // namespace

QString label_text(PracticeLabel label) {
    const auto i = static_cast<size_t>(label);
    return i < std::size(LABELS) ? tt(LABELS[i]) : QString();
}

QString reason_text(const Rejection& rejection) {
    switch (rejection.reason) {
        case Reason::NONE:
            return {};
        case Reason::WRONG_STROKE:
            return tt({"That is stroke %1. Stroke %2 comes first.",
                       "Das ist Strich %1. Zuerst kommt Strich %2.", "Это черта %1. Сначала черта %2."})
                .arg(rejection.otherStroke + 1)
                .arg(rejection.indexStroke + 1);
        case Reason::BACKWARDS:
            return tt({"Wrong direction: start at the other end.",
                       "Falsche Richtung: am anderen Ende beginnen.",
                       "Не в ту сторону: начните с другого конца."});
        case Reason::START:
            return tt({"Start closer to the start point.", "Näher am Anfangspunkt beginnen.",
                       "Начните ближе к начальной точке."});
        case Reason::STRAYED:
            return tt({"The trace left the stroke here.", "Hier hat die Spur den Strich verlassen.",
                       "Здесь линия ушла от черты."});
        case Reason::END:
            return tt({"End closer to the end point.", "Näher am Endpunkt aufhören.",
                       "Закончите ближе к конечной точке."});
        case Reason::TOO_SHORT:
            return tt({"Too short for this stroke.", "Zu kurz für diesen Strich.",
                       "Слишком коротко для этой черты."});
        case Reason::MISSED_PART:
            return tt({"A part of the stroke was missed.", "Ein Teil des Strichs fehlt.",
                       "Часть черты пропущена."});
        case Reason::NOT_SMOOTH:
            return tt({"Keep the line smooth.", "Die Linie ruhig führen.", "Ведите линию ровно."});
        case Reason::OFF_PLACE:
            return tt({"Too far from its place.", "Zu weit von seinem Platz entfernt.",
                       "Слишком далеко от своего места."});
        case Reason::HOOK_MISSING:
            return tt({"The hook is missing.", "Der Haken fehlt.", "Не хватает крючка."});
        case Reason::TURN_MISSING:
            return tt({"The turn is missing.", "Die Biegung fehlt.", "Не хватает излома."});
        case Reason::TOO_LONG:
            return tt({"Too long for this stroke.", "Zu lang für diesen Strich.",
                       "Слишком длинно для этой черты."});
    }
    return {};
}

QString counter_stroke_text(int index, int count) {
    return tt({"Stroke %1 of %2", "Strich %1 von %2", "Черта %1 из %2"}).arg(index + 1).arg(count);
}

QString counter_done_text() {
    return tt({"Done", "Fertig", "Готово"});
}

QString counter_watch_text() {
    return tt({"Watch", "Ansehen", "Просмотр"});
}

QString result_text(const ScoreCard& card) {
    if (!card.is_finished()) return {};
    const QString seconds = QLocale(ki::qt::lang::get_lang()).toString(card.seconds(), 'f', 1);
    if (card.weakest_stroke() < 0)
        return tt({"Score %1 · %2 s · Misses: %3", "Wertung %1 · %2 s · Fehlversuche: %3", "Оценка %1 · %2 с · Ошибок: %3"})
            .arg(card.character_score())
            .arg(seconds)
            .arg(card.misses());
    return tt({"Score %1 · %2 s · Misses: %3 · Weakest: stroke %4",
               "Wertung %1 · %2 s · Fehlversuche: %3 · "
               "Schwächster: Strich %4",
               "Оценка %1 · %2 с · Ошибок: %3 · Слабее всего: черта %4"})
        .arg(card.character_score())
        .arg(seconds)
        .arg(card.misses())
        .arg(card.weakest_stroke() + 1);
}

QString counter_round_text(int round, int rounds) {
    return tt({"Round %1 of %2", "Runde %1 von %2", "Круг %1 из %2"}).arg(round).arg(rounds);
}

QString counter_text(const prog2::LessonState& state, bool learn, bool fromMemory) {
    if (!learn) return counter_watch_text();
    if (fromMemory && !state.is_done())
        return tt({"From memory · Stroke %1", "Aus dem Gedächtnis · Strich %1", "По памяти · черта %1"})
            .arg(state.strokesLearned + 1);
    // A finished round reads "Done" too, also while the next round waits.
    QString counter =
        state.is_done() ? counter_done_text() : counter_stroke_text(state.strokesLearned, state.strokeCount);
    if (state.rounds > 1 && !state.is_complete())
        counter = counter_round_text(state.round, state.rounds) + QStringLiteral(" · ") + counter;
    return counter;
}

QString nothing_due_text(qint64 msToNext) {
    const QString nothing = tt({"Nothing due", "Nichts fällig", "Повторять нечего"});
    if (msToNext < 0) return nothing;
    constexpr qint64 MINUTE = 60 * 1000, HOUR = 60 * MINUTE, DAY = 24 * HOUR;
    // Rounded up: "next in 0 min" would read as due now.
    const qint64 minutes = std::max<qint64>(1, (msToNext + MINUTE - 1) / MINUTE);
    QString when;
    if (minutes < 60)
        when = tt({"next in %1 min", "nächstes in %1 Min.", "следующий через %1 мин"}).arg(minutes);
    else if (msToNext < 2 * DAY)
        when = tt({"next in %1 h", "nächstes in %1 Std.", "следующий через %1 ч"})
                   .arg((msToNext + HOUR / 2) / HOUR);
    else
        when = tt({"next in %1 d", "nächstes in %1 Tg.", "следующий через %1 дн."})
                   .arg((msToNext + DAY / 2) / DAY);
    return nothing + QStringLiteral(" · ") + when;
}

QString tolerance_text(int radius, int tightest, int loosest, int standard) {
    QString way;
    if (radius <= tightest)
        way = tt({"tight", "streng", "строго"});
    else if (radius >= loosest)
        way = tt({"loose", "großzügig", "свободно"});
    else if (radius == standard)
        way = tt({"default", "Standard", "по умолчанию"});
    return way.isEmpty() ? QString::number(radius) : QStringLiteral("%1 · %2").arg(radius).arg(way);
}

}  // namespace morvel::practice
