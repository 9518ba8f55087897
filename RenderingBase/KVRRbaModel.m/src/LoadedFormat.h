#pragma once

/// @file  The format in which images are handed out. Private to the library.

#include "RenderingBase/host/imaging/KVRPixelImageFormat.h"

namespace rb {

/// What becomes of an image's format once it is loaded: orders of red, green and blue become RGB,
/// those with alpha RGBA; every other format stays.
constexpr KVRPixelImageFormat loadedFormat(KVRPixelImageFormat stored) {
    switch (stored) {
        case KVRPixelImageFormat::BGR:
            return KVRPixelImageFormat::RGB;
        case KVRPixelImageFormat::BGRA:
        case KVRPixelImageFormat::ARGB:
        case KVRPixelImageFormat::ABGR:
            return KVRPixelImageFormat::RGBA;
        default:
            return stored;
    }
}

}  // namespace rb
