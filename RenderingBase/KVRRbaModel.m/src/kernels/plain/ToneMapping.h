#pragma once

/// @file  The definitions of what `kernels/ToneMapping.h` describes, one pixel after the other:
///        for pixels that fill no vector, and as the expectation of tests and benchmarks.

#include "RenderingBase/KVRRbaModel.m/src/kernels/ToneMapping.h"

namespace rb::kernels::plain {

void toneMap(std::span<const float> values, std::size_t channels, AlphaRange alphaRange,
             std::span<std::uint8_t> rgba);
void repeatForColors(std::span<const float> values, std::span<float> rgb);

}  // namespace rb::kernels::plain
