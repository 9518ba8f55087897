#!/usr/bin/env bash
# Installs the Debian 12 packages that are missing. The one list of them, each with its reason.
# usage: scripts/setup.sh [run|test|lint|benchmark]...     (run is always among them)
set -euo pipefail

packages_for_run=(
    cmake ninja-build g++      # the build: CMake from 3.24 on, C++20
    pkg-config                 # finds the libraries that have no CMake package
    libtiff-dev                # tif
    libjpeg62-turbo-dev        # jpg
    libpng-dev                 # png
    zlib1g-dev                 # compression inside PSD files
    libdeflate-dev             # zip compression where it is faster than the one of the format
    libzstd-dev                # compression inside KTX textures
    libopenexr-dev             # exr
    libimath-dev               # half floats
    libstb-dev                 # resizing
    liblcms2-dev               # colour profiles
    libhwy-dev                 # vectors for every kind of processor
    libglib2.0-dev             # strings and settings files
    libcli11-dev               # command line of the tool
    nlohmann-json3-dev         # JSON of the tool
)
packages_for_test=(
    libgtest-dev               # the tests
    openimageio-tools          # oiiotool makes files and checks ours
    imagemagick                # convert does the same, from other code
    zstd                       # compressed texture levels of other making
    liblcms2-utils             # transicc converts colours as the expectation
    clang libclang-rt-14-dev   # sanitizers
    libomp-14-dev              # parallel loops built by clang; the thread sanitizer understands it
)
packages_for_lint=(
    clang-format               # layout of the sources
    clang-tidy                 # scripts/lint.sh --tidy
)
packages_for_benchmark=(
    libbenchmark-dev           # benchmarks/run.sh
    hyperfine                  # benchmarks/processes.sh: whole processes
)

wanted=("${packages_for_run[@]}")
for group in "$@"; do
    case $group in
    run) ;;
    test) wanted+=("${packages_for_test[@]}") ;;
    lint) wanted+=("${packages_for_lint[@]}") ;;
    benchmark) wanted+=("${packages_for_benchmark[@]}") ;;
    *)
        echo "setup: expected run, test, lint or benchmark, found '$group'" >&2
        exit 2
        ;;
    esac
done

fail() {
    {
        echo "setup: $1"
        echo "setup: missing packages: ${missing[*]}"
    } >&2
    exit 1
}

missing=("${wanted[@]}")
if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    fail "expected Debian 12 with apt-get, found another system; install by hand what the names stand for"
fi
installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null |
    sed -n 's/^installed //p') || true
mapfile -t missing < <(comm -23 <(printf '%s\n' "${wanted[@]}" | sort -u) <(sort -u <<<"$installed"))
[ ${#missing[@]} -gt 0 ] || exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail "cannot install: expected root or sudo, found neither"
    as_root=(sudo)
    # Without a terminal nobody could type a password.
    [ -t 0 ] || as_root=(sudo -n)
    "${as_root[@]}" true || fail "cannot install: sudo does not let us"
fi
as_root+=(env DEBIAN_FRONTEND=noninteractive)

echo "setup: installing ${missing[*]}" >&2
"${as_root[@]}" apt-get update -qq >&2 ||
    echo "setup: the lists of packages could not be renewed; trying with the old ones" >&2
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2 ||
    fail "apt-get could not install everything (its words are above)"
