#!/usr/bin/env bash
# Checks of the Debian package and the files it installs; one check per call, run by ctest.
#   check.sh build <build-dir> <out-dir>   make the package from the build tree with cpack
#   check.sh desktop <file.desktop>        desktop-file-validate
#   check.sh metainfo <file.xml> <version> appstreamcli; the newest release is <version>
#   check.sh manpage <file.1> <version>    man --warnings; the title names <version>
#   check.sh lintian|contents|install <out-dir>
# Exits 77 (reported by ctest as skipped) when a tool or the package is missing.
set -euo pipefail

skip() { echo "SKIPPED: $*" >&2; exit 77; }
fail() { echo "FAILED: $*" >&2; exit 1; }
need() { for tool in "$@"; do command -v "$tool" >/dev/null || skip "'$tool' is not installed (scripts/setup.sh installs it)"; done; }
package() {
  local debs=("$1"/quenlo_*.deb)
  [[ -f "${debs[0]}" ]] || skip "no package in $1 (the package_build test makes it)"
  echo "${debs[0]}"
}

check=$1
shift
case "$check" in
build)
  need cpack dpkg-deb dpkg-shlibdeps
  [[ -x "$1/quenlo" ]] || skip "$1/quenlo is not built"
  rm -rf "$2"
  cpack --config "$1/CPackConfig.cmake" -G DEB -B "$2" >"$2.log" 2>&1 || { cat "$2.log"; fail "cpack"; }
  dpkg-deb --info "$(package "$2")"
  ;;
desktop)
  need desktop-file-validate
  out=$(desktop-file-validate "$1" 2>&1) || fail "$out"
  [[ -z "$out" ]] || fail "$out"
  ;;
metainfo)
  need appstreamcli
  out=$(appstreamcli validate --no-net "$1" 2>&1) || fail "$out"
  echo "$out"
  # Infos count too: a missing content rating is only one.
  ! grep -E '^[IWE]: ' <<<"$out" >/dev/null || fail "appstreamcli has remarks"
  newest=$(grep -o -m1 '<release version="[^"]*"' "$1" | cut -d'"' -f2)
  [[ "$newest" == "$2" ]] || fail "newest release in the metainfo is '$newest', the program is $2"
  ;;
manpage)
  need man
  out=$(MANWIDTH=80 man --warnings -E UTF-8 -l "$1" 2>&1 >/dev/null)
  [[ -z "$out" ]] || fail "$out"
  grep -q "^\.TH QUENLO 1 .* \"quenlo $2\"" "$1" || fail "the page's title line does not name version $2"
  ;;
lintian)
  need lintian
  deb=$(package "$1")
  # Every tag is printed for the log; only errors fail.
  lintian --fail-on error --display-level '>=pedantic' --tag-display-limit 0 "$deb" || fail "lintian"
  ;;
contents)
  deb=$(package "$1")
  listing=$(dpkg-deb --contents "$deb" | awk '{print $6}')
  expected=(
    ./usr/bin/quenlo
    ./usr/lib/quenlo/libki_sound_pulse.so
    ./usr/lib/quenlo/libki_sound_qt.so
    ./usr/share/applications/de.qlo.Quenlo.desktop
    ./usr/share/metainfo/de.qlo.Quenlo.metainfo.xml
    ./usr/share/man/man1/quenlo.1.gz
    ./usr/share/icons/hicolor/scalable/apps/quenlo.svg
    ./usr/share/doc/quenlo/copyright
    ./usr/share/doc/quenlo/changelog.gz
    ./usr/share/doc/quenlo/licenses/ARPHICPL.TXT
    ./usr/share/doc/quenlo/licenses/OFL-LXGWWenKai.txt
    ./usr/share/doc/quenlo/licenses/OFL-SourceCodePro.md
    ./usr/share/doc/quenlo/licenses/LICENSE.lucide-static.txt
  )
  for size in 16 22 24 32 48 64 128 256; do expected+=("./usr/share/icons/hicolor/${size}x${size}/apps/quenlo.png"); done
  for file in "${expected[@]}"; do
    grep -qxF "$file" <<<"$listing" || fail "$file is not in the package"
  done
  outside=$(grep -v '^\./usr/' <<<"$listing" | grep -vx '\./' || true)
  [[ -z "$outside" ]] || fail "files outside /usr: $outside"
  ;;
install)
  deb=$(package "$1")
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  mkdir -p "$work/root" "$work/home" && mkdir -m 700 "$work/run"
  dpkg -x "$deb" "$work/root"
  # Nothing of the source or build tree is reachable: a clean environment, a fresh home and
  # an empty working folder.
  status=0
  (cd "$work" && env -i PATH=/usr/bin:/bin HOME="$work/home" XDG_RUNTIME_DIR="$work/run" \
      QT_QPA_PLATFORM=offscreen timeout 120 "$work/root/usr/bin/quenlo" -__log_level warn \
      --__screenshots "$work/shots" >"$work/log" 2>&1) || status=$?
  [[ $status == 0 ]] || { cat "$work/log"; fail "quenlo exited with $status"; }
  ! grep -F '[ERR]' "$work/log" || fail "the installed program logged errors"
  # The first recording plays after the first frame: the sound module must be found there.
  ! grep -F 'no sound module' "$work/log" || fail "the installed program did not find its sound module"
  for shot in quenlo_learn_normal quenlo_watch_dark quenlo_menu_green quenlo_about_ru; do
    [[ "$(head -c 4 "$work/shots/$shot.png" 2>/dev/null | tail -c 3)" == PNG ]] || fail "no screenshot $shot.png"
  done
  [[ -f "$work/home/.config/qlo.de/quenlo.conf" ]] || fail "no settings written to the temporary home"
  ;;
*)
  fail "unknown check '$check'"
  ;;
esac
