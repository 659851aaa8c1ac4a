#!/usr/bin/env bash
# Everything that guards the code: format, layering and lists, the reference, headers on their own,
# both compilers with warnings as errors and thread-safety analysis, sanitizers, Windows under Wine,
# fuzzers for a while, installation.
#   --without-tests   leaves out the release build's tests, for a caller who has just run them
#   STEP...           runs only these steps
set -euo pipefail
cd "$(dirname "$0")/.."

fuzz_seconds=${TABASE_FUZZ_SECONDS:-10} # per target

step_tests() { tools/test.sh; }

step_format() { tools/format.sh --check; }

step_rules() { python3 tools/check.py; }

# The reference, with the guides as pages, in build/doxygen; a warning fails.
step_doxygen() { doxygen docs/Doxyfile; }

step_headers() { cmake --build --preset release --target groundwork_headers tabase_headers; }

# Clang's analyser over the sources, with the flags of the release build. A stamp per source keeps a
# second run to what is new.
step_tidy() {
    local stamps=build/tidy
    mkdir -p "$stamps"
    git ls-files 'core/*.cpp' 'apps/*.cpp' 'extras/*.cpp' ':!core/platform/win32' | xargs -P "$(nproc)" -I{} bash -c '
        stamp=$0/$(tr / _ <<<"$1")
        [ "$stamp" -nt "$1" ] && [ -z "$(find core apps .clang-tidy -newer "$stamp"             \( -name "*.h" -o -name .clang-tidy \) -print -quit)" ] && exit 0
        clang-tidy -p build/release --quiet "$1" 2>/dev/null || exit 1
        touch "$stamp"' "$stamps" {}
}

# Every benchmark runs for a moment, on its small inputs: one that does not start is found here.
step_benchmarks() {
    cmake --preset release -DTABASE_BUILD_BENCHMARKS=ON >/dev/null
    cmake --build --preset release
    local program cases
    for program in build/release/bin/*_benchmark; do
        cases=$("$program" --benchmark_min_time=0.001 --benchmark_filter='-/[0-9]{6,}' \
            2>/dev/null | grep -c '^BM_')
        echo "$(basename "$program"): $cases cases"
        [ "$cases" -gt 0 ]
    done
}

step_install() { tests/install/run.sh; }

configure_build_test() { # preset, then a wrapper for ctest
    local preset=$1
    shift
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset"
    "$@" ctest --preset "$preset" --output-on-failure | tail -n 15
}

# Both libraries, the programs and the tests for Windows, run by Wine; and whether a new name of ours
# is a macro of windows.h.
step_windows() {
    tools/setup.sh --windows
    python3 tools/windowsnames.py
    trap 'tools/wine.sh --stop' RETURN
    configure_build_test windows
    cmake --build --preset windows --target groundwork_headers tabase_headers
}

# Without optimisation compilers see other things; the tests of assertions run with the sanitizers.
step_debug() {
    cmake --preset debug >/dev/null
    cmake --build --preset debug --target tamesh
}

step_asan() { configure_build_test asan; }

# The thread sanitizer cannot start where the kernel spreads addresses too far; setarch -R asks it
# not to.
step_tsan() { configure_build_test tsan setarch "$(uname -m)" -R; }

# Clang compiles all with its own warnings and the thread-safety analysis; then each fuzzer runs from
# its corpus.
step_fuzz() {
    configure_build_test fuzz
    local program name found log
    for program in build/fuzz/bin/*_fuzz; do
        name=$(basename "$program" _fuzz)
        found=build/fuzz/found/$name
        log=build/fuzz/found/$name.log
        mkdir -p "$found"
        echo "fuzzing $name for $fuzz_seconds s"
        "$program" -max_total_time="$fuzz_seconds" -timeout=10 -rss_limit_mb=2048 \
            -artifact_prefix="$found/crash-" "$found" "fuzz/corpus/$name" >"$log" 2>&1 || {
            tail -n 60 "$log"
            echo "check: $name fails; keep the input named above in fuzz/corpus/$name" >&2
            return 1
        }
    done
}

steps=(tests format rules doxygen headers tidy benchmarks install windows debug asan tsan fuzz)
if [ "${1:-}" = --without-tests ]; then
    shift
    steps=("${steps[@]:1}")
fi
[ $# -eq 0 ] || steps=("$@")

tools/setup.sh --check --report
for step in "${steps[@]}"; do
    echo "== $step"
    start=$SECONDS
    "step_$step"
    echo "== $step: $((SECONDS - start)) s"
done
echo "All checks passed: ${steps[*]}"
