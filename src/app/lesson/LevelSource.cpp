#include "app/lesson/LevelSource.h"

#include <utility>

namespace morvel::prog2 {

LevelSource::LevelSource(std::function<int()> levelSize, std::function<int(int, int)> due)
    : size(std::move(levelSize)), nextDue(std::move(due)) {}

int LevelSource::after(int current, int step) const {
    const int due = nextDue ? nextDue(current, step) : -1;
    if (due >= 0 && due != current) return due;
    // With nothing else due, review gives way to the level's order: the arrows never go dead.
    const int next = current + step;
    return next >= 0 && next < size() ? next : -1;
}

}  // namespace morvel::prog2
