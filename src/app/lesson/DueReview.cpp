#include "app/lesson/DueReview.h"

#include <QDateTime>
#include <QTimeZone>
#include <algorithm>
#include <utility>

#include "app/practice/PracticeTexts.h"
#include "app/progress/LessonRecorder.h"
#include "app/progress/ProgressPanel.h"
#include "app/progress/ProgressStore.h"
#include "app/review/LocalDay.h"

namespace morvel::prog2 {

namespace {

constexpr qint64 MINUTE = 60 * 1000;

// Milliseconds until the first of `codes` falls due (at the start of its due day), -1 when none
// ever will. Due days are whole local days.
qint64 ms_to_next_due(const progress::ProgressStore& store, const std::vector<int>& codes) {
    const int today = store.local_today();
    int first = -1;
    for (const int code : codes) {
        const review::Card card = store.card(code);
        if (card.state != review::CardState::NEW && card.due > today && (first < 0 || card.due < first))
            first = card.due;
    }
    if (first < 0) return -1;
    const qint64 start = review::LocalDay::start_of(first, QTimeZone::systemTimeZone());
    return std::max<qint64>(0, start - QDateTime::currentMSecsSinceEpoch());
}

}  // namespace

DueReview::DueReview(progress::LessonRecorder& history, std::function<std::vector<int>()> codes)
    : recorder(history), codePoints(std::move(codes)) {}

bool DueReview::is_active() const {
    return reviewing && recorder.is_open();
}

int DueReview::next_due(int from, int step) const {
    return is_active() ? recorder.next_due_index(codePoints(), from, step) : -1;
}

QString DueReview::label() const {
    if (!is_active()) return {};
    const std::vector<int> codes = codePoints();
    const int due = recorder.due_count(codes);
    return due > 0 ? progress::ProgressPanel::due_count_text(due)
                   : practice::nothing_due_text(ms_to_next_due(*recorder.store(), codes));
}

std::vector<QString> DueReview::widest_labels() {
    return {progress::ProgressPanel::due_count_text(9999), practice::nothing_due_text(59 * MINUTE),
            practice::nothing_due_text(47 * 60 * MINUTE), practice::nothing_due_text(99 * 24 * 60 * MINUTE)};
}

}  // namespace morvel::prog2
