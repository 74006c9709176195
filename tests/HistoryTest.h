#pragma once
// Practice-history tests: a store in a temporary folder, on a clock the test sets.

#include <QDateTime>
#include <QTemporaryDir>

#include "LoggedTest.h"
#include "app/progress/ProgressStore.h"

inline constexpr qint64 DAY_MS = 86'400'000;
/// 09:00 on the first day of every history.
inline const qint64 BASE_MS = QDateTime(QDate(2026, 3, 2), QTime(9, 0)).toMSecsSinceEpoch();

class HistoryTest : public LoggedTest {
protected:
    /// Noon, `day` days after the first.
    void set_day(int day) { nowMs = BASE_MS + day * DAY_MS + 12 * 3'600'000; }
    QString file() const { return dir.filePath(morvel::progress::ProgressStore::FILE_NAME); }
    /// The first column of `sql`'s first row, read by a connection of its own.
    qint64 count(const QString& sql) { return SqlitePeer(file()).value(sql); }

    QTemporaryDir dir;
    qint64 nowMs = BASE_MS;
    morvel::progress::ProgressStore store{[this] { return nowMs; }};
};
