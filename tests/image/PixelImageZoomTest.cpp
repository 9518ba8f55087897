#include "RenderingBase/host/imaging/KVRPixelImage.h"

#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace {

using Format = KVRPixelImageFormat;
using Image = KVRVar<KVRPixelImage>;

constexpr int kNearest = 0, kBilinear = 1, kFiltered = 2;

Image grey(int width, int height, const std::vector<std::uint8_t>& pixels) {
    Image image = Image::Adopt(new KVRPixelImage(width, height, Format::L));
    std::memcpy(image->GetPixelsToModify(), pixels.data(), pixels.size());
    return image;
}

Image zoomed(const Image& image, int width, int height, int mode) {
    return Image::Adopt(image->CreateZoomedImage(width, height, mode));
}

Image checkerboard(int side, Format format) {
    std::vector<std::uint8_t> pixels;
    for (int i = 0; i < side * side; ++i) pixels.push_back((i + i / side) % 2 ? 255 : 0);
    const Image image = grey(side, side, pixels);
    EXPECT_EQ(image->ChangeFormat(format), S_OK);
    return image;
}

}  // namespace

TEST(KVRPixelImageZoom, refuses_empty_sides_and_unknown_modes) {
    const Image image = grey(1, 1, {5});
    for (const int mode : {kNearest, kBilinear, kFiltered}) {
        EXPECT_EQ(image->CreateZoomedImage(0, 1, mode), nullptr);
        EXPECT_EQ(image->CreateZoomedImage(1, -1, mode), nullptr);
        const Image empty = Image::Adopt(new KVRPixelImage(0, 0, Format::L));
        EXPECT_EQ(empty->CreateZoomedImage(2, 2, mode), nullptr);
    }
    EXPECT_EQ(image->CreateZoomedImage(1, 1, 3), nullptr);
    EXPECT_EQ(image->CreateZoomedImage(1, 1, -1), nullptr);
}

TEST(KVRPixelImageZoom, nearest_repeats_and_drops_pixels) {
    const Image image = grey(2, 1, {10, 20});
    const Image doubled = zoomed(image, 4, 2, kNearest);
    const std::vector<int> expected{10, 10, 20, 20, 10, 10, 20, 20};
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(doubled->GetPixelsToRead()[i], expected[i]);
    const Image thirds = zoomed(grey(3, 1, {1, 2, 3}), 1, 1, kNearest);
    EXPECT_EQ(thirds->GetPixelsToRead()[0], 2);  // the centre lies in the middle pixel
}

TEST(KVRPixelImageZoom, bilinear_takes_the_mean_between_pixels) {
    const Image wide = zoomed(grey(2, 1, {0, 200}), 4, 1, kBilinear);
    // Centres at 0.25, 0.75, 1.25 and 1.75 of two pixels with centres at 0.5 and 1.5.
    const std::vector<int> expected{0, 50, 150, 200};
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(wide->GetPixelsToRead()[i], expected[i]);
}

TEST(KVRPixelImageZoom, a_halved_checkerboard_of_single_pixels_is_mid_grey) {
    for (const Format format :
         {Format::L, Format::RGB, Format::RGBA, Format::RGB_16, Format::RGBA_f, Format::RGB_f16}) {
        const Image board = checkerboard(32, format);
        const Image half = zoomed(board, 16, 16, kFiltered);
        ASSERT_TRUE(half);
        EXPECT_EQ(half->GetFormat(), format);
        ASSERT_EQ(half->ChangeFormat(Format::L), S_OK);
        for (int y = 2; y < 14; ++y)
            for (int x = 2; x < 14; ++x)
                EXPECT_NEAR(half->GetPixelsToRead()[16 * y + x], 127.5, 1.0);
    }
}

TEST(KVRPixelImageZoom, a_plain_image_stays_plain_in_every_mode_and_size) {
    for (const int mode : {kNearest, kBilinear, kFiltered})
        for (const auto& [w, h] : {std::pair{1, 1}, {3, 7}, {40, 2}, {17, 33}}) {
            const Image image = Image::Adopt(new KVRPixelImage(8, 8, Format::RGBA));
            for (int i = 0; i < 256; ++i) image->GetPixelsToModify()[i] = i % 4 == 3 ? 128 : 77;
            const Image result = zoomed(image, w, h, mode);
            ASSERT_TRUE(result);
            int width = 0, height = 0;
            result->GetSize(width, height);
            EXPECT_EQ(width, w);
            EXPECT_EQ(height, h);
            for (int i = 0; i < 4 * w * h; ++i)
                ASSERT_EQ(result->GetPixelsToRead()[i], i % 4 == 3 ? 128 : 77) << mode;
        }
}

TEST(KVRPixelImageZoom, does_not_ring_at_an_edge) {
    std::vector<std::uint8_t> edge;
    for (int i = 0; i < 64; ++i) edge.push_back(i % 16 < 8 ? 50 : 200);
    const Image result = zoomed(grey(16, 4, edge), 11, 3, kFiltered);
    for (int i = 0; i < 33; ++i) {
        EXPECT_GE(result->GetPixelsToRead()[i], 50);
        EXPECT_LE(result->GetPixelsToRead()[i], 200);
    }
}

TEST(KVRPixelImageZoom, colours_under_transparent_pixels_do_not_bleed) {
    const Image image = Image::Adopt(new KVRPixelImage(2, 1, Format::RGBA));
    const std::uint8_t pixels[] = {255, 0, 0, 255, 0, 255, 0, 0};  // opaque red, transparent green
    std::memcpy(image->GetPixelsToModify(), pixels, sizeof pixels);
    const Image one = zoomed(image, 1, 1, kFiltered);
    EXPECT_EQ(one->GetPixelsToRead()[0], 255);
    EXPECT_EQ(one->GetPixelsToRead()[1], 0);
    EXPECT_NEAR(one->GetPixelsToRead()[3], 127.5, 1.0);
    const Image three = zoomed(image, 4, 1, kBilinear);
    EXPECT_EQ(three->GetPixelsToRead()[4], 255);
    EXPECT_EQ(three->GetPixelsToRead()[5], 0);
    EXPECT_EQ(three->GetPixelsToRead()[7], 191);  // three quarters opaque
}

TEST(KVRPixelImageZoom, the_resolution_follows_so_that_the_picture_keeps_its_size) {
    const Image image = grey(2, 2, {1, 2, 3, 4});
    image->SetResolution(300, 300, 2);
    const Image half = zoomed(image, 1, 4, kFiltered);
    EXPECT_EQ(half->GetXResolution(), 150);
    EXPECT_EQ(half->GetYResolution(), 600);
    EXPECT_EQ(half->GetResolutionUnit(), 2);
}

// The filter must hold all rows under a target row: at full width, more bytes than 32 bits count.
TEST(KVRPixelImageZoom, filtered_takes_extreme_ratios) {
    constexpr int kHigh = 32768, kWide = 4096;
    const Image ramp = Image::Adopt(new KVRPixelImage(1, kHigh, Format::RGBA_f));
    for (int y = 0; y < kHigh; ++y)
        for (int c = 0; c < 4; ++c)
            ramp->GetFloatingPixelsToModify()[4 * y + c] = c == 3 ? 1.0F : static_cast<float>(y);
    const Image wide = zoomed(ramp, kWide, 1, kFiltered);
    ASSERT_TRUE(wide);
    const float* out = wide->GetFloatingPixelsToRead();
    EXPECT_NEAR(out[0], (kHigh - 1) / 2.0, 1);  // the filter is symmetric about the middle
    for (int x = 1; x < kWide; ++x) ASSERT_EQ(out[4 * x], out[0]) << x;
}

// Wide enough to be worked on in slices of columns, beside the same without any rows to hold.
TEST(KVRPixelImageZoom, filtered_slices_fit_together) {
    constexpr int kFrom = 8, kHigh = 65536, kWide = 8192;
    const Image one = Image::Adopt(new KVRPixelImage(kFrom, 1, Format::L_f));
    const Image many = Image::Adopt(new KVRPixelImage(kFrom, kHigh, Format::L_f));
    for (int i = 0; i < kFrom * kHigh; ++i)
        many->GetFloatingPixelsToModify()[i] = static_cast<float>(i % kFrom * (i % kFrom));
    for (int x = 0; x < kFrom; ++x) one->GetFloatingPixelsToModify()[x] = static_cast<float>(x * x);
    const Image expected = zoomed(one, kWide, 1, kFiltered);
    const Image sliced = zoomed(many, kWide, 1, kFiltered);
    ASSERT_TRUE(expected && sliced);
    for (int x = 0; x < kWide; ++x)
        ASSERT_NEAR(sliced->GetFloatingPixelsToRead()[x], expected->GetFloatingPixelsToRead()[x],
                    0.001)
            << x;
}

TEST(KVRPixelImageZoom, filtered_refuses_sides_beyond_its_precision) {
    const Image image = grey(1, 1, {5});
    EXPECT_EQ(image->CreateZoomedImage((1 << 20) + 1, 1, kFiltered), nullptr);
    EXPECT_TRUE(zoomed(image, 1 << 20, 1, kFiltered));
    const Image high = Image::Adopt(new KVRPixelImage(1, (1 << 20) + 1, Format::L));
    EXPECT_EQ(high->CreateZoomedImage(1, 1, kFiltered), nullptr);
}
