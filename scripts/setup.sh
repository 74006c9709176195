#!/usr/bin/env bash
# Installs what quenlo needs to build, run and test on Debian 12, then configures the build.
# Usage: scripts/setup.sh [build-dir] [extra cmake arguments...]
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD_DIR=${1:-build}
shift || true

# Build, test and run-time packages (Qt 6.4 from Debian, GLM, GoogleTest, a CJK font for the
# character list, Xvfb for screenshots and window tests).
PACKAGES=(
  g++ cmake ninja-build ccache pkg-config git
  qt6-base-dev qt6-multimedia-dev qt6-svg-dev libqt6svg6 libgl-dev
  libglm-dev libgtest-dev libgmock-dev
  fonts-noto-cjk
  xvfb xauth
)
command -v node >/dev/null 2>&1 || PACKAGES+=(nodejs)
command -v npm >/dev/null 2>&1 || PACKAGES+=(npm)

missing=()
for p in "${PACKAGES[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  echo "setup: installing ${missing[*]}"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# The resource generator's package data, pinned by its lock file; the tests compare the
# committed resource files with what the generator makes from it.
if [ ! -d tools/resgen/node_modules ] || [ tools/resgen/package-lock.json -nt tools/resgen/node_modules ]; then
  (cd tools/resgen && npm ci --no-audit --no-fund --loglevel=error)
fi

cmake -S . -B "$BUILD_DIR" -G Ninja "$@" >/dev/null
