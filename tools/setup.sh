#!/usr/bin/env bash
# Installs the Debian packages that are missing. Without arguments: what building and testing need.
#   --check   also what tools/check.sh needs
#   --bench   also the benchmarks and their peers
#   --windows also building for Windows and running that here
#   --report  also the browser in which a report of tamesh is tested
# On another system it prints what is needed and fails if something is missing.
set -euo pipefail

packages=(g++ cmake ninja-build ccache pkg-config git python3 ca-certificates
    libutfcpp-dev      # UTF conversion
    uuid-dev           # identifiers
    libsqlite3-dev     # the registry
    zlib1g-dev         # the ZIP codec, checksums
    liblzma-dev        # a library for the dictionary codec
    libcli11-dev       # tamesh: command line
    libedit-dev        # tamesh: lines that can be edited
    libstb-dev         # tamesh: PNG files, letters in pictures
    libglib2.0-dev     # an example: handlers in the loop of another library
    libgtest-dev       # tests
    librapidcheck-dev) # property tests
for argument in "$@"; do
    case $argument in
    --check)
        packages+=(clang lld libclang-rt-14-dev # second compiler, fuzzers, thread-safety analysis
            clang-format clang-tidy util-linux libbenchmark-dev
            doxygen) # the reference of the public headers
        ;;
    --bench)
        packages+=(libbenchmark-dev
            libboost-dev libboost-serialization-dev libboost-container-dev libcereal-dev libabsl-dev
            qt6-base-dev libfast-float-dev libdeflate-dev libzstd-dev
            libfpzip-dev libzfp-dev libdraco-dev libmeshoptimizer-dev
            libigraph-dev liblemon-dev libvtk9-dev)
        ;;
    --windows)
        packages+=(g++-mingw-w64-x86-64-posix libz-mingw-w64-dev wine64
            googletest) # its sources: there is no package for the target
        ;;
    --report)
        packages+=(chromium)
        ;;
    *)
        echo "usage: tools/setup.sh [--check] [--bench] [--windows] [--report]" >&2
        exit 2
        ;;
    esac
done

if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo 'This is no Debian system, so nothing was installed. By their Debian names the project'
    echo "needs: ${packages[*]}"
    command -v cmake >/dev/null && command -v ninja >/dev/null && command -v g++ >/dev/null
    exit
fi

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

echo "Installing: ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "setup: run as root, or install these packages: ${missing[*]}" >&2
        exit 1
    }
    as_root=(sudo)
fi
log=$(mktemp)
trap 'rm -f "$log"' EXIT
export DEBIAN_FRONTEND=noninteractive
install() { "${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}" >"$log" 2>&1; }
# The package lists of a fresh machine may be missing or old.
if ! install; then
    "${as_root[@]}" apt-get update >"$log" 2>&1 && install || {
        cat "$log" >&2
        echo "setup: the packages could not be installed: ${missing[*]}" >&2
        exit 1
    }
fi
