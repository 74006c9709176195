#pragma once
// The layout of the progress database and the ordered steps that bring a file of any earlier
// layout up to date. The layout's number is SQLite's `PRAGMA user_version`; 0 is an empty file.

#include <QString>

#include "app/review/Scheduler.h"

class QSqlDatabase;
class QSqlQuery;

namespace morvel::progress {

struct CharSummary;

class ProgressSchema {
public:
    /// 1: judged traces and completions. 2: per-character summary and per-day totals, derived
    /// from the history, plus each record's local day and each completion's cleanliness.
    /// 3: a score (0 .. 100) with every trace and completion, -1 for those recorded before.
    /// 4: a card per character and every graded review (the completions before replayed as
    /// reviews), and the finished daily sessions.
    static constexpr int VERSION = 4;

    /// The layout number stored in the file, or -1 when it cannot be read.
    static int version_of(QSqlDatabase& db);

    /// Applies the steps after the file's version up to `target` in one transaction each, so a
    /// failed step leaves the file at the version before it. Returns an empty text on success,
    /// else what failed.
    /// `retention` plans the due days of the cards replayed from older completions.
    static QString migrate(QSqlDatabase& db, int target = VERSION,
                           double retention = review::Scheduler::DEFAULT_RETENTION);

    /// Binds the twelve columns of a summary row, in the table's column order.
    static void bind_summary(QSqlQuery& query, const CharSummary& summary);
    /// Binds the nine columns of a `cards` row, in the table's column order.
    static void bind_card(QSqlQuery& query, int codePoint, const review::Card& card);
};

}  // namespace morvel::progress
