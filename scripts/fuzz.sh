#!/usr/bin/env bash
# Builds the fuzz targets (clang, libFuzzer, AddressSanitizer, UndefinedBehaviorSanitizer) and
# runs each of them in turn for a bounded time, on its seeds in fuzz/corpus/<target> plus what
# earlier runs found (kept in the build folder). Fails on any crash, leak, undefined behaviour,
# timeout or memory blow-up; the input that caused it is left in <build>/artifacts/<target>/.
#
# Usage: scripts/fuzz.sh [seconds-per-target] [target...]
#   seconds: the argument, else FUZZ_SECONDS, else 60. Targets: svg_path xml stroke_file
#   level_line level_file gnode argv settings (all when none is named).
#   FUZZ_BUILD_DIR overrides the build folder (build-fuzz).
set -euo pipefail
cd "$(dirname "$0")/.."

SECONDS_EACH=${FUZZ_SECONDS:-60}
if [ $# -gt 0 ] && [[ $1 =~ ^[0-9]+$ ]]; then
  SECONDS_EACH=$1
  shift
fi
TARGETS=("$@")
[ ${#TARGETS[@]} -eq 0 ] && TARGETS=(svg_path xml stroke_file level_line level_file gnode argv settings)
BUILD_DIR=${FUZZ_BUILD_DIR:-build-fuzz}

scripts/install-debs.sh clang-14 libclang-rt-14-dev
CC=clang-14 CXX=clang++-14 scripts/setup.sh "$BUILD_DIR" -DQUENLO_BUILD_FUZZERS=ON -DQUENLO_BUILD_TESTS=OFF
cmake --build "$BUILD_DIR" --target $(printf 'fuzz_%s ' "${TARGETS[@]}")

dictionary_of() {
  case $1 in
    svg_path) echo fuzz/dict/svg_path.dict ;;
    xml | stroke_file) echo fuzz/dict/xml.dict ;;
    level_line | level_file) echo fuzz/dict/level.dict ;;
  esac
}

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-halt_on_error=1:print_stacktrace=1}
export QT_QPA_PLATFORM=offscreen

failed=()
summary=()
for target in "${TARGETS[@]}"; do
  seeds=fuzz/corpus/$target
  work=$BUILD_DIR/corpus/$target
  artifacts=$BUILD_DIR/artifacts/$target
  log=$BUILD_DIR/fuzz_$target.log
  mkdir -p "$work" "$artifacts"
  args=(-max_total_time="$SECONDS_EACH" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1
    -artifact_prefix="$artifacts/")
  dict=$(dictionary_of "$target")
  [ -n "$dict" ] && args+=(-dict="$dict")
  echo "fuzz_$target: ${SECONDS_EACH} s"
  status=0
  "$BUILD_DIR/fuzz_$target" "${args[@]}" "$work" "$seeds" >"$log" 2>&1 || status=$?
  # libFuzzer's last status line carries the coverage: "#N DONE cov: 1234 ft: 5678 ...".
  cov=$(grep -E '^#[0-9]+' "$log" | grep -oE 'cov: [0-9]+ ft: [0-9]+' | tail -n 1 || true)
  rate=$(grep -oE 'stat::average_exec_per_sec: *[0-9]+' "$log" | grep -oE '[0-9]+$' || echo 0)
  runs=$(grep -oE 'stat::number_of_executed_units: *[0-9]+' "$log" | grep -oE '[0-9]+$' || echo 0)
  line=$(printf '%-18s %9s exec/s  %10s runs  %s' "fuzz_$target" "$rate" "$runs" "${cov:-cov: ?}")
  if [ $status -ne 0 ]; then
    line="$line  FAILED (exit $status, see $log)"
    failed+=("$target")
    grep -E 'ERROR|SUMMARY|runtime error|broken promise|Test unit written' "$log" | head -n 8 || true
  fi
  summary+=("$line")
done

echo
printf '%s\n' "${summary[@]}"
if [ ${#failed[@]} -gt 0 ]; then
  echo "fuzzing found faults in: ${failed[*]}"
  exit 1
fi
echo "fuzzing: ${#TARGETS[@]} targets, ${SECONDS_EACH} s each, no findings"
