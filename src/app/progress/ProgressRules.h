#pragma once
// Mastery and review rules over a character's summary and card. Pure code: the store applies
// them to every record and replays them over old history when it migrates.
//
// A character is new until first practised, learning after that, and known once its card holds
// for three weeks (Card::known). It is due when its card's due day has come.

#include "app/progress/ProgressTypes.h"

namespace morvel::progress {

class ProgressRules {
public:
    static void apply_trace(CharSummary& summary, qint64 timeMs, bool accepted);
    static void apply_completion(CharSummary& summary, qint64 timeMs, qint64 day, bool clean);

    /// Whether a completion counts as clean: no miss, and neither a hint nor the outline was
    /// used on any of its traces.
    static bool is_clean(int misses, bool hintShown, bool outlineShown) {
        return misses == 0 && !hintShown && !outlineShown;
    }

    static Mastery mastery(const CharSummary& summary, const review::Card& card);
    /// The Julian day number of the local date at `timeMs` (milliseconds since the epoch).
    static qint64 day_of(qint64 timeMs);
    /// The local day at `timeMs` as the scheduler counts days (from 1970-01-01).
    static int local_day_of(qint64 timeMs);
    /// Characters without a card are not due.
    static bool is_due(const review::Card& card, int today) {
        return card.state != review::CardState::NEW && today >= card.due;
    }
};

}  // namespace morvel::progress
