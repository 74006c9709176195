#!/usr/bin/env bash
# Pronunciation recordings res/zh/fono/<code point>.mp3, synthesised from the
# tone-numbered pinyin of every character of every level whose reading carries a tone mark.
# Neutral-tone readings (no tone mark) get no recording.
#
#   audio.sh          regenerate the recordings
#   audio.sh --check  regenerate into a scratch folder, measure, and compare with the tree
#
# Needs: espeak-ng (voice cmn-latn-pinyin), sox, lame.
set -euo pipefail
export LC_ALL=C.UTF-8

ROOT=$(cd "$(dirname "$0")/../.." && pwd)
LEVELS=("$ROOT"/res/zh/level_*.txt)
DEST="$ROOT/res/zh/fono"
CHECK=0
[[ "${1:-}" == "--check" ]] && CHECK=1

# Slow speech: a learner needs to hear the tone contour.
SPEED=80
# Variable bitrate around 50 kbit/s. Unlike a low constant bitrate, whose frames are too small
# for it, this keeps the Xing frame that tells players the exact length and encoder delay.
VBR_QUALITY=5
MIN_SEC=0.2
MAX_SEC=1.5

for tool in espeak-ng sox lame; do
  command -v "$tool" >/dev/null || { echo "audio.sh: missing tool '$tool'" >&2; exit 2; }
done

WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
OUT="$WORK/fono"
mkdir -p "$OUT"

# "zhōng" -> "zhong1"; prints nothing for a reading without a tone mark.
# The cmn-latn-pinyin voice reads tone numbers; the plain cmn voice reads Latin as English.
tone_numbered() {
  local py=$1 tone=0
  case "$py" in
    *[āēīōūǖ]*) tone=1 ;;
    *[áéíóúǘ]*) tone=2 ;;
    *[ǎěǐǒǔǚ]*) tone=3 ;;
    *[àèìòùǜ]*) tone=4 ;;
  esac
  (( tone == 0 )) && return 0
  local base
  base=$(printf '%s' "$py" | sed 'y/āáǎàēéěèīíǐìōóǒòūúǔùǖǘǚǜü/aaaaeeeeiiiioooouuuuvvvvv/')
  printf '%s%d' "$base" "$tone"
}

fail=0
count=0
while IFS= read -r line; do
  [[ -z "$line" ]] && continue
  code=${line%% =*}
  pinyin=$(printf '%s' "$line" | awk -F'|' '{ gsub(/^ +| +$/, "", $2); print $2 }')
  if [[ ! "$code" =~ ^[0-9]+$ || -z "$pinyin" ]]; then
    echo "audio.sh: cannot read level line '$line'" >&2
    fail=1
    continue
  fi
  if [[ "$pinyin" == *" "* ]]; then
    echo "audio.sh: $code: only single syllables are supported, got '$pinyin'" >&2
    fail=1
    continue
  fi
  word=$(tone_numbered "$pinyin")
  [[ -z "$word" ]] && continue

  espeak-ng -v cmn-latn-pinyin -s "$SPEED" -w "$WORK/raw.wav" "$word"
  # Trim the silence at both ends, fade the cut edges (the first fade works on the reversed
  # sound, so it shapes the tail), and leave headroom for the encoder's overshoot.
  sox -R "$WORK/raw.wav" -r 22050 -c 1 -b 16 "$WORK/clean.wav" \
    silence 1 0.01 -45d reverse silence 1 0.01 -45d fade t 0.02 reverse fade t 0.005 \
    norm -1.5
  lame --quiet --noreplaygain -m m -V "$VBR_QUALITY" --resample 22.05 -q 2 "$WORK/clean.wav" "$OUT/$code.mp3"

  lame --quiet --decode "$OUT/$code.mp3" "$WORK/decoded.wav"
  stats=$(sox "$WORK/decoded.wav" -n stats 2>&1)
  len=$(awk '/^Length s/ { print $3 }' <<<"$stats")
  peak=$(awk '/^Pk lev dB/ { print $4 }' <<<"$stats")
  flat=$(awk '/^Flat factor/ { print $3 }' <<<"$stats")
  if ! awk -v l="$len" -v p="$peak" -v f="$flat" -v lo="$MIN_SEC" -v hi="$MAX_SEC" \
       'BEGIN { exit !(l >= lo && l <= hi && p > -3 && p < 0 && f == 0) }'; then
    echo "audio.sh: $code ($word) out of bounds: length ${len}s, peak ${peak} dB, flat factor $flat" >&2
    fail=1
  fi
  count=$((count + 1))
done < <(cat "${LEVELS[@]}")

(( fail == 0 )) || exit 1

if (( CHECK )); then
  if ! diff -r "$OUT" "$DEST" >/dev/null 2>&1; then
    echo "audio.sh --check: res/zh/fono differs from a fresh build" >&2
    diff -rq "$OUT" "$DEST" >&2 || true
    exit 1
  fi
  echo "audio.sh --check: $count recordings up to date"
else
  rm -rf "$DEST"
  mkdir -p "$DEST"
  cp "$OUT"/*.mp3 "$DEST"/
  echo "audio.sh: wrote $count recordings to res/zh/fono"
fi
