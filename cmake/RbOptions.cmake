# Compiler settings shared by every target of ours, as one interface target: rb_settings.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()
# All programs and libraries in one folder: a program finds its libraries beside it without settings.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

option(RB_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" ON)
set(RB_SANITIZE "" CACHE STRING "Comma-separated sanitizers, such as address,undefined")

add_library(rb_settings INTERFACE)
target_compile_features(rb_settings INTERFACE cxx_std_20)
target_compile_options(rb_settings INTERFACE
    -Wall -Wextra -Wconversion -Wshadow -Wdouble-promotion
    $<$<BOOL:${RB_WARNINGS_AS_ERRORS}>:-Werror>
    # Results must not depend on what a compiler may fuse.
    -ffp-contract=off)
target_include_directories(rb_settings INTERFACE "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>")
if(RB_SANITIZE)
    # Every finding ends the program, so that a test fails on it.
    target_compile_options(rb_settings INTERFACE
        -fsanitize=${RB_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(rb_settings INTERFACE -fsanitize=${RB_SANITIZE})
else()
    # Undefined symbols are found when a library is linked, not when it is loaded.
    target_link_options(rb_settings INTERFACE -Wl,--no-undefined -Wl,--as-needed)
endif()
