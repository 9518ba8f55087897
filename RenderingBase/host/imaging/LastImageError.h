#pragma once

/// @file  Setting what KVRLastImageError reports. Private to host/imaging.

#include "RenderingBase/host/base/KVRUnicodeString.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"

namespace rb::imaging {

/// Remembers for the calling thread why @p file was refused; nothing clears it.
void noteImageResult(const KVRUnicodeString& file, const ReadResult& result);

/// The same when there was no memory to do the work, and so none for long texts: no file is named.
void noteLackOfMemory() noexcept;

}  // namespace rb::imaging
