#!/usr/bin/env bash
# Sets up, builds and runs the whole test suite; then builds it once more with AddressSanitizer
# and UndefinedBehaviorSanitizer (folder build-asan) and runs it again, so that memory errors,
# leaks in our code and undefined behaviour fail the run too. Exits non-zero when a test fails.
# QUENLO_SKIP_SANITIZE=1 runs the plain suite only.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh build
cmake --build build
ctest --test-dir build --output-on-failure -j"$(nproc)"
QT_QPA_PLATFORM=offscreen ./build/quenlo_tests --gtest_repeat=2 --gtest_shuffle --gtest_brief=1

[ "${QUENLO_SKIP_SANITIZE:-0}" = 1 ] && exit 0
# Exported before the build as well: test discovery already runs the instrumented binary.
# Leaks inside system libraries are suppressed by name (scripts/lsan.supp), ours never are.
export ASAN_OPTIONS=detect_leaks=1
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
scripts/setup.sh build-asan -DQUENLO_SANITIZE=ON
cmake --build build-asan --target quenlo_tests quenlo
ctest --test-dir build-asan --output-on-failure -j"$(nproc)"
