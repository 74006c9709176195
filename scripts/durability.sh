#!/usr/bin/env bash
# Kills quenlo at random moments and checks that no judged trace is lost.
#
# Usage: scripts/durability.sh [kills] [build-dir]      (defaults: 500 kills, build dir "build")
#
# The real program runs under its own Xvfb with a temporary home. xdotool traces the one stroke
# of 一 (the first character of level 1) on the canvas: along the stroke (accepted, the
# character is complete) or across it (rejected), with Ctrl+R before each trace so that every
# trace is judged. Each run ends with SIGKILL: half of the kills come within 40 ms after a mouse
# release, the other half at a random moment of the run, start-up included. After each kill the
# script compares the traces the program reported as judged (its debug line
# "LessonRecorder::trace, judged", printed once the trace is recorded) with the new rows of the
# `traces` table, and `PRAGMA integrity_check` must answer "ok".
#
# Prints one line per 50 kills and a summary; exit code 0 when nothing was lost and the file
# was always intact. Needs Xvfb, xdotool and sqlite3 (scripts/setup.sh installs them).
set -euo pipefail
cd "$(dirname "$0")/.."

KILLS=${1:-500}
BUILD_DIR=${2:-build}
PROGRAM=$(realpath "$BUILD_DIR/quenlo")
[ -x "$PROGRAM" ] || { echo "durability: $PROGRAM not built" >&2; exit 2; }
for tool in Xvfb xdotool sqlite3; do
  command -v "$tool" >/dev/null || { echo "durability: $tool is missing (scripts/setup.sh)" >&2; exit 2; }
done

WORK=$(mktemp -d /tmp/quenlo-durability.XXXXXX)
XVFB_PID=
cleanup() {
  [ -n "$XVFB_PID" ] && kill "$XVFB_PID" 2>/dev/null
  rm -rf "$WORK"
}
trap cleanup EXIT

# A display of our own: -displayfd names a free one.
Xvfb -displayfd 3 -screen 0 1280x900x24 -nolisten tcp 3>"$WORK/display" 2>"$WORK/xvfb.log" &
XVFB_PID=$!
for _ in $(seq 100); do [ -s "$WORK/display" ] && break; sleep 0.1; done
export DISPLAY=":$(head -n1 "$WORK/display")"

export HOME="$WORK/home" XDG_DATA_HOME="$WORK/home/data" XDG_CONFIG_HOME="$WORK/home/config"
export XDG_CACHE_HOME="$WORK/home/cache"
mkdir -p "$HOME"
DB="$XDG_DATA_HOME/qlo.de/quenlo/progress.sqlite"

# Milliseconds as sleep's seconds.
pause() { sleep "$(printf '%d.%03d' $(($1 / 1000)) $(($1 % 1000)))"; }

# One trace from the start circle of 一 to its end (accepted) or down across it (rejected), in
# window coordinates of the 1024 x 750 window.
trace() {
  local win=$1 accepted=$2 points
  if [ "$accepted" = 1 ]; then
    points="303,336 360,335 440,334 520,333 600,333 680,332 760,331 822,331"
  else
    points="560,150 560,220 560,290 560,360 560,430 560,500"
  fi
  local first=${points%% *}
  xdotool mousemove --window "$win" "${first%,*}" "${first#*,}" mousedown 1
  for point in ${points#* }; do
    xdotool mousemove --window "$win" "${point%,*}" "${point#*,}"
  done
  xdotool mouseup 1
}

judged_total=0 rows_before=0 lost=0 unreported=0 damaged=0 near=0 anywhere=0 ended=0 no_display=0
for run in $(seq "$KILLS"); do
  log="$WORK/run.log"
  xdotool mouseup 1 2>/dev/null || true
  "$PROGRAM" >"$log" 2>&1 &
  pid=$!
  killer=
  if [ $((run % 2)) = 0 ]; then
    anywhere=$((anywhere + 1))
    (pause $((RANDOM % 5000)); kill -9 "$pid" 2>/dev/null) &
    killer=$!
  else
    near=$((near + 1))
  fi
  win=
  for _ in $(seq 100); do
    kill -0 "$pid" 2>/dev/null || break
    win=$(xdotool search --onlyvisible --pid "$pid" --name '^quenlo' 2>/dev/null | head -n1 || true)
    [ -n "$win" ] && break
    sleep 0.1
  done
  if [ -n "$win" ]; then
    # The history is opened after the first frame.
    pause $((200 + RANDOM % 300))
    strokes=$((1 + RANDOM % 6))
    for stroke in $(seq "$strokes"); do
      kill -0 "$pid" 2>/dev/null || break
      xdotool key --window "$win" ctrl+r 2>/dev/null || break
      trace "$win" $((RANDOM % 3 != 0)) 2>/dev/null || break
      if [ -z "$killer" ] && [ "$stroke" = "$strokes" ]; then
        pause $((RANDOM % 41))
        kill -9 "$pid" 2>/dev/null || true
      else
        pause $((30 + RANDOM % 200))
      fi
    done
  fi
  {
    if [ -n "$killer" ]; then wait "$killer" || true; fi
    kill -9 "$pid" || true
    status=0
    wait "$pid" || status=$?
  } 2>/dev/null
  # 137 is the kill; anything else ended the program before it. A loaded Xvfb now and then
  # refuses a connection: Qt's platform plugin then aborts before the program runs at all.
  if grep -q "could not connect to display" "$log"; then
    no_display=$((no_display + 1))
  elif [ "$status" != 137 ]; then
    ended=$((ended + 1))
    echo "run $run: quenlo ended by itself (status $status): $(head -n1 "$log" | cut -c1-160)"
  fi

  judged=$(grep -c "LessonRecorder::trace, judged" "$log" || true)
  judged_total=$((judged_total + judged))
  rows=0
  if [ -f "$DB" ]; then
    check=$(sqlite3 "$DB" "PRAGMA integrity_check;" 2>&1 | head -n1)
    if [ "$check" != ok ]; then
      damaged=$((damaged + 1))
      echo "run $run: integrity_check says: $check"
    fi
    rows=$(sqlite3 "$DB" "SELECT COUNT(*) FROM traces;" 2>/dev/null || echo 0)
  fi
  new=$((rows - rows_before))
  rows_before=$rows
  if [ "$new" -lt "$judged" ]; then
    lost=$((lost + judged - new))
    echo "run $run: $judged traces judged, $new written"
  elif [ "$new" -gt "$judged" ]; then
    # Written, then killed before the line was printed: kept, nothing lost.
    unreported=$((unreported + new - judged))
  fi
  [ $((run % 50)) = 0 ] && echo "after $run kills: $judged_total traces judged, $rows rows, $lost lost"
done

echo "durability: $KILLS kills ($near within 40 ms after a mouse release, $anywhere at random moments)"
echo "durability: $judged_total traces judged, $rows_before rows in the history ($unreported written but killed before reported), $lost lost"
echo "durability: integrity_check not ok after $damaged kills; $ended runs ended before their kill;" \
  "$no_display starts found no display connection"
[ "$lost" = 0 ] && [ "$damaged" = 0 ] && [ "$ended" = 0 ]
