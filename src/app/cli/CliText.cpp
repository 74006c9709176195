#include "app/cli/CliText.h"

#include <ki/qt/lang.h>

#include <QLocale>

namespace morvel::cli {

namespace {

bool is_bidi_override(char32_t c) {
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

}  // namespace

QString printable(const QString& text) {
    QString out;
    out.reserve(text.size());
    for (const char32_t c : text.toUcs4()) {
        if (c == '\n') {
            out += QLatin1String("\\n");
        } else if (c == '\t') {
            out += QLatin1String("\\t");
        } else if (c == '\r') {
            out += QLatin1String("\\r");
        } else if (c < 0x20 || c == 0x7F) {
            out += QStringLiteral("\\x%1").arg(static_cast<uint>(c), 2, 16, QLatin1Char('0'));
        } else if ((c >= 0x80 && c <= 0x9F) || is_bidi_override(c)) {
            out += QStringLiteral("\\u%1").arg(static_cast<uint>(c), 4, 16, QLatin1Char('0'));
        } else {
            out += QString::fromUcs4(&c, 1);
        }
    }
    return out;
}

QString capped_list(const QStringList& items, int shown) {
    QStringList quoted;
    for (qsizetype i = 0; i < items.size() && i < shown; ++i)
        quoted << QStringLiteral("'%1'").arg(printable(items[i]));
    QString list = quoted.join(QStringLiteral(", "));
    const qsizetype more = items.size() - quoted.size();
    if (more > 0) {
        const QString count = QLocale(ki::qt::lang::get_lang()).toString(static_cast<qlonglong>(more));
        list += ki::qt::lang::tt(QStringLiteral(" … and %1 more"), QStringLiteral(" … und %1 weitere"),
                                 QStringLiteral(" … и ещё %1"))
                    .arg(count);
    }
    return list;
}

}  // namespace morvel::cli
