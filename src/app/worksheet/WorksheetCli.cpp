#include "app/worksheet/WorksheetCli.h"

#include <ki/log/GLog.h>
#include <ki/qt/lang.h>

#include <QFileInfo>
#include <optional>

#include "app/cli/CliText.h"
#include "app/cli/Headless.h"
#include "app/worksheet/Worksheet.h"

namespace morvel {

namespace {

using ki::qt::lang::tt;

const QString KEY_WORKSHEET = QStringLiteral("worksheet");
const QString KEY_OUT = QStringLiteral("out");
const QString KEY_GRID = QStringLiteral("grid");
const QString KEY_PAPER = QStringLiteral("paper");
const QString KEY_ROWS = QStringLiteral("rows");
const QString LEVEL_PREFIX = QStringLiteral("level:");

QString key_of(const QString& argument) {
    qsizetype dashes = 0;
    while (dashes < argument.size() && argument[dashes] == QLatin1Char('-')) ++dashes;
    return dashes > 0 ? argument.mid(dashes) : QString();
}

/// The value after `--key`: absent (nullopt) when the key is not given, "" when it has none.
std::optional<QString> value_of(const QStringList& arguments, const QString& key) {
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (key_of(arguments[i]) != key) continue;
        if (i + 1 < arguments.size() && !arguments[i + 1].startsWith(QLatin1Char('-')))
            return arguments[i + 1];
        return QString();
    }
    return std::nullopt;
}

WorksheetCliResult answer(int code, const QString& message) {
    return {code, QStringLiteral("quenlo: %1").arg(message)};
}

/// At most this many characters without a stroke file are named.
constexpr int MISSING_SHOWN = 20;

bool is_pdf_name(const QString& out) {
    if (out.endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive)) return true;
    // A device or FIFO that exists is written in place; its name says nothing of the format.
    const QFileInfo info(out);
    return info.exists() && !info.isFile() && !info.isDir();
}

}  // namespace

QString WorksheetCli::usage() {
    return QStringLiteral(
        "quenlo --worksheet CHARS|level:N --out FILE.pdf [--grid tian|mi|none] [--paper a4|letter] [--rows "
        "N]");
}

WorksheetCliResult WorksheetCli::run(const QStringList& arguments, QLocale::Language language) {
    const QString use = tt("usage: ", "Aufruf: ", "использование: ") + usage();
    WorksheetOptions options;
    options.language = language;

    const QString what = value_of(arguments, KEY_WORKSHEET).value_or(QString()).trimmed();
    if (what.isEmpty())
        return answer(EXIT_BAD_ARGUMENTS, tt("--worksheet needs characters or level:N\n",
                                             "--worksheet braucht Schriftzeichen oder level:N\n",
                                             "--worksheet требует иероглифы или level:N\n") +
                                              use);
    const QString out = value_of(arguments, KEY_OUT).value_or(QString());
    if (out.isEmpty())
        return answer(
            EXIT_BAD_ARGUMENTS,
            tt("--out FILE.pdf is missing\n", "--out DATEI.pdf fehlt\n", "не указан --out ФАЙЛ.pdf\n") + use);
    if (!is_pdf_name(out))
        return answer(
            EXIT_BAD_ARGUMENTS,
            tt("the worksheet is a PDF: --out needs a name ending in .pdf, not '%1'",
               "das Arbeitsblatt ist ein PDF: --out braucht einen Namen, der auf .pdf endet, nicht '%1'",
               "пропись — это PDF: для --out нужно имя с окончанием .pdf, а не '%1'")
                .arg(cli::printable(out)));
    if (const auto grid = value_of(arguments, KEY_GRID)) {
        const auto parsed = guide_grid_from_string(grid->toLower());
        if (!parsed)
            return answer(EXIT_BAD_ARGUMENTS, tt("unknown grid '%1' (tian, mi or none)",
                                                 "unbekanntes Raster '%1' (tian, mi oder none)",
                                                 "неизвестная сетка '%1' (tian, mi или none)")
                                                  .arg(cli::printable(*grid)));
        options.grid = *parsed;
    }
    if (const auto paper = value_of(arguments, KEY_PAPER)) {
        const QString name = paper->toLower();
        if (name != QLatin1String("a4") && name != QLatin1String("letter"))
            return answer(EXIT_BAD_ARGUMENTS,
                          tt("unknown paper '%1' (a4 or letter)", "unbekanntes Papier '%1' (a4 oder letter)",
                             "неизвестная бумага '%1' (a4 или letter)")
                              .arg(cli::printable(*paper)));
        options.paper = name == QLatin1String("letter") ? Paper::LETTER : Paper::A4;
    }
    if (const auto rows = value_of(arguments, KEY_ROWS)) {
        bool ok = false;
        options.rows = rows->toInt(&ok);
        if (!ok || options.rows < WorksheetOptions::ROWS_MIN || options.rows > WorksheetOptions::ROWS_MAX)
            return answer(EXIT_BAD_ARGUMENTS, tt("--rows takes a number from %1 to %2, not '%3'",
                                                 "--rows erwartet eine Zahl von %1 bis %2, nicht '%3'",
                                                 "--rows ожидает число от %1 до %2, а не '%3'")
                                                  .arg(WorksheetOptions::ROWS_MIN)
                                                  .arg(WorksheetOptions::ROWS_MAX)
                                                  .arg(cli::printable(*rows)));
    }

    WorksheetSource source;
    if (what.startsWith(LEVEL_PREFIX)) {
        bool ok = false;
        const int level = what.mid(LEVEL_PREFIX.size()).toInt(&ok);
        if (ok && level > 0) source = WorksheetSource::from_level(level);
        if (!ok || level <= 0 || !source.ok)
            return answer(EXIT_BAD_ARGUMENTS,
                          tt("there is no level '%1'", "es gibt keine Stufe '%1'", "уровня '%1' нет")
                              .arg(cli::printable(what.mid(LEVEL_PREFIX.size()))));
    } else {
        source = WorksheetSource::from_text(what);
    }

    QString missing;
    if (!source.missing.isEmpty())
        missing = tt("no stroke file for %1; skipped", "keine Strichdatei für %1; übersprungen",
                     "нет файла черт для %1; пропущено")
                      .arg(cli::capped_list(source.missing, MISSING_SHOWN));
    if (source.entries.empty())
        return answer(source.missing.isEmpty() ? EXIT_BAD_ARGUMENTS : EXIT_CHARS_MISSING,
                      (missing.isEmpty() ? QString() : missing + QStringLiteral("; ")) +
                          tt("nothing written", "nichts geschrieben", "ничего не записано"));

    const ki::GSysResult<int> written = Worksheet::write_file(out, source.entries, options);
    if (!written.ok())
        return answer(EXIT_WRITE_FAILED, tt("cannot write '%1': %2", "'%1' kann nicht geschrieben werden: %2",
                                            "не удаётся записать '%1': %2")
                                             .arg(cli::printable(out), written.get_message()));
    const QString done =
        tt("wrote '%3' (pages: %1, characters: %2)", "'%3' geschrieben (Seiten: %1, Schriftzeichen: %2)",
           "записано в '%3' (страниц: %1, иероглифов: %2)")
            .arg(written.value)
            .arg(source.entries.size())
            .arg(cli::printable(out));
    if (!missing.isEmpty()) return answer(EXIT_CHARS_MISSING, done + QStringLiteral("; ") + missing);
    return {EXIT_OK, QStringLiteral("quenlo: %1").arg(done)};
}

int WorksheetCli::main(const QStringList& arguments) {
    const WorksheetCliResult result = run(arguments, ki::qt::lang::get_lang());
    ki::pp("WorksheetCli::main, exit:$", result.exitCode);
    Headless::print(result.exitCode, result.message);
    return result.exitCode;
}

}  // namespace morvel
