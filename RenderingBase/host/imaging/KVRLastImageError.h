#pragma once

/// @file  Why the last image of this thread was refused.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"

#include <string>

/// The reason of a refusal, in the words of whoever refused.
struct KVRImageError {
    KVRUnicodeString file;  ///< As it was given.
    std::string expected;   ///< For example "a PNG header of 13 bytes".
    std::string found;      ///< For example "the end of the file".
    std::string where;      ///< For example "byte 16"; empty when it is the file as a whole.

    /// One line: "oak.png: byte 16: expected a PNG header of 13 bytes, found the end of the file".
    KVR_EXPORT KVRUnicodeString Message() const;
};

/// The reason of the calling thread's last failed image operation (reading, raster information,
/// writing). All texts are empty when the last one succeeded, or when there was none.
KVR_EXPORT const KVRImageError& KVRLastImageError();

/// Sets the reason, for a service that fails after the host has done its part. Texts as above.
KVR_EXPORT void KVRSetLastImageError(const KVRUnicodeString& file, const char* expected,
                                     const char* found) noexcept;
