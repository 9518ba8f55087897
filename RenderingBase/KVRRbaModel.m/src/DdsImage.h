#pragma once

/// @file  The image that a DDS file is loaded as. Private to the library.

class KVRPixelImage;
class KVRUnicodeString;

namespace rb {

/// Loads a DDS file as one picture: level 1 of one with levels, the mirror ball of a cube.
/// @return  A new image in its own format, one reference for the caller; null when there is none.
KVRPixelImage* loadDdsImage(const KVRUnicodeString& path);

}  // namespace rb
