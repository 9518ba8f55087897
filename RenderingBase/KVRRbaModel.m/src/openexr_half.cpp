#include "RenderingBase/public/openexr_half.h"

#include "RenderingBase/host/imaging/HalfBits.h"

#include <Imath/half.h>
#include <bit>
#include <cstddef>
#include <limits>
#include <type_traits>

static_assert(sizeof(openexr_half) == 2 && std::is_trivially_copyable_v<openexr_half>,
              "Half-float images are arrays of 16-bit words.");

namespace {

constexpr std::uint32_t kMagnitudeMask = 0x7fffffff;
constexpr std::uint32_t kMantissaMask = 0x007fffff;
constexpr std::uint32_t kInfinity = 0x7f800000;
constexpr std::uint32_t kRoundsToInfinity = 0x477ff000;  // 65520, half way from 65504 to 65536

// The rule by which Imath made its table up to its version 2; later versions have none.
constexpr std::array<std::uint16_t, 512> makeExponentTable() {
    std::array<std::uint16_t, 512> table{};
    for (std::uint32_t index = 0; index < table.size(); ++index) {
        const int exponent = static_cast<int>(index & 0xff) - (127 - 15);
        // At 0 the half is subnormal; at 30, the largest, rounding may reach infinity.
        if (exponent <= 0 || exponent >= 30) continue;
        const std::uint32_t sign = index >= 256 ? 0x8000 : 0;
        table[index] =
            static_cast<std::uint16_t>(sign | static_cast<std::uint32_t>(exponent) << 10);
    }
    return table;
}

constexpr std::array<std::uint32_t, 65536> makeFloatTable() {
    std::array<std::uint32_t, 65536> table{};
    // The negative half is a copy: every entry computed would exceed what clang computes by
    // default.
    constexpr std::uint32_t kSign = 0x8000;
    for (std::uint32_t bits = 0; bits < kSign; ++bits) {
        table[bits] = rb::imaging::floatBitsFromHalfBits(static_cast<std::uint16_t>(bits));
        table[bits | kSign] = table[bits] | kSign << 16;
    }
    return table;
}

// A multiplication raises the flag many times faster than std::feraiseexcept does; `volatile` keeps
// the compiler from carrying it out itself.
void raiseOverflow() {
    volatile float product = std::numeric_limits<float>::max();
    product = product * product;
}

// Imath's conversion, for what the exponent table leaves out. Compiled for processors with
// conversion instructions it becomes one of these, which makes NaNs quiet and raises no overflow;
// so these two cases do not reach it.
std::uint16_t fullConversion(float value, std::uint32_t floatBits) {
    const std::uint32_t magnitude = floatBits & kMagnitudeMask;
    if (magnitude > kInfinity) {
        const std::uint32_t sign = floatBits >> 16 & 0x8000;
        return static_cast<std::uint16_t>(sign | rb::imaging::nanHalfBits(magnitude));
    }
    if (magnitude >= kRoundsToInfinity && magnitude < kInfinity) raiseOverflow();
    return imath_float_to_half(value);
}

}  // namespace

constinit const std::array<std::uint16_t, 512> openexr_half::_eLut = makeExponentTable();
constinit const std::array<std::uint32_t, 65536> openexr_half::_toFloat = makeFloatTable();

openexr_half float_to_half(float value) noexcept {
    const auto floatBits = std::bit_cast<std::uint32_t>(value);
    // Zero by its bits: comparing numbers would take subnormals for zero on a thread that flushes
    // them.
    if ((floatBits & kMagnitudeMask) == 0) {
        return openexr_half(static_cast<std::uint16_t>(floatBits >> 16));
    }
    const std::uint32_t exponent = openexr_half::_eLut[floatBits >> 23];
    if (exponent == 0) return openexr_half(fullConversion(value, floatBits));
    // To nearest, ties to even; a carry out of the mantissa raises the exponent, as it should.
    const std::uint32_t mantissa = floatBits & kMantissaMask;
    const std::uint32_t rounded = (mantissa + 0xfff + (mantissa >> 13 & 1)) >> 13;
    return openexr_half(static_cast<std::uint16_t>(exponent + rounded));
}

float half_to_float(openexr_half value) noexcept {
    return std::bit_cast<float>(openexr_half::_toFloat[value.bits()]);
}
