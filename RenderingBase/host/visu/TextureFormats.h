#pragma once

/// @file  Which texels stand for which pixels. Private to host/visu.

#include "RenderingBase/host/imaging/KVRPixelImageFormat.h"
#include "RenderingBase/host/visu/IVisTextureFormat.h"

namespace rb::visu {

/// The format of textures with the pixels of images in @p format.
struct TexelChoice {
    KVRPixelImageFormat pixels;  ///< To be converted to first; `None` when there is no such format.
    IVisTextureFormat::Type texels;
};

TexelChoice texelsFor(KVRPixelImageFormat format);

}  // namespace rb::visu
