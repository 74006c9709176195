#pragma once
// Learn mode's link to the practice history: it opens the store once the window is on screen,
// turns judged traces and finished characters into records, and answers what the list and the
// review navigation ask (mastery, due characters). Without a store (still closed, folder not
// writable) it records nothing and practice goes on.

#include <ki/Listener.h>

#include <QElapsedTimer>
#include <QString>
#include <memory>
#include <optional>
#include <vector>

#include "app/progress/ProgressTypes.h"

namespace morvel::progress {

class ProgressStore;

class LessonRecorder {
public:
    /// A notice for the learner that arises during practice, for the window's notice area:
    /// writes failing (`lasting`, until they work again), caught up, a damaged file replaced.
    struct Notice {
        QString text;
        bool lasting = true;
        bool operator==(const Notice&) const = default;
    };

    LessonRecorder();
    ~LessonRecorder();

    /// Opens the history in `folder` (the application data folder when empty). Returns the
    /// text of a one-time notice for the learner, empty when there is none; later notices come
    /// through `liNotice`.
    QString open(const QString& folder = {});
    bool is_open() const;
    ProgressStore* store() { return history.get(); }
    ki::Listener<Notice> liNotice;

    /// A new character is shown: its clock, misses and hint start afresh.
    void character_started(int level, int codePoint);
    void hint_shown() { hintShown = true; }
    /// A judged trace of stroke `strokeIndex`; `reason` is a rejection key or empty; `score`
    /// 0 .. 100, or -1 when unscored.
    void trace(int strokeIndex, bool accepted, const QString& reason, int tolerance, unsigned int aids,
               int score = -1);
    /// The last stroke of practice round `round` was accepted; `score` is the character's.
    void completed(int round, int score = -1);

    /// A recall of `codePoint` graded `rating` after `durationMs`: one review for its card.
    void graded(int codePoint, review::Rating rating, int durationMs);
    /// The median time of the character's graded recalls; none when it has none.
    std::optional<int> median_recall_ms(int codePoint) const;
    /// The desired retention that plans the due days, kept across `open`.
    void set_retention(double retention);

    /// History aid bits of the canvas's drawing bits (LessonOptions::DRAW_*) and the grid.
    static unsigned int aids_of(unsigned int drawAids, bool guideGrid);

    Mastery mastery(int codePoint) const;
    bool is_due(int codePoint) const;
    int due_count(const std::vector<int>& codePoints) const;
    /// The index in `codePoints` of the next due character after `from` (`step` +1 or -1), or -1.
    int next_due_index(const std::vector<int>& codePoints, int from, int step) const;

private:
    std::unique_ptr<ProgressStore> history;
    double retention = 0.90;
    QElapsedTimer clock;
    int level = 1;
    int codePoint = 0;
    int misses = 0;
    bool hintShown = false;
};

}  // namespace morvel::progress
