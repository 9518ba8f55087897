#!/usr/bin/env bash
# Installs what is missing, builds, and makes the tour: out/tour/index.html.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"

scripts/setup.sh run
cmake --preset release -D RB_BUILD_BENCHMARKS=OFF --log-level=WARNING
cmake --build --preset release --parallel "$(nproc)"
build/release/bin/rba --quiet tour out/tour

echo
echo "The tour:  file://$PWD/out/tour/index.html"
echo "The tool:  $PWD/build/release/bin/rba --help"
