#include "app/lesson/LessonOptions.h"

#include <ki/log/GLog.h>
#include <ki/store/GNode.h>

#include <QVariant>
#include <algorithm>
#include <limits>
#include <span>
#include <variant>

#include "app/Level.h"
#include "app/review/SessionPlan.h"

namespace morvel::prog2 {

namespace {

// What a stored value outside its range becomes.
enum class Fix {
    CLAMP,    // the nearest allowed value
    DEFAULT,  // the default: no nearby value means what was meant
    MASK,     // unknown bits dropped, known ones kept
    CHOICE,   // one of the values offered, else the default
};

using Field = std::variant<bool LessonOptions::*, int LessonOptions::*, unsigned int LessonOptions::*>;

struct Row {
    const char* key;
    Field field;
    Fix fix = Fix::CLAMP;
    long long min = std::numeric_limits<int>::min();
    long long max = std::numeric_limits<int>::max();  // with MASK: the known bits
    const char* bits = "";                             // with MASK: what the bits are called
    std::span<const int> choices = {};                 // with CHOICE: the values offered
};

const LessonOptions DEFAULTS;

// clang-format off
const Row ROWS[] = {
    {"DRAW_CONFIG", &LessonOptions::drawConfig, Fix::MASK, 0, LessonOptions::DRAW_KNOWN, "DRAW_CONFIG"},
    {"rCircle", &LessonOptions::rCircle, Fix::DEFAULT, LessonOptions::R_CIRCLE_MIN, LessonOptions::R_CIRCLE_MAX},
    {"ControlAnim.modeFlags", &LessonOptions::modeFlags, Fix::MASK, 0, 0x3F, "mode"},
    {"incSpeed", &LessonOptions::incSpeed, Fix::CLAMP, 1, 8},
    {"flagShowUnicode", &LessonOptions::showUnicode},
    {"flagScrollbarVisible", &LessonOptions::scrollbarVisible},
    {"valTest", &LessonOptions::valTest, Fix::CLAMP, 0, std::numeric_limits<uint32_t>::max()},
    {"level", &LessonOptions::level, Fix::DEFAULT, 1, Level::COUNT},
    // The window clamps the selections to its catalogue.
    {"selectedIndex", &LessonOptions::selectedIndex},
    {"selectedIndex2", &LessonOptions::selectedIndex2},
    {"selectedIndex3", &LessonOptions::selectedIndex3},
    {"selectedIndex4", &LessonOptions::selectedIndex4},
    {"selectedIndex5", &LessonOptions::selectedIndex5},
    {"selectedIndex6", &LessonOptions::selectedIndex6},
    {"selectedIndex7", &LessonOptions::selectedIndex7},
    {"practiceHintAfter", &LessonOptions::hintAfterMisses, Fix::CLAMP, 0, 5},
    {"practiceFeedbackSounds", &LessonOptions::feedbackSounds},
    {"practiceStrokeNumbers", &LessonOptions::strokeNumbers},
    {"practiceNextWhenDone", &LessonOptions::nextWhenDone},
    {"practiceStrict", &LessonOptions::strictJudging},
    {"practiceGrid", &LessonOptions::practiceGrid, Fix::DEFAULT, LessonOptions::GRID_SQUARES, LessonOptions::GRID_MI},
    {"practiceRounds", &LessonOptions::practiceRounds},
    {"practiceReviewDue", &LessonOptions::reviewDue},
    {"practiceShowMyStrokes", &LessonOptions::showMyStrokes},
    {"practiceRetention", &LessonOptions::desiredRetention, Fix::CHOICE, 80, 95, "", LessonOptions::RETENTION_CHOICES},
    {"practiceNewPerDay", &LessonOptions::newPerDay, Fix::CHOICE, 5, 40, "", review::SessionPlan::NEW_LIMITS},
    {"practiceStartToday", &LessonOptions::startWithToday},
};
// clang-format on

template <typename T>
T checked(const Row& row, T value, T fallback) {
    if constexpr (std::is_same_v<T, bool>) {
        return value;
    } else {
        const long long v = static_cast<long long>(value);
        long long fixed = v;
        switch (row.fix) {
            case Fix::MASK:
                fixed = v & row.max;
                break;
            case Fix::CLAMP:
                fixed = std::clamp(v, row.min, row.max);
                break;
            case Fix::DEFAULT:
                if (v < row.min || v > row.max) fixed = static_cast<long long>(fallback);
                break;
            case Fix::CHOICE:
                if (std::find(row.choices.begin(), row.choices.end(), v) == row.choices.end())
                    fixed = static_cast<long long>(fallback);
                break;
        }
        if (fixed != v && row.fix == Fix::MASK)
            ki::pp_warn("LessonOptions::load, unknown $ bits in $, keeping $", row.bits, v, fixed);
        else if (fixed != v && row.fix == Fix::CHOICE)
            ki::pp_warn("LessonOptions::load, $:$ is not offered, using $", row.key, v, fixed);
        else if (fixed != v)
            ki::pp_warn("LessonOptions::load, $:$ outside $..$, using $", row.key, v, row.min, row.max, fixed);
        return static_cast<T>(fixed);
    }
}

}  // namespace

int& LessonOptions::selection_of(int levelNumber) {
    switch (levelNumber) {
        case 2:
            return selectedIndex2;
        case 3:
            return selectedIndex3;
        case 4:
            return selectedIndex4;
        case 5:
            return selectedIndex5;
        case 6:
            return selectedIndex6;
        case 7:
            return selectedIndex7;
        default:
            return selectedIndex;
    }
}

LessonOptions LessonOptions::load(const ki::store::GNode& node) {
    LessonOptions options;
    for (const Row& row : ROWS) {
        const QString key = QString::fromLatin1(row.key);
        // A key that is absent is no fault on a first run; one of the wrong type is logged by get().
        if (!node.attributes.contains(key)) continue;
        std::visit(
            [&](auto member) {
                using T = std::remove_reference_t<decltype(options.*member)>;
                options.*member = checked<T>(row, node.get<T>(key, DEFAULTS.*member), DEFAULTS.*member);
            },
            row.field);
    }
    options.incSpeedStored =
        node.attributes.value(QStringLiteral("incSpeed")).metaType() == QMetaType::fromType<int>();
    return options;
}

int LessonOptions::stored_level(const ki::store::GNode& node) {
    const QVariant stored = node.attributes.value(QStringLiteral("level"));
    const int level = stored.metaType() == QMetaType::fromType<int>() ? stored.toInt() : DEFAULTS.level;
    return level >= 1 && level <= Level::COUNT ? level : DEFAULTS.level;
}

void LessonOptions::save(ki::store::GNode& node) const {
    for (const Row& row : ROWS)
        std::visit([&](auto member) { node.set(QString::fromLatin1(row.key), QVariant::fromValue(this->*member)); },
                   row.field);
}

int LessonOptions::clamp_selection(int levelNumber, int size) {
    int& chosen = selection_of(levelNumber);
    const int selected = std::clamp(chosen, 0, std::max(0, size - 1));
    if (selected != chosen)
        ki::pp_warn("LessonOptions::clamp_selection, selectedIndex:$ outside the $ characters, using $",
                    chosen, size, selected);
    chosen = selected;
    return selected;
}

}  // namespace morvel::prog2
