#!/usr/bin/env bash
# Effect sounds of the resource tree, synthesised with sox:
#   res/sounds/quiet.wav              silent 16-bit PCM clip of 198 bytes (44 header + 77 samples),
#                                     looped to keep an audio output open
#   res/sounds/Blop1.wav / .mp3       a stroke accepted: a short rising drop
#   res/sounds/complete.wav/.mp3/.oga a character finished: a plucked major arpeggio
#   res/sounds/error.wav / .mp3       a trace rejected: a soft falling two-note figure
#
#   sounds.sh          regenerate the sounds
#   sounds.sh --check  regenerate into a scratch folder, measure, and compare with the tree
#
# Needs: sox (with its ogg vorbis handler, in libsox-fmt-base), lame.
set -euo pipefail
export LC_ALL=C

ROOT=$(cd "$(dirname "$0")/../.." && pwd)
DEST="$ROOT/res/sounds"
CHECK=0
[[ "${1:-}" == "--check" ]] && CHECK=1

for tool in sox lame; do
  command -v "$tool" >/dev/null || { echo "sounds.sh: missing tool '$tool'" >&2; exit 2; }
done

WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
OUT="$WORK/sounds"
mkdir -p "$OUT"

# -R seeds sox's noise (pluck, dither) and the ogg stream serial with fixed values, so a
# rebuild is byte-identical; the input rate is given before -n so nothing is resampled.
SYNTH=(sox -R -r 22050 -c 1 -n -b 16 -e signed-integer)

sox -D -R -r 8000 -c 1 -n -b 16 -e signed-integer "$OUT/quiet.wav" synth 77s sine 0 vol 0

"${SYNTH[@]}" "$OUT/Blop1.wav" synth 0.14 sine 380-1100 fade q 0.004 0.14 0.11 gain -n -12

# sox plucks only at 44.1 to 48 kHz; one input channel per note, mixed down after the delays.
sox -R -r 44100 -c 4 -n -b 16 -e signed-integer "$OUT/complete.wav" \
  synth 0.55 pluck C5 pluck E5 pluck G5 pluck C6 delay 0 0.07 0.14 0.21 remix - \
  fade q 0.005 0.55 0.15 rate 22050 gain -n -9

"${SYNTH[@]}" "$WORK/e1.wav" synth 0.13 triangle 311 fade q 0.005 0.13 0.05
"${SYNTH[@]}" "$WORK/e2.wav" synth 0.2 triangle 233 fade q 0.005 0.2 0.1
sox -R "$WORK/e1.wav" "$WORK/e2.wav" "$OUT/error.wav" gain -n -12

for name in Blop1 complete error; do
  lame --quiet --noreplaygain -m m -V 5 --resample 22.05 -q 2 "$OUT/$name.wav" "$OUT/$name.mp3"
done
sox -R "$OUT/complete.wav" -t ogg -C 3 "$OUT/complete.oga"

fail=0
size=$(stat -c %s "$OUT/quiet.wav")
if (( size != 198 )); then
  echo "sounds.sh: quiet.wav has $size bytes, expected 198" >&2
  fail=1
fi
for name in Blop1 complete error; do
  stats=$(sox "$OUT/$name.wav" -n stats 2>&1)
  len=$(awk '/^Length s/ { print $3 }' <<<"$stats")
  peak=$(awk '/^Pk lev dB/ { print $4 }' <<<"$stats")
  # Effects sit well below the pronunciations so they never drown them.
  if ! awk -v l="$len" -v p="$peak" 'BEGIN { exit !(l > 0.05 && l < 0.6 && p <= -6 && p > -20) }'; then
    echo "sounds.sh: $name.wav out of bounds: length ${len}s, peak ${peak} dB" >&2
    fail=1
  fi
done
(( fail == 0 )) || exit 1

if (( CHECK )); then
  status=0
  for f in "$OUT"/*; do
    rel=sounds/$(basename "$f")
    cmp -s "$f" "$ROOT/res/$rel" || { echo "sounds.sh --check: res/$rel differs from a fresh build" >&2; status=1; }
  done
  (( status == 0 )) && echo "sounds.sh --check: sounds up to date"
  exit $status
fi

mkdir -p "$DEST"
cp "$OUT"/* "$DEST"/
echo "sounds.sh: wrote $(ls "$OUT" | wc -l) sounds to res/sounds"
