#!/usr/bin/env bash
# Installs the release build, moves the prefix, and builds and runs an outside project against it:
# through find_package, then through pkg-config.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$here/../..

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$root/build/release" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/moved"
prefix=$work/moved

cmake -S "$here" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake" >/dev/null
result=$("$work/cmake/consumer")
echo "find_package: $result"
ctest --test-dir "$work/cmake" --output-on-failure >"$work/ctest.log" || {
    cat "$work/ctest.log" >&2
    exit 1
}

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name tabase.pc)")
export PKG_CONFIG_PATH
library_folder=$(pkg-config --variable=libdir tabase)
# shellcheck disable=SC2046 # the flags are meant to be split
g++ -std=c++20 "$here/consumer.cpp" -o "$work/consumer" $(pkg-config --cflags --libs tabase)
result=$(LD_LIBRARY_PATH=$library_folder "$work/consumer")
echo "pkg-config: $result"
