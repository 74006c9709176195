#include "app/progress/ProgressCommand.h"

#include <QCoreApplication>
#include <QDir>
#include <cstring>

#include "app/cli/CliText.h"
#include "app/cli/Headless.h"
#include "app/progress/ProgressCsv.h"
#include "app/progress/ProgressStore.h"

namespace morvel::progress {

int ProgressCommand::run(int argc, char** argv) {
    int at = 1;
    // Any number of leading dashes, as for every other option.
    const auto is_option = [](const char* argument) {
        while (*argument == '-') ++argument;
        return std::strcmp(argument, OPTION + 2) == 0;
    };
    while (at < argc && !is_option(argv[at])) ++at;
    if (at >= argc) return -1;

    QCoreApplication app(argc, argv);
    if (at + 1 >= argc || argv[at + 1][0] == '\0' || argv[at + 1][0] == '-') {
        Headless::print(
            1,
            QStringLiteral("quenlo: %1 needs the name of the CSV file to write").arg(QLatin1String(OPTION)));
        return 1;
    }
    const QString target = QString::fromLocal8Bit(argv[at + 1]);
    const QString history =
        QDir(ProgressStore::default_folder()).filePath(QString::fromLatin1(ProgressStore::FILE_NAME));
    const QString error = ProgressCsv::write(history, target);
    if (!error.isEmpty()) {
        Headless::print(1, QStringLiteral("quenlo: %1").arg(error));
        return 1;
    }
    Headless::print(0, QStringLiteral("quenlo: progress written to '%1' and '%2'")
                           .arg(cli::printable(target), cli::printable(ProgressCsv::reviews_path(target))));
    return 0;
}

}  // namespace morvel::progress
