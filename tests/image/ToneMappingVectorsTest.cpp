// The tone of pixels in vectors against the plain version, byte by byte, for every kind of
// processor.

#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ToneMapping.h"
#include "RenderingBase/host/imaging/HalfArrays.h"
#include "tests/image/VectorTargets.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace rb::test {
namespace {

using kernels::AlphaRange;
using Values = std::vector<std::uint8_t>;
using Floats = std::vector<float>;

constexpr AlphaRange kRanges[] = {AlphaRange::Clamped, AlphaRange::Wrapped};
constexpr std::size_t kChannelCounts[] = {1, 3, 4};

float fromBits(std::uint32_t bits) { return std::bit_cast<float>(bits); }

/// A number, its two neighbours on both sides, and all of them with the other sign.
void addWithNeighbours(float value, Floats& out) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    float below = value, above = value;
    for (int i = 0; i < 3; ++i) {
        for (const float one : {below, above}) out.insert(out.end(), {one, -one});
        below = std::nextafter(below, -kInfinity);
        above = std::nextafter(above, kInfinity);
    }
}

Floats adversaries() {
    // NaNs quiet and signalling, with the smallest and the largest payload.
    Floats values{fromBits(0x7FC00000), fromBits(0xFFC00000), fromBits(0x7F800001),
                  fromBits(0xFF800001), fromBits(0x7FFFFFFF), fromBits(0xFFFFFFFF),
                  fromBits(0x7FBFFFFF), fromBits(0xFFBFFFFF)};
    using Limits = std::numeric_limits<float>;
    for (const float value : {0.0F, 1.0F, 0.5F, 1.0F / 3, Limits::denorm_min(), 1e-40F,
                              Limits::min(), Limits::max(), Limits::infinity(), 1e10F})
        addWithNeighbours(value, values);
    // Where 255 alpha leaves 32 bits, and where its low byte wraps.
    for (const float value : {8421504.0F, 8421505.0F, 256.0F / 255, 512.0F / 255, 65536.0F / 255})
        addWithNeighbours(value, values);
    for (int k = 1; k <= 255; ++k) addWithNeighbours(static_cast<float>(k) / 255, values);
    return values;
}

int toneOf(float red, float green, float blue) {
    const float color[] = {red, green, blue};
    std::uint8_t rgba[4];
    kernels::plain::toneMap(color, 3, AlphaRange::Clamped, rgba);
    return rgba[0];
}

/// The reds next to where the byte of red changes, beside random greens and blues.
Floats pixelsAroundEveryStep(std::mt19937& random) {
    std::uniform_real_distribution<float> unit(0, 1);
    Floats pixels;
    for (int k = 1; k <= 255; ++k)
        for (int repetition = 0; repetition < 8; ++repetition) {
            const bool isGrey = repetition == 0;
            const float green = unit(random), blue = unit(random);
            const auto tone = [&](float red) {
                return isGrey ? toneOf(red, red, red) : toneOf(red, green, blue);
            };
            // Floats between 0 and 1 are ordered like their bits.
            std::uint32_t low = 0, high = std::bit_cast<std::uint32_t>(1.0F);
            while (high - low > 1) {
                const std::uint32_t middle = (low + high) / 2;
                (tone(fromBits(middle)) < k ? low : high) = middle;
            }
            for (std::uint32_t bits = low - std::min(low, 2U); bits <= high + 2; ++bits) {
                const float red = fromBits(bits);
                if (isGrey)
                    pixels.insert(pixels.end(), 3, red);
                else
                    pixels.insert(pixels.end(), {red, green, blue});
            }
        }
    return pixels;
}

/// The floats begin @p distance floats behind an aligned place.
void expectPlain(const Floats& values, std::size_t channels, AlphaRange range,
                 std::size_t distance) {
    SCOPED_TRACE(testing::Message() << values.size() << " values, " << channels << " channels");
    Floats moved(distance);
    moved.insert(moved.end(), values.begin(), values.end());
    const auto source = std::span<const float>(moved).subspan(distance);
    const std::size_t size = 4 * (values.size() / channels);
    Values expected(size);
    kernels::plain::toneMap(values, channels, range, expected);
    WatchedBytes target(size, distance);
    kernels::toneMap(source, channels, range, target.bytes());
    ASSERT_EQ(target.values(), expected);
    ASSERT_TRUE(target.surroundingsStayed());
}

Floats anyBits(std::size_t count, std::mt19937& random) {
    Floats values(count);
    for (float& value : values) value = fromBits(static_cast<std::uint32_t>(random()));
    return values;
}

Floats picture(std::size_t count, std::mt19937& random) {
    std::uniform_real_distribution<float> anywhere(-0.2F, 1.3F);
    Floats values(count);
    for (float& value : values) value = anywhere(random);
    return values;
}

}  // namespace

TEST(ToneMappingVectors, every_width_and_height_is_plain) {
    forEachTarget([] {
        std::mt19937 random(41);
        for (const std::size_t channels : kChannelCounts)
            for (const AlphaRange range : kRanges)
                for (const std::size_t height : {1U, 2U, 5U})
                    for (std::size_t width = 0; width <= 67; ++width) {
                        expectPlain(picture(channels * width * height, random), channels, range,
                                    random() % 16);
                        if (testing::Test::HasFatalFailure()) return;
                    }
    });
}

TEST(ToneMappingVectors, any_bits_are_mapped_plainly) {
    forEachTarget([] {
        std::mt19937 random(42);
        for (const std::size_t channels : kChannelCounts)
            for (const AlphaRange range : kRanges)
                expectPlain(anyBits(200'000 * channels, random), channels, range, 1);
    });
}

TEST(ToneMappingVectors, adversaries_in_every_channel) {
    const Floats values = adversaries();
    forEachTarget([&] {
        std::mt19937 random(43);
        for (const std::size_t channels : kChannelCounts)
            for (const AlphaRange range : kRanges)
                for (std::size_t channel = 0; channel < channels; ++channel) {
                    Floats pixels = picture(channels * values.size(), random);
                    for (std::size_t i = 0; i < values.size(); ++i)
                        pixels[i * channels + channel] = values[i];
                    expectPlain(pixels, channels, range, 0);
                    for (float& value : pixels) value = values[random() % values.size()];
                    expectPlain(pixels, channels, range, 0);
                }
    });
}

TEST(ToneMappingVectors, steps_of_the_tone_are_where_they_are_plainly) {
    std::mt19937 random(44);
    const Floats pixels = pixelsAroundEveryStep(random);
    Floats greys, withAlpha;
    for (std::size_t i = 0; i < pixels.size(); i += 3) {
        greys.push_back(pixels[i]);
        withAlpha.insert(withAlpha.end(), {pixels[i + 2], pixels[i + 1], pixels[i], pixels[i]});
    }
    forEachTarget([&] {
        expectPlain(pixels, 3, AlphaRange::Clamped, 0);
        expectPlain(greys, 1, AlphaRange::Clamped, 0);
        expectPlain(withAlpha, 4, AlphaRange::Clamped, 0);
    });
}

TEST(ToneMappingVectors, halves_are_mapped_like_their_floats) {
    std::mt19937 random(45);
    std::vector<std::uint16_t> halves(4 * 65536);
    for (std::size_t i = 0; i < halves.size(); ++i)
        halves[i] = static_cast<std::uint16_t>(i < 65536 ? i : random());
    Floats floats(halves.size());
    imaging::detail::floatsFromHalvesPortable(halves, floats);
    forEachTarget([&] {
        for (const std::size_t channels : kChannelCounts)
            for (const std::size_t pixels :
                 {std::size_t{0}, std::size_t{5}, std::size_t{1023}, std::size_t{1024},
                  std::size_t{2100}, halves.size() / channels}) {
                Values expected(4 * pixels);
                kernels::plain::toneMap(floats, channels, AlphaRange::Clamped, expected);
                WatchedBytes target(4 * pixels, 1);
                kernels::toneMapHalves(halves, channels, target.bytes());
                ASSERT_EQ(target.values(), expected);
                ASSERT_TRUE(target.surroundingsStayed());
            }
    });
}

TEST(ToneMappingVectors, repeated_values_keep_their_bits) {
    Floats values = adversaries();
    std::mt19937 random(46);
    const Floats more = anyBits(300, random);
    values.insert(values.end(), more.begin(), more.end());
    forEachTarget([&] {
        for (std::size_t begin = 0; begin < 5; ++begin)
            for (std::size_t count = 0; count + begin <= values.size();
                 count += count < 67 ? 1 : 71) {
                const auto source = std::span<const float>(values).subspan(begin, count);
                Floats rgb(3 * count + 8, 5);
                kernels::repeatForColors(source, std::span(rgb).first(3 * count));
                for (std::size_t i = 0; i < 3 * count; ++i)
                    ASSERT_EQ(std::bit_cast<std::uint32_t>(rgb[i]),
                              std::bit_cast<std::uint32_t>(source[i / 3]));
                for (std::size_t i = 3 * count; i < rgb.size(); ++i) ASSERT_EQ(rgb[i], 5);
            }
    });
}

}  // namespace rb::test
