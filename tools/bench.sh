#!/usr/bin/env bash
# Builds and runs all benchmarks with the peers that are installed, and writes docs/benchmarks.md.
#   --install   installs the peers first
#   road        measures only the whole road of tamesh, step by step
#   NAME...     runs only these benchmark programs; the others' figures stay as last measured
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = --install ]; then
    shift
    tools/setup.sh --bench
fi
cmake --preset release -DTABASE_BUILD_BENCHMARKS=ON >/dev/null
cmake --build --preset release
if [ "${1:-}" != road ]; then
    python3 tools/bench.py build/release/bin build/bench docs/benchmarks.md "$@"
fi
# The road of tamesh, step by step, is a section of its own.
if [ $# -eq 0 ] || [ "$1" = road ]; then
    python3 benchmarks/road.py build/release/bin/tamesh docs/benchmarks.md
fi
