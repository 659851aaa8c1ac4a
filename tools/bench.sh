#!/usr/bin/env bash
# Builds and runs all benchmarks with the peers that are installed, and writes docs/benchmarks.md.
#   --install   installs the peers first
#   NAME...     runs only these benchmark programs; the others' figures stay as last measured
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = --install ]; then
    shift
    tools/setup.sh --bench
fi
cmake --preset release -DTABASE_BUILD_BENCHMARKS=ON >/dev/null
cmake --build --preset release
results=build/bench
mkdir -p "$results"
programs=("$@")
if [ ${#programs[@]} -eq 0 ]; then
    for program in build/release/bin/*_benchmark; do
        programs+=("$(basename "$program" _benchmark)")
    done
fi
for name in "${programs[@]}"; do
    echo "measuring $name"
    # The runs of all cases are mixed, so that a slow minute of the machine does not hit one alone.
    "build/release/bin/${name}_benchmark" \
        --benchmark_filter='-/quick/' \
        --benchmark_repetitions="${TABASE_BENCH_REPETITIONS:-5}" \
        --benchmark_enable_random_interleaving=true \
        --benchmark_report_aggregates_only=true \
        --benchmark_out="$results/$name.json" --benchmark_out_format=json >/dev/null
done
python3 tools/bench.py "$results" docs/benchmarks.md
