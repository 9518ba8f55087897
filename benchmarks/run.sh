#!/usr/bin/env bash
# Builds the release preset and runs every benchmark program; prints the median of the repetitions.
#
#   benchmarks/run.sh [OPTION...]     options go to the programs, such as --benchmark_filter=half
#
# Cases are named Group/variant/size. The last column is the median time of a case divided by that of
# the variant "ours" of the same group and size: 4.00 means that ours takes a quarter of the time.
# Times are the processor's; those of cases with more threads than one, which end in /real_time, are
# the clock's. Repetitions of all cases are mixed, so that a slow spell does not fall on one of them.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake --preset release >/dev/null
cmake --build --preset release --target rb_benchmarks

print_medians() {
    awk -F, '
        $1 ~ /_median"?$/ {
            gsub(/"/, "", $1)
            sub(/_median$/, "", $1)
            parts = split($1, part, "/")
            variant[++count] = part[2]
            case_of[count] = $1
            key[count] = part[1]
            for (i = 3; i <= parts; ++i) key[count] = key[count] "/" part[i]
            time[count] = $1 ~ /\/real_time/ ? $3 : $4
            unit[count] = $5
            gigabytes[count] = $6 == "" ? "-" : sprintf("%.2f", $6 / 1e9)
            if (part[2] == "ours") ours[key[count]] = time[count]
        }
        END {
            printf "%-44s %14s %8s %12s\n", "case", "median", "GB/s", "time / ours"
            fflush()
            by_group = "sort -t \"\t\" -k1,1 -k2,2n -k3,3 | cut -f 3"
            for (i = 1; i <= count; ++i) {
                ratio = (key[i] in ours) ? sprintf("%.2f", time[i] / ours[key[i]]) : "-"
                printf "%s\t%d\t%-44s %11.0f %-2s %8s %12s\n", key[i], variant[i] != "ours", \
                    case_of[i], time[i], unit[i], gigabytes[i], ratio | by_group
            }
        }'
}

for program in build/release/bin/*_benchmark; do
    printf '\n%s\n' "$(basename "$program")"
    "$program" --benchmark_repetitions=9 --benchmark_min_time=0.2 \
        --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true \
        --benchmark_format=csv "$@" | print_medians
done
