#!/usr/bin/env bash
# The installed application icon: res/icons/quenlo.svg rendered into the hicolor theme
# sizes under dist/linux/icons/hicolor, plus the SVG itself as the scalable variant.
#
#   desktop.sh          regenerate the icons
#   desktop.sh --check  render into a scratch folder and compare with the tree
#
# Needs: librsvg2-bin (rsvg-convert). Run after icons.mjs, which writes the SVG.
set -euo pipefail

ROOT=$(cd "$(dirname "$0")/../.." && pwd)
SVG="$ROOT/res/icons/quenlo.svg"
DEST="$ROOT/dist/linux/icons/hicolor"
SIZES=(16 22 24 32 48 64 128 256)
CHECK=0
[[ "${1:-}" == "--check" ]] && CHECK=1

command -v rsvg-convert >/dev/null || { echo "desktop.sh: missing tool 'rsvg-convert'" >&2; exit 2; }
[[ -f "$SVG" ]] || { echo "desktop.sh: missing '$SVG', run icons.mjs first" >&2; exit 2; }

WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT

for s in "${SIZES[@]}"; do
  mkdir -p "$WORK/${s}x${s}/apps"
  rsvg-convert -w "$s" -h "$s" -f png -o "$WORK/${s}x${s}/apps/quenlo.png" "$SVG"
done
mkdir -p "$WORK/scalable/apps"
cp "$SVG" "$WORK/scalable/apps/quenlo.svg"

if (( CHECK )); then
  if ! diff -r "$WORK" "$DEST" >/dev/null 2>&1; then
    echo "desktop.sh --check: dist/linux/icons/hicolor differs from a fresh render" >&2
    diff -rq "$WORK" "$DEST" >&2 || true
    exit 1
  fi
  echo "desktop.sh --check: application icons up to date"
else
  rm -rf "$DEST"
  mkdir -p "$DEST"
  cp -r "$WORK"/. "$DEST"/
  echo "desktop.sh: wrote ${#SIZES[@]} PNG sizes and the scalable icon to dist/linux/icons/hicolor"
fi
