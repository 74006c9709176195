#include "app/Level.h"

#include <ki/qt/guitools/GGui.h>

#include <QDir>

namespace morvel::prog2 {

Level Level::shipped(int number) {
    if (number < 1 || number > COUNT) return {};
    const QString zh = ki::qt::get_res_prefix() + QStringLiteral("/zh/");
    return {number, zh + QString::number(number), zh + QStringLiteral("level_%1.txt").arg(number)};
}

int Level::size() const {
    if (directory.isEmpty()) return 0;
    return static_cast<int>(QDir(directory).entryList({QStringLiteral("*.svg")}, QDir::Files).size());
}

}  // namespace morvel::prog2
