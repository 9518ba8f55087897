#!/usr/bin/env bash
# Installs the build and builds the consumer against it, through CMake or through pkg-config.
# Or compares what is installed and exported with files.txt and symbols.txt, so that neither changes
# unnoticed. After a change on purpose: run.sh lists BUILD_DIR . - | patch -d tests/install_consumer
# usage: run.sh cmake|pkg-config|lists BUILD_DIR SOURCE_DIR COMPILER
set -euo pipefail
way=$1 build=$2 source=$3 compiler=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/first" >"$work/install.log"
# Moved after the installation: nothing in it may know where it was.
mv "$work/first" "$work/installed"
prefix=$work/installed
libdir=$(dirname "$(find "$prefix" -name 'libKVRHost.so' | head -n 1)")

installed_files() {
    (cd "$prefix" && find . ! -type d) |
        sed -E "s|^\./||; s|^${libdir#"$prefix"/}/|LIBDIR/|; s|(Targets)-[a-z]+(\.cmake)|\1-CONFIG\2|" |
        LC_ALL=C sort
}

# Functions and objects; what is weak depends on the compiler.
exported_symbols() {
    local library
    for library in KVRHost KVRRbaModel; do
        nm -DC --defined-only "$libdir/lib$library.so" |
            sed -nE "s/^[0-9a-f]+ [TRDB] /$library: /p" | LC_ALL=C sort
    done
}

if [ "$way" = lists ]; then
    installed_files >"$work/files.txt"
    exported_symbols >"$work/symbols.txt"
    status=0
    for list in files symbols; do
        diff -u --label "$list.txt" --label "$list.txt" \
            "$source/tests/install_consumer/$list.txt" "$work/$list.txt" || status=1
    done
    exit $status
fi

case $way in
cmake)
    cmake -S "$source/tests/install_consumer" -B "$work/consumer" -G Ninja \
        -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" >"$work/configure.log"
    cmake --build "$work/consumer" >"$work/build.log" || { cat "$work/build.log"; exit 1; }
    consumer=$work/consumer/consumer
    ;;
pkg-config)
    export PKG_CONFIG_PATH="$libdir/pkgconfig"
    consumer=$work/consumer
    # shellcheck disable=SC2046  # the flags are words
    "$compiler" -std=c++20 -Wall -Wextra -Werror "$source/tests/install_consumer/main.cpp" \
        $(pkg-config --cflags --libs RenderingBase) -Wl,-rpath,"$libdir" -o "$consumer"
    ;;
*)
    echo "unknown way: $way" >&2
    exit 2
    ;;
esac

"$consumer" "$source/samples/images/studio.png"
"$prefix/bin/rba" --version
test -f "$libdir/libKVRRbaModel.so.0" && test -f "$libdir/libKVRHost.so.0"
# Every installed header compiles on its own.
cd "$prefix/include"
find RenderingBase -name '*.h' | sort | while read -r header; do
    printf '#include "%s"\n' "$header" >"$work/alone.cpp"
    "$compiler" -std=c++20 -Wall -Wextra -Werror -fsyntax-only -I. "$work/alone.cpp" ||
        { echo "does not compile alone: $header"; exit 1; }
done
