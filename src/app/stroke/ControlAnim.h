#pragma once
// The mode bits and speed of the character animation, persisted in the window's settings
// node. The bits themselves are read by the main window and its options menu.

#include <ki/Listener.h>

namespace ki::store {
class GNode;
}

namespace morvel::prog2 {

class ControlAnim {
public:
    static constexpr unsigned int MODE_FLAGS_DEFAULT = 23;
    static constexpr int INC_SPEED_DEFAULT = 5;
    static constexpr int INC_SPEED_MIN = 1;
    static constexpr int INC_SPEED_MAX = 8;

    /// Reads "ControlAnim.modeFlags" (default 23) and "incSpeed" (default 5, kept in 1..8).
    void config_load(ki::store::GNode& node);
    void config_save(ki::store::GNode& node) const;

    unsigned int get_mode_flags() const { return modeFlags; }
    /// The value being announced; equal to the mode flags outside an announcement.
    unsigned int get_mode_flags_pending() const { return modeFlagsPending; }
    /// Fires liModeChanged when the word changes; listeners still see the old word as
    /// current and the new one as pending.
    void set_mode_flags(unsigned int flags);
    void set_mode_bits(unsigned int bits, bool on);
    bool is_mode_bit(unsigned int bits) const { return (modeFlags & bits) != 0; }

    int get_inc_speed() const { return incSpeed; }
    /// Clamped to INC_SPEED_MIN..INC_SPEED_MAX.
    void set_inc_speed(int speed);

    std::string to_string() const;

    ki::Listener<ki::NO_PAYLOAD> liModeChanged;

private:
    unsigned int modeFlags = MODE_FLAGS_DEFAULT;
    unsigned int modeFlagsPending = MODE_FLAGS_DEFAULT;
    int incSpeed = INC_SPEED_DEFAULT;
};

}  // namespace morvel::prog2
