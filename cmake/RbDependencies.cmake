# Third-party libraries, each looked up once. scripts/setup.sh holds the packages they come from.

find_package(PkgConfig REQUIRED)
find_package(PNG REQUIRED)
find_package(JPEG REQUIRED)
find_package(TIFF REQUIRED)
find_package(Imath REQUIRED CONFIG)
find_package(OpenEXR REQUIRED CONFIG)
find_package(Threads REQUIRED)
pkg_check_modules(GLIB REQUIRED IMPORTED_TARGET glib-2.0)
pkg_check_modules(LCMS2 REQUIRED IMPORTED_TARGET lcms2)
pkg_check_modules(DEFLATE REQUIRED IMPORTED_TARGET libdeflate)
pkg_check_modules(ZSTD REQUIRED IMPORTED_TARGET libzstd)
find_path(STB_INCLUDE_DIR stb/stb_image_resize.h REQUIRED)
