#pragma once

/// @file  Pictures for the page.

#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "tools/rba/tour/Html.h"

#include <filesystem>
#include <string>

namespace rb::cli::tour {

/// A picture as the page embeds it.
struct Picture {
    std::string dataUri;
    int width = 0, height = 0;  ///< Pixels of the embedded version.
    bool hasAlpha = false;
    bool clamped = false;  ///< Made from floating-point pixels by cutting at 0 and 1.
};

/// A displayable version of @p image, made smaller where a side exceeds @p longestSide pixels.
/// It becomes a PNG, or a JPEG when it is opaque and its PNG would be large.
/// @param scratch  A folder in which it may write.
/// Throws Failure when it cannot be written.
Picture makePicture(const KVRPixelImage& image, int longestSide,
                    const std::filesystem::path& scratch);

/// The same in its own size and always a PNG, so that every pixel is what it is.
Picture makeExactPicture(const KVRPixelImage& image, const std::filesystem::path& scratch);

}  // namespace rb::cli::tour
