#pragma once
// Mastery and review rules over a character's summary. Pure code: the store applies them to
// every record and replays them over old history when it migrates.
//
// A character is new until first practised, learning after that, and known after clean
// completions (no rejected trace, no hint, outline off) on two different days. Reviews follow
// Leitner boxes: a clean completion moves up one box, one with misses back to the first; the
// character is due once the box's interval has passed since its last completion.

#include "app/progress/ProgressTypes.h"

namespace morvel::progress {

class ProgressRules {
public:
    static constexpr int BOX_COUNT = 6;

    /// Days a character rests in `box` (1, 2, 4, 8, 16, 32); 0 outside 1..BOX_COUNT.
    static int interval_days(int box);

    static void apply_trace(CharSummary& summary, qint64 timeMs, bool accepted);
    static void apply_completion(CharSummary& summary, qint64 timeMs, qint64 day, bool clean);

    /// Whether a completion counts as clean: no miss, and neither a hint nor the outline was
    /// used on any of its traces.
    static bool is_clean(int misses, bool hintShown, bool outlineShown) {
        return misses == 0 && !hintShown && !outlineShown;
    }

    static Mastery mastery(const CharSummary& summary);
    /// The Julian day number of the local date at `timeMs` (milliseconds since the epoch).
    static qint64 day_of(qint64 timeMs);
    /// Never-completed characters are not due.
    static bool is_due(const CharSummary& summary, qint64 today) {
        return summary.box > 0 && today >= summary.dueDay;
    }
};

}  // namespace morvel::progress
