#include "RenderingBase/host/imaging/HalfArrays.h"
#include "tests/image/ReferenceHalf.h"

#include <algorithm>
#include <cfenv>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <span>
#include <string>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

using rb::tests::bitsOf;
using rb::tests::floatOf;
using rb::tests::referenceFloatBits;
using rb::tests::ReferenceHalf;

constexpr std::uint16_t kUntouchedHalf = 0x5a5a;
constexpr float kUntouchedFloat = -12345.5f;

using ToHalves = void (*)(std::span<const float>, std::span<std::uint16_t>) noexcept;
using ToFloats = void (*)(std::span<const std::uint16_t>, std::span<float>) noexcept;

struct Version {
    const char* name;
    ToHalves toHalves;
    ToFloats toFloats;
};

// The version chosen for this processor, and the one for processors without instructions for it.
class HalfArrays : public testing::TestWithParam<Version> {
protected:
    static std::vector<std::uint16_t> expectedHalves(std::span<const float> floats) {
        static const ReferenceHalf reference;
        std::vector<std::uint16_t> halves;
        for (const float value : floats) halves.push_back(reference.halfBits(bitsOf(value)));
        return halves;
    }

    static std::vector<std::uint32_t> expectedFloatBits(std::span<const std::uint16_t> halves) {
        std::vector<std::uint32_t> bits;
        for (const std::uint16_t half : halves) bits.push_back(referenceFloatBits(half));
        return bits;
    }

    static std::vector<std::uint32_t> bitsOfAll(std::span<const float> floats) {
        std::vector<std::uint32_t> bits;
        for (const float value : floats) bits.push_back(bitsOf(value));
        return bits;
    }

    std::vector<float> randomFloats(std::size_t count) {
        std::vector<float> floats(count);
        for (float& value : floats) value = floatOf(static_cast<std::uint32_t>(m_random()));
        return floats;
    }

    std::vector<std::uint16_t> randomHalves(std::size_t count) {
        std::vector<std::uint16_t> halves(count);
        for (std::uint16_t& half : halves) half = static_cast<std::uint16_t>(m_random());
        return halves;
    }

    std::mt19937 m_random{77};
};

INSTANTIATE_TEST_SUITE_P(Versions, HalfArrays,
                         testing::Values(Version{"dispatched", rb::imaging::halvesFromFloats,
                                                 rb::imaging::floatsFromHalves},
                                         Version{"portable",
                                                 rb::imaging::detail::halvesFromFloatsPortable,
                                                 rb::imaging::detail::floatsFromHalvesPortable}),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_P(HalfArrays, convert_every_half_exactly) {
    std::vector<std::uint16_t> halves(65536);
    for (std::size_t i = 0; i < halves.size(); ++i) halves[i] = static_cast<std::uint16_t>(i);
    std::vector<float> floats(halves.size());
    GetParam().toFloats(halves, floats);
    EXPECT_EQ(bitsOfAll(floats), expectedFloatBits(halves));
    std::vector<std::uint16_t> back(halves.size());
    GetParam().toHalves(floats, back);
    EXPECT_EQ(back, halves);
}

TEST_P(HalfArrays, round_to_the_nearest_at_every_boundary) {
    const ReferenceHalf reference;
    std::vector<float> floats;
    for (std::uint16_t half = 0; half < rb::tests::kHalfInfinity; ++half) {
        const std::uint32_t last = reference.lastFloatBits(half);
        for (const std::uint32_t bits : {last - 1, last, last + 1, last + 2}) {
            floats.push_back(floatOf(bits));
            floats.push_back(floatOf(bits + rb::tests::kFloatSign));
        }
    }
    std::vector<std::uint16_t> halves(floats.size());
    GetParam().toHalves(floats, halves);
    EXPECT_EQ(halves, expectedHalves(floats));
}

TEST_P(HalfArrays, convert_any_length_from_and_to_any_element) {
    constexpr std::size_t kRoom = 100;
    for (std::size_t length = 0; length <= 67; ++length) {
        for (std::size_t offset = 0; offset < 17; ++offset) {
            const std::vector<float> floats = randomFloats(kRoom);
            const auto someFloats = std::span(floats).subspan(offset, length);
            std::vector<std::uint16_t> halves(kRoom, kUntouchedHalf);
            GetParam().toHalves(someFloats, std::span(halves).subspan(16 - offset, length));
            std::vector<std::uint16_t> expected(kRoom, kUntouchedHalf);
            const auto converted = expectedHalves(someFloats);
            std::copy(converted.begin(), converted.end(), expected.data() + 16 - offset);
            ASSERT_EQ(halves, expected) << length << " from " << offset;
        }
    }
}

TEST_P(HalfArrays, convert_halves_of_any_length_from_and_to_any_element) {
    constexpr std::size_t kRoom = 100;
    for (std::size_t length = 0; length <= 67; ++length) {
        for (std::size_t offset = 0; offset < 17; ++offset) {
            const std::vector<std::uint16_t> halves = randomHalves(kRoom);
            const auto someHalves = std::span(halves).subspan(offset, length);
            std::vector<float> floats(kRoom, kUntouchedFloat);
            GetParam().toFloats(someHalves, std::span(floats).subspan(16 - offset, length));
            std::vector<std::uint32_t> expected(kRoom, bitsOf(kUntouchedFloat));
            const auto converted = expectedFloatBits(someHalves);
            std::copy(converted.begin(), converted.end(), expected.data() + 16 - offset);
            ASSERT_EQ(bitsOfAll(floats), expected) << length << " from " << offset;
        }
    }
}

TEST_P(HalfArrays, convert_as_many_as_the_shorter_span_has) {
    const std::vector<float> floats(20, 1.0f);
    std::vector<std::uint16_t> halves(30, kUntouchedHalf);
    GetParam().toHalves(floats, halves);
    EXPECT_EQ(halves[19], 0x3c00);
    EXPECT_EQ(halves[20], kUntouchedHalf);
    GetParam().toHalves(std::span(floats).first(0), std::span(halves).last(10));
    EXPECT_EQ(halves[20], kUntouchedHalf);

    std::vector<float> back(10, kUntouchedFloat);
    GetParam().toFloats(halves, std::span(back).first(9));
    EXPECT_EQ(back[8], 1.0f);
    EXPECT_EQ(back[9], kUntouchedFloat);
}

TEST_P(HalfArrays, keep_the_bits_of_a_nan_in_each_place) {
    for (std::size_t place = 0; place < 16; ++place) {
        for (const std::uint32_t nan : {0x7f800001u, 0xff802000u, 0x7fbfffffu, 0xffc00000u}) {
            std::vector<float> floats(16, 0.5f);
            floats[place] = floatOf(nan);
            std::vector<std::uint16_t> halves(16);
            GetParam().toHalves(floats, halves);
            ASSERT_EQ(halves, expectedHalves(floats)) << place << ' ' << nan;
        }
        for (const int nan : {0x7c01, 0xfc01, 0x7dff, 0xfe00, 0xffff}) {
            std::vector<std::uint16_t> halves(16, 0xbc00);
            halves[place] = static_cast<std::uint16_t>(nan);
            std::vector<float> floats(16);
            GetParam().toFloats(halves, floats);
            ASSERT_EQ(bitsOfAll(floats), expectedFloatBits(halves)) << place << ' ' << nan;
        }
    }
}

// Targets of more than 16 MiB take another path; an odd start leaves a head and a tail to it.
TEST_P(HalfArrays, convert_targets_larger_than_the_caches) {
    constexpr std::size_t kCount = (std::size_t{9} << 20) + 13;
    const std::vector<float> floats = randomFloats(kCount);
    std::vector<std::uint16_t> halves(kCount + 3, kUntouchedHalf);
    GetParam().toHalves(floats, std::span(halves).subspan(1, kCount));
    EXPECT_EQ(halves.front(), kUntouchedHalf);
    EXPECT_EQ(halves[kCount + 1], kUntouchedHalf);
    EXPECT_TRUE(std::ranges::equal(std::span(halves).subspan(1, kCount), expectedHalves(floats)));

    std::vector<float> back(kCount + 2, kUntouchedFloat);
    GetParam().toFloats(std::span(halves).subspan(1, kCount), std::span(back).subspan(1, kCount));
    EXPECT_EQ(back.front(), kUntouchedFloat);
    EXPECT_EQ(back.back(), kUntouchedFloat);
    EXPECT_TRUE(std::ranges::equal(bitsOfAll(std::span(back).subspan(1, kCount)),
                                   expectedFloatBits(std::span(halves).subspan(1, kCount))));
}

TEST_P(HalfArrays, raise_no_floating_point_flag) {
    const std::vector<float> floats(37, 1e30f);
    const std::vector<std::uint16_t> signalling(37, 0x7c01);
    std::vector<std::uint16_t> halves(37);
    std::vector<float> back(37);
    std::feclearexcept(FE_ALL_EXCEPT);
    std::feraiseexcept(FE_DIVBYZERO);
    GetParam().toHalves(floats, halves);
    GetParam().toFloats(signalling, back);
    EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), FE_DIVBYZERO);
    std::feclearexcept(FE_ALL_EXCEPT);
}

#if defined(__GLIBC__)
// A trap would end the program.
TEST_P(HalfArrays, do_not_trap_when_the_thread_does) {
    const std::vector<float> floats = {1e30f, 1e-30f, 0.1f, floatOf(0x7f800001), floatOf(1),
                                       1e30f, 1e-30f, 0.1f, floatOf(0x7f800001), floatOf(1)};
    std::vector<std::uint16_t> halves(floats.size());
    std::vector<float> back(floats.size());
    std::feclearexcept(FE_ALL_EXCEPT);
    feenableexcept(FE_ALL_EXCEPT);
    GetParam().toHalves(floats, halves);
    GetParam().toFloats(halves, back);
    const int trapped = fedisableexcept(FE_ALL_EXCEPT);
    EXPECT_EQ(trapped, FE_ALL_EXCEPT);
    EXPECT_EQ(halves, expectedHalves(floats));
}
#endif

TEST_P(HalfArrays, do_not_follow_the_rounding_mode_of_the_thread) {
    const std::vector<float> floats = randomFloats(1000);
    std::vector<std::uint16_t> halves(floats.size());
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(mode);
        GetParam().toHalves(floats, halves);
        const int modeAfter = std::fegetround();
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(modeAfter, mode);
        EXPECT_EQ(halves, expectedHalves(floats));
    }
}

#if defined(__x86_64__)
TEST_P(HalfArrays, keep_subnormals_when_the_thread_flushes_them) {
    std::vector<std::uint16_t> halves(2048);
    for (std::size_t i = 0; i < halves.size(); ++i) halves[i] = static_cast<std::uint16_t>(i);
    std::vector<float> floats(halves.size());
    std::vector<std::uint16_t> back(halves.size());
    const unsigned saved = _mm_getcsr();
    const unsigned flushing = saved | _MM_FLUSH_ZERO_ON | _MM_DENORMALS_ZERO_ON;
    _mm_setcsr(flushing);
    GetParam().toFloats(halves, floats);
    GetParam().toHalves(floats, back);
    const unsigned after = _mm_getcsr();
    _mm_setcsr(saved);
    EXPECT_EQ(after, flushing);
    EXPECT_EQ(bitsOfAll(floats), expectedFloatBits(halves));
    EXPECT_EQ(back, halves);
}
#endif

}  // namespace
