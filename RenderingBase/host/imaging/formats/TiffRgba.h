#pragma once

/// @file  TIFF files that need the codec library's own conversion to RGB.

#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/TiffDirectory.h"
#include "RenderingBase/host/imaging/formats/TiffHandle.h"

#include <cstddef>

namespace rb::imaging {

/// Decodes a file with `TiffDirectory::throughRgba` into @p out, width x height 8-bit RGB pixels.
ReadResult decodeTiffThroughRgba(SharedSource& source, const TiffDirectory& directory,
                                 std::byte* out);

}  // namespace rb::imaging
