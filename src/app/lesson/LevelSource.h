#pragma once
// The characters of the shown level in their order; while reviewing, the next due character
// in the direction asked comes first.

#include <functional>

#include "app/lesson/CharacterSource.h"

namespace morvel::prog2 {

class LevelSource : public CharacterSource {
public:
    /// `size` answers how many characters the level holds now; `nextDue` the index of the next
    /// due character after `from` going `step`, -1 when none is or review is off.
    LevelSource(std::function<int()> size, std::function<int(int from, int step)> nextDue);

    int after(int current, int step) const override;

private:
    std::function<int()> size;
    std::function<int(int, int)> nextDue;
};

}  // namespace morvel::prog2
