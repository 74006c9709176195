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
#include <QVariant>
#include <atomic>
#include <functional>
#include <unordered_map>

#include "app/progress/ProgressRules.h"
#include "app/progress/ProgressSchema.h"

namespace morvel::progress {

using ki::pp_info;
using ki::pp_warn;

namespace {

std::atomic<int> connectionCounter{0};

QString stamp(qint64 timeMs) {
    return QDateTime::fromMSecsSinceEpoch(timeMs).toString(QStringLiteral("yyyyMMdd-HHmmss"));
}

/// SQLite's answers for a file that is not a database or whose pages are broken.
bool is_damage(const QSqlError& error) {
    const int code = error.nativeErrorCode().toInt() & 0xff;
    return code == 11 || code == 26;  // SQLITE_CORRUPT, SQLITE_NOTADB
}

}  // namespace

struct ProgressStore::Db {
    QString name = QStringLiteral("quenlo-progress-%1").arg(connectionCounter++);
    QSqlDatabase connection;
    QSqlQuery insertTrace;
    QSqlQuery insertCompletion;
    QSqlQuery openAids;
    QSqlQuery upsertSummary;
    QSqlQuery upsertDay;
    QSqlQuery begin;
    QSqlQuery commit;
    QSqlQuery rollback;
    std::unordered_map<int, CharSummary> summaries;

    ~Db() {
        // Queries first, then the connection, then its registration: Qt warns otherwise.
        for (QSqlQuery* query : {&insertTrace, &insertCompletion, &openAids, &upsertSummary, &upsertDay,
                                 &begin, &commit, &rollback})
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

QString ProgressStore::notice_path(Notice about) const {
    switch (about) {
        case Notice::DAMAGED_MOVED_ASIDE:
            return movedAside;
        case Notice::NOT_WRITABLE:
            return folderPath;
        case Notice::NEWER_VERSION:
        case Notice::NONE:
            break;
    }
    return filePath;
}

ProgressStore::Notice ProgressStore::take_notice() {
    return std::exchange(notice, Notice::NONE);
}

void ProgressStore::close() {
    db.reset();
    if (state != Status::UNAVAILABLE) state = Status::CLOSED;
}

ProgressStore::Status ProgressStore::open(const QString& folder, bool readOnly) {
    close();
    folderPath = folder;
    filePath = QDir(folder).filePath(QString::fromLatin1(FILE_NAME));
    movedAside.clear();
    writeErrorLogged = false;
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
    if (!readOnly && !check_damage()) {
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

    QSqlQuery pragma(db->connection);
    pragma.exec(QStringLiteral("PRAGMA journal_mode = WAL"));
    // In WAL mode NORMAL survives a killed process; only a power cut may lose the last commits.
    pragma.exec(QStringLiteral("PRAGMA synchronous = NORMAL"));
    const QString error = ProgressSchema::migrate(db->connection);
    if (!error.isEmpty()) {
        pp_warn("ProgressStore::open, '$' cannot be brought up to date: $", filePath, error);
        notice = Notice::NOT_WRITABLE;
        load_summaries();
        state = Status::READ_ONLY;
        return state;
    }
    load_summaries();
    if (!prepare_writes()) {
        notice = Notice::NOT_WRITABLE;
        state = Status::READ_ONLY;
        return state;
    }
    state = Status::WRITABLE;
    return state;
}

bool ProgressStore::open_connection(bool readOnly) {
    db = std::make_unique<Db>();
    db->connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), db->name);
    db->connection.setDatabaseName(filePath);
    QString options = QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(BUSY_TIMEOUT_MS);
    if (readOnly) options += QStringLiteral(";QSQLITE_OPEN_READONLY");
    db->connection.setConnectOptions(options);
    if (db->connection.open()) return true;
    pp_warn("ProgressStore::open, '$' cannot be opened: $", filePath, db->connection.lastError().text());
    db.reset();
    return false;
}

/// False when the file is damaged. A file locked by another instance is not damaged.
bool ProgressStore::check_damage() {
    QSqlQuery query(db->connection);
    if (!query.exec(QStringLiteral("PRAGMA integrity_check"))) return !is_damage(query.lastError());
    return query.next() && query.value(0).toString() == QLatin1String("ok");
}

void ProgressStore::move_aside() {
    db.reset();
    const QString target = filePath + QStringLiteral(".damaged-") + stamp(now());
    QFile::remove(target);
    if (QFile::rename(filePath, target)) {
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

bool ProgressStore::prepare_writes() {
    const QSqlDatabase& c = db->connection;
    db->insertTrace = QSqlQuery(c);
    db->insertCompletion = QSqlQuery(c);
    db->openAids = QSqlQuery(c);
    db->upsertSummary = QSqlQuery(c);
    db->upsertDay = QSqlQuery(c);
    db->begin = QSqlQuery(c);
    db->commit = QSqlQuery(c);
    db->rollback = QSqlQuery(c);
    // Immediate: the write lock is taken (waiting for another instance) before anything is read,
    // so a read never has to be upgraded to a write against a newer snapshot.
    return db->begin.prepare(QStringLiteral("BEGIN IMMEDIATE")) &&
           db->commit.prepare(QStringLiteral("COMMIT")) && db->rollback.prepare(QStringLiteral("ROLLBACK")) &&
           db->insertTrace.prepare(QStringLiteral(
               "INSERT INTO traces(time_ms, level, code_point, stroke_index, accepted, reason, tolerance,"
               " aids, hint, day) VALUES(?,?,?,?,?,?,?,?,?,?)")) &&
           db->insertCompletion.prepare(QStringLiteral(
               "INSERT INTO completions(time_ms, level, code_point, seconds, misses, round, day, clean)"
               " VALUES(?,?,?,?,?,?,?,?)")) &&
           // The aids used since the character's last completion decide whether this one is clean.
           db->openAids.prepare(
               QStringLiteral(
                   "SELECT COALESCE(MAX(hint), 0), COALESCE(MAX(aids & %1), 0) FROM traces WHERE code_point "
                   "= ?"
                   " AND time_ms > (SELECT COALESCE(MAX(time_ms), -1) FROM completions WHERE code_point = ?)")
                   .arg(AID_OUTLINE)) &&
           db->upsertSummary.prepare(QStringLiteral(
               "INSERT OR REPLACE INTO summary(code_point, level, first_seen_ms, last_practised_ms, "
               "completions,"
               " clean_completions, misses, box, last_completion_day, due_day, last_clean_day, known)"
               " VALUES(?,?,?,?,?,?,?,?,?,?,?,?)")) &&
           db->upsertDay.prepare(QStringLiteral(
               "INSERT INTO days(day, completions, traces, accepted_traces) VALUES(?, ?, ?, ?)"
               " ON CONFLICT(day) DO UPDATE SET completions = completions + excluded.completions,"
               " traces = traces + excluded.traces, accepted_traces = accepted_traces + "
               "excluded.accepted_traces"));
}

void ProgressStore::load_summaries() {
    db->summaries.clear();
    QSqlQuery query(db->connection);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral(
            "SELECT code_point, level, first_seen_ms, last_practised_ms, completions, clean_completions,"
            " misses, box, last_completion_day, due_day, last_clean_day, known FROM summary"))) {
        pp_warn("ProgressStore, summaries cannot be read: $", query.lastError().text());
        return;
    }
    while (query.next()) {
        CharSummary s;
        s.codePoint = query.value(0).toInt();
        s.level = query.value(1).toInt();
        s.firstSeenMs = query.value(2).toLongLong();
        s.lastPractisedMs = query.value(3).toLongLong();
        s.completions = query.value(4).toInt();
        s.cleanCompletions = query.value(5).toInt();
        s.misses = query.value(6).toInt();
        s.box = query.value(7).toInt();
        s.lastCompletionDay = query.value(8).toLongLong();
        s.dueDay = query.value(9).toLongLong();
        s.lastCleanDay = query.value(10).toLongLong();
        s.known = query.value(11).toBool();
        db->summaries[s.codePoint] = s;
    }
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

void ProgressStore::write_failed(const QString& what, const QSqlQuery& failed) {
    db->rollback.exec();
    // One line per open: a full disk would otherwise log every stroke.
    if (!writeErrorLogged) pp_warn("ProgressStore, $ not recorded: $", what, failed.lastError().text());
    writeErrorLogged = true;
}

/// Runs `steps` between BEGIN IMMEDIATE and COMMIT; the first query that fails is rolled back
/// and reported.
bool ProgressStore::write(const QString& what, const std::vector<std::function<QSqlQuery*()>>& steps) {
    if (!db->begin.exec()) {
        write_failed(what, db->begin);
        return false;
    }
    for (const auto& step : steps) {
        if (QSqlQuery* failed = step()) {
            write_failed(what, *failed);
            return false;
        }
    }
    if (!db->commit.exec()) {
        write_failed(what, db->commit);
        return false;
    }
    return true;
}

bool ProgressStore::record_trace(const TraceRecord& trace) {
    if (state != Status::WRITABLE) return false;
    const qint64 timeMs = trace.timeMs != 0 ? trace.timeMs : now();
    const qint64 day = ProgressRules::day_of(timeMs);
    CharSummary updated = summary(trace.codePoint);
    updated.level = trace.level;
    ProgressRules::apply_trace(updated, timeMs, trace.accepted);
    const bool written =
        write(QStringLiteral("trace"),
              {
                  [&]() -> QSqlQuery* {
                      QSqlQuery& q = db->insertTrace;
                      for (const QVariant& value :
                           {QVariant(timeMs), QVariant(trace.level), QVariant(trace.codePoint),
                            QVariant(trace.strokeIndex), QVariant(trace.accepted ? 1 : 0),
                            QVariant(trace.accepted || trace.reason.isNull() ? QString::fromLatin1("")
                                                                             : trace.reason),
                            QVariant(trace.tolerance), QVariant(trace.aids),
                            QVariant(trace.hintShown ? 1 : 0), QVariant(day)})
                          q.addBindValue(value);
                      return q.exec() ? nullptr : &q;
                  },
                  [&] { return write_summary(updated); },
                  [&] { return add_to_day(day, 0, 1, trace.accepted ? 1 : 0); },
              });
    if (written) db->summaries[trace.codePoint] = updated;
    return written;
}

bool ProgressStore::record_completion(const CompletionRecord& completion) {
    if (state != Status::WRITABLE) return false;
    const qint64 timeMs = completion.timeMs != 0 ? completion.timeMs : now();
    const qint64 day = ProgressRules::day_of(timeMs);
    CharSummary updated = summary(completion.codePoint);
    updated.level = completion.level;
    bool clean = false;
    const bool written =
        write(QStringLiteral("completion"),
              {
                  [&]() -> QSqlQuery* {
                      QSqlQuery& aids = db->openAids;
                      aids.addBindValue(completion.codePoint);
                      aids.addBindValue(completion.codePoint);
                      if (!aids.exec() || !aids.next()) return &aids;
                      clean = ProgressRules::is_clean(completion.misses, aids.value(0).toBool(),
                                                      aids.value(1).toBool());
                      aids.finish();
                      ProgressRules::apply_completion(updated, timeMs, day, clean);
                      return nullptr;
                  },
                  [&]() -> QSqlQuery* {
                      QSqlQuery& q = db->insertCompletion;
                      for (const QVariant& value :
                           {QVariant(timeMs), QVariant(completion.level), QVariant(completion.codePoint),
                            QVariant(completion.seconds), QVariant(completion.misses),
                            QVariant(completion.round), QVariant(day), QVariant(clean ? 1 : 0)})
                          q.addBindValue(value);
                      return q.exec() ? nullptr : &q;
                  },
                  [&] { return write_summary(updated); },
                  [&] { return add_to_day(day, 1, 0, 0); },
              });
    if (written) db->summaries[completion.codePoint] = updated;
    return written;
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
    return ProgressRules::mastery(summary(codePoint));
}

bool ProgressStore::is_due(int codePoint) const {
    return ProgressRules::is_due(summary(codePoint), today());
}

std::vector<int> ProgressStore::due_among(const std::vector<int>& codePoints) const {
    std::vector<int> due;
    const qint64 day = today();
    for (int codePoint : codePoints)
        if (ProgressRules::is_due(summary(codePoint), day)) due.push_back(codePoint);
    return due;
}

int ProgressStore::next_due_index(const std::vector<int>& codePoints, int from, int step) const {
    const int count = static_cast<int>(codePoints.size());
    if (count == 0 || step == 0) return -1;
    const qint64 day = today();
    step = step > 0 ? 1 : -1;
    for (int i = 1; i <= count; ++i) {
        const int index = (((from + i * step) % count) + count) % count;
        if (ProgressRules::is_due(summary(codePoints[static_cast<size_t>(index)]), day)) return index;
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
    return days;
}

QString ProgressStore::reset() {
    if (state != Status::WRITABLE) {
        pp_warn("ProgressStore::reset, '$' is not writable, nothing reset", filePath);
        return {};
    }
    const QString backup = filePath + QStringLiteral(".backup-") + stamp(now());
    QFile::remove(backup);
    QSqlQuery query(db->connection);
    // A consistent copy that includes what is still in the write-ahead log.
    query.prepare(QStringLiteral("VACUUM INTO ?"));
    query.addBindValue(backup);
    if (!query.exec()) {
        pp_warn("ProgressStore::reset, no backup '$': $; nothing reset", backup, query.lastError().text());
        return {};
    }
    std::vector<std::function<QSqlQuery*()>> steps;
    for (const char* table : {"traces", "completions", "summary", "days"})
        steps.emplace_back([&query, table]() -> QSqlQuery* {
            return query.exec(QStringLiteral("DELETE FROM %1").arg(QLatin1String(table))) ? nullptr : &query;
        });
    if (!write(QStringLiteral("reset"), steps)) return {};
    db->summaries.clear();
    pp_info("ProgressStore::reset, history emptied, backup in '$'", backup);
    return backup;
}

}  // namespace morvel::progress
