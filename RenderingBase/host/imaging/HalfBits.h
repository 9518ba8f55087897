#pragma once

/// @file  Conversion of one number between binary32 and binary16, on its bits, in integers only.
///
/// The base of the portable array conversions and of the table of `openexr_half`. Everything here
/// can be computed by the compiler.

#include <bit>
#include <cstdint>

namespace rb::imaging {

/// Divides @p value by 2^@p bits (1 to 24), to the nearest integer, ties to the even one.
constexpr std::uint32_t shiftedToNearest(std::uint32_t value, std::uint32_t bits) noexcept {
    const std::uint32_t odd = value >> bits & 1;
    return (value + (1u << (bits - 1)) - 1 + odd) >> bits;
}

/// The binary16 bits of the NaN whose binary32 magnitude bits are @p magnitude.
/// The upper ten mantissa bits stay; without any of them it would be an infinity.
constexpr std::uint32_t nanHalfBits(std::uint32_t magnitude) noexcept {
    const std::uint32_t payload = magnitude >> 13 & 0x3ff;
    return 0x7c00 | payload | (payload == 0 ? 1u : 0u);
}

/// The binary16 bits of the number with the binary32 bits @p floatBits, rounded to the nearest,
/// ties to even.
constexpr std::uint16_t halfBitsFromFloatBits(std::uint32_t floatBits) noexcept {
    constexpr std::uint32_t kInfinity = 0x7f800000;
    constexpr std::uint32_t kRoundsToInfinity = 0x477ff000;  // 65520, half way from 65504 to 65536
    constexpr std::uint32_t kSmallestNormal = 0x38800000;    // 2^-14
    constexpr std::uint32_t kRoundsToZero = 0x33000000;      // 2^-25, half the smallest subnormal
    const std::uint32_t sign = floatBits >> 16 & 0x8000;
    const std::uint32_t magnitude = floatBits & 0x7fffffff;
    std::uint32_t half = 0;
    if (magnitude > kInfinity) {
        half = nanHalfBits(magnitude);
    } else if (magnitude >= kRoundsToInfinity) {
        half = 0x7c00;
    } else if (magnitude >= kSmallestNormal) {
        // The exponent bias falls from 127 to 15; a carry out of the mantissa raises the exponent.
        half = shiftedToNearest(magnitude - ((127u - 15u) << 23), 13);
    } else if (magnitude >= kRoundsToZero) {
        // In units of 2^-24: the significand, scaled by 2^-23, times 2^(exponent - 127) times 2^24.
        const std::uint32_t exponent = magnitude >> 23;
        half = shiftedToNearest((magnitude & 0x7fffff) | 0x800000, 126 - exponent);
    }
    return static_cast<std::uint16_t>(sign | half);
}

/// The binary32 bits of the number with the binary16 bits @p halfBits; exact.
constexpr std::uint32_t floatBitsFromHalfBits(std::uint16_t halfBits) noexcept {
    const std::uint32_t sign = (halfBits & 0x8000u) << 16;
    const std::uint32_t exponent = halfBits >> 10 & 0x1fu;
    const std::uint32_t mantissa = halfBits & 0x3ffu;
    if (exponent == 0x1f) return sign | 0x7f800000 | mantissa << 13;
    if (exponent != 0) return sign | (exponent + (127 - 15)) << 23 | mantissa << 13;
    if (mantissa == 0) return sign;
    // Subnormal: the leading one moves up to the place of the implicit bit, and out of the
    // mantissa.
    const auto shift = static_cast<std::uint32_t>(std::countl_zero(mantissa)) - 21;
    return sign | (127 - 14 - shift) << 23 | (mantissa << shift & 0x3ff) << 13;
}

}  // namespace rb::imaging
