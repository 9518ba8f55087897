#pragma once

/// @file  The texel formats that KTX files name by number.

#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/TexelFormat.h"

#include <cstdint>

namespace rb::imaging {

/// The format with a number of VkFormat; a refusal for one that is not delivered.
ReadResult vulkanTexels(std::uint32_t number, TexelFormat& texels);

}  // namespace rb::imaging
