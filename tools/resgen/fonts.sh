#!/usr/bin/env bash
# The two fonts of the resource tree:
#   res/fonts/LXGWWenKai-Regular.ttf   Debian's LXGW WenKai Regular, cut down to the glyphs the
#                                      program can show (level files, Latin, pinyin, Cyrillic,
#                                      punctuation) and renamed as OFL asks of a modified font
#   res/fonts/SourceCodePro-Regular.ttf unchanged from the npm package source-code-pro
#
#   fonts.sh          regenerate both fonts and their licence texts under licenses/
#   fonts.sh --check  regenerate into a scratch folder and compare with the tree
#
# Needs: fonts-lxgw-wenkai, fonttools (pyftsubset), python3-fonttools, npm install in tools/resgen.
set -euo pipefail
export LC_ALL=C.UTF-8

HERE=$(cd "$(dirname "$0")" && pwd)
ROOT=$(cd "$HERE/../.." && pwd)
LEVELS=("$ROOT"/res/zh/level_*.txt)
WENKAI_SRC=/usr/share/fonts/truetype/lxgw-wenkai/LXGWWenKai-Regular.ttf
WENKAI_COPYRIGHT=/usr/share/doc/fonts-lxgw-wenkai/copyright
SCP_PKG="$HERE/node_modules/source-code-pro"
CHECK=0
[[ "${1:-}" == "--check" ]] && CHECK=1

# "LXGW" is a Reserved Font Name: a subset must not present itself under it.
FAMILY="Quenlo WenKai"
POSTSCRIPT="QuenloWenKai-Regular"

for f in "$WENKAI_SRC" "$WENKAI_COPYRIGHT" "$SCP_PKG/TTF/SourceCodePro-Regular.ttf" "${LEVELS[@]}"; do
  [[ -f "$f" ]] || { echo "fonts.sh: missing input '$f'" >&2; exit 2; }
done
command -v pyftsubset >/dev/null || { echo "fonts.sh: missing tool 'pyftsubset'" >&2; exit 2; }

WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
mkdir -p "$WORK/fonts" "$WORK/licenses"

# Basic Latin, Latin-1, the pinyin vowels with tone marks (both cases), Cyrillic,
# general and CJK punctuation, full-width forms.
UNICODES="U+0020-007E,U+00A0-00FF,U+0100-0101,U+0112-0113,U+011A-011B,U+012A-012B,U+014C-014D,\
U+016A-016B,U+01CD-01DC,U+0400-045F,U+2010-2027,U+2030-203A,U+20AC,U+3000-301F,U+FF01-FF5E"

cat "${LEVELS[@]}" > "$WORK/levels.txt"
pyftsubset "$WENKAI_SRC" \
  --text-file="$WORK/levels.txt" \
  --unicodes="$UNICODES" \
  --layout-features='*' \
  --name-IDs='*' --name-languages='*' \
  --notdef-outline \
  --output-file="$WORK/subset.ttf"

/usr/bin/python3 - "$WORK/subset.ttf" "$WORK/fonts/LXGWWenKai-Regular.ttf" "$FAMILY" "$POSTSCRIPT" <<'PY'
import sys
from fontTools.ttLib import TTFont
src, dst, family, postscript = sys.argv[1:5]
# Keep the source's timestamp so that a rebuild is byte-identical.
font = TTFont(src, recalcTimestamp=False)
names = font["name"]
# Family, unique id, full name, PostScript name and typographic family carry the reserved name.
renamed = {1: family, 3: postscript, 4: family + " Regular", 6: postscript, 16: family}
for record in list(names.names):
    if record.nameID in renamed:
        names.setName(renamed[record.nameID], record.nameID,
                      record.platformID, record.platEncID, record.langID)
    elif record.nameID in (17, 18, 20, 21):
        names.removeNames(nameID=record.nameID)
font.save(dst, reorderTables=True)
PY

cp "$SCP_PKG/TTF/SourceCodePro-Regular.ttf" "$WORK/fonts/"
# The copyright file's stand-alone licence paragraph holds the full OFL text, one blank per line.
{
  awk 'BEGIN { RS = "" } /^Files: \*\n/ { print; exit }' "$WENKAI_COPYRIGHT"
  echo
  echo "The copy in res/fonts is a subset of LXGWWenKai-Regular.ttf renamed to \"$FAMILY\"."
  echo
  awk 'BEGIN { RS = "" } /^License: OFL-1.1\n -/ { print; exit }' "$WENKAI_COPYRIGHT" \
    | sed -e '1d' -e 's/^ //' -e 's/^\.$//'
} > "$WORK/licenses/OFL-LXGWWenKai.txt"
cp "$SCP_PKG/LICENSE.md" "$WORK/licenses/OFL-SourceCodePro.md"

if (( CHECK )); then
  status=0
  for f in fonts/LXGWWenKai-Regular.ttf fonts/SourceCodePro-Regular.ttf; do
    cmp -s "$WORK/$f" "$ROOT/res/$f" || { echo "fonts.sh --check: res/$f differs from a fresh build" >&2; status=1; }
  done
  for f in OFL-LXGWWenKai.txt OFL-SourceCodePro.md; do
    cmp -s "$WORK/licenses/$f" "$ROOT/licenses/$f" || { echo "fonts.sh --check: licenses/$f differs" >&2; status=1; }
  done
  (( status == 0 )) && echo "fonts.sh --check: fonts up to date"
  exit $status
fi

mkdir -p "$ROOT/res/fonts" "$ROOT/licenses"
cp "$WORK"/fonts/*.ttf "$ROOT/res/fonts/"
cp "$WORK"/licenses/* "$ROOT/licenses/"
echo "fonts.sh: wrote res/fonts and licenses/"
