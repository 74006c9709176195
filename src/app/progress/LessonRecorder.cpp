#include "app/progress/LessonRecorder.h"

#include <ki/log/GLog.h>

#include "app/lesson/LessonOptions.h"
#include "app/progress/ProgressPanel.h"
#include "app/progress/ProgressStore.h"

namespace morvel::progress {

LessonRecorder::LessonRecorder() = default;
LessonRecorder::~LessonRecorder() = default;

QString LessonRecorder::open(const QString& folder) {
    history = std::make_unique<ProgressStore>();
    history->set_retention(retention);
    history->open(folder.isEmpty() ? ProgressStore::default_folder() : folder, false,
                  ProgressStore::Check::IN_BACKGROUND);
    if (history->is_recording()) history->begin_attempt(codePoint);
    history->liNotice += [this](const ProgressStore::Notice& notice) {
        history->take_notice();
        liNotice.fire_event(Notice{ProgressPanel::notice_text(notice, history->notice_path(notice)),
                                   notice != ProgressStore::Notice::CAUGHT_UP});
    };
    const ProgressStore::Notice notice = history->take_notice();
    return notice == ProgressStore::Notice::NONE
               ? QString()
               : ProgressPanel::notice_text(notice, history->notice_path(notice));
}

bool LessonRecorder::is_open() const {
    return history != nullptr && history->status() != ProgressStore::Status::CLOSED &&
           history->status() != ProgressStore::Status::UNAVAILABLE;
}

void LessonRecorder::character_started(int levelNumber, int code) {
    level = levelNumber;
    codePoint = code;
    misses = 0;
    hintShown = false;
    clock.start();
    if (history != nullptr && history->is_recording()) history->begin_attempt(codePoint);
}

void LessonRecorder::trace(int strokeIndex, bool accepted, const QString& reason, int tolerance,
                           unsigned int aids, int score) {
    if (!accepted) ++misses;
    if (history == nullptr || !history->is_recording()) return;
    TraceRecord record;
    record.level = level;
    record.codePoint = codePoint;
    record.strokeIndex = strokeIndex;
    record.accepted = accepted;
    record.reason = reason;
    record.tolerance = tolerance;
    record.aids = aids;
    record.hintShown = hintShown;
    record.score = score;
    history->record_trace(record);
    // After the record is queued (and, with the file free, written): scripts that kill the
    // program count these lines against the rows in the file.
    ki::pp("LessonRecorder::trace, judged, stroke:$, accepted:$, unwritten:$", strokeIndex, accepted,
           history->unwritten());
}

void LessonRecorder::completed(int round, int score) {
    if (history != nullptr && history->is_recording()) {
        CompletionRecord record;
        record.level = level;
        record.codePoint = codePoint;
        record.seconds = clock.isValid() ? static_cast<double>(clock.elapsed()) / 1000.0 : 0.0;
        record.misses = misses;
        record.round = round;
        record.score = score;
        history->record_completion(record);
    }
    // A further round counts its own misses and time.
    misses = 0;
    hintShown = false;
    clock.start();
}

void LessonRecorder::graded(int code, review::Rating rating, int durationMs) {
    if (history != nullptr && history->is_recording())
        history->record_review(ReviewRecord{0, code, rating, durationMs});
}

std::optional<int> LessonRecorder::median_recall_ms(int code) const {
    return is_open() ? history->median_recall_ms(code) : std::nullopt;
}

void LessonRecorder::set_retention(double value) {
    retention = value;
    if (history != nullptr) history->set_retention(value);
}

unsigned int LessonRecorder::aids_of(unsigned int drawAids, bool guideGrid) {
    using prog2::LessonOptions;
    unsigned int bits = guideGrid ? AID_GRID : 0u;
    if ((drawAids & LessonOptions::DRAW_OUTLINE) != 0) bits |= AID_OUTLINE;
    if ((drawAids & LessonOptions::DRAW_HELPER_CIRCLES) != 0) bits |= AID_CIRCLES;
    return bits;
}

Mastery LessonRecorder::mastery(int code) const {
    return is_open() ? history->mastery(code) : Mastery::NEW;
}

bool LessonRecorder::is_due(int code) const {
    return is_open() && history->is_due(code);
}

int LessonRecorder::due_count(const std::vector<int>& codePoints) const {
    return is_open() ? static_cast<int>(history->due_among(codePoints).size()) : 0;
}

int LessonRecorder::next_due_index(const std::vector<int>& codePoints, int from, int step) const {
    return is_open() ? history->next_due_index(codePoints, from, step) : -1;
}

}  // namespace morvel::progress
