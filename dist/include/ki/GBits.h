#pragma once
// A set of flag bits held in one unsigned integer.

#include <concepts>

namespace ki {

template <std::unsigned_integral T>
class GBits {
public:
    constexpr GBits() = default;
    constexpr GBits(T bits) : bits_(bits) {}

    /// True when every bit of `mask` is set.
    constexpr bool is_set(T mask) const { return (bits_ & mask) == mask; }
    /// True when at least one bit of `mask` is set.
    constexpr bool is_any_set(T mask) const { return (bits_ & mask) != 0; }
    constexpr bool has_bits() const { return bits_ != 0; }
    constexpr T value() const { return bits_; }

    constexpr void set(T mask) { bits_ |= mask; }
    constexpr void clear(T mask) { bits_ &= ~mask; }
    constexpr void set(T mask, bool on) { on ? set(mask) : clear(mask); }
    constexpr void toggle(T mask) { bits_ ^= mask; }

    constexpr bool operator==(const GBits&) const = default;

private:
    T bits_ = 0;
};

}  // namespace ki
