#pragma once
// The layout of the progress database and the ordered steps that bring a file of any earlier
// layout up to date. The layout's number is SQLite's `PRAGMA user_version`; 0 is an empty file.

#include <QString>

class QSqlDatabase;
class QSqlQuery;

namespace morvel::progress {

struct CharSummary;

class ProgressSchema {
public:
    /// 1: judged traces and completions. 2: per-character summary and per-day totals, derived
    /// from the history, plus each record's local day and each completion's cleanliness.
    /// 3: a score (0 .. 100) with every trace and completion, -1 for those recorded before.
    static constexpr int VERSION = 3;

    /// The layout number stored in the file, or -1 when it cannot be read.
    static int version_of(QSqlDatabase& db);

    /// Applies the steps after the file's version up to `target` in one transaction each, so a
    /// failed step leaves the file at the version before it. Returns an empty text on success,
    /// else what failed.
    static QString migrate(QSqlDatabase& db, int target = VERSION);

    /// Binds the twelve columns of a summary row, in the table's column order.
    static void bind_summary(QSqlQuery& query, const CharSummary& summary);
};

}  // namespace morvel::progress
