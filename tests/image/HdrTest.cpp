// Radiance pictures: of other programs, and made by hand.

#include "tests/image/ImageFiles.h"
#include "tests/support/AddressSpace.h"
#include "tests/support/ForeignPrograms.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Bytes = std::vector<int>;

std::string picture(const std::string& resolution, const std::string& scanlines,
                    const std::string& lines = "FORMAT=32-bit_rle_rgbe\n") {
    return "#?RADIANCE\n" + lines + "\n" + resolution + "\n" + scanlines;
}

/// The value of a mantissa, from the definition: m / 256 * 2^(e - 128).
float value(int mantissa, int exponent) {
    return static_cast<float>(std::ldexp(mantissa / 256.0, exponent - 128));
}

/// A scanline of @p width pixels in which component c is 10 c + 1 throughout, run-length coded.
std::string evenScanline(int width) {
    std::string text = bytes({2, 2, width >> 8, width & 255});
    for (int c = 0; c < 4; ++c)
        for (int left = width; left > 0; left -= std::min(left, 127))
            text += bytes({128 + std::min(left, 127), 10 * c + 1});
    return text;
}

}  // namespace

TEST(HdrReader, decodes_what_other_programs_write) {
    const TempFolder folder;
    constexpr int kWidth = 301, kHeight = 83;
    const std::string in = writePortableMap(folder, "in.ppm", gradients(kWidth, kHeight, 3, 16));
    for (const char* program : {"oiiotool IN -o OUT", "convert IN OUT"}) {
        std::string command = program;
        const std::string out = folder.file("a.hdr"), plain = folder.file("a.tif");
        command.replace(command.find("IN"), 2, shellWord(in));
        command.replace(command.find("OUT"), 3, shellWord(out));
        runProgram(command);
        // The same program's own reading, by way of a plain file of floats.
        runProgram("oiiotool " + shellWord(out) + " -d float --compression none -o " +
                   shellWord(plain));
        const auto found = floatsOf(loadFile(out), kWidth, kHeight, Format::RGB_f);
        ASSERT_FALSE(found.empty());
        EXPECT_TRUE(found == floatsOf(loadFile(plain), kWidth, kHeight, Format::RGB_f)) << program;
        EXPECT_GT(*std::max_element(found.begin(), found.end()), 0.9F);
    }
}

TEST(HdrReader, reads_plain_pixels) {
    const std::string file =
        picture("-Y 2 +X 3", bytes({10, 20, 30, 129, 255, 128, 1, 136, 0,   0,  0,   0,  //
                                    9,  9,  9,  0,   1,   2,   3, 1,   128, 64, 255, 255}));
    EXPECT_EQ(floatsOf(loadBytes(file), 3, 2, Format::RGB_f),
              (std::vector<float>{value(10, 129), value(20, 129), value(30, 129), 255, 128, 1, 0, 0,
                                  0, 0, 0, 0, value(1, 1), value(2, 1), value(3, 1),
                                  value(128, 255), value(64, 255), value(255, 255)}));
}

TEST(HdrReader, reads_repeated_pixels) {
    // Six times 1: once, and 5 repetitions; 300 times 2: once, and 43 + 1 * 256 repetitions.
    for (const auto& [width, repeats] :
         {std::pair{6, Bytes{1, 1, 1, 5}}, std::pair{300, Bytes{1, 1, 1, 43, 1, 1, 1, 1}}}) {
        const std::string file =
            picture("-Y 1 +X " + std::to_string(width), bytes({128, 64, 32, 129}) + bytes(repeats));
        std::vector<float> expected;
        for (int i = 0; i < width; ++i) expected.insert(expected.end(), {1, 0.5F, 0.25F});
        EXPECT_EQ(floatsOf(loadBytes(file), width, 1, Format::RGB_f), expected);
    }
}

TEST(HdrReader, reads_components_in_runs) {
    std::string scanline = bytes({2, 2, 0, 10});
    scanline += bytes({138, 128});                              // ten times
    scanline += bytes({3, 1, 2, 3, 130, 7, 5, 4, 5, 6, 7, 8});  // three, twice, five
    scanline += bytes({10, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9});      // ten
    scanline += bytes({129, 129, 137, 130});                    // once, nine times
    const auto found = floatsOf(loadBytes(picture("-Y 1 +X 10", scanline)), 10, 1, Format::RGB_f);
    const int green[] = {1, 2, 3, 7, 7, 4, 5, 6, 7, 8};
    std::vector<float> expected;
    for (int i = 0; i < 10; ++i)
        for (int mantissa : {128, green[i], i}) expected.push_back(value(mantissa, i ? 130 : 129));
    EXPECT_EQ(found, expected);
}

TEST(HdrReader, scanlines_may_differ_in_their_coding) {
    const std::string plain(8 * 4, '\x02');  // begins with 2 2, but a length would be 514
    std::string other;
    for (int i = 0; i < 8; ++i) other += bytes({3, 4, 5, 129});
    const auto found =
        floatsOf(loadBytes(picture("-Y 2 +X 8", other + evenScanline(8))), 8, 2, Format::RGB_f);
    ASSERT_EQ(found.size(), 48U);
    EXPECT_EQ(found[0], value(3, 129));
    EXPECT_EQ(found[24], value(1, 31));
    EXPECT_NE(refusalOf(picture("-Y 1 +X 8", plain)).find("a scanline of 8 pixels, found 514"),
              std::string::npos);
}

TEST(HdrReader, reads_scanlines_of_any_length) {
    for (const int width : {1, 7, 8, 127, 128, 32767}) {
        std::string scanline;
        if (width < 8)
            for (int i = 0; i < width; ++i) scanline += bytes({1, 11, 21, 31});
        else
            scanline = evenScanline(width);
        const auto found = floatsOf(
            loadBytes(picture("-Y 3 +X " + std::to_string(width), scanline + scanline + scanline)),
            width, 3, Format::RGB_f);
        ASSERT_EQ(found.size(), static_cast<std::size_t>(9 * width));
        for (std::size_t i = 0; i < found.size(); ++i)
            ASSERT_EQ(found[i], value(static_cast<int>(i % 3) * 10 + 1, 31)) << width;
    }
    // Longer ones are never coded by components.
    std::string longest;
    for (int i = 0; i < 32768; ++i) longest += bytes({2, 2, 0, 129});
    EXPECT_TRUE(loadBytes(picture("-Y 1 +X 32768", longest)));
}

TEST(HdrReader, delivers_scanlines_as_rows_whatever_way_the_picture_is_turned) {
    std::string pixels;
    for (int i = 2; i < 8; ++i) pixels += bytes({i, i, i, 136});
    const std::vector<float> expected{2, 2, 2, 3, 3, 3, 4, 4, 4, 5, 5, 5, 6, 6, 6, 7, 7, 7};
    for (const char* resolution : {"-Y 2 +X 3", "-Y 2 -X 3", "+Y 2 +X 3", "+Y 2 -X 3", "-X 2 +Y 3",
                                   "-X 2 -Y 3", "+X 2 +Y 3", "+X 2 -Y 3"})
        EXPECT_EQ(floatsOf(loadBytes(picture(resolution, pixels)), 3, 2, Format::RGB_f), expected)
            << resolution;
}

TEST(HdrReader, leaves_exposure_and_correction_alone) {
    const std::string pixel = bytes({128, 128, 128, 129});
    EXPECT_EQ(floatsOf(loadBytes(picture("-Y 1 +X 1", pixel,
                                         "# made by hand\nEXPOSURE=4\nCOLORCORR= 2 3 4\n"
                                         "FORMAT= 32-bit_rle_rgbe \n")),
                       1, 1, Format::RGB_f),
              (std::vector<float>{1, 1, 1}));
}

TEST(HdrReader, converts_xyz_to_rgb) {
    // Equal energy, and Radiance's red primary (x 0.64, y 0.33) of luminance 0.265, which is its
    // share of white.
    const std::string file = picture("-Y 1 +X 2", bytes({128, 128, 128, 129, 132, 68, 6, 128}),
                                     "FORMAT=32-bit_rle_xyze\n");
    const auto found = floatsOf(loadBytes(file), 2, 1, Format::RGB_f);
    ASSERT_EQ(found.size(), 6U);
    const double expected[] = {1, 1, 1, 1, 0, 0};
    constexpr double kOfMantissas = 0.01;
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_NEAR(static_cast<double>(found[i]), expected[i], kOfMantissas) << i;
}

TEST(HdrReader, reports_what_the_header_says) {
    const TempFolder folder;
    const std::string path = folder.write("a.hdr", picture("-Y 3 +X 9", "no pixels at all"));
    expectInfo(path, 9, 3, "hdr", Format::RGB_f);
}

TEST(HdrReader, broken_headers_are_refused) {
    const std::string pixel = bytes({128, 128, 128, 129});
    ASSERT_EQ(refusalOf(picture("-Y 1 +X 1", pixel)), "");
    for (const char* resolution :
         {"", "-Y 1", "-Y 1 +X", "-Y 1 +X 0", "-Y 0 +X 1", "-Y -1 +X 1", "Y 1 X 1", "-Y 1 +Y 1",
          "-X 1 +X 1", "-Z 1 +X 1", "-Y 1 +X 1 1", "-Y1 +X1", "-Y 1  +X 1", "-Y 4294967297 +X 1",
          "-Y 99999999999999999999 +X 1"})
        EXPECT_NE(refusalOf(picture(resolution, pixel)).find("resolution"), std::string::npos)
            << resolution;
    EXPECT_NE(
        refusalOf(picture("-Y 1 +X 1", pixel, "FORMAT=32-bit_rle_cmyk\n")).find("32-bit_rle_cmyk"),
        std::string::npos);
    EXPECT_NE(refusalOf("#?RADIANCE\n" + std::string(200000, 'x')), "");
    EXPECT_NE(refusalOf(picture("-Y \x1B[2J", pixel)).find("\"-Y ?[2J\""), std::string::npos);
    EXPECT_NE(refusalOf(picture("-Y 1 +X 1", pixel, "FORMAT=\n")).find("found \"\""),
              std::string::npos);
    std::string lines = "#?RADIANCE\n";
    for (int i = 0; i < 20000; ++i) lines += "A=1\n";
    EXPECT_NE(refusalOf(lines + "\n-Y 1 +X 1\n" + pixel).find("ever more lines"),
              std::string::npos);
}

TEST(HdrReader, broken_scanlines_are_refused) {
    const auto reason = [](const std::string& scanline, int width = 8) {
        return refusalOf(
            picture("-Y 1 +X " + std::to_string(width), scanline + std::string(64, '\0')));
    };
    EXPECT_NE(reason(bytes({2, 2, 0, 9})).find("8 pixels, found 9"), std::string::npos);
    EXPECT_NE(reason(bytes({2, 2, 0, 8, 0})).find("a run of 1 to 8 bytes, found 0"),
              std::string::npos);
    EXPECT_NE(reason(bytes({2, 2, 0, 8, 137, 1})).find("found 9"), std::string::npos);
    EXPECT_NE(reason(bytes({2, 2, 0, 8, 132, 1, 5, 1, 2, 3, 4, 5})).find("1 to 4 bytes, found 5"),
              std::string::npos);
    EXPECT_NE(reason(bytes({1, 1, 1, 3})).find("repetition"), std::string::npos);
    EXPECT_NE(reason(bytes({9, 9, 9, 9, 1, 1, 1, 8})).find("1 to 7 pixels, found 8"),
              std::string::npos);
    // A fifth repetition in a row would shift its count out of everything.
    EXPECT_NE(
        reason(bytes({9, 9, 9, 9, 1, 1, 1, 0, 1, 1, 1, 0, 1, 1, 1, 0, 1, 1, 1, 0, 1, 1, 1, 1}))
            .find("repetition"),
        std::string::npos);
}

TEST(HdrReader, cut_short_anywhere_is_refused) {
    const std::string file =
        picture("-Y 3 +X 40", evenScanline(40) + evenScanline(40) + evenScanline(40));
    ASSERT_EQ(refusalOf(file), "");
    for (std::size_t length = 2; length < file.size(); ++length)
        EXPECT_NE(refusalOf(file.substr(0, length)), "") << length;
}

TEST(HdrReader, declared_sizes_are_compared_with_the_file) {
    for (const char* resolution : {"-Y 65535 +X 65535", "-Y 2147483647 +X 1", "-Y 1 +X 2147483647",
                                   "-Y 16384 +X 16384", "-Y 2147483647 +X 2147483647"}) {
        const long long before = peakAddressSpace();
        EXPECT_NE(refusalOf(picture(resolution, std::string(200, '\x09'))), "") << resolution;
        EXPECT_LT(peakAddressSpace() - before, 16 << 20) << resolution;
    }
}
