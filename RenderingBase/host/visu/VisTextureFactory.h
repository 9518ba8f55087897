#pragma once

/// @file  Makes textures of the visualisation.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/visu/IVisTexture.h"

class KVRPixelImage;

/// Makes textures whose texels stay in the memory of the processor.
///
/// All functions give the null handle on failure, and on another thread than the interactive one
/// (with an error in the host trace "VisTextureFactory").
class KVR_EXPORT VisTextureFactory {
public:
    VisTextureFactory() = delete;

    /// Makes a texture from a file: dds and ktx2 with their levels and faces, and every image that
    /// `KVRPixelImage` reads. Their first bytes tell which it is.
    /// @param path         UTF-8, in the form of the framework; null fails.
    /// @param mipMaps      Whether there shall be levels below the full size: those of the file, or
    ///                     else all down to 1 x 1.
    /// @param keepPixels   Whether texels will be read back. Kept for compatibility: they can be.
    /// @param usageFormat  Kept for compatibility; 0.
    /// Errors: `KVRLastImageError` tells why a file cannot be read.
    static IVisTexturePtr CreateTextureFromFile(const char* path, bool mipMaps, bool keepPixels,
                                                int usageFormat);

    /// Makes a texture from an image; later changes of the image do not show. The texels have the
    /// channels of the image, but BGR becomes RGB, and L_16 RGB16.
    /// Errors: null, an image without pixels, bilevel images.
    static IVisTexturePtr CreateTexture(const KVRPixelImage* image, bool mipMaps, bool keepPixels);
};
