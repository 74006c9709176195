#include "app/Recording.h"

#include <ki/log/GLog.h>
#include <ki/qt/guitools/GGui.h>

#include <QFile>
#include <QRegularExpression>

namespace morvel::prog2 {

namespace {

QString fono_dir() {
    return ki::qt::get_res_prefix() + QStringLiteral("/zh/fono/");
}

const QHash<int, QString>& index() {
    static const QHash<int, QString> byCode = [] {
        QFile file(fono_dir() + QStringLiteral("index.txt"));
        if (!file.open(QIODevice::ReadOnly)) {
            ki::pp_error("Recording::index, cannot read '$'", file.fileName());
            return QHash<int, QString>();
        }
        int bad = 0;
        QHash<int, QString> parsed = Recording::parse_index(QString::fromUtf8(file.readAll()), bad);
        if (bad > 0) ki::pp_error("Recording::index, $ unreadable lines skipped", bad);
        return parsed;
    }();
    return byCode;
}

}  // namespace

QHash<int, QString> Recording::parse_index(const QString& text, int& badLines) {
    static const QRegularExpression line(QStringLiteral("^(\\d{1,7}) ([a-z]+[1-4])$"));
    QHash<int, QString> byCode;
    badLines = 0;
    for (const QString& row : text.split(u'\n')) {
        const QString trimmed = row.trimmed();
        if (trimmed.isEmpty()) continue;
        const QRegularExpressionMatch m = line.match(trimmed);
        if (!m.hasMatch()) {
            ++badLines;
            continue;
        }
        byCode.insert(m.capturedView(1).toInt(), m.captured(2) + QStringLiteral(".mp3"));
    }
    return byCode;
}

QString Recording::path(int unicode) {
    const auto it = index().constFind(unicode);
    return it == index().constEnd() ? QString() : fono_dir() + it.value();
}

}  // namespace morvel::prog2
