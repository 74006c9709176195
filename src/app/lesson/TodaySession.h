#pragma once
// Today's session: the due reviews, least likely recalled first, then new characters in level
// order up to the daily limit, as the session plan orders them. A review is written from memory
// and graded; a new character is first watched once, then traced once with every aid, then
// written from memory and graded. The session drives the lesson flow through these steps and
// tells its listeners which character to show; it owns no widget. While it runs, Previous and
// Next stay put; when it ends, the flow's source and the lesson mode are as they were.

#include <ki/Listener.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/lesson/LessonFlow.h"
#include "app/review/Scheduler.h"
#include "app/review/SessionPlan.h"

namespace morvel::progress {
class ProgressStore;
}

namespace morvel::prog2 {

class CharacterSource;
class ControlAnim;

/// What a finished session did.
struct TodaySummary {
    /// Reviews of characters met before.
    int reviewed = 0;
    /// Every graded recall, and those not graded AGAIN.
    int graded = 0;
    int notAgain = 0;
    /// New characters introduced.
    int fresh = 0;
    long long elapsedMs = 0;
    /// Local day of the next due review; -1 when no card is due ever.
    int nextDueDay = -1;
    /// Days in a row with a finished session, today included.
    int streak = 0;
    bool operator==(const TodaySummary&) const = default;
};

class TodaySession {
public:
    enum class Step { NONE, WATCH, TRACE, RECALL };
    /// After a new character has been drawn once, and after it has been traced, before the next
    /// step starts.
    static constexpr int STEP_PAUSE_MS = 800;

    /// `flow` and `control` must outlive the session; `delay` waits as the flow's does.
    TodaySession(LessonFlow& flow, ControlAnim& control, LessonFlow::Delay delay);
    ~TodaySession();

    /// Starts over `characters` (the code points of every level, in level order) with the cards
    /// and today's history of `store`, which must outlive the session. Returns false, changing
    /// nothing, when there is nothing to do today.
    bool start(progress::ProgressStore& store, const std::vector<int>& characters, int newLimit);
    /// Ends the session without a summary; the lesson is left as it was before it started.
    void stop();
    bool is_active() const { return plan != nullptr; }
    Step step() const { return current; }
    /// The character of the current step; 0 when none.
    int code_point() const { return codePoint; }
    review::PlanProgress progress() const;
    /// Milliseconds on a steady clock, for the session's time.
    void set_clock(std::function<long long()> now);

    /// Show this character (switching to its level when it is another); then tell the flow.
    ki::Listener<int> liShow;
    /// The step or the counts changed.
    ki::Listener<ki::NO_PAYLOAD> liChanged;
    /// The last step is done; the session is over.
    ki::Listener<TodaySummary> liFinished;

private:
    void advance();
    void begin(Step step);
    void on_graded(const GradedRecall& recall);
    void finish();
    void restore();

    LessonFlow& flow;
    ControlAnim& control;
    LessonFlow::Delay delay;
    std::function<long long()> clock;
    progress::ProgressStore* store = nullptr;
    review::Scheduler scheduler;
    std::unique_ptr<review::SessionPlan> plan;
    review::PlanStep planned;
    Step current = Step::NONE;
    int codePoint = 0;
    /// Counts each step started, so that a pending pause of an earlier one lapses.
    int generation = 0;
    TodaySummary summary;
    long long startMs = 0;
    // What the session changed, handed back when it ends.
    std::unique_ptr<CharacterSource> savedSource;
    unsigned int savedFlags = 0;
    bool savedRecall = false;
    const std::string listenerKey = "TodaySession@" + std::to_string(reinterpret_cast<std::uintptr_t>(this));
};

}  // namespace morvel::prog2
