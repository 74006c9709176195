#pragma once
// Connects today's session to the window: the button and key that start and end it, the
// progress line while it runs, the summary when it ends, and the start with the session when
// the learner asked for it. The order of the steps is the session's to decide.

#include <QString>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "app/lesson/TodaySession.h"

class QObject;

namespace morvel::review {
struct PlanProgress;
}

namespace morvel::prog2 {

class LessonControls;
class Window;

namespace today {
/// The button's tool tip.
QString button_text();
/// "12 reviews · 4 new · 3 left" in the interface language.
QString progress_text(const review::PlanProgress& progress);
/// The summary's lines; `today` is the local day the session ended on.
QString summary_text(const TodaySummary& summary, int today);
}  // namespace today

class TodayView {
public:
    static constexpr const char* KEY_TODAY = "Ctrl+T";

    struct Parts {
        Window* window;
        LessonControls* controls;
    };

    /// The parts must outlive the view.
    explicit TodayView(const Parts& parts);
    ~TodayView();

    /// Starts today's session, or ends the one running. With nothing to do (or no history), a
    /// message says so.
    void toggle();
    /// The practice history has been opened: with "Start with today's session" on and a review
    /// due, the session starts.
    void history_opened();
    TodaySession& session() { return *today; }

private:
    /// Reads the characters of every level, in level order, the first time they are needed.
    const std::vector<int>& characters();
    void show(int codePoint);
    void refresh();

    Parts parts;
    std::unique_ptr<TodaySession> today;
    /// Ends the session before the window saves its state on closing; deleted with the view.
    QObject* closeFilter = nullptr;
    TodaySession::Step lastStep = TodaySession::Step::NONE;
    const std::string listenerKey = "TodayView@" + std::to_string(reinterpret_cast<quintptr>(this));
    std::vector<int> all;
    std::unordered_map<int, int> levelOf;
};

}  // namespace morvel::prog2
