#pragma once
// The records on their way into the practice history, in the order they were made. They are
// written at once when the file is free; while another connection holds the write lock, or a
// write fails (a full disk), they stay queued and a timer tries again. So neither a busy file
// nor a failing disk stops the window, and nothing judged is dropped while the program runs.

#include <QElapsedTimer>
#include <QTimer>
#include <deque>
#include <functional>
#include <variant>

#include "app/progress/ProgressTypes.h"

namespace morvel::progress {

/// A character's attempt begins: traces before it no longer count for its next completion.
struct AttemptStart {
    int codePoint = 0;
};

class WriteQueue {
public:
    using Item = std::variant<TraceRecord, CompletionRecord, AttemptStart, ReviewRecord, SessionRecord>;
    enum class Outcome { WRITTEN, BUSY, FAILED };
    /// Failing: writes fail (or the file has stayed busy for BUSY_NOTICE_MS). Caught up: after
    /// that, everything queued has been written.
    enum class Change { FAILING, CAUGHT_UP };

    static constexpr int BUSY_RETRY_MS = 50;
    static constexpr int FAILED_RETRY_MS = 2000;
    static constexpr int BUSY_NOTICE_MS = 10'000;

    /// `write` writes one item and says how that went; `changed` hears when writes begin to
    /// fail and when the queue has caught up again.
    WriteQueue(std::function<Outcome(const Item&)> write, std::function<void(Change)> changed);

    /// Queues `item` and writes what can be written now, unless a retry is already waiting.
    void push(Item item);
    /// Writes in order until the queue is empty or an item cannot be written; then retries
    /// later by the timer.
    void drain();
    /// While held nothing is written (the file is being checked); releasing drains.
    void hold(bool on);
    bool is_failing() const { return failing; }
    int size() const { return static_cast<int>(items.size()); }

private:
    void set_failing();

    std::function<Outcome(const Item&)> write;
    std::function<void(Change)> changed;
    std::deque<Item> items;
    QTimer retry;
    QElapsedTimer busySince;
    bool held = false;
    bool failing = false;
    bool draining = false;
};

}  // namespace morvel::progress
