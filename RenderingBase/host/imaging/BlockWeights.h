#pragma once

/// @file  The steps between two ends in BC6H and BC7: index i stands for w / 64 of the second end.
///
/// Source: Khronos Data Format Standard, "BPTC Compressed Texture Image Formats".

#include <array>
#include <cstdint>

namespace rb::imaging {

/// The weights of indices with @p bits bits: 64 i / (2^bits - 1), rounded to the nearest.
template <unsigned bits>
constexpr std::array<std::uint8_t, 1u << bits> indexWeights() {
    std::array<std::uint8_t, 1u << bits> weights{};
    constexpr std::uint32_t kLast = weights.size() - 1;
    for (std::uint32_t i = 0; i <= kLast; ++i)
        weights[i] = static_cast<std::uint8_t>((2 * 64 * i + kLast) / (2 * kLast));
    return weights;
}

static_assert(indexWeights<2>() == std::array<std::uint8_t, 4>{0, 21, 43, 64});
static_assert(indexWeights<3>() == std::array<std::uint8_t, 8>{0, 9, 18, 27, 37, 46, 55, 64});
static_assert(indexWeights<4>() == std::array<std::uint8_t, 16>{0, 4, 9, 13, 17, 21, 26, 30, 34, 38,
                                                                43, 47, 51, 55, 60, 64});

}  // namespace rb::imaging
