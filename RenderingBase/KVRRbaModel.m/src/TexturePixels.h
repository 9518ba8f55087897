#pragma once

/// @file  Which pixels an image of a texture has. Private to the library.

#include "RenderingBase/host/imaging/KVRPixelImageFormat.h"
#include "RenderingBase/host/visu/IVisTextureFormat.h"

namespace rb::textures {

/// The format of an image that holds such texels; `None` when there is none.
///
/// Another table than that of `KVRRbaImageServices::ConvertTextureFormat`, which knows fewer
/// formats, and sRGB; kept for compatibility.
inline KVRPixelImageFormat pixelsFor(IVisTextureFormat::Type format) {
    using Pixels = KVRPixelImageFormat;
    switch (format) {
        case IVisTextureFormat::L:
            return Pixels::L;
        case IVisTextureFormat::LA:
            return Pixels::LA;
        case IVisTextureFormat::RGB:
            return Pixels::RGB;
        case IVisTextureFormat::RGBA:
            return Pixels::RGBA;
        case IVisTextureFormat::RGB16:
            return Pixels::RGB_16;
        case IVisTextureFormat::RGBA16:
            return Pixels::RGBA_16;
        case IVisTextureFormat::BGRA:
            return Pixels::BGRA;
        case IVisTextureFormat::ARGB:
            return Pixels::ARGB;
        case IVisTextureFormat::ABGR:
            return Pixels::ABGR;
        case IVisTextureFormat::L_f:
            return Pixels::L_f;
        case IVisTextureFormat::RGB_f:
            return Pixels::RGB_f;
        case IVisTextureFormat::RGBA_f:
            return Pixels::RGBA_f;
        default:
            return Pixels::None;
    }
}

}  // namespace rb::textures
