#pragma once

/// @file  The conversion between binary32 and binary16 worked out from the definition of the
/// numbers.
///
/// The values of all positive halves come from their definition, and the float half way between two
/// neighbours decides which of them a float becomes. No rounding arithmetic on bits takes part, so
/// that a mistake there is not repeated here.

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace rb::tests {

constexpr std::uint16_t kHalfInfinity = 0x7c00;
constexpr std::uint16_t kHalfSign = 0x8000;
constexpr std::uint32_t kFloatInfinity = 0x7f800000;
constexpr std::uint32_t kFloatSign = 0x80000000;
/// 65520, from which on a float becomes infinite.
constexpr std::uint32_t kFirstOverflow = 0x477ff000;

inline std::uint32_t bitsOf(float value) { return std::bit_cast<std::uint32_t>(value); }
inline float floatOf(std::uint32_t bits) { return std::bit_cast<float>(bits); }

inline bool isHalfNan(std::uint16_t half) { return (half & 0x7fff) > kHalfInfinity; }

/// Value of the positive half with these bits (IEEE 754-2008, 3.4). Infinity has the value 2^16
/// that it would have if it were one more finite number: rounding is decided as if it were.
inline double magnitudeOfHalf(std::uint16_t half) {
    const int exponent = half / 1024;
    const int fraction = half % 1024;
    return exponent == 0 ? std::ldexp(fraction, -24)
                         : std::ldexp(1024 + fraction, exponent - 15 - 10);
}

/// Bits of the float with the value of @p half; of a NaN, with its mantissa as the upper bits.
inline std::uint32_t referenceFloatBits(std::uint16_t half) {
    const auto magnitude = static_cast<std::uint16_t>(half % kHalfSign);
    const std::uint32_t sign = half >= kHalfSign ? kFloatSign : 0;
    if (magnitude >= kHalfInfinity) return sign + kFloatInfinity + (magnitude % 1024u) * 8192u;
    return sign + bitsOf(static_cast<float>(magnitudeOfHalf(magnitude)));
}

/// The largest positive float, by its bits, that becomes each of the halves from 0 to infinity.
class ReferenceHalf {
public:
    ReferenceHalf() {
        for (std::uint16_t half = 0; half < kHalfInfinity; ++half) {
            const double middle = (magnitudeOfHalf(half) + magnitudeOfHalf(half + 1)) / 2;
            const std::uint32_t middleBits = bitsOf(static_cast<float>(middle));
            // A float in the middle becomes the one of the two whose last bit is 0.
            m_last[half] = half % 2 == 0 ? middleBits : middleBits - 1;
        }
        m_last[kHalfInfinity] = kFloatInfinity;
    }

    /// Bits of the last positive float that becomes @p half (0 to infinity).
    std::uint32_t lastFloatBits(std::uint16_t half) const { return m_last[half]; }

    /// Bits of the half nearest to the float with the bits @p floatBits.
    std::uint16_t halfBits(std::uint32_t floatBits) const {
        const std::uint32_t magnitude = floatBits % kFloatSign;
        const int sign = floatBits >= kFloatSign ? kHalfSign : 0;
        if (magnitude > kFloatInfinity) return static_cast<std::uint16_t>(sign + nan(magnitude));
        const auto at = std::lower_bound(m_last.begin(), m_last.end(), magnitude);
        return static_cast<std::uint16_t>(sign + (at - m_last.begin()));
    }

private:
    static std::uint16_t nan(std::uint32_t magnitude) {
        const std::uint32_t kept = (magnitude - kFloatInfinity) / 8192;
        return static_cast<std::uint16_t>(kHalfInfinity + std::max(kept, 1u));
    }

    std::array<std::uint32_t, kHalfInfinity + 1> m_last{};
};

}  // namespace rb::tests
