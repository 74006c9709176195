#include "app/progress/ProgressRules.h"

#include "app/review/LocalDay.h"

#include <QDateTime>
#include <QTimeZone>
#include <algorithm>

namespace morvel::progress {

void ProgressRules::apply_trace(CharSummary& summary, qint64 timeMs, bool accepted) {
    if (summary.firstSeenMs == 0) summary.firstSeenMs = timeMs;
    summary.lastPractisedMs = std::max(summary.lastPractisedMs, timeMs);
    if (!accepted) ++summary.misses;
}

void ProgressRules::apply_completion(CharSummary& summary, qint64 timeMs, qint64 day, bool clean) {
    if (summary.firstSeenMs == 0) summary.firstSeenMs = timeMs;
    summary.lastPractisedMs = std::max(summary.lastPractisedMs, timeMs);
    ++summary.completions;
    summary.lastCompletionDay = day;
    if (clean) ++summary.cleanCompletions;
}

Mastery ProgressRules::mastery(const CharSummary& summary, const review::Card& card) {
    if (card.known()) return Mastery::KNOWN;
    if (summary.firstSeenMs == 0 && summary.completions == 0 && card.state == review::CardState::NEW)
        return Mastery::NEW;
    return Mastery::LEARNING;
}

int ProgressRules::local_day_of(qint64 timeMs) {
    return review::LocalDay::of(timeMs, QTimeZone::systemTimeZone());
}

qint64 ProgressRules::day_of(qint64 timeMs) {
    return QDateTime::fromMSecsSinceEpoch(timeMs).date().toJulianDay();
}

}  // namespace morvel::progress
