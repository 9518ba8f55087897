// Channels of single pixels, against their definitions.

#include "RenderingBase/KVRRbaModel.m/src/kernels/ChannelTransforms.h"
#include "RenderingBase/host/imaging/KVRColorConversions.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace rb::test {
namespace {

using Pixels = std::vector<std::uint8_t>;

Pixels grey(Pixels pixels, std::size_t bytesPerPixel) {
    kernels::greyByLightness(pixels, bytesPerPixel, pixels);
    return pixels;
}

Pixels negative(Pixels pixels, std::size_t bytesPerPixel) {
    kernels::invertColors(pixels, bytesPerPixel, pixels);
    return pixels;
}

Pixels mask(Pixels pixels, std::size_t bytesPerPixel) {
    kernels::maskFromAlpha(pixels, bytesPerPixel, pixels);
    return pixels;
}

/// The three bytes of a colour after a way through HSL, without saturation.
Pixels unsaturated(int red, int green, int blue) {
    int hue = 0, saturation = 0, lightness = 0;
    ConvertIntRGBToIntHSL(red, green, blue, hue, saturation, lightness);
    ConvertIntHSLToIntRGB(hue, 0, lightness, red, green, blue);
    return {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
            static_cast<std::uint8_t>(blue)};
}

}  // namespace

TEST(ChannelTransforms, grey_is_the_unsaturated_colour_for_every_colour) {
    for (int red = 0; red < 256; ++red) {
        for (int green = 0; green < 256; ++green) {
            Pixels row, expected;
            for (int blue = 0; blue < 256; ++blue) {
                for (const int value : {red, green, blue})
                    row.push_back(static_cast<std::uint8_t>(value));
                const Pixels one = unsaturated(red, green, blue);
                expected.insert(expected.end(), one.begin(), one.end());
            }
            ASSERT_EQ(grey(row, 3), expected) << red << ' ' << green;
        }
    }
}

TEST(ChannelTransforms, grey_keeps_what_is_behind_three_bytes_and_pixels_of_less) {
    // (200 + 11) / 2 is 105.5.
    EXPECT_EQ(grey({200, 11, 40, 77, 0, 0, 255, 1}, 4),
              (Pixels{105, 105, 105, 77, 127, 127, 127, 1}));
    EXPECT_EQ(grey({9, 8, 7, 6}, 2), (Pixels{9, 8, 7, 6}));
    EXPECT_EQ(grey({9, 8}, 1), (Pixels{9, 8}));
    EXPECT_EQ(grey({}, 3), Pixels{});
    EXPECT_EQ(grey({9}, 0), Pixels{9});
}

TEST(ChannelTransforms, black_ends_below_a_sum_of_383) {
    for (int red = 0; red < 256; red += 3) {
        for (int green = 0; green < 256; green += 5) {
            for (int blue = 0; blue < 256; ++blue) {
                Pixels pixel{static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                             static_cast<std::uint8_t>(blue), 7};
                kernels::blackAndWhite(pixel, pixel);
                const std::uint8_t tone = red + green + blue < 383 ? 0 : 255;
                ASSERT_EQ(pixel, (Pixels{tone, tone, tone, 7}));
            }
        }
    }
    Pixels two{127, 128, 128, 0, 127, 128, 127, 255};
    kernels::blackAndWhite(two, two);
    EXPECT_EQ(two, (Pixels{255, 255, 255, 0, 0, 0, 0, 255}));
}

TEST(ChannelTransforms, alpha_alone_is_inverted) {
    Pixels pixels{1, 2, 3, 0, 4, 5, 6, 255, 7, 8, 9, 100};
    kernels::invertAlpha(pixels, pixels);
    EXPECT_EQ(pixels, (Pixels{1, 2, 3, 255, 4, 5, 6, 0, 7, 8, 9, 155}));
}

TEST(ChannelTransforms, negative_inverts_the_colours_of_each_size_of_pixel) {
    EXPECT_EQ(negative({0, 1, 255}, 1), (Pixels{255, 254, 0}));
    EXPECT_EQ(negative({10, 20, 30, 40}, 2), (Pixels{245, 20, 225, 40}));
    EXPECT_EQ(negative({10, 20, 30, 40, 50, 60}, 3), (Pixels{245, 235, 225, 215, 205, 195}));
    EXPECT_EQ(negative({10, 20, 30, 40}, 4), (Pixels{245, 235, 225, 40}));
    EXPECT_EQ(negative({10, 20, 30, 40, 50}, 5), (Pixels{245, 235, 225, 40, 50}));
    EXPECT_EQ(negative({10}, 0), Pixels{10});
}

TEST(ChannelTransforms, mask_is_white_where_alpha_is_0) {
    EXPECT_EQ(mask({1, 255}, 1), (Pixels{0, 0}));
    EXPECT_EQ(mask({9, 0, 9, 255, 9, 55}, 2), (Pixels{255, 255, 0, 255, 200, 255}));
    EXPECT_EQ(mask({1, 2, 3}, 3), (Pixels{0, 0, 0}));
    EXPECT_EQ(mask({1, 2, 3, 0, 4, 5, 6, 55}, 4), (Pixels{255, 255, 255, 255, 200, 200, 200, 255}));
    EXPECT_EQ(mask({1, 2, 3, 4, 5}, 5), (Pixels{1, 2, 3, 4, 5}));
    EXPECT_EQ(mask({}, 4), Pixels{});
    EXPECT_EQ(mask({1}, 0), Pixels{1});
}

}  // namespace rb::test
