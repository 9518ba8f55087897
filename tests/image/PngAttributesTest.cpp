// What PNG files say beside their pixels, and PNG files of ours as others read them.

#include "tests/image/ImageFiles.h"
#include "tests/image/PngBuilder.h"
#include "tests/image/WrittenImages.h"
#include "tests/support/ForeignPrograms.h"

#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Values = std::vector<int>;
using Profile = KVRVar<KVRMMColorProfile>;

PngBuilder onePixel() {
    PngBuilder png{.colorType = 2};
    png.rows = std::string("\0\1\2\3", 4);
    return png;
}

struct Stated {
    double x, y;
    int unit;
};

Stated resolutionOf(const Image& image) {
    return image ? Stated{image->GetXResolution(), image->GetYResolution(),
                          image->GetResolutionUnit()}
                 : Stated{-1, -1, -1};
}

std::string physical(std::uint32_t x, std::uint32_t y, int unit) {
    return chunk("pHYs", bigEndian(x, 4) + bigEndian(y, 4) + static_cast<char>(unit));
}

std::string dataOf(const Profile& profile) {
    if (!profile) return {};
    const auto bytes = profile->GetData();
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Profile profileOf(const Image& image) { return Profile::Adopt(image->GetColorProfile()); }

/// A profile that is not sRGB.
std::string wideGamut() {
    return dataOf(profileOf(loadFile(RB_SOURCE_DIR "/samples/images/wide-gamut.png")));
}

Image pattern(int width, int height, Format format) {
    Image image = Image::Adopt(new KVRPixelImage(width, height, format));
    std::mt19937 random(4);
    int last = 0;
    for (std::byte& value : image->GetRawPixels()) {
        last += static_cast<int>(random() % 9) - 4;
        value = static_cast<std::byte>(last);
    }
    return image;
}

}  // namespace

TEST(PngResolution, of_metres_is_reported_for_the_centimetre) {
    PngBuilder png = onePixel();
    png.before = physical(3937, 11811, 1);
    const Stated stated = resolutionOf(loadBytes(png.build()));
    EXPECT_DOUBLE_EQ(stated.x, 39.37);
    EXPECT_DOUBLE_EQ(stated.y, 118.11);
    EXPECT_EQ(stated.unit, 3);
}

TEST(PngResolution, without_a_unit_or_of_zero_is_none) {
    for (const std::string& before :
         {std::string(), physical(2, 1, 0), physical(0, 3937, 1), physical(3937, 0, 1)}) {
        PngBuilder png = onePixel();
        png.before = before;
        const Stated stated = resolutionOf(loadBytes(png.build()));
        EXPECT_EQ(stated.x, 0);
        EXPECT_EQ(stated.y, 0);
        EXPECT_EQ(stated.unit, 1);
    }
}

TEST(PngResolution, of_the_file_information_is_that_of_the_image) {
    const TempFolder folder;
    PngBuilder png = onePixel();
    png.before = physical(5000, 10000, 1);
    KVRMMImageProp prop;
    KVRMMImageSize size;
    ASSERT_EQ(KVRMMRasterAdministrator::GetInstance()->GetImageInfo(
                  folder.write("a.png", png.build()), prop, size, 0),
              S_OK);
    EXPECT_EQ(size.GetXResolution(), 50);
    EXPECT_EQ(size.GetYResolution(), 100);
    EXPECT_EQ(size.GetResolutionUnit(), 3);
    EXPECT_EQ(prop.fileFormat, KVRUnicodeString("png"));
    EXPECT_FALSE(prop.hasProfile);
}

TEST(PngResolution, is_written_in_either_unit) {
    const TempFolder folder;
    const Image image = pattern(3, 3, Format::RGB);
    const auto expectSeen = [&](double x, double y) {
        std::istringstream seen(
            runProgram("identify -units PixelsPerCentimeter -format '%x %y %U' " +
                       shellWord(written(folder, image, "PNG"))));
        double seenX = 0, seenY = 0;
        std::string unit;
        seen >> seenX >> seenY >> unit;
        EXPECT_NEAR(seenX, x, 1e-9);
        EXPECT_NEAR(seenY, y, 1e-9);
        EXPECT_EQ(unit, "PixelsPerCentimeter");
    };
    image->SetResolution(50, 118.11, 3);
    expectSeen(50, 118.11);
    image->SetResolution(300, 72, 2);
    expectSeen(118.11, 28.35);  // 300 / 0.0254 = 11811.02 and 72 / 0.0254 = 2834.65 to the metre
    EXPECT_DOUBLE_EQ(resolutionOf(loadFile(written(folder, image, "PNG"))).x, 118.11);
    image->SetResolution(0, 0, 1);
    EXPECT_EQ(contentOf(written(folder, image, "PNG")).find("pHYs"), std::string::npos);
}

TEST(PngProfile, of_another_encoder_arrives_byte_for_byte) {
    const TempFolder folder;
    const std::string icc = wideGamut();
    ASSERT_GT(icc.size(), 128U);
    const std::string profile = folder.write("wide.icc", icc), out = folder.file("out.png");
    runProgram("convert " + shellWord(writePortableMap(folder, "in.ppm", gradients(5, 4, 3))) +
               " -profile " + shellWord(profile) + " " + shellWord(out));
    const Image image = loadFile(out);
    ASSERT_TRUE(image);
    EXPECT_EQ(dataOf(profileOf(image)), icc);
}

TEST(PngProfile, is_written_for_others_byte_for_byte) {
    const TempFolder folder;
    const std::string icc = wideGamut();
    const Image image = pattern(5, 4, Format::RGBA);
    const Profile profile = Profile::Adopt(KVRMMColorProfile::CreateFromMemory(
        {reinterpret_cast<const std::byte*>(icc.data()), icc.size()}));
    ASSERT_TRUE(profile);
    image->AssignColorProfile(profile.Get(), 0);
    EXPECT_EQ(runProgram("convert " + shellWord(written(folder, image, "PNG")) + " icc:-"), icc);
}

TEST(PngProfile, the_sRGB_chunk_is_none) {
    PngBuilder png = onePixel();
    png.before = chunk("sRGB", std::string(1, '\0'));
    EXPECT_FALSE(profileOf(loadBytes(png.build())));
}

TEST(PngProfile, damaged_is_left_out) {
    const std::string icc = wideGamut(), name("wide\0\0", 6);
    std::string otherSize = icc;
    otherSize[3] = static_cast<char>(otherSize[3] + 4);
    std::string huge = icc;
    huge.replace(0, 4, "\x7f\xff\xff\xfc");
    for (const std::string& before :
         {chunk("iCCP", ""), chunk("iCCP", "no end of the name"), chunk("iCCP", name + "not zlib"),
          chunk("iCCP", name + zlibStream("no profile")),
          chunk("iCCP", name + zlibStream(otherSize)),
          chunk("iCCP", name + zlibStream(icc).substr(0, icc.size() / 2)),
          chunk("iCCP", name + zlibStream(huge))}) {
        PngBuilder png = onePixel();
        png.before = before;
        const Image image = loadBytes(png.build());
        EXPECT_EQ(bytesOf(image, 1, 1, Format::RGB), (Values{1, 2, 3}));
        ASSERT_TRUE(image);
        EXPECT_FALSE(profileOf(image)) << before.size();
    }
    PngBuilder sound = onePixel();
    sound.before = chunk("iCCP", name + zlibStream(icc));
    EXPECT_EQ(dataOf(profileOf(loadBytes(sound.build()))), icc);
}

TEST(PngWriter, every_channel_count_is_read_back_by_others_and_by_us) {
    const TempFolder folder;
    const std::pair<Format, const char*> cases[] = {
        {Format::L, "gray"}, {Format::LA, "rgba"}, {Format::RGB, "rgb"}, {Format::RGBA, "rgba"}};
    for (const auto& [format, channels] : cases) {
        const Image image = pattern(61, 37, format);
        const std::string path = written(folder, image, "PNG"), pixels = rawPixels(image);
        std::string seen = decodedByConvert(path, channels);
        if (format == Format::LA) {  // grey three times, then alpha
            std::string two;
            for (std::size_t i = 0; i < seen.size(); i += 4) two += {seen[i], seen[i + 3]};
            seen = two;
        }
        EXPECT_EQ(seen, pixels) << channels;
        EXPECT_EQ(rawPixels(loadFile(path)), pixels) << channels;
    }
}

TEST(PngWriter, a_second_program_reads_the_same) {
    const TempFolder folder;
    for (const Format format : {Format::L, Format::RGB}) {
        const Image image = pattern(64, 20, format);
        const std::string out = folder.file(format == Format::L ? "a.pgm" : "a.ppm");
        runProgram("oiiotool " + shellWord(written(folder, image, "PNG")) + " -o " +
                   shellWord(out));
        const std::string pixels = rawPixels(image), portable = contentOf(out);
        ASSERT_GE(portable.size(), pixels.size());
        EXPECT_EQ(portable.substr(portable.size() - pixels.size()), pixels);
    }
}

TEST(PngWriter, data_of_several_chunks) {
    // Noise does not compress: 2.2 MB.
    Image image = Image::Adopt(new KVRPixelImage(900, 800, Format::RGB));
    std::mt19937 random(11);
    for (std::byte& value : image->GetRawPixels()) value = static_cast<std::byte>(random() >> 8);
    const TempFolder folder;
    const std::string path = written(folder, image, "PNG");
    EXPECT_EQ(decodedByConvert(path, "rgb"), rawPixels(image));
    EXPECT_EQ(rawPixels(loadFile(path)), rawPixels(image));
}
