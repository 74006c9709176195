#!/usr/bin/env bash
# Benchmarks: builds a Release tree in build-bench with the benchmarks switched on, runs
# quenlo_bench (JSON into bench/results/latest.json, medians of 5 repetitions on the console),
# then measures start-up to the first painted frame and peak memory of quenlo against a bare Qt
# Widgets program. Everything runs offscreen (QT_QPA_PLATFORM=offscreen), with settings in a
# temporary folder. Extra arguments go to quenlo_bench, e.g. --benchmark_filter=Judge.
# Set QUENLO_BENCH_RUNS to change the number of start-up runs (default 15),
# QUENLO_BENCH_STARTUP_ONLY=1 to skip the micro-benchmarks (and their build),
# QUENLO_BENCH_BUILD_TYPE to measure another CMake build type than Release,
# QUENLO_BENCH_BUILD_DIR to build somewhere else than build-bench and QUENLO_BENCH_BEFORE to a
# build folder of an earlier quenlo (built alike) to measure it in the same runs, in turn with
# this one and the bare program: the tables then have a "before" column.
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD_DIR=${QUENLO_BENCH_BUILD_DIR:-build-bench}
RUNS=${QUENLO_BENCH_RUNS:-15}
BUILD_TYPE=${QUENLO_BENCH_BUILD_TYPE:-Release}
STARTUP_ONLY=${QUENLO_BENCH_STARTUP_ONLY:-0}
BEFORE=${QUENLO_BENCH_BEFORE:-}
if [ -n "$BEFORE" ] && [ ! -x "$BEFORE/quenlo" ]; then
  echo "bench.sh: QUENLO_BENCH_BEFORE='$BEFORE' holds no quenlo program" >&2
  exit 2
fi
RESULTS=bench/results
export QT_QPA_PLATFORM=offscreen
export LC_ALL=C

scripts/setup.sh "$BUILD_DIR" -DCMAKE_BUILD_TYPE="$BUILD_TYPE" -DQUENLO_BUILD_BENCH=ON
scripts/install-debs.sh libbenchmark-dev time
# Configured again: the first configure may have run before Google Benchmark was installed.
cmake -S . -B "$BUILD_DIR" -DCMAKE_BUILD_TYPE="$BUILD_TYPE" -DQUENLO_BUILD_BENCH=ON >/dev/null
targets=(quenlo bench_bare_label)
[ "$STARTUP_ONLY" = 1 ] || targets+=(quenlo_bench)
cmake --build "$BUILD_DIR" --target "${targets[@]}"

mkdir -p "$RESULTS"
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/data" XDG_CACHE_HOME="$home/cache"

echo "== $(nproc) cores, load: $(cut -d' ' -f1-3 /proc/loadavg)"
if [ "$STARTUP_ONLY" != 1 ]; then
  echo "== micro-benchmarks (median of 5 repetitions)"
  "$BUILD_DIR/quenlo_bench" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
    --benchmark_out="$RESULTS/latest.json" --benchmark_out_format=json "$@" 2>/dev/null |
    awk '/^Benchmark|^---/ || /_median / {print}'
fi

# The median of the numbers on standard input.
median() { sort -n | awk '{v[NR] = $1} END {if (NR == 0) print "n/a"; else if (NR % 2) print v[(NR + 1) / 2]; else print (v[NR / 2] + v[NR / 2 + 1]) / 2}'; }

# The time from launch to the first painted frame of one run of "$@", prefixed with "$tag", and
# the time of each start-up step quenlo prints ("$tag step:<name> <ms>").
first_frame() {
  local tag=$1
  shift
  { QUENLO_BENCH_T0=$EPOCHREALTIME "$@" 2>/dev/null || true; } |
    sed -n -e "s/^quenlo-bench first-frame-ms:/$tag /p" -e "s/^quenlo-bench \(step:[a-z]*\) ms:/$tag \1 /p"
}

# Milliseconds from the first frame to the first recording handed to the player (the visit
# selects the first character right after the frame; with an audio device play() follows at
# once), from the log's time stamps of one run.
first_sound_ms() {
  { QUENLO_BENCH_STARTUP=1 "$1" -__log_level debug 2>/dev/null || true; } | awk '
    function ms(s, p) { split(s, p, ":"); return (p[1] * 3600 + p[2] * 60 + p[3]) * 1000 }
    /^quenlo-bench first-frame-ms:/ {frame = 1; next}
    frame == 1 && /^\[/ {gsub(/[][]/, "", $3); t0 = ms($3); frame = 2}
    frame == 2 && /GSound::play_sound,  \047/ {gsub(/[][]/, "", $3); printf "%.0f\n", ms($3) - t0; exit}'
}

# Peak resident memory in MB of one run of "$@".
peak_rss_mb() {
  { /usr/bin/time -f 'rss-kb:%M' "$@" 2>&1 >/dev/null || true; } | sed -n 's/^rss-kb://p' | awk '{printf "%.1f", $1 / 1024}'
}

echo "== start-up to the first painted frame, median of $RUNS runs, offscreen"
# One run of each first: it writes quenlo's settings, as a returning learner has them, and warms
# the file cache for both.
QUENLO_BENCH_STARTUP=1 "$BUILD_DIR/quenlo" >/dev/null 2>&1 || true
[ -z "$BEFORE" ] || QUENLO_BENCH_STARTUP=1 "$BEFORE/quenlo" >/dev/null 2>&1 || true
"$BUILD_DIR/bench_bare_label" >/dev/null 2>&1 || true
# quenlo (and the earlier one) and the bare program in turn, so that all see the same load.
pair_runs=$(for _ in $(seq "$RUNS"); do
  QUENLO_BENCH_STARTUP=1 first_frame q "$BUILD_DIR/quenlo"
  [ -z "$BEFORE" ] || QUENLO_BENCH_STARTUP=1 first_frame p "$BEFORE/quenlo"
  first_frame b "$BUILD_DIR/bench_bare_label"
  first_frame t "$BUILD_DIR/bench_bare_label" --texts
done)
quenlo_ms=$(awk '$1 == "q" && NF == 2 {print $2}' <<<"$pair_runs" | median)
before_ms=$(awk '$1 == "p" && NF == 2 {print $2}' <<<"$pair_runs" | median)
bare_ms=$(awk '$1 == "b" && NF == 2 {print $2}' <<<"$pair_runs" | median)
texts_ms=$(awk '$1 == "t" && NF == 2 {print $2}' <<<"$pair_runs" | median)
visit_ms=$(for _ in $(seq 5); do { QUENLO_BENCH_STARTUP=1 "$BUILD_DIR/quenlo" 2>/dev/null || true; } |
  sed -n 's/^quenlo-bench visited:[0-9]* ms://p'; done | median)
sound_ms=$(for _ in $(seq 5); do first_sound_ms "$BUILD_DIR/quenlo"; done | median)
before_sound_ms=n/a
[ -z "$BEFORE" ] || before_sound_ms=$(for _ in $(seq 5); do first_sound_ms "$BEFORE/quenlo"; done | median)
rss_runs=$(for _ in 1 2 3; do
  echo "q $(QUENLO_BENCH_STARTUP=1 peak_rss_mb "$BUILD_DIR/quenlo")"
  [ -z "$BEFORE" ] || echo "p $(QUENLO_BENCH_STARTUP=1 peak_rss_mb "$BEFORE/quenlo")"
  echo "b $(peak_rss_mb "$BUILD_DIR/bench_bare_label")"
done)
quenlo_rss=$(awk '$1 == "q" {print $2}' <<<"$rss_runs" | median)
before_rss=$(awk '$1 == "p" {print $2}' <<<"$rss_runs" | median)
bare_rss=$(awk '$1 == "b" {print $2}' <<<"$rss_runs" | median)
# Level 1 and level 7 started in turn, so that both see the same load; --level keeps the level,
# each run reads only its own.
level_runs=$(for _ in $(seq "$RUNS"); do
  for level in 1 7; do
    { QUENLO_BENCH_T0=$EPOCHREALTIME QUENLO_BENCH_STARTUP=1 "$BUILD_DIR/quenlo" --level "$level" 2>/dev/null || true; } |
      sed -n "s/^quenlo-bench first-frame-ms:/$level /p"
  done
done)
level1_ms=$(awk '$1 == 1 {print $2}' <<<"$level_runs" | median)
level7_ms=$(awk '$1 == 7 {print $2}' <<<"$level_runs" | median)

{
  ratio() { awk -v a="$1" -v b="$2" 'BEGIN {if (a + 0 > 0 && b + 0 > 0) printf "%.2f", a / b; else print "n/a"}'; }
  plus() { awk -v a="$1" -v b="$2" 'BEGIN {if (a + 0 > 0 && b + 0 > 0) printf "+%.1f", a - b; else print "n/a"}'; }
  printf '%-32s %10s %10s %8s' "" quenlo bare ratio
  [ -z "$BEFORE" ] && echo || printf ' %10s %8s\n' before ratio
  printf '%-32s %10s %10s %8s' "first frame (ms)" "$quenlo_ms" "$bare_ms" "$(ratio "$quenlo_ms" "$bare_ms")"
  [ -z "$BEFORE" ] && echo || printf ' %10s %8s\n' "$before_ms" "$(ratio "$before_ms" "$bare_ms")"
  # The label with the other text sizes of quenlo's first frame and its Han line: the share of
  # quenlo's time that any window showing those texts pays.
  printf '%-32s %10s %10s %8s\n' "  bare with quenlo's texts (ms)" "" "$texts_ms" "$(ratio "$texts_ms" "$bare_ms")"
  printf '%-32s %10s %10s %8s\n' "first frame, level 7 vs 1 (ms)" "$level7_ms" "$level1_ms" "$(ratio "$level7_ms" "$level1_ms")"
  printf '%-32s %10s %10s %8s' "peak RSS after all 87 (MB)" "$quenlo_rss" "$bare_rss" "$(plus "$quenlo_rss" "$bare_rss")"
  [ -z "$BEFORE" ] && echo || printf ' %10s %8s\n' "$before_rss" "$(plus "$before_rss" "$bare_rss")"
  printf '%-32s %10s\n' "visiting all 87, painted (ms)" "$visit_ms"
  printf '%-32s %10s' "first frame to first sound (ms)" "$sound_ms"
  [ -z "$BEFORE" ] && echo || printf ' %21s\n' "$before_sound_ms"
  # The steps of quenlo's start-up (median ms since launch), this build against the earlier one.
  echo
  printf '%-32s %10s' "start-up step (ms since launch)" quenlo
  [ -z "$BEFORE" ] && echo || printf ' %10s\n' before
  for step in main settings application ini fonts window shown; do
    printf '%-32s %10s' "  $step" "$(awk -v s="step:$step" '$1 == "q" && $2 == s {print $3}' <<<"$pair_runs" | median)"
    [ -z "$BEFORE" ] && echo ||
      printf ' %10s\n' "$(awk -v s="step:$step" '$1 == "p" && $2 == s {print $3}' <<<"$pair_runs" | median)"
  done
  printf '%-32s %10s' "  first frame" "$quenlo_ms"
  [ -z "$BEFORE" ] && echo || printf ' %10s\n' "$before_ms"
} | tee "$RESULTS/startup-latest.txt"
