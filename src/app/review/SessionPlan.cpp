#include "app/review/SessionPlan.h"

#include <ki/log/GLog.h>

#include <algorithm>

#include "app/review/Scheduler.h"

namespace morvel::review {

namespace {

bool due_on(const Card& card, int day) {
    return card.state != CardState::NEW && card.due <= day;
}

}  // namespace

SessionPlan::SessionPlan(const Scheduler& scheduler, std::function<int()> today, std::vector<PlanCard> cards,
                         int newLimit, std::vector<char32_t> introducedBefore, int reviewedToday)
    : scheduler(&scheduler), today(std::move(today)), cards_(std::move(cards)) {
    if (std::find(NEW_LIMITS.begin(), NEW_LIMITS.end(), newLimit) == NEW_LIMITS.end()) {
        ki::pp_warn("SessionPlan::SessionPlan, new limit $ not offered, using $", newLimit,
                    DEFAULT_NEW_LIMIT);
        newLimit = DEFAULT_NEW_LIMIT;
    }
    this->newLimit = newLimit;
    this->reviewedToday = std::max(0, reviewedToday);
    std::stable_sort(cards_.begin(), cards_.end(),
                     [](const PlanCard& a, const PlanCard& b) { return a.order < b.order; });
    for (size_t i = 0; i < cards_.size(); ++i) {
        if (!indexOf.emplace(cards_[i].codePoint, i).second)
            ki::pp_warn("SessionPlan::SessionPlan, code point $ listed twice, keeping the first",
                        static_cast<unsigned>(cards_[i].codePoint));
    }
    day = this->today();
    for (const char32_t codePoint : introducedBefore) {
        introducedToday.insert(codePoint);
        const PlanCard* c = find(codePoint);
        if (!pending && c && c->card.state == CardState::NEW) pending = codePoint;
    }
}

int SessionPlan::roll_day() {
    const int now = today();
    if (now != day) {
        day = now;
        introducedToday.clear();
        reviewedToday = 0;
    }
    return day;
}

PlanCard* SessionPlan::find(char32_t codePoint) {
    const auto it = indexOf.find(codePoint);
    return it == indexOf.end() ? nullptr : &cards_[it->second];
}

PlanStep SessionPlan::next() {
    const int now = roll_day();
    if (pending) return {PlanStep::Kind::NEW, pending};

    const PlanCard* review = nullptr;
    double lowest = 2.0;
    const PlanCard* fresh = nullptr;
    for (const PlanCard& c : cards_) {
        if (due_on(c.card, now)) {
            // Strictly lower only: among equals the earlier in level order stays first.
            const double r = scheduler->retrievability(c.card, now);
            if (r < lowest) {
                lowest = r;
                review = &c;
            }
        } else if (!fresh && c.card.state == CardState::NEW) {
            fresh = &c;
        }
    }
    if (review) return {PlanStep::Kind::REVIEW, review->codePoint};
    if (fresh && static_cast<int>(introducedToday.size()) < newLimit) return {PlanStep::Kind::NEW, fresh->codePoint};
    return {};
}

void SessionPlan::introduced(char32_t codePoint) {
    roll_day();
    const PlanCard* c = find(codePoint);
    if (!c || c->card.state != CardState::NEW) {
        ki::pp_warn("SessionPlan::introduced, $ is not a new character", static_cast<unsigned>(codePoint));
        return;
    }
    pending = codePoint;
    introducedToday.insert(codePoint);
}

Card SessionPlan::graded(char32_t codePoint, Rating rating) {
    const int now = roll_day();
    PlanCard* c = find(codePoint);
    if (!c) {
        ki::pp_warn("SessionPlan::graded, unknown code point $", static_cast<unsigned>(codePoint));
        return {};
    }
    if (c->card.state == CardState::NEW) {
        introducedToday.insert(codePoint);
    } else {
        ++reviewedToday;
    }
    if (pending == codePoint) pending = 0;
    c->card = scheduler->review(c->card, now, rating);
    return c->card;
}

PlanProgress SessionPlan::progress() {
    const int now = roll_day();
    int due = 0, fresh = 0;
    for (const PlanCard& c : cards_) {
        if (due_on(c.card, now))
            ++due;
        else if (c.card.state == CardState::NEW && c.codePoint != pending)
            ++fresh;
    }
    const int introduced = static_cast<int>(introducedToday.size());
    const int newLeft = std::min(fresh, std::max(0, newLimit - introduced));
    return {reviewedToday, introduced, due + (pending ? 1 : 0) + newLeft};
}

}  // namespace morvel::review
