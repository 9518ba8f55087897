#pragma once

/// @file  Decoding the strips and tiles of a TIFF file.

#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/TiffDirectory.h"
#include "RenderingBase/host/imaging/formats/TiffPixels.h"

#include <cstddef>

namespace rb::imaging {

/// Decodes all blocks into @p out, width x height delivered pixels; on all processors when there is
/// much to do. What the file says about its blocks is checked before any is decoded. Of several
/// faults, the one of the first block is reported.
ReadResult decodeTiffBlocks(SharedSource& source, const TiffDirectory& directory,
                            const TiffPixels& pixels, std::byte* out);

}  // namespace rb::imaging
