#!/usr/bin/env bash
# Checks what the compiler does not: layout of the sources, who includes what.
# usage: scripts/lint.sh [--tidy]     --tidy adds clang-tidy over all sources, which takes minutes
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

sources() { git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp'; }

echo "lint: clang-format"
sources | xargs clang-format --dry-run -Werror

echo "lint: includes"
scripts/check_includes.sh

echo "lint: scripts"
for script in run.sh test.sh .ci/run scripts/*.sh benchmarks/*.sh; do
    [ -e "$script" ] || continue
    bash -n "$script"
    [ -x "$script" ] || { echo "$script: expected an executable file" >&2; exit 1; }
done

if [ "${1:-}" = --tidy ]; then
    echo "lint: clang-tidy"
    # A build of its own: precompiled headers of one compiler are no use to another.
    cmake --preset dev -B build/tidy -D CMAKE_CXX_COMPILER=clang++ \
        -D CMAKE_EXPORT_COMPILE_COMMANDS=ON -D CMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
        --log-level=WARNING >/dev/null
    sources | grep '\.cpp$' | grep -v '^benchmarks/\|^tests/install_consumer/' |
        xargs -P "$(nproc)" -n 4 clang-tidy -p build/tidy --quiet --warnings-as-errors='*'
fi
