#!/usr/bin/env bash
# Feeds the image readers damaged files until one misbehaves (tests/fuzz/README.md).
# usage: scripts/fuzz.sh --short                                  what CI runs: always the same, a minute
#        scripts/fuzz.sh [--minutes N] [--jobs N] [--data DIR]    by hand; DIR holds further seeds
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

fail() {
    echo "fuzz: $1" >&2
    exit 2
}

short=no minutes=10 jobs=$(nproc) data=()
while [ $# -gt 0 ]; do
    case $1 in
    --short) short=yes ;;
    --minutes | --jobs | --data)
        [ $# -gt 1 ] || fail "expected a value after $1, found the end"
        case $1 in
        --minutes) minutes=$2 ;;
        --jobs) jobs=$2 ;;
        --data)
            [ -d "$2" ] || fail "expected a folder, found '$2'"
            data=("$2")
            ;;
        esac
        shift
        ;;
    *) fail "expected --short, --minutes, --jobs or --data, found '$1'" ;;
    esac
    shift
done
for number in "$minutes" "$jobs"; do
    [[ $number =~ ^[1-9][0-9]*$ ]] || fail "expected a whole number from 1 on, found '$number'"
done

cmake --preset fuzz --log-level=WARNING
cmake --build --preset fuzz --parallel "$(nproc)"

# What is out of proportion to pictures of 2^20 pixels: 10 seconds, or a gigabyte.
findings=build/fuzz/findings
mkdir -p "$findings"
fuzzer=(build/fuzz/bin/images_fuzzer -timeout=10 -rss_limit_mb=1024 "-artifact_prefix=$findings/")
seeds=(tests/fuzz/seeds tests/fuzz/regressions)

if [ "$short" = yes ]; then
    # An empty corpus, so that every run is the first one.
    corpus=$(mktemp -d)
    trap 'rm -rf "$corpus"' EXIT
    "${fuzzer[@]}" -seed=20260101 -runs=50000 -max_len=4096 -print_final_stats=1 \
        "$corpus" "${seeds[@]}"
    exit
fi
mkdir -p build/fuzz/corpus
"${fuzzer[@]}" -fork="$jobs" -max_total_time=$((minutes * 60)) -max_len=65536 \
    build/fuzz/corpus "${seeds[@]}" "${data[@]}"
