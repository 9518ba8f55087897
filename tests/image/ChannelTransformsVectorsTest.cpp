// Channels in vectors against the plain versions, byte by byte, for every kind of processor.

#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ChannelTransforms.h"
#include "tests/image/VectorTargets.h"

#include <cstring>

namespace rb::test {
namespace {

using Values = std::vector<std::uint8_t>;
using Transform = void (*)(kernels::Bytes, std::size_t, kernels::BytesToWrite);

/// @p rgbaTransform with the size of pixels that it is for.
template <void (*rgbaTransform)(kernels::Bytes, kernels::BytesToWrite)>
void ofRgba(kernels::Bytes source, std::size_t, kernels::BytesToWrite target) {
    rgbaTransform(source, target);
}

struct Case {
    const char* name;
    Transform vectors, plain;
};
constexpr Case kCases[] = {
    {"grey", kernels::greyByLightness, kernels::plain::greyByLightness},
    {"black and white", ofRgba<kernels::blackAndWhite>, ofRgba<kernels::plain::blackAndWhite>},
    {"alpha", ofRgba<kernels::invertAlpha>, ofRgba<kernels::plain::invertAlpha>},
    {"negative", kernels::invertColors, kernels::plain::invertColors},
    {"mask", kernels::maskFromAlpha, kernels::plain::maskFromAlpha},
};
constexpr std::size_t kLongestPixel = 5;

Values plainly(const Case& one, const Values& source, std::size_t bytesPerPixel) {
    Values target(source.size());
    one.plain(source, bytesPerPixel, target);
    return target;
}

void expectPlain(const Case& one, const Values& source, std::size_t bytesPerPixel,
                 std::size_t sourceDistance, std::size_t targetDistance) {
    SCOPED_TRACE(testing::Message()
                 << one.name << ", " << source.size() << " bytes, " << bytesPerPixel << " a pixel");
    const Values expected = plainly(one, source, bytesPerPixel);
    WatchedBytes from(source.size(), sourceDistance), to(source.size(), targetDistance);
    from.fill(source);
    one.vectors(from.bytes(), bytesPerPixel, to.bytes());
    ASSERT_EQ(to.values(), expected);
    ASSERT_TRUE(to.surroundingsStayed());
    ASSERT_EQ(from.values(), source);
    one.vectors(from.bytes(), bytesPerPixel, from.bytes());
    ASSERT_EQ(from.values(), expected) << "in place";
    ASSERT_TRUE(from.surroundingsStayed());
}

/// RGBA pixels whose colours sum up to about what separates black from white.
Values nearWhite(std::size_t pixels, std::mt19937& random) {
    Values values;
    for (std::size_t i = 0; i < pixels; ++i) {
        const int sum = 381 + static_cast<int>(random() % 4);
        const int red = static_cast<int>(random() % 256);
        const int green = std::clamp(static_cast<int>(random() % 256), sum - red - 255, sum - red);
        for (const int value : {red, green, sum - red - green, static_cast<int>(random() % 256)})
            values.push_back(static_cast<std::uint8_t>(value));
    }
    return values;
}

}  // namespace

TEST(ChannelTransformsVectors, every_width_and_height_and_pixel_is_plain) {
    forEachTarget([] {
        std::mt19937 random(31);
        for (const Case& one : kCases)
            for (std::size_t bytesPerPixel = 0; bytesPerPixel <= kLongestPixel; ++bytesPerPixel)
                for (const std::size_t height : {1U, 2U, 5U})
                    for (std::size_t width = 0; width <= 67; ++width) {
                        expectPlain(one, randomBytes(height * width * bytesPerPixel, random),
                                    bytesPerPixel, random() % 64, random() % 64);
                        if (testing::Test::HasFatalFailure()) return;
                    }
    });
}

TEST(ChannelTransformsVectors, bytes_behind_the_last_pixel_are_copied) {
    forEachTarget([] {
        std::mt19937 random(32);
        for (const Case& one : kCases)
            for (std::size_t bytesPerPixel = 2; bytesPerPixel <= kLongestPixel; ++bytesPerPixel)
                for (std::size_t size = 0; size <= 300; ++size) {
                    expectPlain(one, randomBytes(size, random), bytesPerPixel, 0, 0);
                    if (testing::Test::HasFatalFailure()) return;
                }
    });
}

TEST(ChannelTransformsVectors, sums_around_the_one_of_white) {
    forEachTarget([] {
        std::mt19937 random(33);
        expectPlain(kCases[1], nearWhite(100'000, random), 4, 0, 0);
    });
}

TEST(ChannelTransformsVectors, every_pair_of_extremes_has_its_mean) {
    Values rgb, rgba;
    for (int a = 0; a < 256; ++a)
        for (int b = 0; b < 256; ++b) {
            const auto low = static_cast<std::uint8_t>(a), high = static_cast<std::uint8_t>(b);
            rgb.insert(rgb.end(), {low, high, low, high, low, high});
            rgba.insert(rgba.end(), {low, high, high, low, high, low, low, high});
        }
    forEachTarget([&] {
        expectPlain(kCases[0], rgb, 3, 0, 0);
        expectPlain(kCases[0], rgba, 4, 0, 0);
    });
}

}  // namespace rb::test
