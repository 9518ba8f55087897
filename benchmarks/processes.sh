#!/usr/bin/env bash
# Whole processes on the files of decode_benchmark (run benchmarks/run.sh first, it makes them): decoding
# with rba beside two other programs, and the start-up of rba. Medians, in milliseconds.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
scripts/setup.sh run test benchmark
rba=$PWD/build/release/bin/rba
folder=${TMPDIR:-/tmp}/rb-benchmark
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

median() {  # of a command that must succeed
    hyperfine --shell none --warmup 2 --runs 15 --style none --export-csv "$work/result.csv" "$1" >/dev/null
    awk -F, 'NR == 2 { printf "%.1f", 1000 * $4 }' "$work/result.csv"
}

printf '%-24s %10s %10s %10s\n' "decode 4096 x 4096" rba oiiotool convert
for extension in jpg png tif exr; do
    file=$folder/photo-like.$extension
    [ -e "$file" ] || { echo "missing: $file; run benchmarks/run.sh first" >&2; exit 1; }
    ours=$(median "$rba image info $file")
    oiio=$(median "oiiotool -i:now=1 $file")
    magick=-
    # Debian's ImageMagick has no exr.
    [ "$extension" = exr ] || magick=$(median "convert $file null:")
    printf '%-24s %10s %10s %10s\n' "$extension" "$ours" "$oiio" "$magick"
done
printf '%-24s %10s\n' "start-up, rba env" "$(median "$rba env")"
