#pragma once

/// @file  From the bytes of a texture container to the pixels of all its faces and levels. Private
/// to host/imaging.

#include "RenderingBase/host/imaging/PixelStorage.h"
#include "RenderingBase/host/imaging/formats/TextureReader.h"

#include <cstddef>
#include <span>
#include <vector>

namespace rb::imaging {

/// A texture file, decoded.
struct LoadedTexture {
    TextureHeader header;
    /// Pixels of `header.texels.delivered`: face by face, of each all levels.
    std::vector<PixelStorage> surfaces;

    PixelStorage& surface(int face, int level) {
        return surfaces[static_cast<std::size_t>(face) * static_cast<std::size_t>(header.levels) +
                        static_cast<std::size_t>(level)];
    }
};

/// The one of @p formats by which a file begins; null when there is none.
const TextureFormat* recogniseTexture(ByteSource& source, std::span<const TextureFormat> formats);

/// Reads and decodes a texture. The faces together may have as many pixels at level 0 as an image
/// may have, and the file must have the bytes that its header calls for (`checkSize`). Never
/// throws.
/// @param formats  Those to be tried.
ReadResult loadTexture(ByteSource& source, std::span<const TextureFormat> formats,
                       LoadedTexture& texture);

}  // namespace rb::imaging
