#!/usr/bin/env bash
# Pronunciation recordings res/zh/fono/<syllable>.mp3 ("zhong1.mp3", "lv4.mp3"), one per
# tone-numbered syllable read by any character of any level, and the index
# res/zh/fono/index.txt that leads from a character's code point to its recording
# ("20013 zhong1", one line per character, ascending code points). Characters that read the
# same toned syllable share one recording. Neutral-tone readings (no tone mark) get none.
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

# Synthesises the recording "$OUT/<word>.mp3" of one tone-numbered syllable and checks its
# decoded length, peak and clipping; prints the reason and fails when it is out of bounds.
synthesise() {
  local word=$1 tmp amplitude
  tmp=$(mktemp -d -p "$WORK")
  # espeak's own amplitude first; a few syllables clip at it and are spoken more quietly
  # (the normalisation below brings them back to the common peak).
  for amplitude in "" 70 50; do
    espeak-ng -v cmn-latn-pinyin -s "$SPEED" ${amplitude:+-a "$amplitude"} -w "$tmp/raw.wav" "$word"
    # Trim the silence at both ends, fade the cut edges (the first fade works on the reversed
    # sound, so it shapes the tail), and leave headroom for the encoder's overshoot.
    sox -R "$tmp/raw.wav" -r 22050 -c 1 -b 16 "$tmp/clean.wav" \
      silence 1 0.01 -45d reverse silence 1 0.01 -45d fade t 0.02 reverse fade t 0.005 \
      norm -1.5
    lame --quiet --noreplaygain -m m -V "$VBR_QUALITY" --resample 22.05 -q 2 "$tmp/clean.wav" "$OUT/$word.mp3"

    lame --quiet --decode "$OUT/$word.mp3" "$tmp/decoded.wav"
    local stats len peak flat
    stats=$(sox "$tmp/decoded.wav" -n stats 2>&1)
    len=$(awk '/^Length s/ { print $3 }' <<<"$stats")
    peak=$(awk '/^Pk lev dB/ { print $4 }' <<<"$stats")
    flat=$(awk '/^Flat factor/ { print $3 }' <<<"$stats")
    awk -v f="$flat" 'BEGIN { exit !(f == 0) }' && break
  done
  rm -rf "$tmp"
  if ! awk -v l="$len" -v p="$peak" -v f="$flat" -v lo="$MIN_SEC" -v hi="$MAX_SEC" \
       'BEGIN { exit !(l >= lo && l <= hi && p > -3 && p < 0 && f == 0) }'; then
    echo "audio.sh: $word out of bounds: length ${len}s, peak ${peak} dB, flat factor $flat" >&2
    return 1
  fi
}

# The index, and the syllables it names, from the level rows in ascending code-point order.
fail=0
: > "$OUT/index.txt"
while IFS= read -r line; do
  [[ -z "$line" ]] && continue
  code=${line%% =*}
  # "20013 = { 中 | zhōng | ... }": the second field
  pinyin=${line#*|}
  pinyin=${pinyin%%|*}
  pinyin=${pinyin# }
  pinyin=${pinyin% }
  if [[ ! "$code" =~ ^[0-9]+$ || -z "$pinyin" || "$line" != *"|"* ]]; then
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
  printf '%s %s\n' "$code" "$word" >> "$OUT/index.txt"
done < <(cat "${LEVELS[@]}" | sort -n)
(( fail == 0 )) || exit 1

# Each syllable once, several at a time: the syllables do not depend on each other.
export -f synthesise
export WORK OUT SPEED VBR_QUALITY MIN_SEC MAX_SEC
awk '{ print $2 }' "$OUT/index.txt" | sort -u > "$WORK/words.txt"
count=$(wc -l < "$WORK/words.txt")
xargs -P "$(nproc)" -n 1 bash -c 'synthesise "$1"' _ < "$WORK/words.txt" || fail=1

(( fail == 0 )) || exit 1

if (( CHECK )); then
  if ! diff -r "$OUT" "$DEST" >/dev/null 2>&1; then
    echo "audio.sh --check: res/zh/fono differs from a fresh build" >&2
    diff -rq "$OUT" "$DEST" >&2 || true
    exit 1
  fi
  echo "audio.sh --check: $count recordings and the index up to date"
else
  rm -rf "$DEST"
  mkdir -p "$DEST"
  cp "$OUT"/*.mp3 "$OUT"/index.txt "$DEST"/
  echo "audio.sh: wrote $count recordings and their index to res/zh/fono"
fi
