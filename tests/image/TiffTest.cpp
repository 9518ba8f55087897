// TIFF files of other programs: every compression, depth, arrangement and byte order.

#include "tests/image/ImageFiles.h"
#include "tests/support/ForeignPrograms.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    const auto at = text.find(what);
    return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

/// Lets a program make a TIFF file of a picture; IN and OUT stand for the files.
std::string encoded(const TempFolder& folder, const RawPicture& picture,
                    const std::string& command) {
    std::string in = writePortableMap(folder, "in.pnm", picture);
    if (command.rfind("oiiotool", 0) == 0) {
        // That program is a step off in some 16-bit portable maps.
        const std::string exact = folder.file("in.png");
        runProgram("convert " + shellWord(in) + " " + shellWord(exact));
        in = exact;
    }
    const std::string out = folder.file("out.tif");
    runProgram(replaced(replaced(command, "IN", shellWord(in)), "OUT", shellWord(out)));
    return out;
}

/// The samples of a picture as they are delivered: 8 bits, rounded.
std::vector<int> delivered(const RawPicture& picture) {
    std::vector<int> values;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            for (int c = 0; c < picture.channels; ++c) {
                const int value = picture.at(x, y, c);
                values.push_back(picture.bits == 8
                                     ? value
                                     : static_cast<int>(std::lround(value * 255 / 65535.0)));
            }
    return values;
}

Format formatOf(int channels) {
    return channels == 1   ? Format::L
           : channels == 2 ? Format::LA
           : channels == 3 ? Format::RGB
                           : Format::RGBA;
}

struct Recipe {
    const char* name;
    const char* command;
    int channels;
    int bits;
    int width = 61, height = 37;
};

void PrintTo(const Recipe& recipe, std::ostream* stream) { *stream << recipe.command; }

constexpr const char* kPlain = "convert IN -compress None OUT";
constexpr const char* kZip = "convert IN -compress Zip -define tiff:rows-per-strip=5 OUT";
constexpr const char* kLzw = "convert IN -compress LZW -define tiff:rows-per-strip=8 OUT";

constexpr Recipe kRecipes[] = {
    {"grey_plain", kPlain, 1, 8},
    {"grey_alpha_plain", kPlain, 2, 8},
    {"rgb_plain", kPlain, 3, 8},
    {"rgba_plain", kPlain, 4, 8},
    {"grey16_plain", kPlain, 1, 16},
    {"grey_alpha16_plain", kPlain, 2, 16},
    {"rgb16_plain", kPlain, 3, 16},
    {"rgba16_plain", kPlain, 4, 16},
    {"rgb_zip", kZip, 3, 8},
    {"rgba_zip", kZip, 4, 8},
    {"grey16_zip", kZip, 1, 16},
    {"rgb16_zip", kZip, 3, 16},
    {"rgb_lzw", kLzw, 3, 8},
    {"grey_alpha_lzw", kLzw, 2, 8},
    {"rgb16_lzw", kLzw, 3, 16},
    {"rgb_packbits", "convert IN -compress RLE OUT", 3, 8},
    {"rgb16_zstd", "convert IN -compress Zstd OUT", 3, 16},
    {"rgb_lzma", "convert IN -compress LZMA OUT", 3, 8},
    {"big_endian", "convert IN -define tiff:endian=msb -compress None OUT", 3, 8},
    {"big_endian16", "convert IN -define tiff:endian=msb -compress None OUT", 3, 16},
    {"big_endian16_zip", "convert IN -define tiff:endian=msb -compress Zip OUT", 3, 16},
    {"planar", "convert IN -interlace Plane -compress LZW OUT", 3, 8},
    {"planar_rgba", "convert IN -interlace Plane -compress Zip OUT", 4, 8},
    {"planar16", "convert IN -interlace Plane -compress None OUT", 3, 16},
    {"turned_bits", "convert IN -define tiff:fill-order=lsb -compress None OUT", 3, 8},
    {"tiled", "oiiotool IN --tile 16 32 --compression zip -o OUT", 3, 8},
    {"tiled16", "oiiotool IN --tile 64 16 --compression lzw -o OUT", 3, 16},
    {"tiled_grey", "oiiotool IN --tile 16 16 --compression none -o OUT", 1, 8},
    {"tiled_planar", "oiiotool IN --tile 32 16 --planarconfig separate -o OUT", 3, 8},
    {"tile_larger_than_picture", "oiiotool IN --tile 256 256 --compression zip -o OUT", 3, 16},
    {"big_tiff", "oiiotool IN --attrib:type=int tiff:bigtiff 1 -o OUT", 3, 8},
    // Large enough for several threads.
    {"many_strips", kZip, 3, 8, 1501, 1003},
    {"many_strips16", kLzw, 3, 16, 1501, 703},
    {"many_tiles", "oiiotool IN --tile 64 64 --compression zip -o OUT", 3, 16, 1501, 1003},
    {"planar_strips", "convert IN -interlace Plane -compress Zip OUT", 3, 8, 1501, 1003},
    // One strip of 18 MiB, which is decoded row by row.
    {"one_large_strip", "convert IN -compress Zip -define tiff:rows-per-strip=4000 OUT", 3, 16,
     1600, 2000},
};

class TiffFile : public testing::TestWithParam<Recipe> {};

}  // namespace

TEST_P(TiffFile, has_the_samples_that_were_stored) {
    const Recipe& recipe = GetParam();
    const TempFolder folder;
    const RawPicture picture = gradients(recipe.width, recipe.height, recipe.channels, recipe.bits);
    const auto image = loadFile(encoded(folder, picture, recipe.command));
    const auto found = bytesOf(image, recipe.width, recipe.height, formatOf(recipe.channels));
    EXPECT_TRUE(found == delivered(picture));
}

INSTANTIATE_TEST_SUITE_P(Programs, TiffFile, testing::ValuesIn(kRecipes),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(TiffReader, big_endian_recipe_makes_big_endian_files) {
    const TempFolder folder;
    const std::string path = encoded(folder, gradients(5, 3, 3),
                                     "convert IN -define tiff:endian=msb -compress None OUT");
    EXPECT_EQ(contentOf(path).substr(0, 2), "MM");
}

TEST(TiffReader, delivers_few_bits_over_the_whole_range) {
    const TempFolder folder;
    for (const int bits : {1, 2, 4}) {
        // All values of the depth occur; the width does not fill the last byte of a row.
        const int most = (1 << bits) - 1;
        RawPicture picture{13, 6, 1, 8, {}};
        for (int i = 0; i < 13 * 6; ++i)
            picture.append((i * 7 + i / 13) % (most + 1) * (255 / most));
        const auto path = encoded(
            folder, picture, "convert IN -depth " + std::to_string(bits) + " -compress None OUT");
        EXPECT_EQ(bytesOf(loadFile(path), 13, 6, Format::L), delivered(picture)) << bits;
    }
}

TEST(TiffReader, expands_palettes) {
    const TempFolder folder;
    RawPicture picture{19, 11, 3, 8, {}};
    for (int i = 0; i < 19 * 11; ++i) {
        picture.append(i % 5 * 60);
        picture.append(255 - i % 5 * 31);
        picture.append(i % 3 * 100);
    }
    const auto path = encoded(folder, picture, "convert IN -type Palette -compress None OUT");
    ASSERT_NE(runProgram("oiiotool --info -v " + shellWord(path))
                  .find("tiff:PhotometricInterpretation: 3"),
              std::string::npos);
    EXPECT_EQ(bytesOf(loadFile(path), 19, 11, Format::RGB), delivered(picture));
}

TEST(TiffReader, reads_fax_codes) {
    const TempFolder folder;
    RawPicture picture{203, 41, 1, 8, {}};
    for (int y = 0; y < 41; ++y)
        for (int x = 0; x < 203; ++x) picture.append((x * x / 97 + y * x / 31) % 3 ? 255 : 0);
    for (const char* code : {"Fax", "Group4"}) {
        const auto path = encoded(folder, picture,
                                  std::string("convert IN -monochrome -compress ") + code + " OUT");
        EXPECT_EQ(bytesOf(loadFile(path), 203, 41, Format::L), delivered(picture)) << code;
    }
    const auto rle = encoded(folder, picture, "oiiotool IN -d uint1 --compression ccittrle -o OUT");
    EXPECT_EQ(bytesOf(loadFile(rle), 203, 41, Format::L), delivered(picture));
}

TEST(TiffReader, turns_white_is_zero_around) {
    const TempFolder folder;
    RawPicture picture = gradients(21, 9, 1);
    // The program stores the samples as they are and only says that they mean the opposite.
    const auto path = encoded(
        folder, picture, "convert IN -define quantum:polarity=min-is-white -compress None OUT");
    for (char& sample : picture.samples) sample = static_cast<char>(~sample);
    EXPECT_EQ(bytesOf(loadFile(path), 21, 9, Format::L), delivered(picture));
}

TEST(TiffReader, delivers_half_numbers_as_half) {
    const TempFolder folder;
    const RawPicture picture = gradients(33, 21, 3, 16);
    for (const char* how : {"--compression none", "--compression zip",
                            "--compression lzw --tile 16 16", "--planarconfig separate"}) {
        const auto path = encoded(
            folder, picture,
            std::string("oiiotool IN -d half --attrib:type=int tiff:half 1 ") + how + " -o OUT");
        const auto found = halvesOf(loadFile(path), 33, 21, Format::RGB_f16);
        ASSERT_EQ(found.size(), 33U * 21 * 3) << how;
        for (int i = 0; i < 33 * 21 * 3; ++i) {
            // 11 significant bits: half a unit of the last one is 2^-12 of numbers up to 1.
            const double expected = picture.at(i / 3 % 33, i / 99, i % 3) / 65535.0;
            ASSERT_NEAR(static_cast<double>(found[static_cast<std::size_t>(i)]), expected, 0x1p-12)
                << how;
        }
    }
}

TEST(TiffReader, delivers_floats_as_float) {
    const TempFolder folder;
    for (const int channels : {1, 3}) {
        const RawPicture picture = gradients(33, 21, channels, 16);
        for (const char* how :
             {"-d float --compression none", "-d float --compression zip --attrib tiff:predictor 3",
              "-d float --tile 16 16", "-d double --compression lzw"}) {
            const auto path =
                encoded(folder, picture, std::string("oiiotool IN ") + how + " -o OUT");
            const auto found =
                floatsOf(loadFile(path), 33, 21, channels == 1 ? Format::L_f : Format::RGB_f);
            ASSERT_EQ(found.size(), static_cast<std::size_t>(33 * 21 * channels)) << how;
            for (int i = 0; i < 33 * 21 * channels; ++i) {
                const double expected =
                    picture.at(i / channels % 33, i / channels / 33, i % channels) / 65535.0;
                ASSERT_NEAR(static_cast<double>(found[static_cast<std::size_t>(i)]), expected, 1e-7)
                    << how;
            }
        }
    }
}

TEST(TiffReader, delivers_rows_as_stored_whatever_the_orientation) {
    const TempFolder folder;
    const RawPicture picture = gradients(17, 8, 3);
    for (const char* orientation : {"TopLeft", "BottomRight", "LeftTop", "RightBottom"}) {
        const auto path =
            encoded(folder, picture,
                    std::string("convert IN -orient ") + orientation + " -compress None OUT");
        EXPECT_EQ(bytesOf(loadFile(path), 17, 8, Format::RGB), delivered(picture)) << orientation;
    }
}

TEST(TiffReader, decodes_jpeg_strips) {
    const TempFolder folder;
    // Smooth, so that subsampled colour is no matter.
    RawPicture picture{64, 48, 3, 8, {}};
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x)
            for (int value : {x * 4, y * 5, 128 + x - y}) picture.append(value);
    const auto path = encoded(folder, picture, "convert IN -compress JPEG -quality 95 OUT");
    const auto found = bytesOf(loadFile(path), 64, 48, Format::RGB);
    const std::string expected = decodedByConvert(path, "rgb");
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        // Decoders may differ by a step; encoding lost a few.
        constexpr int kStep = 1, kLoss = 12;
        ASSERT_NEAR(found[i], static_cast<unsigned char>(expected[i]), kStep) << i;
        ASSERT_NEAR(found[i], static_cast<unsigned char>(picture.samples[i]), kLoss) << i;
    }
}

TEST(TiffReader, reports_resolution_with_its_unit) {
    struct Case {
        const char* options;
        double x, y;
        int unit;
    };
    constexpr Case kCases[] = {{"-units PixelsPerInch -density 300x150", 300, 150, 2},
                               {"-units PixelsPerCentimeter -density 100", 100, 100, 3},
                               {"-units Undefined -density 300", 0, 0, 1}};
    const TempFolder folder;
    for (const Case& test : kCases) {
        const auto path = encoded(folder, gradients(4, 4, 3),
                                  std::string("convert IN ") + test.options + " -compress Zip OUT");
        const auto image = loadFile(path);
        ASSERT_TRUE(image);
        EXPECT_DOUBLE_EQ(image->GetXResolution(), test.x) << test.options;
        EXPECT_DOUBLE_EQ(image->GetYResolution(), test.y) << test.options;
        EXPECT_EQ(image->GetResolutionUnit(), test.unit) << test.options;
        KVRMMImageProp prop;
        KVRMMImageSize size;
        ASSERT_EQ(KVRMMRasterAdministrator::GetInstance()->GetImageInfo(path, prop, size, 0), S_OK);
        EXPECT_DOUBLE_EQ(size.GetXResolution(), test.x);
        EXPECT_EQ(size.GetResolutionUnit(), test.unit);
        EXPECT_EQ(prop.fileFormat, KVRUnicodeString("tif"));
        EXPECT_EQ(prop.channels, 3);
        EXPECT_EQ(prop.bitsPerChannel, 8);
        EXPECT_EQ(size.width, 4);
    }
}

TEST(TiffReader, info_of_a_file_with_broken_pixels_is_given) {
    const TempFolder folder;
    // This program writes the directory first.
    std::string file =
        contentOf(encoded(folder, gradients(40, 30, 3), "oiiotool IN --compression zip -o OUT"));
    const std::string path = folder.write("cut.tif", file.substr(0, file.size() * 3 / 4));
    KVRMMImageProp prop;
    KVRMMImageSize size;
    EXPECT_EQ(KVRMMRasterAdministrator::GetInstance()->GetImageInfo(path, prop, size, 0), S_OK);
    EXPECT_EQ(size.height, 30);
    EXPECT_FALSE(Image::Adopt(KVRPixelImage::CreateFromFile(path, 1, 0)));
}
