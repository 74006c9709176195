#pragma once
// The learner's practice history in one SQLite file, `progress.sqlite` in the application data
// folder. Every judged trace is committed at once (WAL), so a killed program loses nothing that
// was judged. Per-character summaries are kept in memory and in the file, so the queries the
// window and the progress panel ask are answered without reading the history.
//
// Faults never stop practice: a damaged file is moved aside and a new one begun, an unwritable
// folder records nothing, a file of a newer layout is only read. Each leaves one notice.

#include <QString>
#include <functional>
#include <memory>
#include <vector>

#include "app/progress/ProgressTypes.h"

class QSqlQuery;

namespace morvel::progress {

class ProgressStore {
public:
    static constexpr const char* FILE_NAME = "progress.sqlite";
    /// How long a write waits for another running instance before giving up.
    static constexpr int BUSY_TIMEOUT_MS = 2000;

    /// Milliseconds since the epoch; tests inject their own.
    using Clock = std::function<qint64()>;

    enum class Status { CLOSED, WRITABLE, READ_ONLY, UNAVAILABLE };
    enum class Notice { NONE, DAMAGED_MOVED_ASIDE, NOT_WRITABLE, NEWER_VERSION };

    explicit ProgressStore(Clock clock = {});
    ~ProgressStore();
    ProgressStore(const ProgressStore&) = delete;
    ProgressStore& operator=(const ProgressStore&) = delete;

    /// The application data folder (QStandardPaths::AppDataLocation).
    static QString default_folder();

    /// Opens or creates the file in `folder`, migrating an older layout. `readOnly` never
    /// creates or changes anything (for export from the command line).
    Status open(const QString& folder, bool readOnly = false);
    void close();
    Status status() const { return state; }
    bool is_recording() const { return state == Status::WRITABLE; }
    QString file_path() const { return filePath; }

    /// The notice for the learner that the last `open` left, once: taking it clears it.
    Notice take_notice();
    /// Where a damaged file was moved to; empty when none was.
    QString moved_aside_path() const { return movedAside; }
    /// The path a notice is about: the moved-aside file, the unwritable folder or the newer file.
    QString notice_path(Notice about) const;

    /// Each returns whether the record was written; false while not recording.
    bool record_trace(const TraceRecord& trace);
    bool record_completion(const CompletionRecord& completion);

    /// A summary with only the code point for characters never practised.
    CharSummary summary(int codePoint) const;
    std::vector<CharSummary> summaries() const;
    Mastery mastery(int codePoint) const;
    bool is_due(int codePoint) const;
    /// The due ones among `codePoints`, in their order.
    std::vector<int> due_among(const std::vector<int>& codePoints) const;
    /// The index in `codePoints` of the next due character after `from`, going by `step` (+1 or
    /// -1) and wrapping around; `from` itself comes last. -1 when none is due.
    int next_due_index(const std::vector<int>& codePoints, int from, int step) const;
    /// The last `count` days up to today, oldest first, days without practice included.
    std::vector<DayStats> last_days(int count) const;
    /// Today's Julian day by the store's clock.
    qint64 today() const;

    /// Empties the history after copying the file to `progress.sqlite.backup-<date-time>` next
    /// to it. Returns the copy's path, or an empty text (logged) when nothing was reset.
    QString reset();

private:
    struct Db;
    bool open_connection(bool readOnly);
    bool check_damage();
    void move_aside();
    bool prepare_writes();
    void load_summaries();
    bool write(const QString& what, const std::vector<std::function<QSqlQuery*()>>& steps);
    QSqlQuery* write_summary(const CharSummary& summary);
    QSqlQuery* add_to_day(qint64 day, int completions, int traces, int accepted);
    qint64 now() const;
    void write_failed(const QString& what, const QSqlQuery& failed);

    Clock clock;
    std::unique_ptr<Db> db;
    Status state = Status::CLOSED;
    Notice notice = Notice::NONE;
    QString folderPath;
    QString filePath;
    QString movedAside;
    bool writeErrorLogged = false;
};

}  // namespace morvel::progress
