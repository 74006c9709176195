#pragma once
// Monotonic time in microseconds and the compact rendering of elapsed times.

#include <string>

namespace ki::time {

/// How much of the sub-second part an elapsed time shows.
enum FORM_SECOND : unsigned int {
    FORM_MILLISECONDS = 0,  ///< "hh:mm:ss.mmm"
    FORM_SECONDS = 1,       ///< "hh:mm:ss"
    FORM_MICROSECONDS = 2,  ///< "hh:mm:ss.uuuuuu"
};

/// Microseconds on a monotonic clock; only differences between two values are meaningful.
long long now();

/// The compact hour form of an elapsed time given in microseconds, for instance
/// "00:01:05.250". Hours grow past two digits rather than wrapping; a negative time gets a
/// leading "-".
std::string format_compact_hour(long long microseconds, FORM_SECOND form = FORM_MILLISECONDS);

}  // namespace ki::time
