#!/usr/bin/env bash
# Third-party headers are included where the table allows it and nowhere else, and the layers of the
# tree include downwards only.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

# header (a regular expression for the whole name)    sources that may include it (likewise)
allowed=$(
    cat <<'TABLE'
tiffio[.]h                  RenderingBase/host/imaging/formats/TiffHandle[.]h
jpeglib[.]h|jerror[.]h      RenderingBase/host/imaging/formats/Jpeg[A-Za-z]*[.](h|cpp)
png[.]h                     RenderingBase/host/imaging/formats/Png[A-Za-z]*[.](h|cpp)
libdeflate[.]h              RenderingBase/host/imaging/formats/(Png|Tiff|Deflate|Inflate)[A-Za-z]*[.](h|cpp)
zstd[.]h                    RenderingBase/host/imaging/formats/Ktx2Reader[.]cpp
zlib[.]h                    RenderingBase/host/imaging/formats/PsdInflate[.]cpp
Imf[A-Za-z]*[.]h|OpenEXR/.* RenderingBase/host/imaging/formats/Exr[A-Za-z]*[.](h|cpp)
Iex[.]h|Imath(Box|Vec)[.]h  RenderingBase/host/imaging/formats/Exr[A-Za-z]*[.](h|cpp)
Imath/half[.]h|half[.]h     RenderingBase/KVRRbaModel.m/src/openexr_half[.]cpp
lcms2[.]h                   RenderingBase/host/imaging/ColorEngine[.]cpp
stb/stb_image_resize[.]h    RenderingBase/host/imaging/KVRPixelImageZoom[.]cpp
glib[.]h                    RenderingBase/host/(base|app)/[A-Za-z]*[.]cpp
immintrin[.]h|cpuid[.]h     RenderingBase/host/imaging/(HalfArrays|Block)[A-Za-z0-9]*[.](h|cpp)
cpuid[.]h                   RenderingBase/KVRRbaModel.m/src/kernels/Processor[.]cpp
hwy/[a-z_]*[.]h             RenderingBase/KVRRbaModel.m/src/kernels/[A-Za-z]*(-inl[.]h|[.]cpp)
CLI/CLI[.]hpp               tools/rba/Precompiled[.]h
nlohmann/json[.]hpp         tools/rba/Precompiled[.]h
.*                          (tests|benchmarks)/.*
TABLE
)
# Headers of the system, for everything but the public headers.
system='(unistd|fcntl|spawn|dlfcn|locale|pthread|sys/[a-z]+)[.]h'

git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp' |
    xargs grep -HE '^[[:space:]]*#[[:space:]]*include[[:space:]]' |
    sed -E 's/^([^:]*):[[:space:]]*#[[:space:]]*include[[:space:]]*/\1 /' |
    awk -v table="$allowed" -v system_headers="^$system\$" '
BEGIN {
    rules = split(table, lines, "\n")
    for (i = 1; i <= rules; ++i) {
        split(lines[i], words, /[ \t]+/)
        header[i] = "^(" words[1] ")$"
        place[i] = "^(" words[2] ")$"
    }
    # From the bottom up; print and visu stand side by side.
    split("base modeler files store imaging print,visu app plm features", layers, " ")
    for (level in layers) {
        count = split(layers[level], names, ",")
        for (i = 1; i <= count; ++i) rank[names[i]] = level + 0
    }
}
function complain(text) {
    print source ": includes " name ": " text > "/dev/stderr"
    bad = 1
}
function layer(path, parts) {
    split(path, parts, "/")
    return parts[1] "/" parts[2] == "RenderingBase/host" ? parts[3] : ""
}
function area(path) {
    if (path ~ /^RenderingBase\/host\//) return "host"
    if (path ~ /^RenderingBase\/public\//) return "public"
    if (path ~ /^RenderingBase\//) return "library"
    sub(/\/.*/, "", path)
    return path
}
function checkThirdParty(i) {
    if (name !~ /[.\/]/) return  # the standard library
    if (name ~ system_headers && area(source) != "public") return
    for (i = 1; i <= rules; ++i)
        if (name ~ header[i] && source ~ place[i]) return
    complain("not in the table of scripts/check_includes.sh")
}
function checkDirection(from, to, below, above) {
    if (name !~ /\//) return complain("expected a path from the root of the tree")
    from = area(source); to = area(name)
    if (from == to && from != "host") return
    if (from == "host") {
        if (to != "host") return complain("the host includes only itself")
        above = layer(source); below = layer(name)
        if (!(above in rank) || !(below in rank)) return complain("not a known folder of the host")
        if (above != below && rank[above] <= rank[below])
            complain("host/" above " stands below or beside host/" below)
    } else if (from == "public") {
        if (to != "host") complain("public headers include public and host headers only")
    } else if (from == "library") {
        if (to != "host" && to != "public") complain("the library includes host and public headers only")
    } else if (from == "tools") {
        if (to != "host" && to != "public") complain("tools include host and public headers only")
    } else if (to == "tests" && from != "benchmarks") {
        complain("only tests and benchmarks include test support")
    }
}
{
    source = $1
    name = $2
    quoted = name ~ /^"/
    gsub(/[<>"]/, "", name)
    if (quoted) checkDirection(); else checkThirdParty()
}
END { exit bad }
'
