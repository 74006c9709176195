#include "app/progress/ProgressCsv.h"

#include <ki/qt/lang.h>

#include <QDateTime>
#include <QFileInfo>
#include <QIODevice>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>
#include <algorithm>
#include <atomic>
#include <functional>

#include "app/cli/CliText.h"
#include "app/files/SafeSave.h"
#include "app/progress/ProgressSchema.h"

namespace morvel::progress {

namespace {

using ki::qt::lang::tt;

std::atomic<int> connectionCounter{0};

// Traces and completions in one stream, by time; at the same millisecond the traces that led to
// a completion come before it.
const char* const HISTORY =
    "SELECT 0, time_ms, level, code_point, stroke_index, accepted, reason, tolerance, aids, hint,"
    " NULL, NULL, NULL, id FROM traces"
    " UNION ALL SELECT 1, time_ms, level, code_point, NULL, NULL, NULL, NULL, NULL, NULL,"
    " seconds, misses, round, id FROM completions"
    " ORDER BY 2, 1, 14";

// The columns an FSRS optimizer reads; the state uses the scheduler's numbers (0 new, 2 review).
const char* const REVIEWS =
    "SELECT code_point, time_ms, rating, state, duration_ms FROM reviews ORDER BY time_ms, id";

QString error_text(const QSqlError& error) {
    const QString text = error.databaseText().trimmed();
    return text.isEmpty() ? error.text().trimmed() : text;
}

QString row_of(const QSqlQuery& q) {
    const bool trace = q.value(0).toInt() == 0;
    const int codePoint = q.value(3).toInt();
    const char32_t ucs4 = static_cast<char32_t>(codePoint);
    QStringList fields{
        trace ? QStringLiteral("trace") : QStringLiteral("completion"),
        QDateTime::fromMSecsSinceEpoch(q.value(1).toLongLong(), Qt::UTC).toString(Qt::ISODateWithMs),
        q.value(2).toString(), QString::number(codePoint), ProgressCsv::field(QString::fromUcs4(&ucs4, 1))};
    for (int column = 4; column <= 12; ++column) {
        const QVariant value = q.value(column);
        if (value.isNull())
            fields << QString();
        else if (column == 10)
            fields << QString::number(value.toDouble(), 'g', 10);
        else
            fields << ProgressCsv::field(value.toString());
    }
    return fields.join(QLatin1Char(','));
}

/// Writes a line per row of the executed `query` into `out`, in chunks. Returns an empty text, or
/// why reading failed.
QString stream_rows(QSqlQuery& query, QIODevice& out, const std::function<QString(const QSqlQuery&)>& line) {
    QByteArray chunk;
    while (query.next()) {
        chunk += line(query).toUtf8() + '\n';
        if (chunk.size() > 1 << 16) {
            out.write(chunk);
            chunk.clear();
        }
    }
    if (query.lastError().isValid()) return error_text(query.lastError());
    out.write(chunk);
    return {};
}

/// Streams the history into `out`. Returns an empty text, or why the history cannot be read.
QString copy_history(QSqlDatabase& db, QIODevice& out) {
    if (!db.open()) return error_text(db.lastError());
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("PRAGMA quick_check"))) return error_text(query.lastError());
    if (!query.next()) return QStringLiteral("quick_check gave no answer");
    if (query.value(0).toString() != QLatin1String("ok"))
        return tt("it is damaged (%1)", "sie ist beschädigt (%1)", "он повреждён (%1)")
            .arg(query.value(0).toString());
    const int version = ProgressSchema::version_of(db);
    if (version == 0) return {};  // an empty file: nothing practised yet
    if (version < 0)
        return tt("it has a layout this program does not know (%1)",
                  "sie hat einen Aufbau, den dieses Programm nicht kennt (%1)",
                  "у него структура, неизвестная этой программе (%1)")
            .arg(version);
    if (!query.exec(QString::fromLatin1(HISTORY))) {
        const QString error = error_text(query.lastError());
        if (version <= ProgressSchema::VERSION) return error;
        return tt("it comes from a newer version of quenlo (%1)",
                  "sie stammt von einer neueren quenlo-Version (%1)",
                  "он создан более новой версией quenlo (%1)")
            .arg(error);
    }
    return stream_rows(query, out, row_of);
}

/// Streams the graded reviews into `out`, after `copy_history` has checked the file. A layout
/// without reviews gives none: it gets them when the program next opens it.
QString copy_reviews(QSqlDatabase& db, QIODevice& out) {
    if (ProgressSchema::version_of(db) < 4) return {};
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QString::fromLatin1(REVIEWS))) return error_text(query.lastError());
    return stream_rows(query, out, [](const QSqlQuery& q) {
        QStringList fields;
        for (int column = 0; column < 5; ++column) fields << q.value(column).toString();
        return fields.join(QLatin1Char(','));
    });
}

}  // namespace

QString ProgressCsv::header() {
    return QStringLiteral(
        "kind,time,level,code_point,character,stroke_index,accepted,reason,tolerance,aids,hint_shown,seconds,"
        "misses,round");
}

QString ProgressCsv::reviews_header() {
    return QStringLiteral("card_id,review_time,review_rating,review_state,review_duration");
}

QString ProgressCsv::reviews_path(const QString& target) {
    const QFileInfo info(target);
    const QString base = info.suffix().compare(QLatin1String("csv"), Qt::CaseInsensitive) == 0
                             ? target.left(target.size() - 4)
                             : target;
    return base + QStringLiteral("-reviews.csv");
}

QString ProgressCsv::field(const QString& text) {
    static const QString special = QStringLiteral(",\"\r\n");
    if (std::none_of(text.begin(), text.end(), [](QChar c) { return special.contains(c); })) return text;
    QString quoted = text;
    quoted.replace(QLatin1String("\""), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString ProgressCsv::write(const QString& history, const QString& target) {
    const auto cannot_write = [&](const QString& path, const QString& reason) {
        return tt("Cannot write '%1': %2.", "'%1' kann nicht geschrieben werden: %2.",
                  "Не удаётся записать '%1': %2.")
            .arg(cli::printable(path), reason);
    };
    const QString reviewsTarget = reviews_path(target);
    SafeSave file(target);
    if (!file.open()) return cannot_write(target, file.reason());
    SafeSave reviews(reviewsTarget);
    if (!reviews.open()) {
        file.cancel();
        return cannot_write(reviewsTarget, reviews.reason());
    }
    file.device().write(header().toUtf8() + '\n');
    reviews.device().write(reviews_header().toUtf8() + '\n');

    QString unreadable;
    if (QFileInfo::exists(history)) {
        const QString name = QStringLiteral("quenlo-csv-%1").arg(connectionCounter++);
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
            db.setDatabaseName(history);
            db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=2000"));
            unreadable = copy_history(db, file.device());
            if (unreadable.isEmpty()) unreadable = copy_reviews(db, reviews.device());
            db.close();
        }
        QSqlDatabase::removeDatabase(name);
    }
    if (!unreadable.isEmpty()) {
        file.cancel();
        reviews.cancel();
        return tt("The practice history '%1' cannot be read: %2.",
                  "Der Übungsverlauf '%1' kann nicht gelesen werden: %2.",
                  "Историю занятий '%1' не удаётся прочитать: %2.")
            .arg(cli::printable(history), unreadable);
    }
    if (!file.commit()) {
        reviews.cancel();
        return cannot_write(target, file.reason());
    }
    if (!reviews.commit()) return cannot_write(reviewsTarget, reviews.reason());
    return {};
}

}  // namespace morvel::progress
