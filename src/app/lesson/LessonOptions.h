#pragma once
// Every option the learner sets, as one typed record with one load (defaults, range checks and
// a log line for a bad stored value) and one save. A new option is a field here, a row in the
// table of LessonOptions.cpp and a menu entry.

#include <cstdint>

namespace ki::store {
class GNode;
}

namespace morvel::prog2 {

struct LessonOptions {
    /// drawConfig bits.
    static constexpr unsigned int DRAW_OUTLINE = 2;
    static constexpr unsigned int DRAW_HELPER_CIRCLES = 8;
    static constexpr unsigned int DRAW_HELPER_LINES = 16;
    static constexpr unsigned int DRAW_KNOWN = DRAW_OUTLINE | DRAW_HELPER_CIRCLES | DRAW_HELPER_LINES;
    /// Tolerance radii accepted from the store, in character units.
    static constexpr int R_CIRCLE_MIN = 10;
    static constexpr int R_CIRCLE_MAX = 400;

    unsigned int drawConfig = DRAW_OUTLINE | DRAW_HELPER_CIRCLES;
    int rCircle = 140;
    unsigned int modeFlags = 23;
    int incSpeed = 5;
    /// Whether "incSpeed" was stored: until the learner picks a speed the window keeps its own
    /// start step.
    bool incSpeedStored = false;
    bool showUnicode = false;
    bool scrollbarVisible = false;
    uint32_t valTest = 0;
    /// The level shown, 1 .. 7, and the selected character of each level.
    int level = 1;
    int selectedIndex = 0;
    int selectedIndex2 = 0;
    int selectedIndex3 = 0;
    int selectedIndex4 = 0;
    int selectedIndex5 = 0;
    int selectedIndex6 = 0;
    int selectedIndex7 = 0;
    int& selection_of(int levelNumber);
    int selection_of(int levelNumber) const { return const_cast<LessonOptions*>(this)->selection_of(levelNumber); }
    /// Keeps the selection of `levelNumber` inside a level of `size` characters (a value outside
    /// is logged) and returns it.
    int clamp_selection(int levelNumber, int size);

    /// Practice: misses of one stroke before it paints itself (0: never).
    int hintAfterMisses = 3;
    /// Short sounds on an accepted stroke, a finished character and a rejected trace.
    bool feedbackSounds = true;
    /// Watch mode: each stroke's number at its start.
    bool strokeNumbers = false;
    /// 1.5 s after a finished character the next one is selected.
    bool nextWhenDone = false;
    /// Traces must also run the stroke's way, be long enough and cover it.
    bool strictJudging = false;
    enum Grid : int { GRID_SQUARES = 0, GRID_TIAN = 1, GRID_MI = 2 };
    int practiceGrid = GRID_SQUARES;
    /// Three rounds per character, with fewer aids each round.
    bool practiceRounds = false;
    /// Next and previous (buttons, keys, "next when done") go to the next due character.
    bool reviewDue = false;
    /// The learner's accepted traces stay drawn over the traced strokes.
    bool showMyStrokes = true;
    /// The chance of recall, in percent, at which a character falls due again.
    static constexpr int RETENTION_CHOICES[] = {80, 85, 90, 95};
    int desiredRetention = 90;
    /// New characters a day's session introduces at most (one of the session plan's limits).
    int newPerDay = 10;
    /// The program opens with today's session when anything is due.
    bool startWithToday = false;

    bool operator==(const LessonOptions&) const = default;

    /// Absent keys give the defaults above; a value of the wrong type or out of range is
    /// logged and replaced (clamped where a nearby value makes sense, else the default).
    static LessonOptions load(const ki::store::GNode& node);
    /// Only the stored level, 1 when it is absent or unusable; silent, as `load` reports it.
    static int stored_level(const ki::store::GNode& node);
    void save(ki::store::GNode& node) const;
};

}  // namespace morvel::prog2
