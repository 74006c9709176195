#include "app/ChinChar.h"

#include <ki/log/GLog.h>
#include <ki/tools/file.h>

namespace morvel {

ChinChar ChinChar::from_string(const QString& line) {
    // Views into the line until the four texts are kept: a level of a thousand rows is parsed
    // at start-up.
    const QStringView text(line);
    const qsizetype eq = text.indexOf(u'=');
    if (eq < 0) return {};
    bool ok = false;
    const int code = text.left(eq).trimmed().toInt(&ok, 10);
    if (!ok) return {};
    const qsizetype open = text.indexOf(u'{');
    const qsizetype close = text.lastIndexOf(u'}');
    if (open < 0 || close < 0 || close < open) return {};
    const QList<QStringView> parts = text.mid(open + 1, close - open - 1).split(u'|', Qt::KeepEmptyParts);
    if (parts.size() != 5) return {};
    ChinChar c;
    c.unicode = static_cast<uint16_t>(code);
    c.pinyin = parts[1].trimmed().toString();
    c.english = parts[2].trimmed().toString();
    c.german = parts[3].trimmed().toString();
    c.russian = parts[4].trimmed().toString();
    return c;
}

QString ChinChar::meaning(QLocale::Language language) const {
    switch (language) {
        case QLocale::English:
            return english;
        case QLocale::German:
            return german;
        case QLocale::Russian:
            return russian;
        default:
            return {};
    }
}

QString ChinChar::character() const { return unicode == 0 ? QString() : QString(QChar(unicode)); }

std::string ChinChar::to_string() const {
    if (unicode == 0) return "NO-VALID";
    return ki::str::xprintF(0, "$ | $ | $ | $ | $", character(), pinyin, english, german, russian);
}

std::vector<ChinChar> basic_table_from_file(const QString& path, int maxLines) {
    std::vector<ChinChar> table;
    const auto lines = ki::io::file::read_lines(path, maxLines);
    if (!lines.ok()) {
        ki::pp_error("basic_table_from_file, $", lines.to_string());
        return table;
    }
    table.reserve(static_cast<size_t>(lines.value.size()));
    for (const QString& line : lines.value) {
        ChinChar c = ChinChar::from_string(line);
        if (c.unicode == 0) {
            ki::pp_error("problems parsing '$'", line);
            continue;
        }
        table.push_back(std::move(c));
    }
    return table;
}

ChinChar from_unicode(const std::vector<ChinChar>& table, int code) {
    for (const ChinChar& c : table) {
        if (c.is_unicode(code)) return c;
    }
    return {};
}

std::vector<ChinChar> create_basic_table() {
    struct Row {
        uint16_t code;
        const char16_t* pinyin;
        const char16_t* english;
        const char16_t* german;
        const char16_t* russian;
    };
    static constexpr Row rows[] = {
#include "app/BasicTableData.inc"
    };
    std::vector<ChinChar> table;
    table.reserve(std::size(rows));
    for (const Row& r : rows) {
        table.push_back({r.code, QString::fromUtf16(r.pinyin), QString::fromUtf16(r.english),
                         QString::fromUtf16(r.german), QString::fromUtf16(r.russian)});
    }
    return table;
}

}  // namespace morvel
