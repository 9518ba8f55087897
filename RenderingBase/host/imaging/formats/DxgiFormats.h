#pragma once

/// @file  The texel formats that DDS files name by number.

#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/TexelFormat.h"

#include <cstdint>
#include <string>

namespace rb::imaging {

/// The format with a number of DXGI_FORMAT. Typeless ones are taken for unsigned numbers, or for
/// floats where there are no unsigned ones. Whole numbers, video and others that are no pictures
/// are refused by name.
/// @param where  In the file, for the refusal.
ReadResult dxgiTexels(std::uint32_t number, std::string where, TexelFormat& texels);

}  // namespace rb::imaging
