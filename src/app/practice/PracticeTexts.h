#pragma once
// The texts of practice in the interface language: why a trace was rejected, the counter in
// the canvas corner and the labels of the practice options. Ask again after a language change.

#include <QString>

#include "app/practice/Rejection.h"
#include "app/practice/ScoreCard.h"

namespace morvel::prog2 {
struct LessonState;
}

namespace morvel::practice {

/// The labels of the practice submenu and its entries.
enum class PracticeLabel {
    MENU,
    HINT_AFTER_MISSES,
    HINT_OFF,
    FEEDBACK_SOUNDS,
    STROKE_NUMBERS,
    NEXT_WHEN_DONE,
    STRICT_JUDGING,
    PRACTICE_GRID,
    GRID_SQUARES,
    GRID_TIAN,
    GRID_MI,
    PRACTICE_ROUNDS,
    SHOW_MY_STROKES,
    AGAIN,
};

/// The values offered for "hint after misses"; 0 is off.
inline constexpr int HINT_AFTER_MISSES_VALUES[] = {0, 1, 2, 3, 5};

QString label_text(PracticeLabel label);

/// One short sentence on `rejection` ("That is stroke 5. Stroke 3 comes first."), strokes
/// numbered from 1; empty when nothing was rejected.
QString reason_text(const Rejection& rejection);

/// "Stroke 3 of 7" for `index` (from 0) of `count`.
QString counter_stroke_text(int index, int count);
/// "Done": the character is complete.
QString counter_done_text();
/// "Watch": the canvas is in watch mode.
QString counter_watch_text();
/// "Score 82 · 14.5 s · Misses: 1 · Weakest: stroke 3" for a finished card; empty otherwise.
QString result_text(const ScoreCard& card);
/// "Round 2 of 3" for `round` (from 1) of `rounds`.
QString counter_round_text(int round, int rounds);
/// The counter in the canvas corner for `state`: "Watch" outside learn mode, else the stroke,
/// "Done" and the round; from memory "From memory · Stroke 3", the number of strokes untold.
QString counter_text(const prog2::LessonState& state, bool learn, bool fromMemory);

/// "Nothing due · next in 5 h": no character waits for review, the next one is due in `msToNext`
/// milliseconds (minutes below an hour, hours below two days, days beyond). Without a next one
/// (negative `msToNext`) only "Nothing due".
QString nothing_due_text(qint64 msToNext);
/// A tolerance radius with the way it judges ("40 · tight", "200 · loose"); between the ends,
/// the number alone, the start value marked "default".
QString tolerance_text(int radius, int tightest, int loosest, int standard);

}  // namespace morvel::practice
