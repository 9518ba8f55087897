#pragma once

/// @file  One 16-bit floating-point number and its conversion from and to `float`.
///
/// For whole arrays of pixels the host's `RenderingBase/host/imaging/HalfArrays.h` gives the same
/// bits many times faster.
///
///     const openexr_half stored = float_to_half(0.1f);   // stored.bits() == 0x2e66
///     const float loaded = half_to_float(stored);        // 0.0999755859375f

#include "RenderingBase/host/base/KVRExport.h"

#include <array>
#include <cstdint>

/// The bits of one IEEE 754 binary16 number, as half-float images store their pixels.
///
///   bits     15     14 to 10               9 to 0
///   meaning  sign   exponent, bias 15      mantissa
///
/// It only holds the bits: there is no arithmetic, and comparing is left to `half_to_float`,
/// because equal bits are not equal numbers for NaN and for the two zeros. Two bytes, trivially
/// copyable: an array of it is an array of 16-bit words.
///
/// Threads: plain values and constant tables; nothing to lock.
class KVR_EXPORT openexr_half {
public:
    constexpr openexr_half() noexcept = default;  ///< Positive zero.

    /// Takes the sixteen bits as they are: `openexr_half(0x3c00)` is 1.0.
    explicit constexpr openexr_half(std::uint16_t bits) noexcept : m_bits(bits) {}

    constexpr std::uint16_t bits() const noexcept { return m_bits; }  ///< The bits as stored.

    /// Half exponents by the upper nine bits (sign, then exponent) of a `float`.
    ///
    /// An entry is sign and exponent of the half, in place, for the 29 float exponents whose every
    /// mantissa rounds to a finite normal half, and 0 for all others. With m the 23 mantissa bits
    /// of the float and e a non-zero entry, the half is
    ///
    ///     e + ((m + 0xfff + ((m >> 13) & 1)) >> 13)
    static const std::array<std::uint16_t, 512> _eLut;

    /// The bits of the `float` of the same value, by the sixteen bits of a half.
    ///
    /// Every entry is exact. Infinities stay infinities; a NaN keeps its sign and its ten mantissa
    /// bits, as the upper ones of the `float`, signalling or not.
    static const std::array<std::uint32_t, 65536> _toFloat;

private:
    std::uint16_t m_bits = 0;
};

/// Gives the half nearest to @p value; of two equally near ones the one whose last bit is 0.
///
/// A magnitude up to 2^-25 gives zero, one from 65520 on gives infinity, both with the sign of
/// @p value. A NaN keeps its sign and its ten upper mantissa bits; where these are all 0, the
/// lowest is set, so that it stays a NaN. The rounding mode of the thread plays no part.
///
/// Errors: none. A finite @p value that becomes infinite raises the floating-point exceptions
/// `FE_OVERFLOW` and `FE_INEXACT`, as IEEE 754-2008, 7.4 has it; a thread that traps these is
/// trapped. Nothing else raises `FE_OVERFLOW`; other flags have no meaning after a call.
KVR_EXPORT openexr_half float_to_half(float value) noexcept;

/// Gives the `float` of the same value: `_toFloat[value.bits()]`. Exact, for every value.
KVR_EXPORT float half_to_float(openexr_half value) noexcept;
