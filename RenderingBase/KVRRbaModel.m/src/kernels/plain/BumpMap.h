#pragma once

/// @file  The definition of what `kernels/BumpMap.h` describes, one pixel after the other: for
///        pixels that fill no vector, and as the expectation of tests and benchmarks.

#include "RenderingBase/KVRRbaModel.m/src/kernels/BumpMap.h"

namespace rb::kernels::plain {

inline constexpr double kLargestSum = 765.0;  ///< 3 x 255
inline constexpr double kNormalZ = 0.5;       ///< Before the normal is made a unit vector.

void renderBumpMap(std::span<const std::uint8_t> rgb, std::size_t width,
                   std::span<std::uint8_t> out);

/// The pixels of one row from column @p begin to before @p end; @p out is the whole map.
void renderBumpMapPixels(std::span<const std::uint8_t> rgb, std::size_t width, std::size_t row,
                         std::size_t begin, std::size_t end, std::span<std::uint8_t> out);

}  // namespace rb::kernels::plain
