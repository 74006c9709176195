#include "app/stroke/ControlAnim.h"

#include <ki/log/GLog.h>
#include <ki/store/GNode.h>
#include <ki/str/xprintF.h>

#include <QVariant>
#include <algorithm>

namespace morvel::prog2 {

namespace {
const QString KEY_MODE_FLAGS = QStringLiteral("ControlAnim.modeFlags");
const QString KEY_INC_SPEED = QStringLiteral("incSpeed");
}  // namespace

void ControlAnim::config_load(ki::store::GNode& node) {
    set_mode_flags(node.get<unsigned int>(KEY_MODE_FLAGS, MODE_FLAGS_DEFAULT));
    set_inc_speed(node.get<int>(KEY_INC_SPEED, INC_SPEED_DEFAULT));
}

void ControlAnim::config_save(ki::store::GNode& node) const {
    node.set(KEY_MODE_FLAGS, QVariant::fromValue(modeFlags));
    node.set(KEY_INC_SPEED, QVariant::fromValue(incSpeed));
}

void ControlAnim::set_mode_flags(unsigned int flags) {
    modeFlagsPending = flags;
    if (flags != modeFlags && liModeChanged.has_listener()) liModeChanged.fire_event();
    modeFlags = flags;
}

void ControlAnim::set_mode_bits(unsigned int bits, bool on) {
    set_mode_flags(on ? (modeFlags | bits) : (modeFlags & ~bits));
}

void ControlAnim::set_inc_speed(int speed) {
    incSpeed = std::clamp(speed, INC_SPEED_MIN, INC_SPEED_MAX);
}

std::string ControlAnim::to_string() const {
    return ki::str::xprintF(0, "ControlAnim{modeFlags:$, incSpeed:$}", modeFlags, incSpeed);
}

}  // namespace morvel::prog2
