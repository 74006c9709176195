#include "app/progress/ProgressSchema.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>
#include <map>
#include <vector>

#include "app/progress/ProgressRules.h"

namespace morvel::progress {

namespace {

QString exec_all(QSqlDatabase& db, const std::vector<const char*>& statements) {
    QSqlQuery query(db);
    for (const char* sql : statements) {
        if (!query.exec(QString::fromLatin1(sql)))
            return QStringLiteral("%1: %2").arg(QString::fromLatin1(sql), query.lastError().text());
    }
    return {};
}

QString create_first_layout(QSqlDatabase& db) {
    return exec_all(
        db,
        {
            "CREATE TABLE traces(id INTEGER PRIMARY KEY, time_ms INTEGER NOT NULL, level INTEGER NOT NULL,"
            " code_point INTEGER NOT NULL, stroke_index INTEGER NOT NULL, accepted INTEGER NOT NULL,"
            " reason TEXT NOT NULL DEFAULT '', tolerance INTEGER NOT NULL, aids INTEGER NOT NULL,"
            " hint INTEGER NOT NULL)",
            "CREATE INDEX traces_by_char ON traces(code_point, time_ms)",
            "CREATE TABLE completions(id INTEGER PRIMARY KEY, time_ms INTEGER NOT NULL,"
            " level INTEGER NOT NULL, code_point INTEGER NOT NULL, seconds REAL NOT NULL,"
            " misses INTEGER NOT NULL, round INTEGER NOT NULL)",
            "CREATE INDEX completions_by_char ON completions(code_point, time_ms)",
        });
}

/// Replays the whole history through the rules, in time order, to fill what the first layout
/// did not keep.
QString derive_summaries(QSqlDatabase& db) {
    struct Open {
        bool hint = false;
        bool outline = false;
    };
    std::map<int, CharSummary> summaries;
    std::map<qint64, DayStats> days;
    std::map<int, Open> open;

    QSqlQuery traces(db);
    traces.setForwardOnly(true);
    QSqlQuery completions(db);
    completions.setForwardOnly(true);
    if (!traces.exec(QStringLiteral("SELECT id, time_ms, level, code_point, accepted, aids, hint FROM traces "
                                    "ORDER BY time_ms, id")) ||
        !completions.exec(QStringLiteral(
            "SELECT id, time_ms, level, code_point, misses FROM completions ORDER BY time_ms, id")))
        return traces.lastError().text() + completions.lastError().text();

    QSqlQuery setTraceDay(db);
    setTraceDay.prepare(QStringLiteral("UPDATE traces SET day = ? WHERE id = ?"));
    QSqlQuery setCompletion(db);
    setCompletion.prepare(QStringLiteral("UPDATE completions SET day = ?, clean = ? WHERE id = ?"));

    bool haveTrace = traces.next();
    bool haveCompletion = completions.next();
    while (haveTrace || haveCompletion) {
        // A trace and a completion of the same moment: the trace came first.
        const bool takeTrace = haveTrace && (!haveCompletion || traces.value(1).toLongLong() <=
                                                                    completions.value(1).toLongLong());
        QSqlQuery& row = takeTrace ? traces : completions;
        const qint64 timeMs = row.value(1).toLongLong();
        const int codePoint = row.value(3).toInt();
        const qint64 day = ProgressRules::day_of(timeMs);
        CharSummary& summary = summaries[codePoint];
        summary.codePoint = codePoint;
        summary.level = row.value(2).toInt();
        DayStats& stats = days[day];
        stats.day = day;
        if (takeTrace) {
            const bool accepted = traces.value(4).toBool();
            ProgressRules::apply_trace(summary, timeMs, accepted);
            ++stats.traces;
            if (accepted) ++stats.acceptedTraces;
            Open& flags = open[codePoint];
            flags.outline = flags.outline || (traces.value(5).toUInt() & AID_OUTLINE) != 0;
            flags.hint = flags.hint || traces.value(6).toBool();
            setTraceDay.addBindValue(day);
            setTraceDay.addBindValue(traces.value(0));
            if (!setTraceDay.exec()) return setTraceDay.lastError().text();
            haveTrace = traces.next();
        } else {
            const Open flags = open[codePoint];
            const bool clean =
                ProgressRules::is_clean(completions.value(4).toInt(), flags.hint, flags.outline);
            ProgressRules::apply_completion(summary, timeMs, day, clean);
            ++stats.completions;
            open.erase(codePoint);
            setCompletion.addBindValue(day);
            setCompletion.addBindValue(clean ? 1 : 0);
            setCompletion.addBindValue(completions.value(0));
            if (!setCompletion.exec()) return setCompletion.lastError().text();
            haveCompletion = completions.next();
        }
    }

    QSqlQuery insert(db);
    insert.prepare(
        QStringLiteral("INSERT INTO summary(code_point, level, first_seen_ms, last_practised_ms, completions,"
                       " clean_completions, misses, box, last_completion_day, due_day, last_clean_day, known)"
                       " VALUES(?,?,?,?,?,?,?,?,?,?,?,?)"));
    for (const auto& [codePoint, s] : summaries) {
        ProgressSchema::bind_summary(insert, s);
        if (!insert.exec()) return insert.lastError().text();
    }
    insert.prepare(
        QStringLiteral("INSERT INTO days(day, completions, traces, accepted_traces) VALUES(?,?,?,?)"));
    for (const auto& [day, stats] : days) {
        insert.addBindValue(stats.day);
        insert.addBindValue(stats.completions);
        insert.addBindValue(stats.traces);
        insert.addBindValue(stats.acceptedTraces);
        if (!insert.exec()) return insert.lastError().text();
    }
    return {};
}

QString add_summaries(QSqlDatabase& db) {
    QString error = exec_all(
        db, {
                "ALTER TABLE traces ADD COLUMN day INTEGER NOT NULL DEFAULT 0",
                "ALTER TABLE completions ADD COLUMN day INTEGER NOT NULL DEFAULT 0",
                "ALTER TABLE completions ADD COLUMN clean INTEGER NOT NULL DEFAULT 0",
                "CREATE TABLE summary(code_point INTEGER PRIMARY KEY, level INTEGER NOT NULL,"
                " first_seen_ms INTEGER NOT NULL, last_practised_ms INTEGER NOT NULL,"
                " completions INTEGER NOT NULL, clean_completions INTEGER NOT NULL, misses INTEGER NOT NULL,"
                " box INTEGER NOT NULL, last_completion_day INTEGER NOT NULL, due_day INTEGER NOT NULL,"
                " last_clean_day INTEGER NOT NULL, known INTEGER NOT NULL)",
                "CREATE TABLE days(day INTEGER PRIMARY KEY, completions INTEGER NOT NULL,"
                " traces INTEGER NOT NULL, accepted_traces INTEGER NOT NULL)",
            });
    return error.isEmpty() ? derive_summaries(db) : error;
}

QString add_scores(QSqlDatabase& db) {
    return exec_all(db, {
                            "ALTER TABLE traces ADD COLUMN score INTEGER NOT NULL DEFAULT -1",
                            "ALTER TABLE completions ADD COLUMN score INTEGER NOT NULL DEFAULT -1",
                        });
}

using Step = QString (*)(QSqlDatabase&);
/// Step i brings a file from version i to version i + 1. Never change a step once released:
/// files out there were made by it.
constexpr Step STEPS[] = {create_first_layout, add_summaries, add_scores};
static_assert(std::size(STEPS) == ProgressSchema::VERSION);

}  // namespace

int ProgressSchema::version_of(QSqlDatabase& db) {
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("PRAGMA user_version")) || !query.next()) return -1;
    return query.value(0).toInt();
}

QString ProgressSchema::migrate(QSqlDatabase& db, int target) {
    if (target > VERSION) target = VERSION;
    QSqlQuery query(db);
    for (;;) {
        // Immediate: a second instance starting at the same moment waits here and then finds
        // the file already brought up to date.
        if (!query.exec(QStringLiteral("BEGIN IMMEDIATE"))) return query.lastError().text();
        const int version = version_of(db);
        if (version < 0 || version >= target) {
            query.exec(QStringLiteral("COMMIT"));
            return version < 0 ? QStringLiteral("cannot read the layout version") : QString();
        }
        QString error = STEPS[version](db);
        if (error.isEmpty() && !query.exec(QStringLiteral("PRAGMA user_version = %1").arg(version + 1)))
            error = query.lastError().text();
        if (error.isEmpty() && !query.exec(QStringLiteral("COMMIT"))) error = query.lastError().text();
        if (!error.isEmpty()) {
            query.exec(QStringLiteral("ROLLBACK"));
            return QStringLiteral("step to version %1: %2").arg(version + 1).arg(error);
        }
    }
}

void ProgressSchema::bind_summary(QSqlQuery& query, const CharSummary& s) {
    for (const QVariant& value :
         {QVariant(s.codePoint), QVariant(s.level), QVariant(s.firstSeenMs), QVariant(s.lastPractisedMs),
          QVariant(s.completions), QVariant(s.cleanCompletions), QVariant(s.misses), QVariant(s.box),
          QVariant(s.lastCompletionDay), QVariant(s.dueDay), QVariant(s.lastCleanDay), QVariant(s.known ? 1 : 0)})
        query.addBindValue(value);
}

}  // namespace morvel::progress
