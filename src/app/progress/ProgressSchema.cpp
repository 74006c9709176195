#include "app/progress/ProgressSchema.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>
#include <map>
#include <vector>

#include "app/progress/ProgressRules.h"
#include "app/review/Scheduler.h"

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

QString create_first_layout(QSqlDatabase& db, const review::Scheduler&) {
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

QString add_summaries(QSqlDatabase& db, const review::Scheduler&) {
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

QString add_scores(QSqlDatabase& db, const review::Scheduler&) {
    return exec_all(db, {
                            "ALTER TABLE traces ADD COLUMN score INTEGER NOT NULL DEFAULT -1",
                            "ALTER TABLE completions ADD COLUMN score INTEGER NOT NULL DEFAULT -1",
                        });
}

/// Replays the completions as reviews, in time order. A character's first completion starts its
/// card: GOOD, or HARD when a hint was shown on the way. After that the first completion of each
/// later local day counts: GOOD when clean (no miss, no hint, outline off), else HARD. Further
/// completions on a day already reviewed are practice, not reviews.
QString replay_reviews(QSqlDatabase& db, const review::Scheduler& scheduler) {
    QSqlQuery completions(db);
    completions.setForwardOnly(true);
    // The hint of an attempt: any trace of the character since its completion before.
    if (!completions.exec(QStringLiteral(
            "SELECT c.time_ms, c.code_point, c.seconds, c.clean,"
            " EXISTS(SELECT 1 FROM traces t WHERE t.code_point = c.code_point AND t.hint = 1"
            "  AND t.time_ms <= c.time_ms AND t.time_ms > COALESCE((SELECT MAX(p.time_ms) FROM completions p"
            "  WHERE p.code_point = c.code_point AND p.time_ms < c.time_ms), -1))"
            " FROM completions c ORDER BY c.time_ms, c.id")))
        return completions.lastError().text();
    QSqlQuery insert(db);
    insert.prepare(QStringLiteral(
        "INSERT INTO reviews(code_point, time_ms, day, rating, state, duration_ms, recall, stability,"
        " difficulty, due_day) VALUES(?,?,?,?,?,?,0,?,?,?)"));
    std::map<int, review::Card> cards;
    while (completions.next()) {
        const qint64 timeMs = completions.value(0).toLongLong();
        const int codePoint = completions.value(1).toInt();
        const int day = ProgressRules::local_day_of(timeMs);
        review::Card& card = cards[codePoint];
        const bool first = card.state == review::CardState::NEW;
        if (!first && day <= card.lastReview) continue;
        const bool spoiled = first ? completions.value(4).toBool() : !completions.value(3).toBool();
        const review::Rating rating = spoiled ? review::Rating::HARD : review::Rating::GOOD;
        const review::CardState before = card.state;
        card = scheduler.review(card, day, rating);
        for (const QVariant& value :
             {QVariant(codePoint), QVariant(timeMs), QVariant(day), QVariant(static_cast<int>(rating)),
              QVariant(static_cast<int>(before)),
              QVariant(static_cast<qint64>(completions.value(2).toDouble() * 1000.0)),
              QVariant(card.stability), QVariant(card.difficulty), QVariant(card.due)})
            insert.addBindValue(value);
        if (!insert.exec()) return insert.lastError().text();
    }
    insert.prepare(QStringLiteral(
        "INSERT INTO cards(code_point, state, stability, difficulty, due_day, last_review_day, interval,"
        " reps, lapses) VALUES(?,?,?,?,?,?,?,?,?)"));
    for (const auto& [codePoint, card] : cards) {
        ProgressSchema::bind_card(insert, codePoint, card);
        if (!insert.exec()) return insert.lastError().text();
    }
    return {};
}

QString add_reviews(QSqlDatabase& db, const review::Scheduler& scheduler) {
    const QString error = exec_all(
        db, {
                "CREATE TABLE cards(code_point INTEGER PRIMARY KEY, state INTEGER NOT NULL,"
                " stability REAL NOT NULL, difficulty REAL NOT NULL, due_day INTEGER NOT NULL,"
                " last_review_day INTEGER NOT NULL, interval INTEGER NOT NULL, reps INTEGER NOT NULL,"
                " lapses INTEGER NOT NULL)",
                "CREATE TABLE reviews(id INTEGER PRIMARY KEY, code_point INTEGER NOT NULL,"
                " time_ms INTEGER NOT NULL, day INTEGER NOT NULL, rating INTEGER NOT NULL,"
                " state INTEGER NOT NULL, duration_ms INTEGER NOT NULL, recall INTEGER NOT NULL,"
                " stability REAL NOT NULL, difficulty REAL NOT NULL, due_day INTEGER NOT NULL)",
                "CREATE INDEX reviews_by_day ON reviews(day)",
                "CREATE INDEX reviews_by_char ON reviews(code_point, recall)",
                "CREATE TABLE sessions(id INTEGER PRIMARY KEY, time_ms INTEGER NOT NULL, day INTEGER NOT NULL)",
                "CREATE INDEX sessions_by_day ON sessions(day)",
            });
    return error.isEmpty() ? replay_reviews(db, scheduler) : error;
}

using Step = QString (*)(QSqlDatabase&, const review::Scheduler&);
/// Step i brings a file from version i to version i + 1. Never change a step once released:
/// files out there were made by it.
constexpr Step STEPS[] = {create_first_layout, add_summaries, add_scores, add_reviews};
static_assert(std::size(STEPS) == ProgressSchema::VERSION);

}  // namespace

int ProgressSchema::version_of(QSqlDatabase& db) {
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("PRAGMA user_version")) || !query.next()) return -1;
    return query.value(0).toInt();
}

QString ProgressSchema::migrate(QSqlDatabase& db, int target, double retention) {
    const review::Scheduler scheduler(retention);
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
        QString error = STEPS[version](db, scheduler);
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
    // Box, due day, last clean day and known: the review ladder of layouts 2 and 3, no longer kept.
    for (const QVariant& value :
         {QVariant(s.codePoint), QVariant(s.level), QVariant(s.firstSeenMs), QVariant(s.lastPractisedMs),
          QVariant(s.completions), QVariant(s.cleanCompletions), QVariant(s.misses), QVariant(0),
          QVariant(s.lastCompletionDay), QVariant(0), QVariant(0), QVariant(0)})
        query.addBindValue(value);
}

}  // namespace morvel::progress

namespace morvel::progress {

void ProgressSchema::bind_card(QSqlQuery& query, int codePoint, const review::Card& c) {
    for (const QVariant& value : {QVariant(codePoint), QVariant(static_cast<int>(c.state)), QVariant(c.stability),
                                  QVariant(c.difficulty), QVariant(c.due), QVariant(c.lastReview),
                                  QVariant(c.interval), QVariant(c.reps), QVariant(c.lapses)})
        query.addBindValue(value);
}

}  // namespace morvel::progress
