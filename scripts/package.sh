#!/usr/bin/env bash
# Builds a Release tree in build-package and the Debian package from it, into dist/packages.
# Usage: scripts/package.sh [extra cmake arguments...]
# Install the result with: sudo apt install ./dist/packages/quenlo_<version>_<arch>.deb
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD_DIR=build-package
# Debian's hardening and reproducibility flags, as a Debian build of the package would use;
# they only count when the tree is configured for the first time.
scripts/install-debs.sh dpkg-dev
eval "$(DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --export=sh)"
export CXXFLAGS="$CPPFLAGS $CXXFLAGS"  # CMake does not read CPPFLAGS
scripts/setup.sh "$BUILD_DIR" -DCMAKE_BUILD_TYPE=Release -DQUENLO_BUILD_TESTS=OFF "$@"
cmake --build "$BUILD_DIR" --target quenlo
(cd "$BUILD_DIR" && cpack -G DEB)

mkdir -p dist/packages
for deb in "$BUILD_DIR"/quenlo_*.deb; do
  cp "$deb" dist/packages/
  echo "package: dist/packages/$(basename "$deb")"
done
