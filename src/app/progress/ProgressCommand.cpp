#include "app/progress/ProgressCommand.h"

#include <QCoreApplication>
#include <QTextStream>
#include <cstring>

#include "app/progress/ProgressStore.h"

namespace morvel::progress {

int ProgressCommand::run(int argc, char** argv) {
    int at = 1;
    while (at < argc && std::strcmp(argv[at], OPTION) != 0) ++at;
    if (at >= argc) return -1;

    QCoreApplication app(argc, argv);
    QTextStream err(stderr);
    if (at + 1 >= argc || argv[at + 1][0] == '\0') {
        err << "quenlo: " << OPTION << " needs the name of the CSV file to write\n";
        return 1;
    }
    const QString target = QString::fromLocal8Bit(argv[at + 1]);
    ProgressStore store;
    store.open(ProgressStore::default_folder(), true);
    const QString error = store.export_csv(target);
    if (!error.isEmpty()) {
        err << "quenlo: cannot write progress to '" << target << "': " << error << "\n";
        return 1;
    }
    QTextStream(stdout) << "quenlo: progress written to '" << target << "'\n";
    return 0;
}

}  // namespace morvel::progress
