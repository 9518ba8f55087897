// The normal map against a literal computation, and what the service makes of formats.

#include "RenderingBase/KVRRbaModel.m/src/kernels/BumpMap.h"
#include "RenderingBase/host/base/KVRMath.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tests/image/DerivedImages.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace rb::test {
namespace {

using Services = KVRRbaImageServices;
using Pixels = std::vector<std::uint8_t>;

/// A picture looked at by signed positions.
class PlainBumpMap {
public:
    PlainBumpMap(const Pixels& rgb, int width, int height)
        : m_rgb(rgb), m_width(width), m_height(height) {}

    Pixels map() const {
        Pixels out;
        for (int y = 0; y < m_height; ++y)
            for (int x = 0; x < m_width; ++x) {
                KVRMathVector normal = slope(x, y);
                normal.Normalize();
                for (const double part : {normal.GetX(), normal.GetY(), normal.GetZ()})
                    out.push_back(static_cast<std::uint8_t>((part + 1) * 255 * 0.5));
            }
        return out;
    }

private:
    double byteAt(int position) const { return m_rgb.at(static_cast<std::size_t>(position)); }
    double intensity(int x, int y) const {
        x = std::clamp(x, 0, m_width - 1);
        y = std::clamp(y, 0, m_height - 1);
        const int start = 3 * (y * m_width + x);
        return (byteAt(start) + byteAt(start + 1) + byteAt(start + 2)) / 765.0;
    }
    double lowerLeft(int x, int y) const {
        if (x == 0 || y == m_height - 1) return intensity(x - 1, y + 1);
        const int start = 3 * ((y + 1) * m_width + x);
        return (byteAt(start - 3) + byteAt(start - 4) + byteAt(start - 5)) / 765.0;
    }
    KVRMathVector slope(int x, int y) const {
        const auto i = [this](int column, int row) { return intensity(column, row); };
        return {-((2 * i(x + 1, y) + i(x + 1, y - 1) + i(x + 1, y + 1)) -
                  (2 * i(x - 1, y) + i(x - 1, y - 1) + lowerLeft(x, y))),
                -((2 * i(x, y + 1) + lowerLeft(x, y) + i(x + 1, y + 1)) -
                  (2 * i(x, y - 1) + i(x - 1, y - 1) + i(x + 1, y - 1))),
                0.5};
    }

    const Pixels& m_rgb;
    int m_width, m_height;
};

Pixels bumpMap(const Pixels& rgb, std::size_t width) {
    Pixels out(rgb.size(), 99);
    kernels::renderBumpMap(rgb, width, out);
    return out;
}

Image bumpMap(const Image& source) { return Image::Adopt(Services::GenerateBumpMap(source.Get())); }

std::vector<int> pixel(const Pixels& pixels, std::size_t index) {
    return {pixels[3 * index], pixels[3 * index + 1], pixels[3 * index + 2]};
}

}  // namespace

TEST(BumpMap, equals_the_literal_computation_for_every_small_shape) {
    std::mt19937 random(21);
    for (int height = 1; height <= 9; ++height)
        for (int width = 1; width <= 20; ++width) {
            Pixels rgb(static_cast<std::size_t>(3 * width * height));
            for (auto& byte : rgb) byte = static_cast<std::uint8_t>(random());
            EXPECT_EQ(bumpMap(rgb, static_cast<std::size_t>(width)),
                      PlainBumpMap(rgb, width, height).map())
                << width << " x " << height;
        }
}

TEST(BumpMap, equals_the_literal_computation_for_a_large_picture_and_for_extremes) {
    std::mt19937 random(22);
    constexpr int kWidth = 403, kHeight = 301;
    Pixels rgb(3 * kWidth * kHeight);
    for (auto& byte : rgb) byte = static_cast<std::uint8_t>(random());
    EXPECT_EQ(bumpMap(rgb, kWidth), PlainBumpMap(rgb, kWidth, kHeight).map());
    for (auto& byte : rgb) byte = random() % 2 ? 255 : 0;
    EXPECT_EQ(bumpMap(rgb, kWidth), PlainBumpMap(rgb, kWidth, kHeight).map());
}

TEST(BumpMap, a_uniform_picture_is_level) {
    for (const int value : {0, 1, 128, 255}) {
        const Pixels map = bumpMap(Pixels(3 * 5 * 4, static_cast<std::uint8_t>(value)), 5);
        for (std::size_t i = 0; i < 20; ++i)
            EXPECT_EQ(pixel(map, i), (std::vector<int>{127, 127, 255}));
    }
    EXPECT_EQ(bumpMap({7, 8, 9}, 1), (Pixels{127, 127, 255}));
    EXPECT_EQ(bumpMap({}, 4), Pixels{});
    EXPECT_EQ(bumpMap({}, 0), Pixels{});
}

TEST(BumpMap, a_step_to_the_right_points_left) {
    Pixels rgb;
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) rgb.insert(rgb.end(), 3, x < 2 ? 0 : 255);
    // In the middle row at x = 2: nx = -4, nz = 0.5, length 4.0311289; (1 - 0.9922779) 127.5 = 0.98
    // and (1 + 0.1240347) 127.5 = 143.3.
    EXPECT_EQ(pixel(bumpMap(rgb, 4), 6), (std::vector<int>{0, 127, 143}));
    // At x = 1 the lower left pixel has the white end of the row above: nx = -(4 - 2/3), ny =
    // -(5/3 - 1), length 3.4359213; 0.0298575, 0.8059715 and 1.1455214 times 127.5.
    EXPECT_EQ(pixel(bumpMap(rgb, 4), 5), (std::vector<int>{3, 102, 146}));
}

TEST(BumpMap, the_lower_left_pixel_lends_red_only) {
    // 3 x 2 pixels, black but for one byte; the map at (2, 0) has (1, 1) and (0, 1) to its lower
    // left. A brightness of 1/3 there gives nx = 1/3, ny = -1/3, length 0.6871843:
    // 1.4850713 127.5 = 189.3, 0.5149287 127.5 = 65.7, 1.7276069 127.5 = 220.3.
    const auto mapWith = [](std::size_t byte) {
        Pixels rgb(3 * 3 * 2, 0);
        rgb[byte] = 255;
        return pixel(bumpMap(rgb, 3), 2);
    };
    const std::size_t secondRow = 9;
    const std::vector<int> seen{189, 65, 220}, unseen{127, 127, 255};
    EXPECT_EQ(mapWith(secondRow + 0), unseen);  // red, green and blue of (0, 1)
    EXPECT_EQ(mapWith(secondRow + 1), seen);
    EXPECT_EQ(mapWith(secondRow + 2), seen);
    EXPECT_EQ(mapWith(secondRow + 3), seen);  // red, green and blue of (1, 1)
    EXPECT_EQ(mapWith(secondRow + 4), unseen);
    EXPECT_EQ(mapWith(secondRow + 5), unseen);
}

TEST(BumpMap, the_lower_left_of_the_second_column_reaches_to_the_end_of_the_row_above) {
    Pixels rgb(3 * 4 * 2, 0);
    rgb[3 * 3 + 2] = 255;  // blue of (3, 0)
    EXPECT_EQ(pixel(bumpMap(rgb, 4), 1), (std::vector<int>{189, 65, 220}));
    EXPECT_EQ(pixel(bumpMap(rgb, 4), 0), (std::vector<int>{127, 127, 255}));
}

TEST(BumpMap, null_gives_null) { EXPECT_EQ(Services::GenerateBumpMap(nullptr), nullptr); }

TEST(BumpMap, other_8_bit_formats_are_changed_to_rgb_in_place_and_the_rest_copied) {
    for (const Format format : allFormats()) {
        const Image source = numbered(6, 5, format);
        const std::string before = rawPixels(source);
        const Image rgb = Image::Adopt(source->Duplicate(Format::RGB));
        const int bytesPerPixel = source->GetBytesPerPixel();
        const Image map = bumpMap(source);
        ASSERT_TRUE(map);
        EXPECT_NE(map.Get(), source.Get());
        EXPECT_EQ(referencesOf(map), 1U);
        EXPECT_EQ(referencesOf(source), 1U);
        EXPECT_EQ(map->GetFormat(), source->GetFormat());
        if (!source->GetPixelsToRead()) {  // other channels than bytes
            EXPECT_EQ(source->GetFormat(), format);
            EXPECT_EQ(rawPixels(source), before);
            EXPECT_EQ(rawPixels(map), before);
            continue;
        }
        EXPECT_EQ(source->GetFormat(), bytesPerPixel == 3 ? format : Format::RGB);
        // The order of the colours plays no part but for the pixel to the lower left.
        EXPECT_EQ(rawPixels(source), bytesPerPixel == 3 ? before : rawPixels(rgb));
        const auto values = valuesOf<std::uint8_t>(source, 6, 5, source->GetFormat());
        EXPECT_EQ(valuesOf<std::uint8_t>(map, 6, 5, source->GetFormat()),
                  PlainBumpMap(values, 6, 5).map());
    }
}

TEST(BumpMap, images_without_pixels_or_format_or_memory) {
    for (const Format format : allFormats()) {
        const Image empty = Image::Adopt(new KVRPixelImage(0, 0, format));
        const Image map = bumpMap(empty);
        ASSERT_TRUE(map);
        EXPECT_EQ(rawPixels(map), "");
        const Image full = numbered(1, 1, format);
        EXPECT_EQ(map->GetFormat(), bumpMap(full)->GetFormat()) << static_cast<int>(format);
        EXPECT_EQ(empty->GetFormat(), full->GetFormat()) << "changed in place likewise";
    }
    const Image formless = Image::Adopt(new KVRPixelImage(1, 1, Format::None));
    EXPECT_TRUE(bumpMap(formless));
    unsigned char pixels = 0;
    EXPECT_EQ(Services::GenerateBumpMap(hugeImage(Format::L, &pixels).Get()), nullptr);
    EXPECT_EQ(Services::GenerateBumpMap(hugeImage(Format::RGB, &pixels).Get()), nullptr);
}

}  // namespace rb::test
