#pragma once
// Where one level of characters lives in the resource tree: its stroke directory and its
// level file. Only the level the learner picks is loaded; the others are only counted.

#include <QStringList>

namespace morvel::prog2 {

struct Level {
    /// Levels shipped with the program, numbered 1 .. COUNT.
    static constexpr int COUNT = 7;

    int number = 0;
    QString directory;  ///< ":/wb/shared-res/zh/2", one stroke file per character
    QString file;       ///< ":/wb/shared-res/zh/level_2.txt"

    /// Level `number` under the current resource prefix; number 0 for one outside 1 .. COUNT.
    static Level shipped(int number);
    bool is_valid() const { return number > 0; }
    /// The level asked for with "--level N" in `arguments` (the program's name first), 0 when
    /// none is. When N is no shipped level, `error` says so and the result is 0.
    static int from_arguments(const QStringList& arguments, QString& error);
    /// Number of stroke files in the directory, counted without reading them.
    int size() const;
    /// The HSK (2.0) level whose words the level's characters come from: level 1 and 2 hold
    /// HSK 1, every later level n the characters HSK n - 1 adds; 0 outside 1 .. COUNT.
    static int hsk(int number);

    bool operator==(const Level&) const = default;
};

}  // namespace morvel::prog2
