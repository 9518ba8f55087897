#pragma once

/// @file  Pixels from one format into another. Pure computation.

#include "RenderingBase/host/imaging/KVRPixelImageFormat.h"

#include <cstddef>

namespace rb::imaging {

/// Converts @p pixels pixels by the rules that `KVRPixelImage::Duplicate` states. Both layouts have
/// channels; @p in and @p out do not overlap.
void convertPixels(const PixelLayout& from, const std::byte* in, const PixelLayout& to,
                   std::byte* out, std::size_t pixels);

}  // namespace rb::imaging
