#!/usr/bin/env bash
# Installs what is missing, builds, and runs all tests of this system.
set -euo pipefail
cd "$(dirname "$0")/.."

tools/setup.sh
log=$(mktemp)
cmake --preset release >"$log" 2>&1 || { cat "$log"; exit 1; }
rm -f "$log"
cmake --build --preset release
ctest --preset release
