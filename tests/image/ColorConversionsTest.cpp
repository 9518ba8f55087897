#include "RenderingBase/host/imaging/KVRColorConversions.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace {

struct Hsl {
    int h = -1, s = -1, l = -1;
};

Hsl hsl(int r, int g, int b) {
    Hsl value;
    ConvertIntRGBToIntHSL(r, g, b, value.h, value.s, value.l);
    return value;
}

}  // namespace

TEST(ColorConversions, lightness_is_the_truncated_mean_of_the_extremes_for_every_colour) {
    for (int r = 0; r < 256; r += 5)
        for (int g = 0; g < 256; g += 3)
            for (int b = 0; b < 256; ++b)
                ASSERT_EQ(hsl(r, g, b).l, (std::max({r, g, b}) + std::min({r, g, b})) / 2);
}

TEST(ColorConversions, saturation_zero_gives_the_lightness_exactly) {
    for (int l = 0; l < 256; ++l)
        for (int h = 0; h < 256; h += 17) {
            int r = -1, g = -1, b = -1;
            ConvertIntHSLToIntRGB(h, 0, l, r, g, b);
            EXPECT_EQ(r, l);
            EXPECT_EQ(g, l);
            EXPECT_EQ(b, l);
        }
}

TEST(ColorConversions, pure_colours_stand_at_sixths_of_the_circle) {
    const struct {
        int r, g, b, hue;
    } colours[] = {{255, 0, 0, 0},     {255, 255, 0, 43}, {0, 255, 0, 85},
                   {0, 255, 255, 128}, {0, 0, 255, 170},  {255, 0, 255, 213}};
    for (const auto& c : colours) {
        const Hsl value = hsl(c.r, c.g, c.b);
        EXPECT_EQ(value.h, c.hue);
        EXPECT_EQ(value.s, 255);
        EXPECT_EQ(value.l, 127);
    }
}

TEST(ColorConversions, grey_has_no_saturation_and_no_hue) {
    for (int v = 0; v < 256; ++v) {
        EXPECT_EQ(hsl(v, v, v).h, 0);
        EXPECT_EQ(hsl(v, v, v).s, 0);
    }
}

TEST(ColorConversions, there_and_back_stays_within_what_three_bytes_can_hold) {
    // Lightness is truncated by up to a half, hue has steps of a 255th of the circle: 6 levels.
    constexpr int kTolerance = 6;
    for (int r = 0; r < 256; r += 15)
        for (int g = 0; g < 256; g += 15)
            for (int b = 0; b < 256; b += 15) {
                const Hsl value = hsl(r, g, b);
                int r2 = 0, g2 = 0, b2 = 0;
                ConvertIntHSLToIntRGB(value.h, value.s, value.l, r2, g2, b2);
                ASSERT_LE(std::abs(r - r2), kTolerance) << r << ' ' << g << ' ' << b;
                ASSERT_LE(std::abs(g - g2), kTolerance) << r << ' ' << g << ' ' << b;
                ASSERT_LE(std::abs(b - b2), kTolerance) << r << ' ' << g << ' ' << b;
            }
}

TEST(ColorConversions, values_out_of_range_are_clamped) {
    EXPECT_EQ(hsl(300, -5, 0).l, hsl(255, 0, 0).l);
    EXPECT_EQ(hsl(300, -5, 0).s, 255);
}
