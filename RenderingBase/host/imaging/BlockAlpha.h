#pragma once

/// @file  The block of one channel that BC3 uses for alpha, BC4 once and BC5 twice.
///
///   bytes 0, 1   the ends of a line
///   bytes 2-7    the choices, three bits a pixel, from the lowest bits, row by row
///
/// Choices 0 and 1 are the ends. When the first end is larger, 2 to 7 are the values that cut the
/// line into seven equal parts. Otherwise 2 to 5 cut it into five, 6 is the least value and 7 the
/// greatest. Sources: as for BC1; Khronos Data Format Standard, "RGTC Compressed Texture Image
/// Formats".

#include "RenderingBase/host/imaging/BlockBits.h"

#include <algorithm>

namespace rb::imaging {

/// The eight values of a block, the first in the lowest byte. Mixed values (n + 1) / 7 or (n + 1) /
/// 5 are rounded down, as other readers do.
inline std::uint64_t eightAlphas(const std::byte* block) {
    const auto a = std::to_integer<std::uint32_t>(block[0]);
    const auto b = std::to_integer<std::uint32_t>(block[1]);
    std::uint64_t values = a | b << 8;
    if (a > b) {
        for (std::uint32_t i = 1; i < 7; ++i)
            values |= std::uint64_t{((7 - i) * a + i * b + 1) / 7} << 8 * (i + 1);
        return values;
    }
    for (std::uint32_t i = 1; i < 5; ++i)
        values |= std::uint64_t{((5 - i) * a + i * b + 1) / 5} << 8 * (i + 1);
    return values | std::uint64_t{255} << 56;
}

/// The byte for n / parts steps of 1/127: the nearest to (n / (127 parts) + 1) / 2 * 255, halves
/// up.
constexpr std::uint64_t byteOfSigned(int n, int parts) {
    const int doubled = 2 * 255 * (n + 127 * parts);  // in units of 1 / (2 * 254 * parts)
    return static_cast<std::uint64_t>((doubled + 254 * parts) / (2 * 254 * parts));
}

/// The same for a block of signed numbers, -127 to 127 for -1 to 1; -128 counts as -127. The values
/// are delivered as bytes, 0 for -1 and 255 for 1; fractions are exact until then.
inline std::uint64_t eightSigned(const std::byte* block) {
    const int a = std::max<int>(-127, static_cast<std::int8_t>(block[0]));
    const int b = std::max<int>(-127, static_cast<std::int8_t>(block[1]));
    std::uint64_t values = byteOfSigned(a, 1) | byteOfSigned(b, 1) << 8;
    if (a > b) {
        for (int i = 1; i < 7; ++i) values |= byteOfSigned((7 - i) * a + i * b, 7) << 8 * (i + 1);
        return values;
    }
    for (int i = 1; i < 5; ++i) values |= byteOfSigned((5 - i) * a + i * b, 5) << 8 * (i + 1);
    return values | std::uint64_t{255} << 56;
}

/// The value that the three lowest bits of @p choices choose.
inline std::uint64_t chosenAlpha(std::uint64_t values, std::uint64_t choices) {
    return values >> 8 * (choices & 7) & 255;
}

}  // namespace rb::imaging
