#!/usr/bin/env bash
# Whole processes on the files of decode_benchmark and formats_benchmark (run benchmarks/run.sh first, it
# makes them): decoding, conversion to bmp and derived images with rba beside two other programs, and the
# start-up of rba. Milliseconds: the median of the clock and, in brackets, the processor's mean time, which other
# work on the machine disturbs less.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
scripts/setup.sh run test benchmark
rba=$PWD/build/release/bin/rba
folder=${TMPDIR:-/tmp}/rb-benchmark
# In memory where that can be: rba waits until its file is on the disk, the others do not.
work=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d)
trap 'rm -rf "$work"' EXIT

measured() {  # of a command that must succeed
    # The name stands in for the command, whose commas would look like columns.
    hyperfine --shell none --warmup 2 --runs 15 --style none --export-csv "$work/result.csv" \
        --command-name it "$1" >/dev/null
    awk -F, 'NR == 2 { printf "%.1f (%.1f)", 1000 * $4, 1000 * ($5 + $6) }' "$work/result.csv"
}

need() {
    [ -e "$1" ] || { echo "missing: $1; run benchmarks/run.sh first" >&2; exit 1; }
}

printf '%-24s %18s %18s %18s\n' "decode 4096 x 4096" rba oiiotool convert
for extension in jpg png tif exr; do
    file=$folder/photo-like.$extension
    need "$file"
    ours=$(measured "$rba image info $file")
    oiio=$(measured "oiiotool -i:now=1 $file")
    magick=-
    # Debian's ImageMagick has no exr.
    [ "$extension" = exr ] || magick=$(measured "convert $file null:")
    printf '%-24s %18s %18s %18s\n' "$extension" "$ours" "$oiio" "$magick"
done

# Uncompressed bmp, the cheapest file that all three write: 24 bits, of the dds 32.
printf '\n%-24s %18s %18s %18s\n' "convert to bmp" rba oiiotool convert
for name in 24.bmp raw.tga rle.tga raw.psd rle.psd raw.sgi rle.sgi bgra.dds; do
    file=$folder/drawing.$name
    need "$file"
    type=TrueColor
    [ "$name" != bgra.dds ] || type=TrueColorAlpha
    ours=$(measured "$rba image convert $file $work/out.bmp")
    oiio=$(measured "oiiotool $file -o $work/out.bmp")
    # Without a type it would make a palette; [0] leaves out layers.
    magick=$(measured "convert ${file}[0] -type $type BMP:$work/out.bmp")
    printf '%-24s %18s %18s %18s\n' "$name" "$ours" "$oiio" "$magick"
done
# The nearest that the others have: the mean of the extremes or the mean for grey, half of the brightness for
# mono, one slope of the two for bump.
printf '\n%-24s %18s %18s %18s\n' "derive, written as bmp" rba oiiotool convert
for command in grey mono negative bump; do
    case $command in
    grey) oiio=(--chsum:weight=.333,.334,.333 --ch 0,0,0) magick=(-grayscale Lightness -type TrueColor) ;;
    mono) oiio=() magick=(-grayscale Average -threshold 50% -type TrueColor) ;;
    negative) oiio=(--invert) magick=(-negate -type TrueColor) ;;
    bump) oiio=() magick=(-grayscale Average -morphology Convolve Sobel -type TrueColor) ;;
    esac
    for file in "$folder/photo-like.png" "$folder/drawing.24.bmp"; do
        ours=$(measured "$rba image $command $file $work/out.bmp")
        theirs=-
        [ ${#oiio[@]} -eq 0 ] || theirs=$(measured "oiiotool $file ${oiio[*]} -o $work/out.bmp")
        printf '%-24s %18s %18s %18s\n' "$command ${file##*.}" "$ours" "$theirs" \
            "$(measured "convert $file ${magick[*]} BMP:$work/out.bmp")"
    done
done
printf '\n%-24s %18s\n' "start-up, rba env" "$(measured "$rba env")"
