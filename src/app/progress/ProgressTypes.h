#pragma once
// The records of practice history: what is written per judged trace and per completed
// character, and what is derived per character from them.

#include <QString>
#include <cstdint>

#include "app/review/Card.h"

namespace morvel::progress {

/// Reasons a trace was rejected, as stored in the database and shared with the trace classifier.
namespace reason {
inline constexpr const char* WRONG_STROKE = "wrong_stroke";
inline constexpr const char* BACKWARDS = "backwards";
inline constexpr const char* START = "start";
inline constexpr const char* STRAYED = "strayed";
inline constexpr const char* END = "end";
inline constexpr const char* TOO_SHORT = "too_short";
inline constexpr const char* MISSED_PART = "missed_part";
inline constexpr const char* NOT_SMOOTH = "not_smooth";
inline constexpr const char* OFF_PLACE = "off_place";
inline constexpr const char* HOOK_MISSING = "hook_missing";
inline constexpr const char* TURN_MISSING = "turn_missing";
inline constexpr const char* TOO_LONG = "too_long";
}  // namespace reason

/// Bits of `TraceRecord::aids`: the helpers that were on while the trace was drawn.
enum Aid : unsigned int {
    AID_OUTLINE = 0x01,  ///< the character's outline was visible
    AID_CIRCLES = 0x02,  ///< start and end circles were shown
    AID_GRID = 0x04,     ///< the practice grid was shown
};

/// One judged trace. `timeMs` 0 means "now" by the store's clock.
struct TraceRecord {
    qint64 timeMs = 0;
    int level = 1;
    int codePoint = 0;
    int strokeIndex = 0;
    bool accepted = false;
    /// One of the `reason` keys for a rejected trace; empty when accepted or unclassified.
    QString reason;
    int tolerance = 0;
    unsigned int aids = 0;
    bool hintShown = false;
    /// 0 .. 100; -1 for a trace without a score (recorded before scores were kept).
    int score = -1;
};

/// A character traced to its last stroke. `timeMs` 0 means "now" by the store's clock.
struct CompletionRecord {
    qint64 timeMs = 0;
    int level = 1;
    int codePoint = 0;
    double seconds = 0.0;
    int misses = 0;
    int round = 1;
    /// The character's score 0 .. 100; -1 when unscored.
    int score = -1;
};

/// One graded review of a character: a recall the learner graded, or the first time the
/// character was finished in learn mode. `timeMs` 0 means "now" by the store's clock.
struct ReviewRecord {
    qint64 timeMs = 0;
    int codePoint = 0;
    review::Rating rating = review::Rating::GOOD;
    int durationMs = 0;
};

/// A day's session was finished. `timeMs` 0 means "now" by the store's clock.
struct SessionRecord {
    qint64 timeMs = 0;
};

enum class Mastery { NEW, LEARNING, KNOWN };

/// What is known about one character, kept up to date with every record. Days are Julian day
/// numbers of the local date; 0 means "never".
struct CharSummary {
    int codePoint = 0;
    int level = 1;
    qint64 firstSeenMs = 0;
    qint64 lastPractisedMs = 0;
    int completions = 0;
    int cleanCompletions = 0;
    /// Rejected traces over the whole history.
    int misses = 0;
    qint64 lastCompletionDay = 0;

    bool operator==(const CharSummary&) const = default;
};

/// Practice on one local day: characters completed, and judged traces with the accepted ones.
struct DayStats {
    qint64 day = 0;
    int completions = 0;
    int traces = 0;
    int acceptedTraces = 0;
    /// The day's average character score; -1 without a scored completion.
    int score = -1;

    bool operator==(const DayStats&) const = default;
};

/// The scored completions of one character.
struct ScoreStats {
    int average = -1;
    int best = -1;
    int count = 0;

    bool operator==(const ScoreStats&) const = default;
};

}  // namespace morvel::progress
