#pragma once
// Start-up measurement for scripts/bench.sh. With the environment variable
// QUENLO_BENCH_STARTUP=1 the program prints the time from its launch to the first painted frame
// of the main window, then selects every character of the level once (each painted), prints
// how long that took and quits. Without the variable nothing changes.
//
// Launch time: QUENLO_BENCH_T0, seconds since the epoch with a fraction (bash's
// $EPOCHREALTIME taken right before the launch), so that loading the libraries counts too;
// without it, the moment the program's static initialisation ran.
//
// Output, on standard output whatever the log level:
//   quenlo-bench first-frame-ms:<ms>
//   quenlo-bench visited:<count> ms:<ms>

#include <functional>

class QWidget;

namespace morvel {

class BenchHooks {
public:
    static constexpr const char* ENV_STARTUP = "QUENLO_BENCH_STARTUP";
    static constexpr const char* ENV_T0 = "QUENLO_BENCH_T0";
    /// "0": the program ends at the first frame, before the work queued behind it.
    static constexpr const char* ENV_VISIT = "QUENLO_BENCH_VISIT";

    /// QUENLO_BENCH_STARTUP is set to 1.
    static bool is_startup_requested();

    /// When requested, watches `window` for its first paint and then runs the visit of
    /// `count` characters through `select` (called with 0 .. count - 1). Call it before the
    /// window is shown. Returns whether the measurement is armed.
    static bool arm_startup(QWidget& window, int count, std::function<void(int)> select);

    /// Milliseconds since the launch as described above.
    static double ms_since_launch();
};

}  // namespace morvel
