#pragma once

/// @file  Rows of samples of which pixels are made.

#include "RenderingBase/host/imaging/formats/Endian.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace rb::imaging {

/// Big-endian samples of 16 bits as bytes: v * 255 / 65535, rounded. The formula is equal to that
/// for every v.
inline void narrowSamples(const unsigned char* __restrict in, unsigned char* __restrict out,
                          std::size_t samples) {
    const auto one = [in, out](std::size_t i) {
        out[i] = static_cast<unsigned char>((big16(in + 2 * i) * 255 + 32895) >> 16);
    };
    // Blocks of a fixed size are what compilers turn into vectors.
    constexpr std::size_t kBlock = 16;
    std::size_t i = 0;
    for (; i + kBlock <= samples; i += kBlock)
        for (std::size_t k = 0; k < kBlock; ++k) one(i + k);
    for (; i < samples; ++i) one(i);
}

template <std::size_t kChannels>
void interleaveRows(const unsigned char* const* rows, unsigned char* __restrict out,
                    std::size_t pixels) {
    std::array<const unsigned char*, kChannels> in;  // nothing that the stores below could change
    std::copy_n(rows, kChannels, in.begin());
    for (std::size_t x = 0; x < pixels; ++x, out += kChannels)
        for (std::size_t c = 0; c < kChannels; ++c) out[c] = in[c][x];
}

/// Pixels out of one row each of 1 to 4 channels, a byte a sample.
inline void interleaveRows(std::size_t channels, const unsigned char* const* rows,
                           unsigned char* out, std::size_t pixels) {
    switch (channels) {
        case 1:
            std::memcpy(out, rows[0], pixels);
            break;
        case 2:
            interleaveRows<2>(rows, out, pixels);
            break;
        case 3:
            interleaveRows<3>(rows, out, pixels);
            break;
        default:
            interleaveRows<4>(rows, out, pixels);
            break;
    }
}

}  // namespace rb::imaging
