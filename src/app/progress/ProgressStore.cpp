#include "app/progress/ProgressStore.h"

#include <ki/log/GLog.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QThread>
#include <QVariant>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <unordered_map>

#include "app/progress/ProgressRules.h"
#include "app/progress/ProgressSchema.h"
#include "app/progress/WriteQueue.h"

namespace morvel::progress {

using ki::pp_info;
using ki::pp_warn;

namespace {

std::atomic<int> connectionCounter{0};

/// The twelve columns of `summary` in the order `summary_of` reads them.
constexpr const char* SELECT_SUMMARIES =
    "SELECT code_point, level, first_seen_ms, last_practised_ms, completions, clean_completions, misses, box,"
    " last_completion_day, due_day, last_clean_day, known FROM summary";

/// The nine columns of `cards` in the order `card_of` reads them.
constexpr const char* SELECT_CARDS =
    "SELECT code_point, state, stability, difficulty, due_day, last_review_day, interval, reps, lapses"
    " FROM cards";

review::Card card_of(const QSqlQuery& query) {
    review::Card c;
    c.state = query.value(1).toInt() == static_cast<int>(review::CardState::REVIEW) ? review::CardState::REVIEW
                                                                                    : review::CardState::NEW;
    c.stability = query.value(2).toDouble();
    c.difficulty = query.value(3).toDouble();
    c.due = query.value(4).toInt();
    c.lastReview = query.value(5).toInt();
    c.interval = query.value(6).toInt();
    c.reps = query.value(7).toInt();
    c.lapses = query.value(8).toInt();
    return c;
}

/// UTC: a local time repeats when daylight saving ends, and two names must never meet.
QString stamp(qint64 timeMs) {
    return QDateTime::fromMSecsSinceEpoch(timeMs, Qt::UTC).toString(QStringLiteral("yyyyMMdd-HHmmss'Z'"));
}

/// `base`, else `base-2`, `base-3`, ...: the first name that no file has.
QString free_name(const QString& base) {
    QString name = base;
    for (int n = 2; QFileInfo::exists(name) || QFileInfo(name).isSymLink(); ++n)
        name = QStringLiteral("%1-%2").arg(base).arg(n);
    return name;
}

int primary_code(const QSqlError& error) {
    return error.nativeErrorCode().toInt() & 0xff;
}

/// SQLite's answers for a file that is not a database or whose pages are broken.
bool is_damage(const QSqlError& error) {
    const int code = primary_code(error);
    return code == 11 || code == 26;  // SQLITE_CORRUPT, SQLITE_NOTADB
}

/// A score outside 0 .. 100 is stored as none.
int score_or_none(int score) {
    return score >= 0 && score <= 100 ? score : -1;
}

/// Another connection holds the write lock.
bool is_busy(const QSqlError& error) {
    const int code = primary_code(error);
    return code == 5 || code == 6;  // SQLITE_BUSY, SQLITE_LOCKED
}

struct PragmaAnswer {
    bool ran = false;
    QString text;  ///< the first row, or why it failed
    bool damage = false;
};

/// Runs `pragma` on a read-only connection of the calling thread's own (the checker's).
PragmaAnswer run_pragma(const QString& path, const QString& pragma) {
    const QString name = QStringLiteral("quenlo-progress-beside-%1").arg(connectionCounter++);
    PragmaAnswer answer;
    {
        QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        connection.setDatabaseName(path);
        connection.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=%1")
                                         .arg(ProgressStore::OPEN_BUSY_TIMEOUT_MS));
        if (connection.open()) {
            QSqlQuery query(connection);
            answer.ran = query.exec(pragma);
            if (answer.ran)
                answer.text = query.next() ? query.value(0).toString() : QString();
            else
                answer.text = query.lastError().text();
            answer.damage = !answer.ran && is_damage(query.lastError());
        }
    }
    QSqlDatabase::removeDatabase(name);
    return answer;
}

/// On the checker thread: `PRAGMA quick_check` after opening, the full `integrity_check` only
/// when a write already failed as on a damaged file. A file locked by another instance is not
/// damaged.
bool check_file(const QString& path, bool full) {
    const PragmaAnswer answer = run_pragma(
        path, full ? QStringLiteral("PRAGMA integrity_check") : QStringLiteral("PRAGMA quick_check"));
    const bool damaged = answer.damage || (answer.ran && answer.text != QLatin1String("ok"));
    if (damaged) pp_warn("ProgressStore, check of '$': $", path, answer.text);
    return damaged;
}

}  // namespace

struct ProgressStore::Db {
    QString name = QStringLiteral("quenlo-progress-%1").arg(connectionCounter++);
    QSqlDatabase connection;
    QSqlQuery insertTrace;
    QSqlQuery insertCompletion;
    QSqlQuery attemptAids;
    QSqlQuery selectSummary;
    QSqlQuery upsertSummary;
    QSqlQuery upsertDay;
    QSqlQuery selectCard;
    QSqlQuery upsertCard;
    QSqlQuery insertReview;
    QSqlQuery insertSession;
    QSqlQuery begin;
    QSqlQuery commit;
    QSqlQuery rollback;
    std::unordered_map<int, CharSummary> summaries;
    std::unordered_map<int, review::Card> cards;
    /// The highest trace id known; an attempt's traces are those of its character above the
    /// value here when it began (by id, not by time: the clock may be set back).
    qint64 lastTraceId = 0;
    qint64 openedAtTraceId = 0;
    std::unordered_map<int, qint64> attemptFrom;
    /// Journal mode set, layout up to date, writes prepared.
    bool writing = false;

    ~Db() {
        // Queries first, then the connection, then its registration: Qt warns otherwise.
        for (QSqlQuery* query : {&insertTrace, &insertCompletion, &attemptAids, &selectSummary, &upsertSummary,
                                 &upsertDay, &selectCard, &upsertCard, &insertReview, &insertSession, &begin,
                                 &commit, &rollback})
            *query = QSqlQuery();
        connection.close();
        connection = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
    }
};

ProgressStore::ProgressStore(Clock clockFn) : clock(std::move(clockFn)) {}

ProgressStore::~ProgressStore() {
    close();
}

QString ProgressStore::default_folder() {
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

qint64 ProgressStore::now() const {
    return clock ? clock() : QDateTime::currentMSecsSinceEpoch();
}

qint64 ProgressStore::today() const {
    return ProgressRules::day_of(now());
}

int ProgressStore::local_today() const {
    return ProgressRules::local_day_of(now());
}

QString ProgressStore::notice_path(Notice about) const {
    switch (about) {
        case Notice::DAMAGED_MOVED_ASIDE:
            return movedAside;
        case Notice::NOT_WRITABLE:
            return folderPath;
        case Notice::WRITES_FAILING:
            return writeError;
        case Notice::NEWER_VERSION:
        case Notice::CAUGHT_UP:
        case Notice::NONE:
            break;
    }
    return filePath;
}

ProgressStore::Notice ProgressStore::take_notice() {
    return std::exchange(notice, Notice::NONE);
}

void ProgressStore::notify(Notice about) {
    notice = about;
    if (!closing) liNotice.fire_event(about);
}

int ProgressStore::unwritten() const {
    return queue ? queue->size() : 0;
}

bool ProgressStore::is_checking() const {
    return checking;
}

void ProgressStore::close() {
    // Nobody hears notices any more: the store may be going away with its listeners' owner.
    closing = true;
    if (checker) checker->wait();
    // A check that passed lets the queued records in; a damaged file is dealt with next time.
    if (checking && !*checkFoundDamage && db && !db->writing) begin_writing();
    checker.reset();
    checking = false;
    write_left_over();
    queue.reset();
    db.reset();
    closing = false;
    if (state != Status::UNAVAILABLE) state = Status::CLOSED;
}

/// The last chance for records still queued: wait for a busy file this once.
void ProgressStore::write_left_over() {
    if (!queue || queue->size() == 0 || !db || !db->writing || state != Status::WRITABLE) return;
    QSqlQuery(QStringLiteral("PRAGMA busy_timeout = %1").arg(OPEN_BUSY_TIMEOUT_MS), db->connection);
    queue->hold(false);
    if (queue->size() > 0)
        pp_warn("ProgressStore::close, $ records could not be written to '$': $", queue->size(), filePath,
                writeError);
}

ProgressStore::Status ProgressStore::open(const QString& folder, bool readOnly, Check check) {
    close();
    folderPath = folder;
    filePath = QDir(folder).filePath(QString::fromLatin1(FILE_NAME));
    movedAside.clear();
    writeError.clear();
    state = Status::UNAVAILABLE;

    const bool exists = QFileInfo::exists(filePath);
    if (readOnly && !exists) return state;
    const bool writable = !readOnly && QDir().mkpath(folder) && QFileInfo(folder).isWritable() &&
                          (!exists || QFileInfo(filePath).isWritable());
    if (!readOnly && !writable) {
        pp_warn("ProgressStore::open, folder '$' cannot be written, progress is not recorded", folder);
        notice = Notice::NOT_WRITABLE;
        // Still show what was recorded before, when the file can be read.
        if (exists && open_connection(true) && ProgressSchema::version_of(db->connection) >= 0) {
            load_summaries();
            state = Status::READ_ONLY;
        }
        return state;
    }
    if (!open_connection(readOnly)) {
        if (!readOnly) notice = Notice::NOT_WRITABLE;
        return state;
    }
    if (!readOnly && !is_database()) {
        move_aside();
        if (!open_connection(false)) return state;
    }

    const int version = ProgressSchema::version_of(db->connection);
    if (version < 0) {
        pp_warn("ProgressStore::open, '$' cannot be read: $", filePath, db->connection.lastError().text());
        if (!readOnly) notice = Notice::NOT_WRITABLE;
        db.reset();
        return state;
    }
    if (version > ProgressSchema::VERSION) {
        pp_warn("ProgressStore::open, '$' has layout $, newer than this program's $; it is only read",
                filePath, version, ProgressSchema::VERSION);
        notice = Notice::NEWER_VERSION;
        if (!readOnly && !open_connection(true)) return state;
        load_summaries();
        state = Status::READ_ONLY;
        return state;
    }
    if (readOnly) {
        load_summaries();
        state = Status::READ_ONLY;
        return state;
    }
    queue = std::make_unique<WriteQueue>(
        [this](const WriteQueue::Item& item) {
            if (!db || state != Status::WRITABLE) return WriteQueue::Outcome::FAILED;
            WriteResult result = WriteResult::DONE;
            if (const auto* trace = std::get_if<TraceRecord>(&item))
                result = write_trace(*trace);
            else if (const auto* completion = std::get_if<CompletionRecord>(&item))
                result = write_completion(*completion);
            else if (const auto* review = std::get_if<ReviewRecord>(&item))
                result = write_review(*review);
            else if (const auto* session = std::get_if<SessionRecord>(&item))
                result = write_session(*session);
            else
                db->attemptFrom[std::get<AttemptStart>(item).codePoint] = db->lastTraceId;
            return result == WriteResult::DONE   ? WriteQueue::Outcome::WRITTEN
                   : result == WriteResult::BUSY ? WriteQueue::Outcome::BUSY
                                                 : WriteQueue::Outcome::FAILED;
        },
        [this](WriteQueue::Change change) {
            if (change == WriteQueue::Change::CAUGHT_UP)
                pp_info("ProgressStore, every queued record is written to '$' again", filePath);
            notify(change == WriteQueue::Change::FAILING ? Notice::WRITES_FAILING : Notice::CAUGHT_UP);
        });
    queue->hold(true);
    // Read at once, so the list shows the marks while the file is being checked (the summary
    // table came with layout 2; an older file gets it when brought up to date after the check).
    if (version >= 2) load_summaries();
    state = Status::WRITABLE;
    // Broken pages show only when read. Nothing is written to the file (not even its journal
    // mode) before the check has passed: records wait in the queue meanwhile.
    start_check(false);
    if (check == Check::WAIT) wait_for_check();
    return state;
}

/// False for a file that is not a database at all; its first read says so at once.
bool ProgressStore::is_database() {
    QSqlQuery probe(db->connection);
    return probe.exec(QStringLiteral("PRAGMA schema_version")) || !is_damage(probe.lastError());
}

/// Journal mode, layout, summaries and prepared writes of the open file. Sets the state.
ProgressStore::Status ProgressStore::begin_writing() {
    QSqlQuery pragma(db->connection);
    pragma.exec(QStringLiteral("PRAGMA journal_mode = WAL"));
    // In WAL mode NORMAL survives a killed process; only a power cut may lose the last commits.
    pragma.exec(QStringLiteral("PRAGMA synchronous = NORMAL"));
    const QString error = ProgressSchema::migrate(db->connection, ProgressSchema::VERSION, scheduler.retention());
    load_summaries();
    if (!error.isEmpty()) {
        pp_warn("ProgressStore::open, '$' cannot be brought up to date: $", filePath, error);
        notice = Notice::NOT_WRITABLE;
        state = Status::READ_ONLY;
        return state;
    }
    if (!prepare_writes()) {
        notice = Notice::NOT_WRITABLE;
        state = Status::READ_ONLY;
        return state;
    }
    if (pragma.exec(QStringLiteral("SELECT COALESCE(MAX(id), 0) FROM traces")) && pragma.next())
        db->lastTraceId = db->openedAtTraceId = pragma.value(0).toLongLong();
    // From now on a busy file is never waited for: the queue tries again later.
    pragma.exec(QStringLiteral("PRAGMA busy_timeout = 0"));
    db->writing = true;
    state = Status::WRITABLE;
    return state;
}

bool ProgressStore::open_connection(bool readOnly) {
    db = std::make_unique<Db>();
    db->connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), db->name);
    db->connection.setDatabaseName(filePath);
    QString options = QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(OPEN_BUSY_TIMEOUT_MS);
    if (readOnly) options += QStringLiteral(";QSQLITE_OPEN_READONLY");
    db->connection.setConnectOptions(options);
    if (db->connection.open()) return true;
    pp_warn("ProgressStore::open, '$' cannot be opened: $", filePath, db->connection.lastError().text());
    db.reset();
    return false;
}

void ProgressStore::start_check(bool full) {
    if (checking) return;
    // Later: this may run inside the old checker's own finished signal.
    if (checker) {
        checker->wait();
        checker.release()->deleteLater();
    }
    checking = true;
    queue->hold(true);
    const int generation = ++checkGeneration;
    checkFoundDamage = std::make_shared<std::atomic<bool>>(false);
    checker.reset(QThread::create(
        [path = filePath, full, damaged = checkFoundDamage]() { *damaged = check_file(path, full); }));
    // Queued to this thread: the checker object lives here. Dropped with it at close.
    QObject::connect(checker.get(), &QThread::finished, checker.get(),
                     [this, generation, damaged = checkFoundDamage]() { check_done(generation, *damaged); });
    checker->start(QThread::LowPriority);
}

void ProgressStore::wait_for_check() {
    if (!checking || !checker) return;
    checker->wait();
    check_done(checkGeneration, *checkFoundDamage);
}

void ProgressStore::check_done(int generation, bool damaged) {
    if (generation != checkGeneration || !checking) return;
    checking = false;
    if (damaged) {
        move_aside();
        if (!open_connection(false)) {
            state = Status::UNAVAILABLE;
            notify(Notice::NOT_WRITABLE);
            return;
        }
    }
    if (!db->writing && begin_writing() != Status::WRITABLE) {
        notify(notice);
        return;
    }
    if (damaged) notify(Notice::DAMAGED_MOVED_ASIDE);
    queue->hold(false);
}

void ProgressStore::move_aside() {
    db.reset();
    const QString base = filePath + QStringLiteral(".damaged-") + stamp(now());
    QString target;
    // Never over an earlier copy: a name taken between the test and the rename is skipped.
    for (int tries = 0; tries < 100 && target.isEmpty(); ++tries) {
        const QString name = free_name(base);
        if (QFile::rename(filePath, name))
            target = name;
        else if (!QFileInfo::exists(name))
            break;
    }
    if (!target.isEmpty()) {
        movedAside = target;
        pp_warn("ProgressStore::open, '$' is damaged; moved aside as '$', a new file is begun", filePath,
                target);
    } else {
        pp_warn("ProgressStore::open, '$' is damaged and cannot be moved aside; it is replaced", filePath);
        QFile::remove(filePath);
    }
    // The journal of the damaged file must not be replayed into the new one.
    QFile::remove(filePath + QStringLiteral("-wal"));
    QFile::remove(filePath + QStringLiteral("-shm"));
    notice = Notice::DAMAGED_MOVED_ASIDE;
}

void ProgressStore::limit_growth(int pages) {
    if (!db) return;
    QSqlQuery query(db->connection);
    if (pages < 0) {
        query.exec(QStringLiteral("PRAGMA max_page_count = 1073741823"));
        return;
    }
    if (query.exec(QStringLiteral("PRAGMA page_count")) && query.next())
        query.exec(QStringLiteral("PRAGMA max_page_count = %1").arg(query.value(0).toLongLong() + pages));
}

bool ProgressStore::prepare_writes() {
    const QSqlDatabase& c = db->connection;
    for (QSqlQuery* query : {&db->insertTrace, &db->insertCompletion, &db->attemptAids, &db->selectSummary,
                             &db->upsertSummary, &db->upsertDay, &db->selectCard, &db->upsertCard,
                             &db->insertReview, &db->insertSession, &db->begin, &db->commit, &db->rollback})
        *query = QSqlQuery(c);
    // Immediate: the write lock is taken before anything is read, so the summary read inside
    // the transaction is the one the file holds, whoever wrote it.
    return db->begin.prepare(QStringLiteral("BEGIN IMMEDIATE")) &&
           db->commit.prepare(QStringLiteral("COMMIT")) && db->rollback.prepare(QStringLiteral("ROLLBACK")) &&
           db->insertTrace.prepare(QStringLiteral(
               "INSERT INTO traces(time_ms, level, code_point, stroke_index, accepted, reason, tolerance,"
               " aids, hint, day, score) VALUES(?,?,?,?,?,?,?,?,?,?,?)")) &&
           db->insertCompletion.prepare(QStringLiteral("INSERT INTO completions(time_ms, level, code_point, "
                                                       "seconds, misses, round, day, clean, score)"
                                                       " VALUES(?,?,?,?,?,?,?,?,?)")) &&
           db->attemptAids.prepare(QStringLiteral("SELECT COALESCE(MAX(hint), 0), COALESCE(MAX(aids & %1), 0)"
                                                  " FROM traces WHERE code_point = ? AND id > ?")
                                       .arg(AID_OUTLINE)) &&
           db->selectSummary.prepare(
               QStringLiteral("%1 WHERE code_point = ?").arg(QLatin1String(SELECT_SUMMARIES))) &&
           db->upsertSummary.prepare(QStringLiteral(
               "INSERT OR REPLACE INTO summary(code_point, level, first_seen_ms, last_practised_ms, "
               "completions,"
               " clean_completions, misses, box, last_completion_day, due_day, last_clean_day, known)"
               " VALUES(?,?,?,?,?,?,?,?,?,?,?,?)")) &&
           db->selectCard.prepare(QStringLiteral("%1 WHERE code_point = ?").arg(QLatin1String(SELECT_CARDS))) &&
           db->upsertCard.prepare(QStringLiteral(
               "INSERT OR REPLACE INTO cards(code_point, state, stability, difficulty, due_day,"
               " last_review_day, interval, reps, lapses) VALUES(?,?,?,?,?,?,?,?,?)")) &&
           db->insertReview.prepare(QStringLiteral(
               "INSERT INTO reviews(code_point, time_ms, day, rating, state, duration_ms, recall, stability,"
               " difficulty, due_day) VALUES(?,?,?,?,?,?,?,?,?,?)")) &&
           db->insertSession.prepare(QStringLiteral("INSERT INTO sessions(time_ms, day) VALUES(?, ?)")) &&
           db->upsertDay.prepare(QStringLiteral(
               "INSERT INTO days(day, completions, traces, accepted_traces) VALUES(?, ?, ?, ?)"
               " ON CONFLICT(day) DO UPDATE SET completions = completions + excluded.completions,"
               " traces = traces + excluded.traces, accepted_traces = accepted_traces + "
               "excluded.accepted_traces"));
}

namespace {

/// A summary from the twelve columns of a `summary` row, in the table's order.
CharSummary summary_of(const QSqlQuery& query) {
    CharSummary s;
    s.codePoint = query.value(0).toInt();
    s.level = query.value(1).toInt();
    s.firstSeenMs = query.value(2).toLongLong();
    s.lastPractisedMs = query.value(3).toLongLong();
    s.completions = query.value(4).toInt();
    s.cleanCompletions = query.value(5).toInt();
    s.misses = query.value(6).toInt();
    s.lastCompletionDay = query.value(8).toLongLong();
    return s;
}

}  // namespace

void ProgressStore::load_summaries() {
    db->summaries.clear();
    QSqlQuery query(db->connection);
    query.setForwardOnly(true);
    if (!query.exec(QLatin1String(SELECT_SUMMARIES))) {
        pp_warn("ProgressStore, summaries cannot be read: $", query.lastError().text());
        return;
    }
    while (query.next()) {
        const CharSummary s = summary_of(query);
        db->summaries[s.codePoint] = s;
    }
    load_cards();
}

void ProgressStore::load_cards() {
    db->cards.clear();
    // Files before layout 4 have no cards until they are brought up to date.
    if (ProgressSchema::version_of(db->connection) < 4) return;
    QSqlQuery query(db->connection);
    query.setForwardOnly(true);
    if (!query.exec(QLatin1String(SELECT_CARDS))) {
        pp_warn("ProgressStore, cards cannot be read: $", query.lastError().text());
        return;
    }
    while (query.next()) db->cards[query.value(0).toInt()] = card_of(query);
}

QSqlQuery* ProgressStore::read_card(int codePoint, review::Card& into) {
    QSqlQuery& q = db->selectCard;
    q.addBindValue(codePoint);
    if (!q.exec()) return &q;
    into = q.next() ? card_of(q) : review::Card{};
    q.finish();
    return nullptr;
}

QSqlQuery* ProgressStore::add_review(const ReviewRecord& review, bool recall, review::Card& card) {
    const int day = ProgressRules::local_day_of(review.timeMs);
    const review::CardState before = card.state;
    card = scheduler.review(card, day, review.rating);
    QSqlQuery& q = db->insertReview;
    for (const QVariant& value :
         {QVariant(review.codePoint), QVariant(review.timeMs), QVariant(day),
          QVariant(static_cast<int>(review.rating)), QVariant(static_cast<int>(before)),
          QVariant(std::max(0, review.durationMs)), QVariant(recall ? 1 : 0), QVariant(card.stability),
          QVariant(card.difficulty), QVariant(card.due)})
        q.addBindValue(value);
    if (!q.exec()) return &q;
    ProgressSchema::bind_card(db->upsertCard, review.codePoint, card);
    return db->upsertCard.exec() ? nullptr : &db->upsertCard;
}

/// The row the file holds now (another instance may have written it), or a fresh summary.
QSqlQuery* ProgressStore::read_summary(int codePoint, CharSummary& into) {
    QSqlQuery& q = db->selectSummary;
    q.addBindValue(codePoint);
    if (!q.exec()) return &q;
    into = CharSummary{};
    into.codePoint = codePoint;
    if (q.next()) into = summary_of(q);
    q.finish();
    return nullptr;
}

QSqlQuery* ProgressStore::write_summary(const CharSummary& s) {
    QSqlQuery& q = db->upsertSummary;
    ProgressSchema::bind_summary(q, s);
    return q.exec() ? nullptr : &q;
}

QSqlQuery* ProgressStore::add_to_day(qint64 day, int completions, int traces, int accepted) {
    QSqlQuery& q = db->upsertDay;
    q.addBindValue(day);
    q.addBindValue(completions);
    q.addBindValue(traces);
    q.addBindValue(accepted);
    return q.exec() ? nullptr : &q;
}

ProgressStore::WriteResult ProgressStore::write_failed(const QString& what, const QSqlQuery& failed) {
    const QSqlError error = failed.lastError();
    db->rollback.exec();
    if (is_busy(error)) return WriteResult::BUSY;
    // One line per episode: a full disk would otherwise log every stroke.
    if (!queue->is_failing())
        pp_warn("ProgressStore, $ not recorded yet, kept to be written later: $", what, error.text());
    // SQLite's own words ("database or disk is full"), without the driver's addition.
    writeError = error.databaseText().isEmpty() ? error.text() : error.databaseText();
    if (is_damage(error)) start_check(true);
    return WriteResult::FAILED;
}

/// Runs `steps` between BEGIN IMMEDIATE and COMMIT; the first query that fails is rolled back
/// and reported.
ProgressStore::WriteResult ProgressStore::write(const QString& what,
                                                const std::vector<std::function<QSqlQuery*()>>& steps) {
    if (!db->begin.exec()) return write_failed(what, db->begin);
    for (const auto& step : steps) {
        if (QSqlQuery* failed = step()) return write_failed(what, *failed);
    }
    if (!db->commit.exec()) return write_failed(what, db->commit);
    return WriteResult::DONE;
}

ProgressStore::WriteResult ProgressStore::write_trace(const TraceRecord& trace) {
    const qint64 day = ProgressRules::day_of(trace.timeMs);
    CharSummary updated;
    qint64 id = 0;
    const WriteResult result =
        write(QStringLiteral("trace"),
              {
                  [&]() -> QSqlQuery* {
                      QSqlQuery& q = db->insertTrace;
                      for (const QVariant& value :
                           {QVariant(trace.timeMs), QVariant(trace.level), QVariant(trace.codePoint),
                            QVariant(trace.strokeIndex), QVariant(trace.accepted ? 1 : 0),
                            QVariant(trace.accepted || trace.reason.isNull() ? QString::fromLatin1("")
                                                                             : trace.reason),
                            QVariant(trace.tolerance), QVariant(trace.aids),
                            QVariant(trace.hintShown ? 1 : 0), QVariant(day),
                            QVariant(score_or_none(trace.score))})
                          q.addBindValue(value);
                      if (!q.exec()) return &q;
                      id = q.lastInsertId().toLongLong();
                      return nullptr;
                  },
                  [&]() -> QSqlQuery* {
                      if (QSqlQuery* failed = read_summary(trace.codePoint, updated)) return failed;
                      updated.level = trace.level;
                      ProgressRules::apply_trace(updated, trace.timeMs, trace.accepted);
                      return write_summary(updated);
                  },
                  [&] { return add_to_day(day, 0, 1, trace.accepted ? 1 : 0); },
              });
    if (result != WriteResult::DONE) return result;
    db->summaries[trace.codePoint] = updated;
    db->lastTraceId = std::max(db->lastTraceId, id);
    return result;
}

ProgressStore::WriteResult ProgressStore::write_completion(const CompletionRecord& completion) {
    const qint64 day = ProgressRules::day_of(completion.timeMs);
    const auto from = db->attemptFrom.find(completion.codePoint);
    const qint64 firstId = from != db->attemptFrom.end() ? from->second : db->openedAtTraceId;
    CharSummary updated;
    bool clean = false;
    bool hint = false;
    review::Card card;
    const WriteResult result = write(
        QStringLiteral("completion"),
        {
            [&]() -> QSqlQuery* {
                QSqlQuery& aids = db->attemptAids;
                aids.addBindValue(completion.codePoint);
                aids.addBindValue(firstId);
                if (!aids.exec() || !aids.next()) return &aids;
                hint = aids.value(0).toBool();
                clean = ProgressRules::is_clean(completion.misses, hint, aids.value(1).toBool());
                aids.finish();
                if (QSqlQuery* failed = read_summary(completion.codePoint, updated)) return failed;
                updated.level = completion.level;
                ProgressRules::apply_completion(updated, completion.timeMs, day, clean);
                return nullptr;
            },
            [&]() -> QSqlQuery* {
                QSqlQuery& q = db->insertCompletion;
                for (const QVariant& value :
                     {QVariant(completion.timeMs), QVariant(completion.level), QVariant(completion.codePoint),
                      QVariant(completion.seconds), QVariant(completion.misses), QVariant(completion.round),
                      QVariant(day), QVariant(clean ? 1 : 0), QVariant(score_or_none(completion.score))})
                    q.addBindValue(value);
                return q.exec() ? nullptr : &q;
            },
            [&] { return write_summary(updated); },
            [&] { return add_to_day(day, 1, 0, 0); },
            [&]() -> QSqlQuery* {
                if (QSqlQuery* failed = read_card(completion.codePoint, card)) return failed;
                if (card.state != review::CardState::NEW) return nullptr;
                const ReviewRecord first{completion.timeMs, completion.codePoint,
                                         hint ? review::Rating::HARD : review::Rating::GOOD,
                                         static_cast<int>(completion.seconds * 1000.0)};
                return add_review(first, false, card);
            },
        });
    if (result != WriteResult::DONE) return result;
    db->summaries[completion.codePoint] = updated;
    db->cards[completion.codePoint] = card;
    // The next attempt begins after this one's traces.
    db->attemptFrom[completion.codePoint] = db->lastTraceId;
    return result;
}

ProgressStore::WriteResult ProgressStore::write_review(const ReviewRecord& review) {
    review::Card card;
    const auto step = [&]() -> QSqlQuery* {
        if (QSqlQuery* failed = read_card(review.codePoint, card)) return failed;
        return add_review(review, true, card);
    };
    const WriteResult result = write(QStringLiteral("review"), {step});
    if (result == WriteResult::DONE) db->cards[review.codePoint] = card;
    return result;
}

ProgressStore::WriteResult ProgressStore::write_session(const SessionRecord& session) {
    const auto step = [&]() -> QSqlQuery* {
        QSqlQuery& q = db->insertSession;
        q.addBindValue(session.timeMs);
        q.addBindValue(ProgressRules::local_day_of(session.timeMs));
        return q.exec() ? nullptr : &q;
    };
    return write(QStringLiteral("session"), {step});
}

namespace {

/// Queues `record` stamped with the moment it was judged (also when it is written later); false
/// without a queue.
template <typename Record>
bool push_timed(WriteQueue* queue, Record record, qint64 nowMs) {
    if (queue == nullptr) return false;
    if (record.timeMs == 0) record.timeMs = nowMs;
    queue->push(std::move(record));
    return true;
}

}  // namespace

WriteQueue* ProgressStore::writable_queue() const {
    return state == Status::WRITABLE ? queue.get() : nullptr;
}

bool ProgressStore::record_trace(const TraceRecord& trace) {
    return push_timed(writable_queue(), trace, now());
}

bool ProgressStore::record_completion(const CompletionRecord& completion) {
    return push_timed(writable_queue(), completion, now());
}

bool ProgressStore::record_review(const ReviewRecord& review) {
    return push_timed(writable_queue(), review, now());
}

bool ProgressStore::record_session_finished(const SessionRecord& session) {
    return push_timed(writable_queue(), session, now());
}

void ProgressStore::set_retention(double retention) {
    constexpr double lowest = 0.80, highest = 0.95;
    if (!(retention >= lowest - 1e-9 && retention <= highest + 1e-9)) {
        pp_warn("ProgressStore::set_retention, $ outside $..$, using $", retention, lowest, highest,
                review::Scheduler::DEFAULT_RETENTION);
        retention = review::Scheduler::DEFAULT_RETENTION;
    }
    scheduler = review::Scheduler(retention);
}

void ProgressStore::begin_attempt(int codePoint) {
    if (state == Status::WRITABLE && queue) queue->push(AttemptStart{codePoint});
}

CharSummary ProgressStore::summary(int codePoint) const {
    if (db) {
        const auto it = db->summaries.find(codePoint);
        if (it != db->summaries.end()) return it->second;
    }
    CharSummary fresh;
    fresh.codePoint = codePoint;
    return fresh;
}

std::vector<CharSummary> ProgressStore::summaries() const {
    std::vector<CharSummary> all;
    if (!db) return all;
    all.reserve(db->summaries.size());
    for (const auto& entry : db->summaries) all.push_back(entry.second);
    return all;
}

Mastery ProgressStore::mastery(int codePoint) const {
    return ProgressRules::mastery(summary(codePoint), card(codePoint));
}

review::Card ProgressStore::card(int codePoint) const {
    if (db) {
        const auto it = db->cards.find(codePoint);
        if (it != db->cards.end()) return it->second;
    }
    return {};
}

std::map<int, review::Card> ProgressStore::cards() const {
    return db ? std::map<int, review::Card>(db->cards.begin(), db->cards.end()) : std::map<int, review::Card>{};
}

bool ProgressStore::is_due(int codePoint) const {
    return ProgressRules::is_due(card(codePoint), local_today());
}

std::vector<int> ProgressStore::due_among(const std::vector<int>& codePoints) const {
    std::vector<int> due;
    const int day = local_today();
    for (int codePoint : codePoints)
        if (ProgressRules::is_due(card(codePoint), day)) due.push_back(codePoint);
    return due;
}

int ProgressStore::next_due_index(const std::vector<int>& codePoints, int from, int step) const {
    const int count = static_cast<int>(codePoints.size());
    if (count == 0 || step == 0) return -1;
    const int day = local_today();
    step = step > 0 ? 1 : -1;
    for (int i = 1; i <= count; ++i) {
        const int index = (((from + i * step) % count) + count) % count;
        if (ProgressRules::is_due(card(codePoints[static_cast<size_t>(index)]), day)) return index;
    }
    return -1;
}

std::vector<DayStats> ProgressStore::last_days(int count) const {
    std::vector<DayStats> days;
    const qint64 last = today();
    const qint64 first = last - count + 1;
    for (qint64 day = first; day <= last; ++day) days.push_back(DayStats{day, 0, 0, 0});
    if (!db || count <= 0) return days;
    QSqlQuery query(db->connection);
    query.prepare(QStringLiteral(
        "SELECT day, completions, traces, accepted_traces FROM days WHERE day BETWEEN ? AND ?"));
    query.addBindValue(first);
    query.addBindValue(last);
    if (!query.exec()) return days;
    while (query.next()) {
        DayStats& stats = days[static_cast<size_t>(query.value(0).toLongLong() - first)];
        stats.completions = query.value(1).toInt();
        stats.traces = query.value(2).toInt();
        stats.acceptedTraces = query.value(3).toInt();
    }
    query.prepare(
        QStringLiteral("SELECT day, AVG(score) FROM completions WHERE score >= 0 AND day BETWEEN ? AND ?"
                       " GROUP BY day"));
    query.addBindValue(first);
    query.addBindValue(last);
    if (!query.exec()) return days;
    while (query.next())
        days[static_cast<size_t>(query.value(0).toLongLong() - first)].score =
            static_cast<int>(std::lround(query.value(1).toDouble()));
    return days;
}

std::map<int, ScoreStats> ProgressStore::score_stats() const {
    std::map<int, ScoreStats> stats;
    if (!db) return stats;
    QSqlQuery query(db->connection);
    if (!query.exec(QStringLiteral("SELECT code_point, AVG(score), MAX(score), COUNT(*) FROM completions"
                                   " WHERE score >= 0 GROUP BY code_point")))
        return stats;
    while (query.next())
        stats[query.value(0).toInt()] = ScoreStats{static_cast<int>(std::lround(query.value(1).toDouble())),
                                                   query.value(2).toInt(), query.value(3).toInt()};
    return stats;
}

QString ProgressStore::reset() {
    if (state != Status::WRITABLE || !queue) {
        pp_warn("ProgressStore::reset, '$' is not writable, nothing reset", filePath);
        return {};
    }
    queue->drain();
    if (queue->size() > 0) {
        pp_warn("ProgressStore::reset, $ records still wait to be written to '$'; nothing reset",
                queue->size(), filePath);
        return {};
    }
    // VACUUM INTO refuses an existing file too: an earlier backup is never replaced.
    const QString backup = free_name(filePath + QStringLiteral(".backup-") + stamp(now()));
    QSqlQuery query(db->connection);
    // A consistent copy that includes what is still in the write-ahead log.
    query.prepare(QStringLiteral("VACUUM INTO ?"));
    query.addBindValue(backup);
    if (!query.exec()) {
        pp_warn("ProgressStore::reset, no backup '$': $; nothing reset", backup, query.lastError().text());
        return {};
    }
    std::vector<std::function<QSqlQuery*()>> steps;
    for (const char* table : {"traces", "completions", "summary", "days", "cards", "reviews", "sessions"})
        steps.emplace_back([&query, table]() -> QSqlQuery* {
            return query.exec(QStringLiteral("DELETE FROM %1").arg(QLatin1String(table))) ? nullptr : &query;
        });
    if (write(QStringLiteral("reset"), steps) != WriteResult::DONE) return {};
    db->summaries.clear();
    db->cards.clear();
    // Ids start again from 1 in an emptied table.
    db->attemptFrom.clear();
    db->lastTraceId = db->openedAtTraceId = 0;
    pp_info("ProgressStore::reset, history emptied, backup in '$'", backup);
    return backup;
}

std::vector<int> ProgressStore::introduced_on(int day) const {
    std::vector<int> introduced;
    if (!db || !db->cards.size()) return introduced;
    QSqlQuery query(db->connection);
    query.prepare(QStringLiteral("SELECT code_point FROM reviews WHERE day = ? AND state = ? ORDER BY id"));
    query.addBindValue(day);
    query.addBindValue(static_cast<int>(review::CardState::NEW));
    if (!query.exec()) return introduced;
    while (query.next()) introduced.push_back(query.value(0).toInt());
    return introduced;
}

int ProgressStore::reviews_on(int day) const {
    if (!db || !db->cards.size()) return 0;
    QSqlQuery query(db->connection);
    query.prepare(QStringLiteral("SELECT COUNT(*) FROM reviews WHERE day = ? AND state = ?"));
    query.addBindValue(day);
    query.addBindValue(static_cast<int>(review::CardState::REVIEW));
    return query.exec() && query.next() ? query.value(0).toInt() : 0;
}

int ProgressStore::streak() const {
    if (!db) return 0;
    QSqlQuery query(db->connection);
    query.setForwardOnly(true);
    const int today = local_today();
    query.prepare(QStringLiteral("SELECT DISTINCT day FROM sessions WHERE day <= ? ORDER BY day DESC"));
    query.addBindValue(today);
    if (!query.exec()) return 0;
    int streak = 0;
    // Today's session may still be ahead: a streak up to yesterday holds.
    int expected = today;
    while (query.next()) {
        const int day = query.value(0).toInt();
        if (streak == 0 && day == today - 1) expected = day;
        if (day != expected) break;
        ++streak;
        --expected;
    }
    return streak;
}

std::vector<int> ProgressStore::due_forecast(int days) const {
    std::vector<int> counts(static_cast<size_t>(std::max(0, days)), 0);
    if (!db || counts.empty()) return counts;
    const int today = local_today();
    for (const auto& [codePoint, card] : db->cards) {
        if (card.state == review::CardState::NEW) continue;
        const int offset = std::max(0, card.due - today);
        if (offset < days) ++counts[static_cast<size_t>(offset)];
    }
    return counts;
}

std::optional<double> ProgressStore::measured_retention(int days) const {
    if (!db || days <= 0 || db->cards.empty()) return std::nullopt;
    QSqlQuery query(db->connection);
    // Reviews of introduced characters only: a first sight tests no memory.
    query.prepare(QStringLiteral(
        "SELECT COUNT(*), SUM(rating <> ?) FROM reviews WHERE state = ? AND day BETWEEN ? AND ?"));
    const int today = local_today();
    query.addBindValue(static_cast<int>(review::Rating::AGAIN));
    query.addBindValue(static_cast<int>(review::CardState::REVIEW));
    query.addBindValue(today - days + 1);
    query.addBindValue(today);
    if (!query.exec() || !query.next() || query.value(0).toInt() == 0) return std::nullopt;
    return query.value(1).toDouble() / query.value(0).toDouble();
}

std::optional<int> ProgressStore::median_recall_ms(int codePoint) const {
    if (!db || !db->cards.count(codePoint)) return std::nullopt;
    QSqlQuery query(db->connection);
    query.setForwardOnly(true);
    query.prepare(
        QStringLiteral("SELECT duration_ms FROM reviews WHERE code_point = ? AND recall = 1 ORDER BY duration_ms"));
    query.addBindValue(codePoint);
    if (!query.exec()) return std::nullopt;
    std::vector<int> durations;
    while (query.next()) durations.push_back(query.value(0).toInt());
    if (durations.empty()) return std::nullopt;
    const size_t mid = durations.size() / 2;
    // An even count: the mean of the middle two, rounded down.
    return durations.size() % 2 ? durations[mid] : (durations[mid - 1] + durations[mid]) / 2;
}

}  // namespace morvel::progress
