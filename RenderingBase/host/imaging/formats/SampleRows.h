#pragma once

/// @file  Rows of samples of which pixels are made.

#include <cstddef>

namespace rb::imaging {

/// Big-endian samples of 16 bits as bytes: v * 255 / 65535, rounded. The two do not overlap.
void narrowSamples(const unsigned char* in, unsigned char* out, std::size_t samples);

/// Pixels out of one row each of 1 to 4 channels, a byte a sample.
void interleaveRows(std::size_t channels, const unsigned char* const* rows, unsigned char* out,
                    std::size_t pixels);

}  // namespace rb::imaging
