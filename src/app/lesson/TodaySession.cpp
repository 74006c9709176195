#include "app/lesson/TodaySession.h"

#include <ki/log/GLog.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "app/lesson/CharacterSource.h"
#include "app/progress/ProgressStore.h"
#include "app/stroke/ControlAnim.h"

namespace morvel::prog2 {

namespace {

long long steady_ms() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// The session says which character comes next: Previous and Next lead nowhere meanwhile.
class StayPut : public CharacterSource {
public:
    int after(int, int) const override { return -1; }
};

}  // namespace

TodaySession::TodaySession(LessonFlow& lesson, ControlAnim& anim, LessonFlow::Delay wait)
    : flow(lesson), control(anim), delay(std::move(wait)), clock(steady_ms) {
    flow.liGraded.append(listenerKey, [this](const GradedRecall& recall) { on_graded(recall); });
    flow.liFinished.append(listenerKey, [this](const int&) {
        if (current != Step::TRACE || !control.state().is_complete()) return;
        const int step = generation;
        delay(STEP_PAUSE_MS, [this, step]() {
            if (step == generation) begin(Step::RECALL);
        });
    });
    // Watching ends when the character has drawn itself to the end.
    control.liChanged.append(listenerKey, [this](const LessonChange& change) {
        if (current != Step::WATCH || change.after.is(MODE_LEARN) || change.before.progress >= 100.0f ||
            change.after.progress < 100.0f || flow.recall().codePoint != codePoint)
            return;
        const int step = generation;
        delay(STEP_PAUSE_MS, [this, step]() {
            if (step == generation) begin(Step::TRACE);
        });
    });
}

TodaySession::~TodaySession() {
    flow.liGraded.remove(listenerKey);
    flow.liFinished.remove(listenerKey);
    control.liChanged.remove(listenerKey);
}

void TodaySession::set_clock(std::function<long long()> now) {
    clock = std::move(now);
}

bool TodaySession::start(progress::ProgressStore& history, const std::vector<int>& characters, int newLimit) {
    if (is_active()) stop();
    scheduler = review::Scheduler(history.retention());
    const std::map<int, review::Card> cards = history.cards();
    std::vector<review::PlanCard> planCards;
    planCards.reserve(characters.size());
    for (size_t i = 0; i < characters.size(); ++i) {
        const auto it = cards.find(characters[i]);
        planCards.push_back({static_cast<char32_t>(characters[i]), static_cast<int>(i),
                             it != cards.end() ? it->second : review::Card{}});
    }
    const int today = history.local_today();
    std::vector<char32_t> introduced;
    int reviewed = history.reviews_on(today);
    for (const int code : history.introduced_on(today)) {
        introduced.push_back(static_cast<char32_t>(code));
        // Tracing a new character started its card; the recall after it, the same day, is part of
        // meeting it, not a review.
        const auto it = cards.find(code);
        if (it != cards.end()) reviewed -= std::max(0, it->second.reps - 1);
    }
    auto next = std::make_unique<review::SessionPlan>(
        scheduler, [store = &history]() { return store->local_today(); }, std::move(planCards), newLimit,
        std::move(introduced), std::max(0, reviewed));
    if (next->next().kind == review::PlanStep::Kind::DONE) return false;

    store = &history;
    plan = std::move(next);
    summary = {};
    startMs = clock();
    savedSource = flow.set_source(std::make_unique<StayPut>());
    savedFlags = control.get_mode_flags();
    savedRecall = flow.is_recall();
    advance();
    return true;
}

void TodaySession::stop() {
    if (!is_active()) return;
    restore();
    liChanged.fire_event();
}

void TodaySession::restore() {
    ++generation;
    plan.reset();
    current = Step::NONE;
    codePoint = 0;
    flow.set_source(std::move(savedSource));
    flow.set_recall(savedRecall);
    control.set_mode_flags(savedFlags);
}

review::PlanProgress TodaySession::progress() const {
    return plan ? plan->progress() : review::PlanProgress{};
}

void TodaySession::advance() {
    if (!plan) return;
    planned = plan->next();
    if (planned.kind == review::PlanStep::Kind::DONE) return finish();
    codePoint = static_cast<int>(planned.codePoint);
    if (planned.kind == review::PlanStep::Kind::NEW) plan->introduced(planned.codePoint);
    begin(planned.kind == review::PlanStep::Kind::NEW ? Step::WATCH : Step::RECALL);
}

void TodaySession::begin(Step step) {
    ++generation;
    current = step;
    const bool fresh = step == Step::WATCH || planned.kind == review::PlanStep::Kind::REVIEW;
    switch (step) {
        case Step::WATCH:
            flow.set_recall(false);
            control.set_mode_bits(MODE_LEARN | MODE_PAUSED, false);
            control.set_mode_bits(MODE_AUTO_DRAW, true);
            break;
        case Step::TRACE:
            // Once, with every aid the learner has switched on.
            control.set_mode_bits(MODE_LEARN, true);
            control.set_rounds(1);
            flow.again();
            break;
        case Step::RECALL:
            flow.set_recall(true);
            break;
        case Step::NONE:
            break;
    }
    // A review and a new character are shown afresh; the later steps keep the character shown.
    if (fresh) liShow.fire_event(codePoint);
    if (flow.recall().codePoint != codePoint) {
        ki::pp_warn("TodaySession::begin, character $ could not be shown, the session ends", codePoint);
        return stop();
    }
    liChanged.fire_event();
}

void TodaySession::on_graded(const GradedRecall& recall) {
    if (!plan || current != Step::RECALL || recall.codePoint != codePoint) return;
    plan->graded(planned.codePoint, recall.rating);
    if (planned.kind == review::PlanStep::Kind::NEW)
        ++summary.fresh;
    else
        ++summary.reviewed;
    ++summary.graded;
    if (recall.rating != review::Rating::AGAIN) ++summary.notAgain;
    current = Step::NONE;
    const int step = ++generation;
    // After the flow has finished with the grade.
    delay(0, [this, step]() {
        if (step == generation) advance();
    });
}

void TodaySession::finish() {
    summary.elapsedMs = std::max(0LL, clock() - startMs);
    // The stored cards: a new character's card began when it was traced.
    for (const auto& [code, card] : store->cards()) {
        if (card.state == review::CardState::NEW) continue;
        if (summary.nextDueDay < 0 || card.due < summary.nextDueDay) summary.nextDueDay = card.due;
    }
    store->record_session_finished();
    summary.streak = store->streak();
    restore();
    liChanged.fire_event();
    liFinished.fire_event(summary);
}

}  // namespace morvel::prog2
