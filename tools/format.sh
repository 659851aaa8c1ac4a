#!/usr/bin/env bash
# Lays out all C++ sources; with --check it only says which are not laid out, and fails.
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t files < <(git ls-files --cached --others --exclude-standard '*.h' '*.cpp')
if [ "${1:-}" = --check ]; then
    clang-format --dry-run --Werror "${files[@]}" || {
        echo 'format: run tools/format.sh' >&2
        exit 1
    }
else
    clang-format -i "${files[@]}"
fi
