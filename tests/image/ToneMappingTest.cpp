// The tone of floating-point pixels against a literal computation, one rounding at a time.

#include "RenderingBase/KVRRbaModel.m/src/kernels/ToneMapping.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace rb::test {
namespace {

using kernels::AlphaRange;
using Bytes = std::vector<std::uint8_t>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

Bytes toned(const std::vector<float>& values, std::size_t channels,
            AlphaRange range = AlphaRange::Wrapped) {
    Bytes bytes(4 * (values.size() / channels));
    kernels::toneMap(values, channels, range, bytes);
    return bytes;
}

std::uint8_t wrapped(float alpha) { return toned({0, 0, 0, alpha}, 4)[3]; }
std::uint8_t clamped(float alpha) { return toned({0, 0, 0, alpha}, 4, AlphaRange::Clamped)[3]; }

float within01(float value) {
    if (std::isnan(value)) return 0;
    return value < 0 ? 0 : value > 1 ? 1 : value;
}

/// Every intermediate result goes through memory as a single.
std::array<std::uint8_t, 3> plainColors(float red, float green, float blue) {
    const std::array<float, 3> colors{within01(red), within01(green), within01(blue)};
    volatile float s = colors[0] + colors[1];
    s = s + colors[2];
    volatile float square = 0.85F * s;
    square = square * s;
    volatile float cube = 0.1083333F * s;
    cube = cube * s;
    cube = cube * s;
    volatile float linear = 2.2416666F * s;
    volatile float k = square - cube;
    k = k - linear;
    k = k + 3.0F;
    std::array<std::uint8_t, 3> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        volatile float color = k * colors[i];
        if (color > 1) color = 1;
        color = color * 255.0F;
        bytes[i] = static_cast<std::uint8_t>(std::trunc(color));
    }
    return bytes;
}

void expectPlain(const std::vector<float>& colors) {
    const Bytes bytes = toned(colors, 3);
    for (std::size_t i = 0; i < colors.size() / 3; ++i) {
        const float* const c = &colors[3 * i];
        const auto plain = plainColors(c[0], c[1], c[2]);
        ASSERT_EQ(Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(4 * i),
                        bytes.begin() + static_cast<std::ptrdiff_t>(4 * i + 4)),
                  (Bytes{plain[0], plain[1], plain[2], 255}))
            << c[0] << ' ' << c[1] << ' ' << c[2];
    }
}

}  // namespace

TEST(ToneMapping, known_pixels) {
    EXPECT_EQ(toned({0, 0, 0}, 3), (Bytes{0, 0, 0, 255}));
    EXPECT_EQ(toned({1, 1, 1}, 3), (Bytes{255, 255, 255, 255}));
    // s = 1.5: k = 1.9125 - 0.3656249 - 3.3624999 + 3 = 1.1843752, 255 k / 2 = 151.008
    EXPECT_EQ(toned({0.5F, 0.5F, 0.5F}, 3), (Bytes{151, 151, 151, 255}));
    // s = 0.6: k = 0.306 - 0.0234 - 1.345 + 3 = 1.9376, 255 k / 5 = 98.82
    EXPECT_EQ(toned({0.2F}, 1), (Bytes{98, 98, 98, 255}));
    // s = 0.1: k = 0.0085 - 0.0001083 - 0.2241667 + 3 = 2.7842250, 25.5 k = 70.998
    EXPECT_EQ(toned({0.1F, 0, 0, 1}, 4), (Bytes{70, 0, 0, 255}));
}

TEST(ToneMapping, colours_are_those_of_the_literal_computation) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> anywhere(-0.1F, 1.1F);
    std::vector<float> colors(3 * 200'000);
    for (float& color : colors) color = anywhere(random);
    expectPlain(colors);
}

TEST(ToneMapping, any_bits_are_colours) {
    std::mt19937 random(12);
    std::vector<float> colors(3 * 200'000);
    for (float& color : colors) color = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    expectPlain(colors);
    expectPlain({kNaN, kNaN, kNaN, -kNaN, 1, 0.5F, kInfinity, -kInfinity, 0.25F, -0.0F, 0, 1e-40F});
}

TEST(ToneMapping, one_channel_is_grey) {
    std::vector<float> greys, triples;
    for (int i = -100; i <= 1100; ++i) {
        greys.push_back(static_cast<float>(i) / 1000);
        triples.insert(triples.end(), 3, greys.back());
    }
    EXPECT_EQ(toned(greys, 1), toned(triples, 3));
}

TEST(ToneMapping, wrapped_alpha_is_the_low_byte_of_the_truncation) {
    EXPECT_EQ(wrapped(1), 255);
    EXPECT_EQ(wrapped(0.5F), 127);
    EXPECT_EQ(wrapped(2), 254);           // 510
    EXPECT_EQ(wrapped(1.5F), 126);        // 382.5
    EXPECT_EQ(wrapped(-1), 1);            // -255
    EXPECT_EQ(wrapped(-0.5F), 129);       // -127.5, truncated to -127
    EXPECT_EQ(wrapped(-0.001F), 0);       // -0.255
    EXPECT_EQ(wrapped(-2.0F), 2);         // -510
    EXPECT_EQ(wrapped(1000.0F), 0x18);    // 255000 = 0x3E418
    EXPECT_EQ(wrapped(8421504.0F), 128);  // 2147483520 = 0x7FFFFF80, the last below 2^31
}

TEST(ToneMapping, alpha_beyond_all_bounds_wraps_to_0) {
    for (const float alpha : {kNaN, kInfinity, -kInfinity, 8421505.0F, -1e9F, 1e30F, -1e30F,
                              std::numeric_limits<float>::max()})
        EXPECT_EQ(wrapped(alpha), 0) << alpha;
}

TEST(ToneMapping, clamped_alpha) {
    EXPECT_EQ(clamped(2), 255);
    EXPECT_EQ(clamped(kInfinity), 255);
    EXPECT_EQ(clamped(1), 255);
    EXPECT_EQ(clamped(0.5F), 127);
    EXPECT_EQ(clamped(0), 0);
    EXPECT_EQ(clamped(-1), 0);
    EXPECT_EQ(clamped(kNaN), 0);
}

TEST(ToneMapping, ends_with_the_shorter_side) {
    const std::vector<float> values{1, 1, 1, 1, 1};
    Bytes bytes(8, 7);
    kernels::toneMap(values, 3, AlphaRange::Clamped, bytes);
    EXPECT_EQ(bytes, (Bytes{255, 255, 255, 255, 7, 7, 7, 7}));
    Bytes tooFew(6, 7);
    kernels::toneMap(values, 1, AlphaRange::Clamped, tooFew);
    EXPECT_EQ(tooFew, (Bytes{255, 255, 255, 255, 7, 7}));
    kernels::toneMap({}, 4, AlphaRange::Wrapped, {});
}

TEST(ToneMapping, repeated_values_keep_their_bits) {
    const std::vector<float> values{0.1F, -0.0F, kInfinity, std::bit_cast<float>(0x7FC12345U)};
    std::vector<float> rgb(3 * values.size() + 1, 5);
    kernels::repeatForColors(values, rgb);
    for (std::size_t i = 0; i < 3 * values.size(); ++i)
        EXPECT_EQ(std::bit_cast<std::uint32_t>(rgb[i]),
                  std::bit_cast<std::uint32_t>(values[i / 3]));
    EXPECT_EQ(rgb.back(), 5);
}

}  // namespace rb::test
