#pragma once
// The learner's practice history in one SQLite file, `progress.sqlite` in the application data
// folder. Every judged trace goes through a write queue and is committed at once (WAL) when the
// file is free, so a killed program loses nothing that was judged; a busy file or a failing disk
// never blocks the caller: the records wait in the queue until they can be written. Each write
// updates the character's summary (and, for a review, its card) from the row the file holds,
// inside the write transaction, so a second writer's counts are never overwritten. Summaries and
// cards are also kept in memory, so the queries the window and the list ask are answered without
// reading the history.
//
// Faults never stop practice: a damaged file is moved aside and a new one begun, an unwritable
// folder records nothing, a file of a newer layout is only read. Each leaves one notice. The
// file is checked off the calling thread after opening; records wait until it has been.

#include <ki/Listener.h>

#include <QString>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "app/progress/ProgressTypes.h"
#include "app/review/Scheduler.h"

class QSqlQuery;
class QThread;

namespace morvel::progress {

class WriteQueue;

class ProgressStore {
public:
    static constexpr const char* FILE_NAME = "progress.sqlite";
    /// How long opening (and the last write at closing) waits for another connection.
    static constexpr int OPEN_BUSY_TIMEOUT_MS = 2000;

    /// Milliseconds since the epoch; tests inject their own.
    using Clock = std::function<qint64()>;

    enum class Status { CLOSED, WRITABLE, READ_ONLY, UNAVAILABLE };
    /// The last two arise while recording: writes fail (the records stay queued), and later
    /// everything queued has been written after all.
    enum class Notice { NONE, DAMAGED_MOVED_ASIDE, NOT_WRITABLE, NEWER_VERSION, WRITES_FAILING, CAUGHT_UP };

    explicit ProgressStore(Clock clock = {});
    ~ProgressStore();
    ProgressStore(const ProgressStore&) = delete;
    ProgressStore& operator=(const ProgressStore&) = delete;

    /// The application data folder (QStandardPaths::AppDataLocation).
    static QString default_folder();

    /// How a writable file is checked for damage after opening: `open` waits for the check,
    /// or returns at once and records wait in the queue until it has passed (the window's way,
    /// which needs the caller's event loop).
    enum class Check { WAIT, IN_BACKGROUND };

    /// Opens or creates the file in `folder`, migrating an older layout. `readOnly` never
    /// creates or changes anything (for export from the command line).
    Status open(const QString& folder, bool readOnly = false, Check check = Check::WAIT);
    void close();
    Status status() const { return state; }
    bool is_recording() const { return state == Status::WRITABLE; }
    QString file_path() const { return filePath; }

    /// The notice for the learner that the last `open` left, once: taking it clears it.
    Notice take_notice();
    /// Where a damaged file was moved to; empty when none was.
    QString moved_aside_path() const { return movedAside; }
    /// What a notice is about: the moved-aside file, the unwritable folder, the newer file, or
    /// why writes fail.
    QString notice_path(Notice about) const;
    /// Fired with each notice that arises after `open` returned (damage found by the check,
    /// writes failing, caught up); `take_notice` then gives it too.
    ki::Listener<Notice> liNotice;

    /// Each queues the record and returns whether it will be written; false while not
    /// recording. It is written before the call returns unless the file is busy, failing or
    /// still being checked.
    bool record_trace(const TraceRecord& trace);
    /// A character's first completion also starts its card: a review rated GOOD, or HARD when a
    /// hint was shown. Later completions are practice, not reviews.
    bool record_completion(const CompletionRecord& completion);
    /// A graded review: the character's card moves on by the scheduler, in the same transaction.
    bool record_review(const ReviewRecord& review);
    /// A day's session was finished; the streak counts the days with one.
    bool record_session_finished(const SessionRecord& session = {});
    /// The desired retention that plans the next due days (0.80 .. 0.95); other values are
    /// logged and replaced by the default.
    void set_retention(double retention);
    double retention() const { return scheduler.retention(); }
    /// A new attempt at `codePoint` begins: whether its next completion was aided is decided
    /// from the traces recorded after this call only.
    void begin_attempt(int codePoint);
    /// Records queued and not yet written.
    int unwritten() const;
    /// Whether the check of the file after `open` is still running; records wait meanwhile.
    bool is_checking() const;
    /// Waits for that check and applies its outcome: for callers without an event loop.
    void wait_for_check();
    /// Lets the file grow by at most `pages` more pages, so that further writes fail as on a
    /// full disk; a negative value lifts the limit. For tests of full-disk handling.
    void limit_growth(int pages);

    /// A summary with only the code point for characters never practised.
    CharSummary summary(int codePoint) const;
    std::vector<CharSummary> summaries() const;
    Mastery mastery(int codePoint) const;
    /// The character's card; a NEW card for characters never reviewed.
    review::Card card(int codePoint) const;
    /// Every character's card, by code point.
    std::map<int, review::Card> cards() const;
    /// Due: its card's due day is today or earlier.
    bool is_due(int codePoint) const;
    /// The due ones among `codePoints`, in their order.
    std::vector<int> due_among(const std::vector<int>& codePoints) const;
    /// The index in `codePoints` of the next due character after `from`, going by `step` (+1 or
    /// -1) and wrapping around; `from` itself comes last. -1 when none is due.
    int next_due_index(const std::vector<int>& codePoints, int from, int step) const;
    /// The last `count` days up to today, oldest first, days without practice included.
    std::vector<DayStats> last_days(int count) const;
    /// Average and best character score per code point, over the scored completions.
    std::map<int, ScoreStats> score_stats() const;
    /// Today's Julian day by the store's clock.
    qint64 today() const;
    /// Today as the scheduler counts local days (from 1970-01-01), by the store's clock.
    int local_today() const;

    /// The characters first reviewed as new on local `day`, in the order they were.
    std::vector<int> introduced_on(int day) const;
    /// Reviews of characters already introduced, done on local `day`.
    int reviews_on(int day) const;
    /// Consecutive local days with a finished session, ending today, or yesterday when none
    /// was finished today yet.
    int streak() const;
    /// Reviews falling due on each of the next `days` days from today; overdue ones count today.
    std::vector<int> due_forecast(int days = 30) const;
    /// The share of reviews not rated AGAIN over the last `days` days up to today, counting the
    /// reviews of characters already introduced (a first sight tests no memory); none without.
    std::optional<double> measured_retention(int days = 30) const;
    /// The median duration of the character's graded recalls; none when it has none.
    std::optional<int> median_recall_ms(int codePoint) const;

    /// Empties the history after copying the file to `progress.sqlite.backup-<UTC date-time>`
    /// next to it (with a counter when that name is taken). Returns the copy's path, or an empty
    /// text (logged) when nothing was reset, also while records wait to be written.
    QString reset();

private:
    struct Db;
    enum class WriteResult { DONE, BUSY, FAILED };

    bool open_connection(bool readOnly);
    bool is_database();
    void move_aside();
    Status begin_writing();
    bool prepare_writes();
    void load_summaries();
    void start_check(bool full);
    void check_done(int generation, bool damaged);
    void notify(Notice about);
    WriteResult write(const QString& what, const std::vector<std::function<QSqlQuery*()>>& steps);
    QSqlQuery* write_summary(const CharSummary& summary);
    QSqlQuery* read_summary(int codePoint, CharSummary& into);
    QSqlQuery* add_to_day(qint64 day, int completions, int traces, int accepted);
    WriteResult write_trace(const TraceRecord& trace);
    WriteResult write_completion(const CompletionRecord& completion);
    WriteResult write_review(const ReviewRecord& review);
    WriteResult write_session(const SessionRecord& session);
    QSqlQuery* read_card(int codePoint, review::Card& into);
    /// Inserts the review row and stores the card after it; `card` is the card before.
    QSqlQuery* add_review(const ReviewRecord& review, bool recall, review::Card& card);
    void load_cards();
    void write_left_over();
    /// The queue while the file is writable, else none.
    WriteQueue* writable_queue() const;
    qint64 now() const;
    WriteResult write_failed(const QString& what, const QSqlQuery& failed);

    Clock clock;
    review::Scheduler scheduler;
    std::unique_ptr<Db> db;
    std::unique_ptr<WriteQueue> queue;
    std::unique_ptr<QThread> checker;
    std::shared_ptr<std::atomic<bool>> checkFoundDamage;
    int checkGeneration = 0;
    bool checking = false;
    bool closing = false;
    Status state = Status::CLOSED;
    Notice notice = Notice::NONE;
    QString folderPath;
    QString filePath;
    QString movedAside;
    QString writeError;
};

}  // namespace morvel::progress
