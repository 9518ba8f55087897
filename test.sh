#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tests, all but the exhaustive ones.
# usage: ./test.sh [--all] [arguments of ctest]...      ./test.sh -R image
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"

left_out=(--label-exclude exhaustive)
if [ "${1:-}" = --all ]; then
    left_out=()
    shift
fi

scripts/setup.sh run test
cmake --preset dev --log-level=WARNING
cmake --build --preset dev --parallel "$(nproc)"
ctest --preset dev --parallel "$(nproc)" "${left_out[@]}" "$@"
