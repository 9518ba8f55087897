#include "RenderingBase/public/openexr_half.h"
#include "tests/image/ReferenceHalf.h"

#include <Imath/half.h>
#include <cfenv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

using rb::tests::bitsOf;
using rb::tests::floatOf;
using rb::tests::isHalfNan;
using rb::tests::kFloatInfinity;
using rb::tests::kFloatSign;
using rb::tests::kHalfInfinity;
using rb::tests::referenceFloatBits;
using rb::tests::ReferenceHalf;

constexpr std::uint32_t kHalfCount = 65536;

std::uint16_t halfBits(float value) { return float_to_half(value).bits(); }
std::uint32_t floatBits(std::uint32_t half) {
    return bitsOf(half_to_float(openexr_half(static_cast<std::uint16_t>(half))));
}

bool raisesOverflow(float value) {
    std::feclearexcept(FE_ALL_EXCEPT);
    volatile float input = value;
    [[maybe_unused]] volatile std::uint16_t output = halfBits(input);
    return std::fetestexcept(FE_OVERFLOW) != 0;
}

TEST(OpenexrHalf, holds_the_bits_it_was_given) {
    static_assert(sizeof(openexr_half) == 2);
    static_assert(openexr_half().bits() == 0);
    openexr_half value(0xfc01);
    EXPECT_EQ(value.bits(), 0xfc01);
    value = openexr_half(0x3c00);
    EXPECT_EQ(value.bits(), 0x3c00);
}

TEST(OpenexrHalf, lies_in_arrays_as_words) {
    const openexr_half pixels[3] = {openexr_half(1), openexr_half(0x7bff), openexr_half(0x8000)};
    std::uint16_t words[3] = {};
    static_assert(sizeof pixels == sizeof words);
    std::memcpy(words, pixels, sizeof words);
    EXPECT_EQ(words[0], 1);
    EXPECT_EQ(words[1], 0x7bff);
    EXPECT_EQ(words[2], 0x8000);
}

TEST(OpenexrHalf, float_table_is_that_of_imath) {
    for (std::uint32_t half = 0; half < kHalfCount; ++half) {
        ASSERT_EQ(openexr_half::_toFloat[half], imath_half_to_float_table[half].i) << half;
    }
}

TEST(OpenexrHalf, exponent_table_follows_the_published_rule) {
    ASSERT_EQ(openexr_half::_eLut.size(), 512u);
    for (int index = 0; index < 256; ++index) {
        const int exponent = index - 112;
        const int expected = exponent <= 0 || exponent >= 30 ? 0 : exponent * 1024;
        ASSERT_EQ(openexr_half::_eLut[static_cast<std::size_t>(index)], expected) << index;
        const int negative = expected == 0 ? 0 : expected + 32768;
        ASSERT_EQ(openexr_half::_eLut[static_cast<std::size_t>(index) + 256], negative) << index;
    }
}

TEST(HalfToFloat, is_exact_for_every_half) {
    for (std::uint32_t half = 0; half < kHalfCount; ++half) {
        ASSERT_EQ(floatBits(half), referenceFloatBits(static_cast<std::uint16_t>(half))) << half;
    }
}

TEST(HalfToFloat, gives_the_known_values) {
    EXPECT_EQ(floatBits(0x8000), kFloatSign);
    EXPECT_EQ(half_to_float(openexr_half(0x3c00)), 1.0f);
    EXPECT_EQ(half_to_float(openexr_half(0xc000)), -2.0f);
    EXPECT_EQ(half_to_float(openexr_half(31743)), 65504.0f);
    EXPECT_EQ(half_to_float(openexr_half(1)), std::ldexp(1.0f, -24));
    EXPECT_EQ(half_to_float(openexr_half(0x0400)), std::ldexp(1.0f, -14));
    EXPECT_EQ(half_to_float(openexr_half(0xfc00)), -std::numeric_limits<float>::infinity());
}

TEST(HalfToFloat, keeps_signalling_nans_signalling) {
    EXPECT_EQ(floatBits(0x7c01), 0x7f802000u);
    EXPECT_EQ(floatBits(0xfdff), 0xffbfe000u);
    EXPECT_EQ(floatBits(0x7e00), 0x7fc00000u);
}

TEST(FloatToHalf, gives_the_known_values) {
    EXPECT_EQ(halfBits(0.0f), 0);
    EXPECT_EQ(halfBits(-0.0f), 32768);
    EXPECT_EQ(halfBits(1.0f), 0x3c00);
    EXPECT_EQ(halfBits(-2.0f), 0xc000);
    EXPECT_EQ(halfBits(0.1f), 0x2e66);
    EXPECT_EQ(halfBits(65504.0f), 31743);
    EXPECT_EQ(halfBits(std::numeric_limits<float>::infinity()), 31744);
    EXPECT_EQ(halfBits(-std::numeric_limits<float>::infinity()), 0xfc00);
}

TEST(FloatToHalf, becomes_infinite_from_65520_on) {
    EXPECT_EQ(halfBits(std::nextafter(65520.0f, 0.0f)), 31743);
    EXPECT_EQ(halfBits(65520.0f), 31744);
    EXPECT_EQ(halfBits(-65520.0f), 0xfc00);
    EXPECT_EQ(halfBits(std::numeric_limits<float>::max()), 31744);
}

TEST(FloatToHalf, raises_overflow_only_when_a_finite_value_becomes_infinite) {
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_TRUE(raisesOverflow(65520.0f));
    EXPECT_TRUE(raisesOverflow(-65520.0f));
    EXPECT_TRUE(raisesOverflow(-1e30f));
    EXPECT_TRUE(raisesOverflow(std::numeric_limits<float>::max()));
    EXPECT_FALSE(raisesOverflow(std::nextafter(65520.0f, 0.0f)));
    EXPECT_FALSE(raisesOverflow(infinity));
    EXPECT_FALSE(raisesOverflow(-infinity));
    EXPECT_FALSE(raisesOverflow(std::numeric_limits<float>::quiet_NaN()));
    EXPECT_FALSE(raisesOverflow(1e-30f));
    EXPECT_FALSE(raisesOverflow(0.1f));
}

TEST(FloatToHalf, becomes_signed_zero_up_to_half_the_smallest_subnormal) {
    const float tie = std::ldexp(1.0f, -25);
    EXPECT_EQ(halfBits(std::ldexp(1.0f, -24)), 1);
    EXPECT_EQ(halfBits(std::nextafter(tie, 1.0f)), 1);
    EXPECT_EQ(halfBits(tie), 0);
    EXPECT_EQ(halfBits(-tie), 0x8000);
    EXPECT_EQ(halfBits(std::nextafter(tie, 0.0f)), 0);
    EXPECT_EQ(halfBits(std::nextafter(-tie, 0.0f)), 0x8000);
    EXPECT_EQ(halfBits(std::numeric_limits<float>::denorm_min()), 0);
    EXPECT_EQ(halfBits(-std::numeric_limits<float>::denorm_min()), 0x8000);
}

TEST(FloatToHalf, keeps_nans_nan) {
    EXPECT_EQ(halfBits(floatOf(0x7f800001)), 0x7c01);
    EXPECT_EQ(halfBits(floatOf(0xff801fff)), 0xfc01);
    EXPECT_EQ(halfBits(floatOf(0x7f802000)), 0x7c01);
    EXPECT_EQ(halfBits(floatOf(0x7f804000)), 0x7c02);
    EXPECT_EQ(halfBits(floatOf(0x7fc00000)), 0x7e00);
    EXPECT_EQ(halfBits(floatOf(0xffffffff)), 0xffff);
}

TEST(FloatToHalf, gives_back_every_half) {
    for (std::uint32_t bits = 0; bits < kHalfCount; ++bits) {
        const openexr_half half(static_cast<std::uint16_t>(bits));
        // Signalling NaNs included: their mantissas are never empty.
        ASSERT_EQ(float_to_half(half_to_float(half)).bits(), half.bits());
    }
}

TEST(FloatToHalf, rounds_to_the_nearest_and_ties_to_even) {
    const ReferenceHalf reference;
    for (std::uint16_t half = 0; half < kHalfInfinity; ++half) {
        const std::uint32_t last = reference.lastFloatBits(half);
        for (const std::uint32_t sign : {0u, kFloatSign}) {
            const int upper = sign == 0 ? 0 : 0x8000;
            ASSERT_EQ(halfBits(floatOf(sign + last - 1)), upper + half);
            ASSERT_EQ(halfBits(floatOf(sign + last)), upper + half);
            ASSERT_EQ(halfBits(floatOf(sign + last + 1)), upper + half + 1);
            ASSERT_EQ(halfBits(floatOf(sign + last + 2)), upper + half + 1);
        }
    }
}

TEST(FloatToHalf, matches_the_reference_on_random_bits) {
    const ReferenceHalf reference;
    std::mt19937 random(20240611);
    for (int i = 0; i < 1000000; ++i) {
        const auto bits = static_cast<std::uint32_t>(random());
        ASSERT_EQ(halfBits(floatOf(bits)), reference.halfBits(bits)) << std::hex << bits;
    }
}

TEST(FloatToHalf, does_not_follow_the_rounding_mode_of_the_thread) {
    const float aboveOne = 1.0f + std::ldexp(1.0f, -20);
    const float belowTwo = 2.0f - std::ldexp(1.0f, -20);
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(mode);
        const std::uint16_t down = halfBits(aboveOne);
        const std::uint16_t up = halfBits(belowTwo);
        const std::uint16_t overflow = halfBits(65520.0f);
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(down, 0x3c00);
        EXPECT_EQ(up, 0x4000);
        EXPECT_EQ(overflow, 0x7c00);
    }
}

#if defined(__x86_64__)
TEST(FloatToHalf, does_not_take_subnormals_for_zero_when_the_thread_flushes_them) {
    const unsigned saved = _mm_getcsr();
    _mm_setcsr(saved | _MM_FLUSH_ZERO_ON | _MM_DENORMALS_ZERO_ON);
    const std::uint16_t fromSubnormal = halfBits(floatOf(0x007fffff));
    const std::uint16_t toSubnormal = halfBits(floatOf(0x33800000));
    _mm_setcsr(saved);
    EXPECT_EQ(fromSubnormal, 0);
    EXPECT_EQ(toSubnormal, 1);
}
#endif

// The reference itself, against values that anyone can check by hand.
TEST(ReferenceHalf, knows_the_landmarks) {
    const ReferenceHalf reference;
    EXPECT_EQ(reference.halfBits(bitsOf(1.0f)), 0x3c00);
    EXPECT_EQ(reference.halfBits(bitsOf(2049.0f)), 0x6800);  // 2048 and 2050: 2048 is even
    EXPECT_EQ(reference.halfBits(bitsOf(2051.0f)), 0x6802);  // 2050 and 2052: 2052 is even
    EXPECT_EQ(reference.halfBits(bitsOf(65519.0f)), 0x7bff);
    EXPECT_EQ(reference.halfBits(bitsOf(-65520.0f)), 0xfc00);
    EXPECT_EQ(reference.halfBits(0x7f800001), 0x7c01);
    EXPECT_EQ(rb::tests::kFirstOverflow, bitsOf(65520.0f));
    EXPECT_TRUE(isHalfNan(0xfc01));
    EXPECT_FALSE(isHalfNan(0xfc00));
    EXPECT_EQ(reference.halfBits(kFloatInfinity), kHalfInfinity);
}

}  // namespace
