// Bitmaps that are written: other programs read the pixels back, the headers are looked at by hand.

#include "tests/image/ImageFiles.h"
#include "tests/image/WrittenImages.h"
#include "tests/support/ForeignPrograms.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;

/// A number of @p bytes bytes, little endian.
std::uint32_t number(const std::string& file, std::size_t at, int bytes) {
    std::uint32_t value = 0;
    for (int i = bytes - 1; i >= 0; --i)
        value = value << 8 | static_cast<unsigned char>(file.at(at + static_cast<std::size_t>(i)));
    return value;
}

/// The samples with grey spread out, as programs give them back.
std::string asColors(const RawPicture& picture) {
    std::string colors;
    for (std::size_t i = 0; i < picture.samples.size(); i += 2)
        colors += std::string(3, picture.samples[i]) + picture.samples[i + 1];
    return colors;
}

}  // namespace

TEST(BmpWriter, other_programs_read_the_pixels_back) {
    const TempFolder folder;
    for (const int width : {1, 2, 3, 4, 61})
        for (const int channels : {1, 2, 3, 4}) {
            const RawPicture picture = gradients(width, 23, channels);
            const std::string path = written(folder, imageOf(picture), "BMP");
            const char* const words[] = {"", "gray", "rgba", "rgb", "rgba"};
            EXPECT_TRUE(decodedByConvert(path, words[channels]) ==
                        (channels == 2 ? asColors(picture) : picture.samples))
                << width << " wide, channels: " << channels;
        }
}

TEST(BmpWriter, a_second_program_agrees) {
    const TempFolder folder;
    for (const int channels : {1, 3}) {
        const RawPicture picture = gradients(37, 19, channels);
        const std::string out = folder.file(channels == 1 ? "out.pgm" : "out.ppm");
        runProgram("oiiotool " + shellWord(written(folder, imageOf(picture), "BMP")) +
                   (channels == 1 ? " --ch 0" : "") + " -d uint8 -o " + shellWord(out));
        const std::string content = contentOf(out);
        ASSERT_GE(content.size(), picture.samples.size());
        EXPECT_TRUE(content.substr(content.size() - picture.samples.size()) == picture.samples);
    }
}

TEST(BmpWriter, headers_fit_what_is_written) {
    struct Case {
        int channels;
        unsigned headerBytes, bits, paletteEntries;
    };
    const TempFolder folder;
    for (const Case& test :
         {Case{1, 40, 8, 256}, Case{2, 108, 32, 0}, Case{3, 40, 24, 0}, Case{4, 108, 32, 0}}) {
        const std::string file =
            contentOf(written(folder, imageOf(gradients(5, 3, test.channels)), "BMP"));
        const unsigned row = (5 * test.bits + 31) / 32 * 4;
        const unsigned begin = 14 + test.headerBytes + 4 * test.paletteEntries;
        EXPECT_EQ(file.substr(0, 2), "BM");
        EXPECT_EQ(number(file, 2, 4), file.size());
        EXPECT_EQ(file.size(), begin + 3 * row);
        EXPECT_EQ(number(file, 10, 4), begin);
        EXPECT_EQ(number(file, 14, 4), test.headerBytes);
        EXPECT_EQ(number(file, 18, 4), 5U);
        EXPECT_EQ(number(file, 22, 4), 3U);  // positive: the bottom row comes first
        EXPECT_EQ(number(file, 26, 2), 1U);
        EXPECT_EQ(number(file, 28, 2), test.bits);
        EXPECT_EQ(number(file, 30, 4), test.bits == 32 ? 3U : 0U);
        if (test.bits == 32) {
            EXPECT_EQ(number(file, 14 + 52, 4), 0xFF000000U);
        }
    }
}

TEST(BmpWriter, resolution_goes_out_per_metre) {
    const TempFolder folder;
    const Image image = imageOf(gradients(2, 2, 3));
    const auto perMetre = [&](double x, double y, int unit) {
        image->SetResolution(x, y, unit);
        const std::string file = contentOf(written(folder, image, "BMP"));
        return std::pair{number(file, 38, 4), number(file, 42, 4)};
    };
    EXPECT_EQ(perMetre(300, 72, 2), (std::pair{11811U, 2835U}));
    EXPECT_EQ(perMetre(100, 50.5, 3), (std::pair{10000U, 5050U}));
    EXPECT_EQ(perMetre(0, 0, 1), (std::pair{0U, 0U}));
}

TEST(BmpWriter, profile_goes_out_behind_the_pixels) {
    const TempFolder folder;
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    const auto data = profile->GetData();
    for (const int channels : {3, 4}) {
        const RawPicture picture = gradients(5, 3, channels);
        const Image image = imageOf(picture);
        ASSERT_EQ(image->AssignColorProfile(profile.Get(), 0), S_OK);
        const std::string path = written(folder, image, "BMP"), file = contentOf(path);
        EXPECT_EQ(number(file, 14, 4), 124U);
        EXPECT_EQ(file.substr(14 + 56, 4), "DEBM");  // PROFILE_EMBEDDED, little endian
        const std::size_t at = 14 + number(file, 14 + 112, 4), size = number(file, 14 + 116, 4);
        ASSERT_EQ(size, data.size());
        ASSERT_EQ(at + size, file.size());
        EXPECT_EQ(std::memcmp(file.data() + at, data.data(), size), 0);
        EXPECT_TRUE(decodedByConvert(path, channels == 3 ? "rgb" : "rgba") == picture.samples);
    }
}

TEST(BmpWriter, profile_of_another_colour_space_stays_away) {
    const TempFolder folder;
    const Image image = imageOf(gradients(5, 3, 1));
    const auto sRGB = KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    std::vector<std::byte> grey(sRGB->GetData().begin(), sRGB->GetData().end());
    std::memcpy(grey.data() + 16, "GRAY", 4);
    const auto profile =
        KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateFromMemory(grey));
    ASSERT_TRUE(profile);
    ASSERT_EQ(image->AssignColorProfile(profile.Get(), 0), S_OK);
    EXPECT_EQ(number(contentOf(written(folder, image, "BMP")), 14, 4), 40U);
}
