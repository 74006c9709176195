#include "app/Recording.h"

#include <ki/log/GLog.h>
#include <ki/qt/guitools/GGui.h>

#include <QFile>

#include <algorithm>

namespace morvel::prog2 {

namespace {

QString fono_dir() {
    return ki::qt::get_res_prefix() + QStringLiteral("/zh/fono/");
}

// One line "<code point> <pinyin><tone>": the recording's file name, or an empty string when
// the line is not of that form. Read by hand: a regular expression per line cost several
// milliseconds of every start, before the first frame.
QString parse_line(QStringView row, int& code) {
    qsizetype i = 0;
    code = 0;
    for (; i < row.size() && i < 7 && row[i] >= u'0' && row[i] <= u'9'; ++i)
        code = code * 10 + (row[i].unicode() - u'0');
    if (i == 0 || i == row.size() || row[i] != u' ') return {};
    const QStringView name = row.mid(i + 1);
    if (name.size() < 2) return {};
    const char16_t tone = name.back().unicode();
    if (tone < u'1' || tone > u'4') return {};
    for (const QChar c : name.chopped(1))
        if (c < u'a' || c > u'z') return {};
    // One allocation per line: the index has thousands.
    QString file(name.size() + 4, Qt::Uninitialized);
    std::copy(name.begin(), name.end(), file.begin());
    std::copy_n(u".mp3", 4, file.begin() + name.size());
    return file;
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
    QHash<int, QString> byCode;
    // A line is about ten characters.
    byCode.reserve(text.size() / 10);
    badLines = 0;
    for (const QStringView row : QStringView(text).tokenize(u'\n')) {
        const QStringView trimmed = row.trimmed();
        if (trimmed.isEmpty()) continue;
        int code = 0;
        QString name = parse_line(trimmed, code);
        if (name.isEmpty()) {
            ++badLines;
            continue;
        }
        byCode.insert(code, std::move(name));
    }
    return byCode;
}

void Recording::read_index() {
    index();
}

QString Recording::path(int unicode) {
    const auto it = index().constFind(unicode);
    return it == index().constEnd() ? QString() : fono_dir() + it.value();
}

}  // namespace morvel::prog2
