#!/usr/bin/env bash
# Sets up, builds and starts quenlo. Arguments are passed to the program.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh build
cmake --build build --target quenlo
exec ./build/quenlo "$@"
