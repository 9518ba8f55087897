#pragma once

/// @file  A look at the first directory of a TIFF file before the codec library sees it: it keeps a
/// copy of the value of every field, also of unknown ones, and all may claim the same bytes.

#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/TiffHandle.h"

namespace rb::imaging {

/// Compares where the first directory stands, how many fields it has and how many bytes their
/// values have together with the size of the file.
ReadResult checkTiffDirectory(SharedSource& source);

}  // namespace rb::imaging
