// What the image services make of DDS files.

#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tests/image/TextureBuilder.h"
#include "tests/support/TempFolder.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>

namespace rb::test {
namespace {

using Services = KVRRbaImageServices;

constexpr std::uint32_t kCubeCaps = 0xFE00;
constexpr std::uint32_t kLevel1 = 0x80;  // in the green of all surfaces of level 1

/// RGBA surfaces of one colour: red 30 times the face, green tells the level.
DdsBuilder colored(std::uint32_t side, int faces, int levels) {
    DdsBuilder dds = masked(kMaskedRgba, 32, {0xFF, 0xFF00, 0xFF0000, 0xFF000000}, side, {});
    dds.height = side;
    dds.levels = static_cast<std::uint32_t>(levels);
    dds.caps2 = faces == 6 ? kCubeCaps : 0;
    for (int face = 0; face < faces; ++face)
        for (int level = 0; level < levels; ++level) {
            const std::uint32_t texels = std::max(1U, side >> level);
            for (std::uint32_t i = 0; i < texels * texels; ++i)
                dds.data +=
                    bytes({30 * face, level == 1 ? static_cast<int>(kLevel1) : level, 7, 9});
        }
    return dds;
}

Image load(const TempFolder& folder, const DdsBuilder& dds) {
    const std::string path = folder.write("a.dds", dds.build());
    Image image = Image::Adopt(Services::CreatePixelImageFromFullPath(path, {}, 96));
    EXPECT_TRUE(image) << KVRLastImageError().Message();
    return image;
}

int sideOf(const Image& image) {
    int width = 0, height = 0;
    image->GetSize(width, height);
    EXPECT_EQ(width, height);
    return width;
}

/// The face of whose colour the ball is at a place from -1 to 1.
int faceAt(const Image& ball, double u, double v) {
    const int side = sideOf(ball);
    const auto index = [&](double place) {
        return static_cast<int>(std::lround((place + 1) / 2 * (side - 1)));
    };
    return ball->GetPixelsToRead()[4 * (index(v) * side + index(u))] / 30;
}

/// Which faces a ball shows below, above, to the right, to the left, far away and on the eye's
/// side. These are where its normal is half way to a side, along its rim and in its middle.
std::array<int, 6> facesOf(const Image& ball) {
    constexpr double kHalfWay = 0.7, kRim = 0.98;
    return {faceAt(ball, 0, kHalfWay),  faceAt(ball, 0, -kHalfWay), faceAt(ball, kHalfWay, 0),
            faceAt(ball, -kHalfWay, 0), faceAt(ball, kRim, 0),      faceAt(ball, 0, 0)};
}

TEST(DdsServices, the_kind_is_that_of_the_texture) {
    const TempFolder folder;
    const auto kind = [&](const char* name, int faces, int levels) {
        return Services::CheckDDSFormat(folder.write(name, colored(4, faces, levels).build()));
    };
    EXPECT_EQ(kind("a.dds", 1, 1), 0);
    EXPECT_EQ(kind("a.dds", 1, 3), 1);
    EXPECT_EQ(kind("a.dds", 6, 1), 2);
    EXPECT_EQ(kind("a.dds", 6, 3), 3);
}

TEST(DdsServices, the_extension_is_dds_in_lower_case_before_any_version) {
    const TempFolder folder;
    const std::string cube = colored(4, 6, 1).build();
    EXPECT_EQ(Services::CheckDDSFormat(folder.write("a.DDS", cube)), 0);
    EXPECT_EQ(Services::CheckDDSFormat(folder.write("a.dds.3", cube)), 2);
    EXPECT_EQ(Services::CheckDDSFormat(folder.write("a.png", cube)), 0);
    EXPECT_EQ(Services::CheckDDSFormat(folder.write("b.dds", "no texture")), 0);
    EXPECT_EQ(Services::CheckDDSFormat(folder.file("missing.dds")), 0);
    EXPECT_EQ(Services::CheckDDSFormat(""), 0);
}

TEST(DdsServices, a_picture_is_loaded_whole_and_one_with_levels_at_half_its_size) {
    const TempFolder folder;
    const Image whole = load(folder, colored(4, 1, 1));
    EXPECT_EQ(bytesOf(whole, 4, 4, Format::RGBA)[1], 0);
    const Image half = load(folder, colored(4, 1, 3));
    EXPECT_EQ(bytesOf(half, 2, 2, Format::RGBA)[1], static_cast<int>(kLevel1));
}

TEST(DdsServices, the_extension_may_be_in_upper_case_for_loading) {
    const TempFolder folder;
    const std::string path = folder.write("a.DDS", colored(4, 1, 1).build());
    EXPECT_TRUE(Image::Adopt(Services::CreatePixelImageFromFullPath(path, {}, 96)));
}

TEST(DdsServices, orders_of_bytes_become_rgb_and_rgba) {
    const TempFolder folder;
    const auto pixel = [&](std::uint32_t number, Format format) {
        return bytesOf(load(folder, dx10(number, 1, bytes({1, 2, 3, 4}))), 1, 1, format);
    };
    EXPECT_EQ(pixel(87, Format::RGBA), (std::vector<int>{3, 2, 1, 4}));
    EXPECT_EQ(pixel(88, Format::RGB), (std::vector<int>{3, 2, 1}));
    const auto ofMasks = [&](const std::array<std::uint32_t, 4>& masks) {
        return bytesOf(load(folder, masked(kMaskedRgba, 32, masks, 1, bytes({1, 2, 3, 4}))), 1, 1,
                       Format::RGBA);
    };
    EXPECT_EQ(ofMasks({0xFF00, 0xFF0000, 0xFF000000, 0xFF}), (std::vector<int>{2, 3, 4, 1}));
    EXPECT_EQ(ofMasks({0xFF000000, 0xFF0000, 0xFF00, 0xFF}), (std::vector<int>{4, 3, 2, 1}));
    EXPECT_EQ(halvesOf(load(folder, dx10(54, 1, littleEndian(0x3C00, 2))), 1, 1, Format::L_f16),
              (std::vector<float>{1}));
}

TEST(DdsServices, a_cube_becomes_the_mirror_ball_of_its_faces) {
    const TempFolder folder;
    const Image ball = load(folder, colored(65, 6, 1));
    EXPECT_EQ(sideOf(ball), 65);
    EXPECT_EQ(ball->GetFormat(), Format::RGBA);
    EXPECT_EQ(facesOf(ball), (std::array{2, 3, 5, 4, 0, 1}));
}

TEST(DdsServices, a_cube_with_levels_has_its_faces_in_another_order_and_half_its_size) {
    const TempFolder folder;
    const Image ball = load(folder, colored(130, 6, 8));
    EXPECT_EQ(sideOf(ball), 65);
    EXPECT_EQ(ball->GetPixelsToRead()[4 * (32 * 65 + 32) + 1], kLevel1);
    EXPECT_EQ(facesOf(ball), (std::array{2, 3, 0, 1, 5, 4}));
}

TEST(DdsServices, a_file_that_cannot_be_read_gives_null_with_a_reason) {
    const TempFolder folder;
    const std::string path = folder.write("a.dds", "DDS no texture");
    EXPECT_FALSE(Image::Adopt(Services::CreatePixelImageFromFullPath(path, {}, 96)));
    EXPECT_EQ(KVRLastImageError().expected, "a DDS header of 128 bytes");
    EXPECT_FALSE(
        Image::Adopt(Services::CreatePixelImageFromFullPath(folder.file("no.dds"), {}, 96)));
}

class MirrorBallOfImages : public testing::Test {
protected:
    MirrorBallOfImages() {
        for (Image& face : m_faces) face = Image::Adopt(new KVRPixelImage(8, 8, Format::RGBA));
    }
    Image ball() const {
        return Image::Adopt(Services::BuildPixelImageFromAllFaces(
            m_faces[0].Get(), m_faces[1].Get(), m_faces[2].Get(), m_faces[3].Get(),
            m_faces[4].Get(), m_faces[5].Get()));
    }
    std::array<Image, 6> m_faces;
};

TEST_F(MirrorBallOfImages, six_faces_are_needed) {
    EXPECT_TRUE(ball());
    for (std::size_t i = 0; i < m_faces.size(); ++i) {
        const Image face = std::exchange(m_faces[i], {});
        EXPECT_FALSE(ball()) << i;
        m_faces[i] = face;
    }
}

TEST_F(MirrorBallOfImages, the_size_is_that_of_the_fifth_and_of_all) {
    EXPECT_EQ(sideOf(ball()), 8);
    for (std::size_t i = 0; i < m_faces.size(); ++i) {
        const Image face =
            std::exchange(m_faces[i], Image::Adopt(new KVRPixelImage(8, 7, Format::RGBA)));
        EXPECT_FALSE(ball()) << i;
        m_faces[i] = face;
    }
    for (Image& face : m_faces) face = Image::Adopt(new KVRPixelImage(10, 3, Format::RGBA));
    EXPECT_EQ(sideOf(ball()), 10);
    for (Image& face : m_faces) face = Image::Adopt(new KVRPixelImage(0, 0, Format::RGBA));
    EXPECT_FALSE(ball());
}

TEST_F(MirrorBallOfImages, a_ball_of_too_many_pixels_is_not_made) {
    for (Image& face : m_faces) face = Image::Adopt(new KVRPixelImage(16385, 1, Format::RGBA));
    EXPECT_FALSE(ball());
}

TEST_F(MirrorBallOfImages, other_formats_are_changed_in_place) {
    m_faces[2] = Image::Adopt(new KVRPixelImage(8, 8, Format::L));
    m_faces[2]->GetPixelsToModify()[0] = 50;
    m_faces[3] = Image::Adopt(new KVRPixelImage(8, 8, Format::RGB_f));
    ASSERT_TRUE(ball());
    EXPECT_EQ(m_faces[2]->GetFormat(), Format::RGBA);
    EXPECT_EQ(m_faces[3]->GetFormat(), Format::RGBA);
    const unsigned char* const pixel = m_faces[2]->GetPixelsToRead();
    EXPECT_EQ((std::vector<int>{pixel[0], pixel[1], pixel[2], pixel[3]}),
              (std::vector<int>{50, 50, 50, 255}));
}

TEST_F(MirrorBallOfImages, the_ball_is_an_image_of_its_own) {
    const Image image = ball();
    EXPECT_EQ(image->AddRef(), 2U);
    image->Release();
    EXPECT_EQ(image->GetPixelsToRead()[3], 1);  // the corner: black, alpha 1
}

}  // namespace
}  // namespace rb::test
