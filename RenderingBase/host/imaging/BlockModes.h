#pragma once

/// @file  The modes of BC7: how a block is divided into fields.
///
///   0...01             the mode: as many zeros as its number
///   partition          which division into subsets
///   rotation           which channel has changed places with alpha
///   selection          which of two sets of indices is that of the colours
///   R R.. G G.. B B..  both ends of each subset's line, channel by channel
///   A A..
///   p p..              one more bit below all channels of an end, or of both ends of a line
///   indices            row by row
///   indices            the second set, for the alpha channel
///
/// Sources: Khronos Data Format Standard, "BPTC Compressed Texture Image Formats"; Microsoft,
/// "BC7 Format".

#include "RenderingBase/host/imaging/BlockBits.h"
#include "RenderingBase/host/imaging/BlockPartitions.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace rb::imaging {

/// The widths of the fields, in bits.
struct BlockMode {
    unsigned subsets;
    unsigned partition;
    unsigned rotation;
    unsigned selection;
    unsigned color;  ///< One channel of one end.
    unsigned alpha;
    unsigned endP;   ///< For each end.
    unsigned lineP;  ///< For each line.
    unsigned index;
    unsigned second;  ///< The second set of indices.
};

inline constexpr std::array<BlockMode, 8> kModes = {{
    {3, 4, 0, 0, 4, 0, 1, 0, 3, 0},
    {2, 6, 0, 0, 6, 0, 0, 1, 3, 0},
    {3, 6, 0, 0, 5, 0, 0, 0, 2, 0},
    {2, 6, 0, 0, 7, 0, 1, 0, 2, 0},
    {1, 0, 2, 1, 5, 6, 0, 0, 2, 3},
    {1, 0, 2, 0, 7, 8, 0, 0, 2, 2},
    {1, 0, 0, 0, 7, 7, 1, 0, 4, 0},
    {2, 6, 0, 0, 5, 5, 1, 0, 2, 0},
}};

/// Two bits a pixel: the subset that it belongs to.
template <unsigned subsets>
std::uint32_t subsetsOfPixels(std::uint32_t partition) {
    static_assert(subsets <= 3);
    return subsets == 1 ? 0 : subsets == 2 ? kTwoSubsets[partition] : kThreeSubsets[partition];
}

/// Gives the indices of all pixels the same width.
template <unsigned subsets, unsigned indexBits>
std::uint64_t evenIndices(std::uint64_t stored, std::uint32_t partition) {
    constexpr unsigned kUppermost = indexBits - 1;
    std::uint64_t indices = withZeroAt(stored, kUppermost);
    if constexpr (subsets == 2) {
        const unsigned anchor = kSecondAnchorOfTwo[partition];
        indices = withZeroAt(indices, anchor * indexBits + kUppermost);
    } else if constexpr (subsets == 3) {
        const unsigned b = kSecondAnchorOfThree[partition], c = kThirdAnchorOfThree[partition];
        indices = withZeroAt(indices, std::min(b, c) * indexBits + kUppermost);
        indices = withZeroAt(indices, std::max(b, c) * indexBits + kUppermost);
    }
    return indices;
}

}  // namespace rb::imaging
