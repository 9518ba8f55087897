#pragma once

/// @file  A look at the headers of an OpenEXR file before the codec library sees them: it allocates
/// what attributes declare, whatever the file has.

#include "RenderingBase/host/imaging/formats/ByteSource.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"

namespace rb::imaging {

/// Walks over all attributes of all parts: compares their sizes with the bytes that are there and
/// limits their number.
ReadResult checkExrHeaders(ByteSource& source);

}  // namespace rb::imaging
