#!/usr/bin/env bash
# Sets up, builds and runs the whole test suite; exits non-zero when a test fails.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh build
cmake --build build
ctest --test-dir build --output-on-failure -j"$(nproc)"
