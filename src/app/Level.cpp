#include "app/Level.h"

#include <ki/qt/guitools/GGui.h>

#include <QDir>

namespace morvel::prog2 {

Level Level::shipped(int number) {
    if (number < 1 || number > COUNT) return {};
    const QString zh = ki::qt::get_res_prefix() + QStringLiteral("/zh/");
    return {number, zh + QString::number(number), zh + QStringLiteral("level_%1.txt").arg(number)};
}

int Level::from_arguments(const QStringList& arguments, QString& error) {
    const qsizetype at = arguments.indexOf(QStringLiteral("--level"));
    if (at < 1) return 0;
    const QString value = arguments.value(at + 1);
    bool ok = false;
    const int number = value.toInt(&ok);
    if (ok && shipped(number).is_valid()) return number;
    const QString range = QStringLiteral("a level from 1 to %1").arg(COUNT);
    error = (value.isEmpty() ? QStringLiteral("--level needs ") + range
                             : QStringLiteral("--level takes %1, not '%2'").arg(range, value)) +
            QStringLiteral("; the level chosen last is shown");
    return 0;
}

int Level::hsk(int number) {
    if (number < 1 || number > COUNT) return 0;
    return number == 1 ? 1 : number - 1;
}

int Level::size() const {
    if (directory.isEmpty()) return 0;
    return static_cast<int>(QDir(directory).entryList({QStringLiteral("*.svg")}, QDir::Files).size());
}

}  // namespace morvel::prog2
