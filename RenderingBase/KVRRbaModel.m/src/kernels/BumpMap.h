#pragma once

/// @file  Normal maps from the brightness of pictures. Pure computation.

#include <cstddef>
#include <cstdint>
#include <span>

namespace rb::kernels {

/// Makes the normal map of a picture, taking its brightness for its height, with the Sobel
/// operator.
///
/// Brightness is (R + G + B) / 765. The normal is minus the slopes to the right and downwards, and
/// 0.5, made a unit vector; its components become bytes, -1 to 0, 1 to 255, truncated. A level
/// place is (127, 127, 255). All in double precision. At the borders pixels repeat themselves.
///
/// For compatibility the brightness of the pixel to the lower left is, unless it is a repeated one,
/// that of its own red and of the green and the blue of the pixel before it in memory.
/// @param rgb    Three bytes a pixel, rows top first, no padding.
/// @param width  Pixels in a row.
/// Every processor gives the same bytes.
/// @param out    As long as @p rgb, and another place.
/// Errors: throws std::bad_alloc. Cost: allocates four rows of double precision.
void renderBumpMap(std::span<const std::uint8_t> rgb, std::size_t width,
                   std::span<std::uint8_t> out);

}  // namespace rb::kernels
