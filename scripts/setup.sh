#!/usr/bin/env bash
# Installs what quenlo needs to build, run and test on Debian 12, then configures the build.
# Usage: scripts/setup.sh [build-dir] [extra cmake arguments...]
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD_DIR=${1:-build}
shift || true

# Build, test and run-time packages (Qt 6.4 from Debian, fontconfig's headers, GLM, GoogleTest,
# a CJK font for the character list, PulseAudio's client library and libmpg123 for the sound
# module, the PulseAudio server the sound tests start, GStreamer's MP3 decoder for the Qt
# Multimedia fallback, Qt's own texts in German and Russian, Xvfb for screenshots, poppler's
# pdftoppm to check printed worksheets).
PACKAGES=(
  g++ cmake ninja-build ccache pkg-config git
  qt6-base-dev qt6-multimedia-dev qt6-svg-dev libqt6svg6 libgl-dev libfontconfig-dev
  libqt6sql6-sqlite
  libglm-dev libgtest-dev libgmock-dev
  libpulse-dev libmpg123-dev pulseaudio
  fonts-noto-cjk gstreamer1.0-plugins-good qt6-translations-l10n
  xvfb xauth
  xdotool sqlite3  # scripts/durability.sh drives the program and reads its history
  poppler-utils
  dpkg-dev desktop-file-utils appstream lintian man-db  # make and check the Debian package
)
command -v node >/dev/null 2>&1 || PACKAGES+=(nodejs)
command -v npm >/dev/null 2>&1 || PACKAGES+=(npm)

scripts/install-debs.sh "${PACKAGES[@]}"

# The resource generator's package data, pinned by its lock file; the tests compare the
# committed resource files with what the generator makes from it.
# npm writes node_modules/.package-lock.json last, so an interrupted install is done again.
installed=tools/resgen/node_modules/.package-lock.json
if [ ! -f "$installed" ] || [ tools/resgen/package-lock.json -nt "$installed" ]; then
  (cd tools/resgen && npm ci --no-audit --no-fund --loglevel=error)
fi

cmake -S . -B "$BUILD_DIR" -G Ninja "$@" >/dev/null
