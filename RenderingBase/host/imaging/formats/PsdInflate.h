#pragma once

/// @file  Zipped merged pictures of PSD files.

#include "RenderingBase/host/imaging/PixelStorage.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/PsdHeader.h"

namespace rb::imaging {

/// Allocates @p planes and inflates into it all rows of all wanted channels, one after the other,
/// with big-endian samples. Throws std::bad_alloc.
ReadResult inflatePsdPlanes(ByteSource& source, const PsdHeader& header, PixelStorage& planes);

}  // namespace rb::imaging
