#include "app/practice/Rejection.h"

#include <array>
#include <utility>

namespace morvel::practice {

namespace {

const std::array<std::pair<Reason, const char*>, 12> KEYS{{
    {Reason::WRONG_STROKE, "wrong_stroke"},
    {Reason::BACKWARDS, "backwards"},
    {Reason::START, "start"},
    {Reason::STRAYED, "strayed"},
    {Reason::END, "end"},
    {Reason::TOO_SHORT, "too_short"},
    {Reason::MISSED_PART, "missed_part"},
    {Reason::NOT_SMOOTH, "not_smooth"},
    {Reason::OFF_PLACE, "off_place"},
    {Reason::HOOK_MISSING, "hook_missing"},
    {Reason::TURN_MISSING, "turn_missing"},
    {Reason::TOO_LONG, "too_long"},
}};

}  // namespace

QString reason_key(Reason reason) {
    for (const auto& [r, key] : KEYS)
        if (r == reason) return QString::fromLatin1(key);
    return {};
}

Reason reason_from_key(const QString& key) {
    for (const auto& [r, k] : KEYS)
        if (key == QLatin1String(k)) return r;
    return Reason::NONE;
}

}  // namespace morvel::practice
