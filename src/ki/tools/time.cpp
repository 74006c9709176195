#include <ki/tools/time.h>

#include <ki/str/xprintF.h>

#include <chrono>

namespace ki::time {

long long now() {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

std::string format_compact_hour(long long microseconds, FORM_SECOND form) {
    const char* sign = microseconds < 0 ? "-" : "";
    // Unsigned so that the most negative value still has a magnitude.
    const unsigned long long us = microseconds < 0 ? 0ULL - static_cast<unsigned long long>(microseconds)
                                                   : static_cast<unsigned long long>(microseconds);
    const unsigned long long total_seconds = us / 1000000ULL;
    const unsigned long long hours = total_seconds / 3600ULL;
    const unsigned long long minutes = total_seconds / 60ULL % 60ULL;
    const unsigned long long seconds = total_seconds % 60ULL;
    switch (form) {
        case FORM_SECONDS:
            return str::sprintF("%s%02llu:%02llu:%02llu", sign, hours, minutes, seconds);
        case FORM_MICROSECONDS:
            return str::sprintF("%s%02llu:%02llu:%02llu.%06llu", sign, hours, minutes, seconds,
                                us % 1000000ULL);
        case FORM_MILLISECONDS:
        default:
            return str::sprintF("%s%02llu:%02llu:%02llu.%03llu", sign, hours, minutes, seconds,
                                us / 1000ULL % 1000ULL);
    }
}

}  // namespace ki::time
