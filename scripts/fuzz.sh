#!/usr/bin/env bash
# Feeds the readers of images and of photometric files damaged files until one misbehaves
# (tests/fuzz/README.md).
# usage: scripts/fuzz.sh --short                                  what CI runs: always the same, a minute
#        scripts/fuzz.sh [--minutes N] [--jobs N] [--data DIR]    by hand; DIR holds further seeds
#        With --target images or --target photometry only one of them; N minutes are for each.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

fail() {
    echo "fuzz: $1" >&2
    exit 2
}

short=no minutes=10 jobs=$(nproc) data=() targets=(images photometry)
while [ $# -gt 0 ]; do
    case $1 in
    --short) short=yes ;;
    --minutes | --jobs | --data | --target)
        [ $# -gt 1 ] || fail "expected a value after $1, found the end"
        case $1 in
        --minutes) minutes=$2 ;;
        --jobs) jobs=$2 ;;
        --data)
            [ -d "$2" ] || fail "expected a folder, found '$2'"
            data=("$2")
            ;;
        --target)
            [[ $2 =~ ^(images|photometry)$ ]] || fail "expected images or photometry, found '$2'"
            targets=("$2")
            ;;
        esac
        shift
        ;;
    *) fail "expected --short, --minutes, --jobs, --data or --target, found '$1'" ;;
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
corpus=build/fuzz/corpus
if [ "$short" = yes ]; then
    # An empty corpus, so that every run is the first one.
    corpus=$(mktemp -d)
    trap 'rm -rf "$corpus"' EXIT
fi

# fuzz NAME RUNS SEEDS...
fuzz() {
    local fuzzer=("build/fuzz/bin/$1_fuzzer" -timeout=10 -rss_limit_mb=1024
        "-artifact_prefix=$findings/") runs=$2 own=$corpus/$1
    shift 2
    mkdir -p "$own"
    if [ "$short" = yes ]; then
        "${fuzzer[@]}" -seed=20260101 "-runs=$runs" -max_len=4096 -print_final_stats=1 \
            "$own" "$@"
    else
        "${fuzzer[@]}" -fork="$jobs" -max_total_time=$((minutes * 60)) -max_len=65536 \
            "$own" "$@" "${data[@]}"
    fi
}

for target in "${targets[@]}"; do
    case $target in
    images) fuzz images 50000 tests/fuzz/seeds tests/fuzz/regressions ;;
    photometry) fuzz photometry 300000 tests/fuzz/photometry_seeds samples/photometry ;;
    esac
done
