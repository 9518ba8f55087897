// BC7: lines of RGBA colours, one for each of one to three subsets of the pixels, and an index a
// pixel that says where on its line it lies. See BlockModes.h for the layout.

#include "RenderingBase/host/imaging/BlockModes.h"

#include "RenderingBase/host/imaging/BlockBits.h"
#include "RenderingBase/host/imaging/BlockRuns.h"
#include "RenderingBase/host/imaging/BlockWeights.h"

#include <array>
#include <bit>
#include <type_traits>

namespace rb::imaging {
namespace {

/// The ends of a block's lines, two a subset: RGBA, in the order of memory.
template <unsigned subsets>
using Ends = std::array<std::uint32_t, 2 * subsets>;

/// Makes a byte of the uppermost bits of one: what is missing repeats the first of them.
template <unsigned width>
constexpr std::uint32_t byteOf(std::uint32_t value) {
    static_assert(width >= 4 && width <= 8);
    return value << (8 - width) | value >> (2 * width - 8);
}

template <std::size_t number>
Ends<kModes[number].subsets> takeEnds(BlockBits& bits) {
    constexpr BlockMode kMode = kModes[number];
    constexpr unsigned kEnds = 2 * kMode.subsets;
    constexpr unsigned kP = kMode.endP + kMode.lineP;  // bits more
    // A channel of all ends at once.
    const std::array<std::uint32_t, 3> colors = {bits.take(kEnds * kMode.color),
                                                 bits.take(kEnds * kMode.color),
                                                 bits.take(kEnds * kMode.color)};
    const std::uint32_t alphas = bits.take(kEnds * kMode.alpha);
    const std::uint32_t ps = bits.take(kEnds * kMode.endP + kMode.subsets * kMode.lineP);
    Ends<kMode.subsets> ends{};
    for (unsigned i = 0; i < kEnds; ++i) {
        const std::uint32_t p = ps >> (kMode.lineP ? i / 2 : i) & kP;
        const auto channel = [p, i]<unsigned width>(std::uint32_t values,
                                                    std::integral_constant<unsigned, width>) {
            const std::uint32_t stored = values >> i * width & ((1u << width) - 1);
            return byteOf<width + kP>(stored << kP | p);
        };
        constexpr std::integral_constant<unsigned, kMode.color> kColor;
        ends[i] = channel(colors[0], kColor) | channel(colors[1], kColor) << 8 |
                  channel(colors[2], kColor) << 16;
        if constexpr (kMode.alpha > 0)
            ends[i] |= channel(alphas, std::integral_constant<unsigned, kMode.alpha>{}) << 24;
        else
            ends[i] |= 0xff000000;
    }
    return ends;
}

/// Spreads the bytes R, G, B, A of a pixel over four lanes of 16 bits, in the order R, B, G, A.
constexpr std::uint64_t lanesOf(std::uint32_t pixel) {
    return (pixel & 0x00ff00ff) | std::uint64_t{pixel >> 8 & 0x00ff00ff} << 32;
}

/// The colours on the line between two ends, into @p palette.
template <unsigned indexBits>
void mixColors(std::uint32_t first, std::uint32_t second, std::uint32_t* palette) {
    constexpr auto kWeights = indexWeights<indexBits>();
    const std::uint64_t a = lanesOf(first), b = lanesOf(second);
    for (std::size_t i = 0; i < kWeights.size(); ++i) {
        const std::uint64_t mixed = a * (64u - kWeights[i]) + b * kWeights[i] + 0x0020002000200020;
        const std::uint64_t lanes = mixed >> 6 & 0x00ff00ff00ff00ff;
        palette[i] = static_cast<std::uint32_t>(lanes | lanes >> 24);
    }
}

/// Modes with one set of indices.
template <std::size_t number>
void decodeLines(BlockBits bits, std::byte* pixels, std::size_t rowBytes) {
    constexpr BlockMode kMode = kModes[number];
    const std::uint32_t partition = bits.take(kMode.partition);
    const auto ends = takeEnds<number>(bits);
    constexpr unsigned kMost = (1u << kMode.index) - 1;
    std::array<std::uint32_t, kMode.subsets << kMode.index> palette;
    for (unsigned i = 0; i < kMode.subsets; ++i)
        mixColors<kMode.index>(ends[2 * i], ends[2 * i + 1], &palette[i << kMode.index]);
    std::uint64_t indices = evenIndices<kMode.subsets, kMode.index>(bits.next(), partition);
    std::uint32_t subsets = subsetsOfPixels<kMode.subsets>(partition);
    for (unsigned row = 0; row < 4; ++row, pixels += rowBytes) {
        for (unsigned column = 0; column < 4; ++column) {
            const std::size_t entry = (indices & kMost) | (subsets & 3) << kMode.index;
            storeWord(pixels + 4 * column, palette[entry]);
            indices >>= kMode.index;
            subsets >>= 2;
        }
    }
}

/// Exchanges a byte of a pixel with its alpha.
constexpr std::uint32_t exchanged(std::uint32_t pixel, unsigned shift) {
    const std::uint32_t difference = (pixel >> 24 ^ pixel >> shift) & 255;
    return pixel ^ difference << 24 ^ difference << shift;
}

/// Modes with one line and two sets of indices: one for three of the channels, one for the fourth.
template <std::size_t number>
void decodeTwoSets(BlockBits bits, std::byte* pixels, std::size_t rowBytes) {
    constexpr BlockMode kMode = kModes[number];
    const std::uint32_t rotation = bits.take(kMode.rotation);
    const bool colorIsSecond = bits.take(kMode.selection) != 0;
    auto ends = takeEnds<number>(bits);
    const unsigned apart = rotation == 0 ? 24 : 8 * (rotation - 1);  // where the fourth one goes
    if (rotation != 0)
        for (std::uint32_t& end : ends) end = exchanged(end, apart);
    std::array<std::uint32_t, 1u << kMode.index> first;
    std::array<std::uint32_t, 1u << kMode.second> second;
    mixColors<kMode.index>(ends[0], ends[1], first.data());
    mixColors<kMode.second>(ends[0], ends[1], second.data());
    const std::uint32_t ofSecond = (255u << apart) ^ (colorIsSecond ? 0xffffffff : 0);
    std::uint64_t indices = withZeroAt(bits.take(16 * kMode.index - 1), kMode.index - 1);
    std::uint64_t seconds = withZeroAt(bits.next(), kMode.second - 1);
    for (unsigned row = 0; row < 4; ++row, pixels += rowBytes) {
        for (unsigned column = 0; column < 4; ++column) {
            const std::uint32_t one = first[indices & ((1u << kMode.index) - 1)];
            const std::uint32_t other = second[seconds & ((1u << kMode.second) - 1)];
            storeWord(pixels + 4 * column, one ^ ((one ^ other) & ofSecond));
            indices >>= kMode.index;
            seconds >>= kMode.second;
        }
    }
}

template <std::size_t number>
void decodeMode(BlockBits bits, std::byte* pixels, std::size_t rowBytes) {
    bits.take(number + 1);
    if constexpr (kModes[number].second > 0)
        decodeTwoSets<number>(bits, pixels, rowBytes);
    else
        decodeLines<number>(bits, pixels, rowBytes);
}

/// The reserved mode.
void decodeNothing(BlockBits, std::byte* pixels, std::size_t rowBytes) {
    for (std::size_t row = 0; row < 4; ++row) std::memset(pixels + row * rowBytes, 0, 16);
}

}  // namespace

void decodeBc7Run(const std::byte* blocks, std::size_t count, std::byte* pixels,
                  std::size_t rowBytes) {
    using Decode = void (*)(BlockBits, std::byte*, std::size_t);
    static constexpr Decode kDecode[] = {decodeMode<0>, decodeMode<1>, decodeMode<2>,
                                         decodeMode<3>, decodeMode<4>, decodeMode<5>,
                                         decodeMode<6>, decodeMode<7>, decodeNothing};
    for (std::size_t i = 0; i < count; ++i, blocks += 16, pixels += 16) {
        const auto mode = std::countr_zero(std::to_integer<std::uint8_t>(*blocks));
        kDecode[mode](BlockBits(blocks), pixels, rowBytes);
    }
}

}  // namespace rb::imaging
