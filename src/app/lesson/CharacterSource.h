#pragma once
// Where Previous and Next lead: the lesson flow asks its source which character comes after
// the one shown. The level in order is one source; a day's session can be another.

namespace morvel::prog2 {

class CharacterSource {
public:
    virtual ~CharacterSource() = default;
    /// The index of the character after `current` going `step` (+1 on, -1 back), or -1 when
    /// there is none that way.
    virtual int after(int current, int step) const = 0;
};

}  // namespace morvel::prog2
