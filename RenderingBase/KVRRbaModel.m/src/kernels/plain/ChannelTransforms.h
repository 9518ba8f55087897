#pragma once

/// @file  The definitions of what `kernels/ChannelTransforms.h` describes, one pixel after the
///        other: for pixels that fill no vector, and as the expectation of tests and benchmarks.

#include "RenderingBase/KVRRbaModel.m/src/kernels/ChannelTransforms.h"

namespace rb::kernels::plain {

/// Half of the greatest sum, 3 x 255, rounded up.
inline constexpr int kWhiteSum = 383;

void greyByLightness(Bytes source, std::size_t bytesPerPixel, BytesToWrite target);
void blackAndWhite(Bytes rgba, BytesToWrite target);
void invertAlpha(Bytes rgba, BytesToWrite target);
void invertColors(Bytes source, std::size_t bytesPerPixel, BytesToWrite target);
void maskFromAlpha(Bytes source, std::size_t bytesPerPixel, BytesToWrite target);

}  // namespace rb::kernels::plain
