#pragma once
// The characters every benchmark runs over: the stroke files of level 1 from the resource tree
// compiled into the program, in catalogue order.

#include <QDir>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "app/AppData.h"

namespace bench {

inline const QString LEVEL_DIR = QStringLiteral(":/wb/shared-res/zh/1");

/// Full resource paths of the level's stroke files ("<dir>/20013.svg", ...). A missing
/// resource tree would make every figure meaningless, so it ends the run.
inline const QStringList& level_files() {
    static const QStringList files = [] {
        QStringList names = QDir(LEVEL_DIR).entryList({QStringLiteral("*.svg")}, QDir::Files);
        std::sort(names.begin(), names.end(), morvel::prog2::AppData::less_file_name);
        QStringList paths;
        for (const QString& name : names) paths << LEVEL_DIR + '/' + name;
        if (paths.isEmpty()) {
            std::fprintf(stderr, "quenlo_bench: no stroke files under %s\n", qPrintable(LEVEL_DIR));
            std::exit(2);
        }
        return paths;
    }();
    return files;
}

}  // namespace bench
