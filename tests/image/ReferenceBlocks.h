#pragma once

/// @file  Plain decoders of block-compressed textures: bit by bit and pixel by pixel, along the
/// words of the Khronos Data Format Standard. What the fast ones are compared with.

#include "RenderingBase/host/imaging/BlockPartitions.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>
#include <utility>

namespace rb::test {

using Block = std::span<const std::byte, 16>;
using HalfBlock = std::span<const std::byte, 8>;

/// The number of @p count bits from bit @p place of a block on, lowest first. Moves @p place.
inline int takeBits(std::span<const std::byte> block, int& place, int count) {
    int value = 0;
    for (int i = 0; i < count; ++i, ++place) {
        const int bit = std::to_integer<int>(block[static_cast<std::size_t>(place / 8)]);
        value |= (bit >> place % 8 & 1) << i;
    }
    return value;
}

/// (a (n - i) + b i) / n, rounded to the nearest, where n is 64 and i the weight of an index.
inline int mixedByIndex(int a, int b, int index, int indexBits) {
    const int last = (1 << indexBits) - 1;
    const int weight = static_cast<int>(std::lround(64.0 * index / last));
    return (a * (64 - weight) + b * weight + 32) >> 6;
}

inline int subsetOf(int subsets, int partition, int pixel) {
    const auto p = static_cast<std::size_t>(partition);
    if (subsets == 1) return 0;
    const auto all = subsets == 2 ? imaging::kTwoSubsets[p] : imaging::kThreeSubsets[p];
    return static_cast<int>(all >> 2 * pixel & 3);
}

/// Tells whether the index of a pixel has one bit less.
inline bool isAnchor(int subsets, int partition, int pixel) {
    const auto p = static_cast<std::size_t>(partition);
    if (pixel == 0) return true;
    if (subsets == 2) return pixel == imaging::kSecondAnchorOfTwo[p];
    return subsets == 3 &&
           (pixel == imaging::kSecondAnchorOfThree[p] || pixel == imaging::kThirdAnchorOfThree[p]);
}

inline std::array<int, 16> takeIndices(Block block, int& place, int subsets, int partition,
                                       int indexBits) {
    std::array<int, 16> indices{};
    for (int pixel = 0; pixel < 16; ++pixel) {
        const bool shorter = isAnchor(subsets, partition, pixel);
        indices[static_cast<std::size_t>(pixel)] =
            takeBits(block, place, indexBits - (shorter ? 1 : 0));
    }
    return indices;
}

using RgbaBlock = std::array<std::array<int, 4>, 16>;

inline RgbaBlock referenceBc1(HalfBlock block) {
    int place = 0;
    int stored[2], ends[2][3];
    for (int end = 0; end < 2; ++end) {
        stored[end] = takeBits(block, place, 16);
        ends[end][0] = static_cast<int>(std::lround((stored[end] >> 11) * 255 / 31.0));
        ends[end][1] = static_cast<int>(std::lround((stored[end] >> 5 & 63) * 255 / 63.0));
        ends[end][2] = static_cast<int>(std::lround((stored[end] & 31) * 255 / 31.0));
    }
    RgbaBlock pixels{};
    for (auto& pixel : pixels) {
        const int choice = takeBits(block, place, 2);
        if (choice == 3 && stored[0] <= stored[1]) continue;
        for (std::size_t c = 0; c < 3; ++c) {
            const int a = ends[0][c], b = ends[1][c];
            const int mixed = stored[0] <= stored[1] ? (a + b + 1) / 2
                              : choice == 2          ? (2 * a + b + 1) / 3
                                                     : (a + 2 * b + 1) / 3;
            pixel[c] = choice == 0 ? a : choice == 1 ? b : mixed;
        }
        pixel[3] = 255;
    }
    return pixels;
}

/// One channel, -1 to 1 as 0 to 255.
inline std::array<int, 16> referenceSigned(HalfBlock block) {
    int place = 0;
    double values[8] = {};
    for (int end = 0; end < 2; ++end) {
        const int stored = takeBits(block, place, 8);
        values[end] = stored == 128 ? -127 : stored > 128 ? stored - 256 : stored;
    }
    const int parts = values[0] > values[1] ? 7 : 5;
    for (int i = 1; i < parts; ++i)
        values[i + 1] = ((parts - i) * values[0] + i * values[1]) / parts;
    if (parts == 5) values[6] = -127, values[7] = 127;
    std::array<int, 16> pixels{};
    for (int& pixel : pixels) {
        // Halves are exact in these numbers up to their last digits, which must not decide.
        const double scaled = (values[takeBits(block, place, 3)] / 127 + 1) / 2 * 255;
        pixel = static_cast<int>(std::floor(scaled + 0.5 + 1e-9));
    }
    return pixels;
}

inline RgbaBlock referenceBc7(Block block) {
    // Subsets, and bits of: partition, rotation, selection, colour, alpha, an end's p, a line's p,
    // index, second index.
    static constexpr int kModes[8][10] = {
        {3, 4, 0, 0, 4, 0, 1, 0, 3, 0}, {2, 6, 0, 0, 6, 0, 0, 1, 3, 0},
        {3, 6, 0, 0, 5, 0, 0, 0, 2, 0}, {2, 6, 0, 0, 7, 0, 1, 0, 2, 0},
        {1, 0, 2, 1, 5, 6, 0, 0, 2, 3}, {1, 0, 2, 0, 7, 8, 0, 0, 2, 2},
        {1, 0, 0, 0, 7, 7, 1, 0, 4, 0}, {2, 6, 0, 0, 5, 5, 1, 0, 2, 0}};
    const int number = std::countr_zero(std::to_integer<std::uint8_t>(block[0]));
    if (number == 8) return {};
    const auto& [subsets, partitionBits, rotationBits, selectionBits, colorBits, alphaBits, endP,
                 lineP, indexBits, secondBits] = kModes[number];
    int place = number + 1;
    const int partition = takeBits(block, place, partitionBits);
    const int rotation = takeBits(block, place, rotationBits);
    const int selection = takeBits(block, place, selectionBits);
    int ends[6][4];
    for (std::size_t c = 0; c < 4; ++c)
        for (int end = 0; end < 2 * subsets; ++end)
            ends[end][c] = takeBits(block, place, c == 3 ? alphaBits : colorBits);
    int p = 0;
    for (int end = 0; end < 2 * subsets; ++end) {
        if (endP || (lineP && end % 2 == 0)) p = takeBits(block, place, 1);
        for (std::size_t c = 0; c < 4; ++c) {
            if (c == 3 && alphaBits == 0) {
                ends[end][c] = 255;
                continue;
            }
            int bits = c == 3 ? alphaBits : colorBits;
            if (endP || lineP) ends[end][c] = ends[end][c] << 1 | p, ++bits;
            ends[end][c] = (ends[end][c] << (8 - bits)) | (ends[end][c] >> (2 * bits - 8));
        }
    }
    const auto indices = takeIndices(block, place, subsets, partition, indexBits);
    const auto seconds =
        secondBits ? takeIndices(block, place, 1, 0, secondBits) : std::array<int, 16>{};
    RgbaBlock pixels{};
    for (std::size_t i = 0; i < 16; ++i) {
        const int line = 2 * subsetOf(subsets, partition, static_cast<int>(i));
        for (std::size_t c = 0; c < 4; ++c) {
            const bool second = secondBits != 0 && (c == 3) != (selection == 1);
            pixels[i][c] =
                mixedByIndex(ends[line][c], ends[line + 1][c], second ? seconds[i] : indices[i],
                             second ? secondBits : indexBits);
        }
        if (rotation) std::swap(pixels[i][3], pixels[i][static_cast<std::size_t>(rotation - 1)]);
    }
    return pixels;
}

/// A mode of BC6H in the words of the OpenGL extension ARB_texture_compression_bptc: v[a:b] are
/// bits a down to b of v, the lowest first, except that the highest is first where a is less than
/// b.
struct ReferenceHalfMode {
    int number;
    bool transformed;
    int partitionBits, endBits, deltaBits[3];
    std::string_view fields;
};

inline constexpr ReferenceHalfMode kReferenceHalfModes[] = {
    {0,
     true,
     5,
     10,
     {5, 5, 5},
     "g2[4],b2[4],b3[4],r0[9:0],g0[9:0],b0[9:0],r1[4:0],g3[4],g2[3:0],g1[4:0],b3[0],"
     "g3[3:0],b1[4:0],b3[1],b2[3:0],r2[4:0],b3[2],r3[4:0],b3[3],"},
    {1,
     true,
     5,
     7,
     {6, 6, 6},
     "g2[5],g3[4],g3[5],r0[6:0],b3[0],b3[1],b2[4],g0[6:0],b2[5],b3[2],g2[4],b0[6:0],"
     "b3[3],b3[5],b3[4],r1[5:0],g2[3:0],g1[5:0],g3[3:0],b1[5:0],b2[3:0],r2[5:0],"
     "r3[5:0],"},
    {2,
     true,
     5,
     11,
     {5, 4, 4},
     "r0[9:0],g0[9:0],b0[9:0],r1[4:0],r0[10],g2[3:0],g1[3:0],g0[10],b3[0],g3[3:0],"
     "b1[3:0],b0[10],b3[1],b2[3:0],r2[4:0],b3[2],r3[4:0],b3[3],"},
    {6,
     true,
     5,
     11,
     {4, 5, 4},
     "r0[9:0],g0[9:0],b0[9:0],r1[3:0],r0[10],g3[4],g2[3:0],g1[4:0],g0[10],g3[3:0],"
     "b1[3:0],b0[10],b3[1],b2[3:0],r2[3:0],b3[0],b3[2],r3[3:0],g2[4],b3[3],"},
    {10,
     true,
     5,
     11,
     {4, 4, 5},
     "r0[9:0],g0[9:0],b0[9:0],r1[3:0],r0[10],b2[4],g2[3:0],g1[3:0],g0[10],b3[0],"
     "g3[3:0],b1[4:0],b0[10],b2[3:0],r2[3:0],b3[1],b3[2],r3[3:0],b3[4],b3[3],"},
    {14,
     true,
     5,
     9,
     {5, 5, 5},
     "r0[8:0],b2[4],g0[8:0],g2[4],b0[8:0],b3[4],r1[4:0],g3[4],g2[3:0],g1[4:0],b3[0],"
     "g3[3:0],b1[4:0],b3[1],b2[3:0],r2[4:0],b3[2],r3[4:0],b3[3],"},
    {18,
     true,
     5,
     8,
     {6, 5, 5},
     "r0[7:0],g3[4],b2[4],g0[7:0],b3[2],g2[4],b0[7:0],b3[3],b3[4],r1[5:0],g2[3:0],"
     "g1[4:0],b3[0],g3[3:0],b1[4:0],b3[1],b2[3:0],r2[5:0],r3[5:0],"},
    {22,
     true,
     5,
     8,
     {5, 6, 5},
     "r0[7:0],b3[0],b2[4],g0[7:0],g2[5],g2[4],b0[7:0],g3[5],b3[4],r1[4:0],g3[4],"
     "g2[3:0],g1[5:0],g3[3:0],b1[4:0],b3[1],b2[3:0],r2[4:0],b3[2],r3[4:0],b3[3],"},
    {26,
     true,
     5,
     8,
     {5, 5, 6},
     "r0[7:0],b3[1],b2[4],g0[7:0],b2[5],g2[4],b0[7:0],b3[5],b3[4],r1[4:0],g3[4],"
     "g2[3:0],g1[4:0],b3[0],g3[3:0],b1[5:0],b2[3:0],r2[4:0],b3[2],r3[4:0],b3[3],"},
    {30,
     false,
     5,
     6,
     {6, 6, 6},
     "r0[5:0],g3[4],b3[0],b3[1],b2[4],g0[5:0],g2[5],b2[5],b3[2],g2[4],b0[5:0],g3[5],"
     "b3[3],b3[5],b3[4],r1[5:0],g2[3:0],g1[5:0],g3[3:0],b1[5:0],b2[3:0],r2[5:0],"
     "r3[5:0],"},
    {3, false, 0, 10, {10, 10, 10}, "r0[9:0],g0[9:0],b0[9:0],r1[9:0],g1[9:0],b1[9:0],"},
    {7,
     true,
     0,
     11,
     {9, 9, 9},
     "r0[9:0],g0[9:0],b0[9:0],r1[8:0],r0[10],g1[8:0],g0[10],b1[8:0],b0[10],"},
    {11,
     true,
     0,
     12,
     {8, 8, 8},
     "r0[9:0],g0[9:0],b0[9:0],r1[7:0],r0[10:11],g1[7:0],g0[10:11],b1[7:0],b0[10:11],"},
    {15,
     true,
     0,
     16,
     {4, 4, 4},
     "r0[9:0],g0[9:0],b0[9:0],r1[3:0],r0[10:15],g1[3:0],g0[10:15],b1[3:0],b0[10:15],"},
};

inline const ReferenceHalfMode* referenceHalfMode(int number) {
    for (const ReferenceHalfMode& mode : kReferenceHalfModes)
        if (mode.number == number) return &mode;
    return nullptr;
}

/// Reads the values r0, g0, b0, r1 ... b3 that @p fields describe.
inline void takeFields(std::string_view fields, Block block, int& place, int (&ends)[4][3]) {
    while (!fields.empty()) {
        const std::string_view field = fields.substr(0, fields.find(','));
        fields.remove_prefix(field.size() + 1);
        int numbers[2] = {0, 0};
        int count = 0;
        for (const char c : field.substr(3)) {
            if (c >= '0' && c <= '9') numbers[count] = numbers[count] * 10 + (c - '0');
            if (c == ':') ++count;
        }
        const int from = count == 0 ? numbers[0] : numbers[1], to = numbers[0];
        int& value = ends[field[1] - '0'][std::string_view("rgb").find(field[0])];
        for (int bit = from;; bit += from < to ? 1 : -1) {
            value |= takeBits(block, place, 1) << bit;
            if (bit == to) break;
        }
    }
}

inline int signExtended(int value, int bits) {
    return value >= 1 << (bits - 1) ? value - (1 << bits) : value;
}

inline int unquantized(int x, int bits, bool isSigned) {
    if (!isSigned) {
        if (bits >= 15) return x;
        if (x == 0) return 0;
        if (x == (1 << bits) - 1) return 0xFFFF;
        return ((x << 15) + 0x4000) >> (bits - 1);
    }
    if (bits >= 16 || x == 0) return x;
    const int magnitude = std::abs(x);
    const int wide =
        magnitude >= (1 << (bits - 1)) - 1 ? 0x7FFF : ((magnitude << 15) + 0x4000) >> (bits - 1);
    return x < 0 ? -wide : wide;
}

/// Binary16 bits: red, green, blue.
using HalvesBlock = std::array<std::array<int, 3>, 16>;

inline HalvesBlock referenceBc6h(Block block, bool isSigned) {
    int place = 0;
    int number = takeBits(block, place, 2);
    if (number > 1) number |= takeBits(block, place, 3) << 2;
    const ReferenceHalfMode* const mode = referenceHalfMode(number);
    if (!mode) return {};
    int ends[4][3] = {};
    takeFields(mode->fields, block, place, ends);
    const int partition = takeBits(block, place, mode->partitionBits);
    for (int end = 0; end < 4; ++end) {
        for (std::size_t c = 0; c < 3; ++c) {
            int& value = ends[end][c];
            if (isSigned || (end > 0 && mode->transformed))
                value = signExtended(value, end > 0 ? mode->deltaBits[c] : mode->endBits);
            if (end == 0 || !mode->transformed) continue;
            value = (ends[0][c] + value) & ((1 << mode->endBits) - 1);
            if (isSigned) value = signExtended(value, mode->endBits);
        }
    }
    const int subsets = mode->partitionBits ? 2 : 1;
    const int indexBits = mode->partitionBits ? 3 : 4;
    const auto indices = takeIndices(block, place, subsets, partition, indexBits);
    HalvesBlock pixels{};
    for (std::size_t i = 0; i < 16; ++i) {
        const int line = 2 * subsetOf(subsets, partition, static_cast<int>(i));
        for (std::size_t c = 0; c < 3; ++c) {
            const int mixed = mixedByIndex(unquantized(ends[line][c], mode->endBits, isSigned),
                                           unquantized(ends[line + 1][c], mode->endBits, isSigned),
                                           indices[i], indexBits);
            pixels[i][c] = !isSigned   ? mixed * 31 / 64
                           : mixed < 0 ? 0x8000 | -mixed * 31 / 32
                                       : mixed * 31 / 32;
        }
    }
    return pixels;
}

}  // namespace rb::test
