#include "app/cli/Headless.h"

#include <ki/log/GLog.h>

#include <QtGlobal>
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <vector>

#include "app/cli/CliText.h"
#include "app/morvel.h"
#include "app/progress/ProgressCommand.h"
#include "app/worksheet/WorksheetCli.h"

namespace morvel {

namespace {

const QStringList KNOWN = {QStringLiteral("level"),     QStringLiteral("__log_level"),
                           QStringLiteral("__bounds"),  QStringLiteral("__screenshots"),
                           QStringLiteral("worksheet"), QStringLiteral("out"),
                           QStringLiteral("grid"),      QStringLiteral("paper"),
                           QStringLiteral("rows"),      QStringLiteral("export-progress"),
                           QStringLiteral("help"),      QStringLiteral("h"),
                           QStringLiteral("version")};
const QStringList HEADLESS = {QStringLiteral("worksheet"), QStringLiteral("out"),
                              QStringLiteral("grid"),      QStringLiteral("paper"),
                              QStringLiteral("rows"),      QStringLiteral("export-progress"),
                              QStringLiteral("help"),      QStringLiteral("version")};

// Qt's own command-line options; the application object takes them out of the arguments, and a
// few (X11's) only under some platforms.
const QStringList QT_OPTIONS =
    QStringLiteral(
        "platform platformpluginpath platformtheme plugin qwindowgeometry qwindowtitle "
        "qwindowicon reverse session style stylesheet widgetcount display geometry title "
        "icon name qmljsdebugger nograb dograb sync visual")
        .split(QLatin1Char(' '));

QString key_of(const QString& argument) {
    qsizetype dashes = 0;
    while (dashes < argument.size() && argument[dashes] == QLatin1Char('-')) ++dashes;
    return dashes > 0 ? argument.mid(dashes) : QString();
}

/// Lower case without dashes and underscores: "Export_Progress" and "exportprogress" meet.
QString folded(const QString& key) {
    QString out = key.toLower();
    out.remove(QLatin1Char('-'));
    out.remove(QLatin1Char('_'));
    return out;
}

qsizetype edit_distance(const QString& a, const QString& b) {
    std::vector<qsizetype> row(static_cast<size_t>(b.size()) + 1);
    for (qsizetype j = 0; j <= b.size(); ++j) row[static_cast<size_t>(j)] = j;
    for (qsizetype i = 1; i <= a.size(); ++i) {
        qsizetype diagonal = row[0];
        row[0] = i;
        for (qsizetype j = 1; j <= b.size(); ++j) {
            const qsizetype above = row[static_cast<size_t>(j)];
            row[static_cast<size_t>(j)] = std::min(
                {above + 1, row[static_cast<size_t>(j - 1)] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row.back();
}

bool looks_headless(const QString& key) {
    const QString k = folded(key);
    if (k.isEmpty()) return false;
    return std::any_of(HEADLESS.begin(), HEADLESS.end(), [&](const QString& option) {
        const QString o = folded(option);
        const qsizetype near = o.size() <= 5 ? 1 : 2;
        return edit_distance(k, o) <= near ||
               (k.size() >= 3 && (k.startsWith(o) || (k.size() >= 4 && o.startsWith(k))));
    });
}

/// Set by `prepare` for a headless command run without `-__log_level`.
bool quietCommand = false;

bool has_key(const QStringList& arguments, const QString& key) {
    return std::any_of(arguments.begin() + std::min<qsizetype>(1, arguments.size()), arguments.end(),
                       [&](const QString& a) { return key_of(a) == key; });
}

void drop_message(QtMsgType, const QMessageLogContext&, const QString&) {}

}  // namespace

QStringList Headless::arguments_of(int argc, char** argv) {
    QStringList arguments;
    for (int i = 0; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
    return arguments;
}

QString Headless::unknown_option(const QStringList& arguments) {
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (!arguments[i].startsWith(QLatin1String("--"))) continue;
        const QString key = key_of(arguments[i]);
        if (!KNOWN.contains(key) && looks_headless(key)) return arguments[i];
    }
    return {};
}

QStringList Headless::ignored_options(const QStringList& arguments) {
    QStringList ignored;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString key = key_of(arguments[i]);
        // A value such as "-1" is no option; the option it follows is judged on its own.
        bool number = false;
        key.toDouble(&number);
        if (key.isEmpty() || number) continue;
        if (!KNOWN.contains(key) && !QT_OPTIONS.contains(key)) ignored << arguments[i];
    }
    return ignored;
}

Headless::Command Headless::command_of(const QStringList& arguments) {
    if (!unknown_option(arguments).isEmpty()) return Command::UNKNOWN_OPTION;
    if (has_key(arguments, QStringLiteral("help")) || has_key(arguments, QStringLiteral("h")))
        return Command::HELP;
    if (has_key(arguments, QStringLiteral("version"))) return Command::VERSION;
    if (has_key(arguments, QStringLiteral("export-progress"))) return Command::EXPORT_PROGRESS;
    if (has_key(arguments, QStringLiteral("worksheet"))) return Command::WORKSHEET;
    return Command::NONE;
}

Headless::Command Headless::prepare(int argc, char** argv) {
    const QStringList arguments = arguments_of(argc, argv);
    const Command command = command_of(arguments);
    if (command == Command::NONE) return command;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    ki::log::configure(argc, argv, false);
    if (!has_key(arguments, QStringLiteral("__log_level"))) {
        quietCommand = true;
        ki::log::set_log_off();
        qInstallMessageHandler(drop_message);
    }
    return command;
}

Headless::QuietStdout::QuietStdout(Command command) : quiet(command != Command::NONE && quietCommand) {
    if (quiet) saved = std::cout.rdbuf(nullptr);
}

Headless::QuietStdout::~QuietStdout() {
    if (!quiet) return;
    std::cout.rdbuf(saved);
    std::cout.clear();
}

int Headless::answer(Command command, int argc, char** argv) {
    switch (command) {
        case Command::UNKNOWN_OPTION:
            print(EXIT_BAD_ARGUMENTS,
                  QStringLiteral("quenlo: unknown option '%1'\n%2")
                      .arg(cli::printable(unknown_option(arguments_of(argc, argv))), usage()));
            return EXIT_BAD_ARGUMENTS;
        case Command::HELP:
            print(0, QStringLiteral("quenlo %1: learn to write Chinese characters stroke by stroke\n%2\n"
                                    "Every option is described in the manual page (man quenlo).")
                         .arg(QString::fromStdString(get_morvel_version()), usage()));
            return 0;
        case Command::VERSION:
            print(0, QStringLiteral("quenlo %1").arg(QString::fromStdString(get_morvel_version())));
            return 0;
        default:
            return -1;
    }
}

int Headless::run_early(Command command, int argc, char** argv) {
    return command == Command::EXPORT_PROGRESS ? progress::ProgressCommand::run(argc, argv) : -1;
}

void Headless::print(int exitCode, const QString& message) {
    std::FILE* stream = exitCode == 0 ? stdout : stderr;
    std::fprintf(stream, "%s\n", message.toLocal8Bit().constData());
    std::fflush(stream);
}

QString Headless::usage() {
    return QStringLiteral(
               "usage: quenlo [--level N]\n       %1\n       quenlo %2 FILE.csv\n"
               "       quenlo --help | --version")
        .arg(WorksheetCli::usage(), QLatin1String(progress::ProgressCommand::OPTION));
}

}  // namespace morvel
