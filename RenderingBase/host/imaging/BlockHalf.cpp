// BC6H: lines of RGB colours with binary16 channels, one or two in a block, and an index a pixel
// that says where on its line it lies. What is mixed are the bits of the numbers, taken as
// integers: nearly their logarithm.
//
//   mode         two or five bits
//   ends         see BlockHalfLayouts.h
//   partition    five bits, in modes with two lines: which division into subsets
//   indices      row by row; four bits a pixel, or three with two lines
//
// Sources: Khronos Data Format Standard, "BPTC Compressed Texture Image Formats"; Microsoft,
// "BC6H Format".

#include "RenderingBase/host/imaging/BlockBits.h"
#include "RenderingBase/host/imaging/BlockHalfLayouts.h"
#include "RenderingBase/host/imaging/BlockPartitions.h"
#include "RenderingBase/host/imaging/BlockRuns.h"
#include "RenderingBase/host/imaging/BlockWeights.h"

#include <array>

namespace rb::imaging {
namespace {

using Ends = std::array<int, 16>;  // see HalfValue

/// Red, green and blue of a pixel, in the lowest 48 bits.
using HalfPixel = std::uint64_t;

constexpr int signExtended(int value, unsigned bits) {
    const int sign = 1 << (bits - 1);
    return (value ^ sign) - sign;
}

Ends takeEnds(const HalfLayout& layout, BlockBits& bits) {
    Ends ends{};
    for (const HalfRun& run : layout.runs) {
        if (run.count == 0) break;
        ends[run.value] |= static_cast<int>(bits.take(run.count) << run.lowest);
    }
    return ends;
}

/// Spreads a value of @p bits bits over the range of the format; the last steps reach its ends.
template <bool isSigned>
int unquantized(int value, unsigned bits) {
    if constexpr (isSigned) {
        if (bits >= 16 || value == 0) return value;
        const int magnitude = value < 0 ? -value : value;
        const int wide = magnitude >= (1 << (bits - 1)) - 1
                             ? 0x7fff
                             : ((magnitude << 15) + 0x4000) >> (bits - 1);
        return value < 0 ? -wide : wide;
    } else {
        if (bits >= 15 || value == 0) return value;
        return value == (1 << bits) - 1 ? 0xffff : ((value << 15) + 0x4000) >> (bits - 1);
    }
}

template <bool isSigned>
void completeEnds(const HalfLayout& layout, Ends& ends) {
    for (std::size_t channel = 0; channel < 3; ++channel) {
        int& base = ends[channel];
        if (isSigned) base = signExtended(base, layout.bits);
        for (std::size_t end = 1; end < (layout.twoLines ? 4 : 2); ++end) {
            int& other = ends[4 * end + channel];
            if (isSigned || layout.differences) other = signExtended(other, layout.others[channel]);
            if (layout.differences) {
                other = (base + other) & ((1 << layout.bits) - 1);
                if (isSigned) other = signExtended(other, layout.bits);
            }
            other = unquantized<isSigned>(other, layout.bits);
        }
        base = unquantized<isSigned>(base, layout.bits);
    }
}

/// The bits of the number that a mixed value stands for. The factor keeps it below infinity.
template <bool isSigned>
std::uint64_t halfBits(int mixed) {
    if constexpr (isSigned) {
        if (mixed < 0) return 0x8000u | static_cast<std::uint32_t>((-mixed * 31) >> 5);
        return static_cast<std::uint32_t>((mixed * 31) >> 5);
    } else {
        return static_cast<std::uint32_t>((mixed * 31) >> 6);
    }
}

/// The colours on the line between two ends.
template <bool isSigned, unsigned indexBits>
void mixHalves(const int* first, const int* second, HalfPixel* palette) {
    constexpr auto kWeights = indexWeights<indexBits>();
    for (std::size_t i = 0; i < kWeights.size(); ++i) {
        palette[i] = 0;
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const int mixed =
                (first[channel] * (64 - kWeights[i]) + second[channel] * kWeights[i] + 32) >> 6;
            palette[i] |= halfBits<isSigned>(mixed) << 16 * channel;
        }
    }
}

/// Writes a row of four pixels, 24 bytes.
void storeRow(std::byte* to, HalfPixel a, HalfPixel b, HalfPixel c, HalfPixel d) {
    storeWord(to, a | b << 48);
    storeWord(to + 8, b >> 16 | c << 32);
    storeWord(to + 16, c >> 32 | d << 16);
}

template <bool isSigned>
void decodeOneLine(const Ends& ends, BlockBits bits, std::byte* pixels, std::size_t rowBytes) {
    std::array<HalfPixel, 16> palette;
    mixHalves<isSigned, 4>(&ends[R0], &ends[R1], palette.data());
    std::uint64_t indices = withZeroAt(bits.next(), 3);
    for (std::size_t row = 0; row < 4; ++row, pixels += rowBytes, indices >>= 16)
        storeRow(pixels, palette[indices & 15], palette[indices >> 4 & 15],
                 palette[indices >> 8 & 15], palette[indices >> 12 & 15]);
}

template <bool isSigned>
void decodeTwoLines(const Ends& ends, BlockBits bits, std::byte* pixels, std::size_t rowBytes) {
    const std::uint32_t partition = bits.take(5);
    std::array<HalfPixel, 16> palette;
    mixHalves<isSigned, 3>(&ends[R0], &ends[R1], palette.data());
    mixHalves<isSigned, 3>(&ends[R2], &ends[R3], palette.data() + 8);
    std::uint64_t indices = withZeroAt(bits.next(), 2);
    indices = withZeroAt(indices, kSecondAnchorOfTwo[partition] * 3u + 2);
    std::uint32_t subsets = kTwoSubsets[partition];
    const auto pixel = [&](unsigned i) {
        return palette[(indices >> 3 * i & 7) | (subsets >> 2 * i & 1) << 3];
    };
    for (std::size_t row = 0; row < 4; ++row, pixels += rowBytes, indices >>= 12, subsets >>= 8)
        storeRow(pixels, pixel(0), pixel(1), pixel(2), pixel(3));
}

template <bool isSigned>
void decodeRun(const std::byte* blocks, std::size_t count, std::byte* pixels,
               std::size_t rowBytes) {
    for (std::size_t i = 0; i < count; ++i, blocks += 16, pixels += 24) {
        BlockBits bits(blocks);
        const std::size_t place = kHalfLayoutPlaces[bits.next() & 31];
        if (place == kNoHalfLayout) {
            for (std::size_t row = 0; row < 4; ++row) storeRow(pixels + row * rowBytes, 0, 0, 0, 0);
            continue;
        }
        const HalfLayout& layout = kHalfLayouts[place];
        bits.take(layout.number < 2 ? 2 : 5);
        Ends ends = takeEnds(layout, bits);
        completeEnds<isSigned>(layout, ends);
        (layout.twoLines ? decodeTwoLines<isSigned> : decodeOneLine<isSigned>)(ends, bits, pixels,
                                                                               rowBytes);
    }
}

}  // namespace

void decodeBc6hRun(const std::byte* blocks, std::size_t count, std::byte* pixels,
                   std::size_t rowBytes) {
    decodeRun<false>(blocks, count, pixels, rowBytes);
}

void decodeBc6hSignedRun(const std::byte* blocks, std::size_t count, std::byte* pixels,
                         std::size_t rowBytes) {
    decodeRun<true>(blocks, count, pixels, rowBytes);
}

}  // namespace rb::imaging
