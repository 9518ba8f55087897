#pragma once

/// @file  Pictures of half and float pixels.

#include "RenderingBase/host/imaging/HalfArrays.h"
#include "tests/image/TiffBuilder.h"

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

namespace rb::test {

/// A TIFF file of one row.
/// @param channels  1 grey, 3 colours, 4 colours and alpha.
/// @param bits      16 for half, 32 for float pixels.
/// @param values    As many as channels for each pixel.
inline std::string floatTiff(unsigned channels, unsigned bits, const std::vector<float>& values) {
    TiffBuilder tiff(static_cast<unsigned>(values.size()) / channels, 1);
    std::vector<std::uint64_t> numbers;
    if (bits == 16) {
        std::vector<std::uint16_t> halves(values.size());
        rb::imaging::halvesFromFloats(values, halves);
        numbers.assign(halves.begin(), halves.end());
    } else {
        for (const float value : values) numbers.push_back(std::bit_cast<std::uint32_t>(value));
    }
    constexpr unsigned kFloat = 3, kRgb = 2, kAlpha = 2;
    tiff.samples(channels, bits, kFloat).block(tiff.numbers(numbers, static_cast<int>(bits) / 8));
    if (channels > 1) tiff.set(262, TiffBuilder::kShort, {kRgb});
    if (channels == 4) tiff.set(338, TiffBuilder::kShort, {kAlpha});
    return tiff.build();
}

}  // namespace rb::test
