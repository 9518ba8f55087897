#pragma once

/// @file  What the segments of a JPEG file before its first scan say beside the picture.

#include "RenderingBase/host/imaging/ImageResolution.h"
#include "RenderingBase/host/imaging/formats/ByteSource.h"

#include <cstddef>
#include <vector>

namespace rb::imaging {

struct JpegSegments {
    /// Of the JFIF segment; when it is missing or states no unit, of the Exif segment.
    Resolution resolution;
    /// The ICC profile; empty without one, and when its pieces do not fit together.
    std::vector<std::byte> profile;
};

/// Reads the segments of the file from its beginning. A damaged segment counts as missing.
/// Throws std::bad_alloc.
/// Cost: reads up to the first scan; memory up to the size of a profile (at most 16 MiB).
JpegSegments readJpegSegments(ByteSource& source);

}  // namespace rb::imaging
