#!/usr/bin/env bash
# Runs quenlo under valgrind's memcheck in Xvfb: start, select every character of the level,
# quit (QUENLO_BENCH_STARTUP=1), with settings in a temporary folder. Fails on a definite leak
# outside the system libraries named in scripts/valgrind.supp.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-debs.sh valgrind xvfb xauth
scripts/setup.sh build
cmake --build build --target quenlo
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
XDG_CONFIG_HOME="$tmp" QUENLO_BENCH_STARTUP=1 xvfb-run -a valgrind --leak-check=full \
  --errors-for-leak-kinds=definite --error-exitcode=3 --suppressions=scripts/valgrind.supp \
  ./build/quenlo -__log_level warn 2>&1 | grep -E "definitely lost|indirectly lost|ERROR SUMMARY|quenlo-bench"
exit "${PIPESTATUS[0]}"
