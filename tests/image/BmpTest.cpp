// Windows bitmaps: of other programs, and made by hand.

#include "tests/image/BmpBuilder.h"
#include "tests/image/FileParts.h"
#include "tests/image/ImageFiles.h"
#include "tests/image/WrittenImages.h"
#include "tests/support/ForeignPrograms.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Bytes = std::vector<int>;

/// 3 x 2 pixels of 24 bits: the bottom row first, each filled up with three bytes.
BmpFile plainFile() {
    BmpFile file;
    file.width = 3;
    file.height = 2;
    file.pixels = bytes({1,  2,  3,  4,  5,  6,  7,  8,  9,  99, 99, 99,  //
                         11, 12, 13, 14, 15, 16, 17, 18, 19, 99, 99, 99});
    return file;
}
const Bytes kPlainPixels{13, 12, 11, 16, 15, 14, 19, 18, 17, 3, 2, 1, 6, 5, 4, 9, 8, 7};

/// One row of indices.
BmpFile indexedFile(int bits, int width, const Bytes& row) {
    BmpFile file;
    file.bits = bits;
    file.width = width;
    for (std::uint32_t i = 0; i < 1U << bits; ++i) file.palette.push_back(i << 16 | (i + 1) << 8);
    file.pixels = bytes(row);
    return file;
}

/// What the palette of `indexedFile` gives.
Bytes colorsOf(const Bytes& indices) {
    Bytes colors;
    for (const int index : indices) colors.insert(colors.end(), {index, (index + 1) & 255, 0});
    return colors;
}

/// One row of pixels with masks; from a header that has room for the mask of alpha.
BmpFile maskedFile(int bits, const std::vector<std::uint32_t>& masks,
                   const std::vector<std::uint32_t>& pixels) {
    BmpFile file;
    file.headerBytes = 108;
    file.bits = bits;
    file.storage = 3;
    file.masks = masks;
    file.width = static_cast<int>(pixels.size());
    for (const std::uint32_t pixel : pixels) file.pixels += littleEndian(pixel, bits / 8);
    file.pixels.resize((file.pixels.size() + 3) / 4 * 4);
    return file;
}

Bytes rgbOf(const BmpFile& file) {
    return bytesOf(loadBytes(file.build()), file.width, std::abs(file.height), Format::RGB);
}

Bytes rgbaOf(const BmpFile& file) {
    return bytesOf(loadBytes(file.build()), file.width, std::abs(file.height), Format::RGBA);
}

/// The largest difference between two bytes; 256 when there are not as many.
int widestDifference(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return 256;
    int widest = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        widest = std::max(
            widest, std::abs(static_cast<unsigned char>(a[i]) - static_cast<unsigned char>(b[i])));
    return widest;
}

}  // namespace

TEST(BmpReader, decodes_what_convert_writes) {
    struct Case {
        int channels;
        const char* options;
        bool alpha = false;
        int widest = 0;  // difference: 16-bit pixels are scaled by repeated bits there
    };
    const TempFolder folder;
    for (const Case& test :
         {Case{3, "BMP2:"}, Case{3, "BMP:"}, Case{4, "BMP3:"}, Case{3, "-colors 200 BMP3:"},
          Case{3, "-colors 200 BMP2:"}, Case{3, "-colors 16 BMP3:"}, Case{3, "-monochrome BMP3:"},
          Case{1, "BMP3:"}, Case{1, "-compress RLE BMP3:"},
          Case{3, "-colors 200 -compress RLE BMP3:"}, Case{3, "-colors 30 -compress RLE BMP:"},
          Case{3, "-define bmp:subtype=RGB565 BMP:", false, 1},
          Case{3, "-define bmp:subtype=RGB555 BMP:", false, 1}}) {
        SCOPED_TRACE(test.options);
        const std::string in = writePortableMap(folder, "in", gradients(45, 31, test.channels));
        const std::string out = folder.file("a.bmp");
        runProgram("convert " + shellWord(in) + " " + test.options + shellWord(out));
        const Image image = loadFile(out);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->GetFormat(), test.alpha ? Format::RGBA : Format::RGB);
        EXPECT_LE(
            widestDifference(rawPixels(image), decodedByConvert(out, test.alpha ? "rgba" : "rgb")),
            test.widest);
    }
}

TEST(BmpReader, plain_pixels_of_convert_are_those_that_went_in) {
    const TempFolder folder;
    for (const auto& [width, channels] :
         {std::pair{1, 3}, std::pair{2, 3}, std::pair{3, 4}, std::pair{45, 4}}) {
        const RawPicture picture = gradients(width, 31, channels);
        const std::string out = folder.file("a.bmp");
        runProgram("convert " + shellWord(writePortableMap(folder, "in", picture)) + " " +
                   shellWord(out));
        EXPECT_TRUE(rawPixels(loadFile(out)) == picture.samples);
    }
}

TEST(BmpReader, four_bits_of_convert_are_near_what_went_in) {
    const TempFolder folder;
    const RawPicture picture = gradients(45, 31, 4);
    const std::string out = folder.file("a.bmp");
    runProgram("convert " + shellWord(writePortableMap(folder, "in", picture)) +
               " -define bmp:subtype=ARGB4444 " + shellWord(out));
    constexpr int kCutOff = 16;  // just below a step of 255 / 15
    EXPECT_LE(widestDifference(rawPixels(loadFile(out)), picture.samples), kCutOff);
}

TEST(BmpReader, decodes_what_oiiotool_writes) {
    const TempFolder folder;
    for (const int width : {1, 2, 3, 4, 45}) {
        const RawPicture picture = gradients(width, 31, 3);
        const std::string out = folder.file("a.bmp");
        runProgram("oiiotool " + shellWord(writePortableMap(folder, "in.ppm", picture)) + " -o " +
                   shellWord(out));
        EXPECT_TRUE(rawPixels(loadFile(out)) == picture.samples) << width;
    }
}

TEST(BmpReader, reads_back_what_the_writer_wrote) {
    const TempFolder folder;
    for (const int channels : {3, 4}) {
        const RawPicture picture = gradients(37, 19, channels);
        const Image image = imageOf(picture);
        image->SetResolution(100, 50, 3);
        const auto sRGB = KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
        ASSERT_EQ(image->AssignColorProfile(sRGB.Get(), 0), S_OK);
        const Image back = loadFile(written(folder, image, "BMP"));
        ASSERT_TRUE(back);
        EXPECT_EQ(back->GetFormat(), image->GetFormat());
        EXPECT_TRUE(rawPixels(back) == picture.samples);
        EXPECT_EQ(back->GetXResolution(), 100);
        EXPECT_EQ(back->GetYResolution(), 50);
        EXPECT_EQ(back->GetResolutionUnit(), 3);
        const auto profile = KVRVar<KVRMMColorProfile>::Adopt(back->GetColorProfile());
        ASSERT_TRUE(profile);
        EXPECT_TRUE(std::ranges::equal(profile->GetData(), sRGB->GetData()));
    }
}

TEST(BmpReader, delivers_the_top_row_first) {
    EXPECT_EQ(rgbOf(plainFile()), kPlainPixels);
    BmpFile file = plainFile();
    file.height = -2;
    Bytes expected(kPlainPixels.begin() + 9, kPlainPixels.end());
    expected.insert(expected.end(), kPlainPixels.begin(), kPlainPixels.begin() + 9);
    EXPECT_EQ(rgbOf(file), expected);
}

TEST(BmpReader, reads_headers_of_all_lengths) {
    for (const int length : {12, 16, 17, 20, 36, 40, 44, 52, 56, 60, 64, 108, 124}) {
        SCOPED_TRACE(length);
        BmpFile file = plainFile();
        file.headerBytes = length;
        EXPECT_EQ(rgbOf(file), kPlainPixels);
        file = indexedFile(8, 4, {0, 1, 254, 255});
        file.headerBytes = length;
        EXPECT_EQ(rgbOf(file), colorsOf({0, 1, 254, 255}));
    }
}

TEST(BmpReader, reads_indices_of_all_sizes) {
    // Nine pixels end within a byte; the bits behind them are set and mean nothing.
    EXPECT_EQ(rgbOf(indexedFile(1, 9, {0xA6, 0xFF, 0xFF, 0xFF})),
              colorsOf({1, 0, 1, 0, 0, 1, 1, 0, 1}));
    EXPECT_EQ(rgbOf(indexedFile(2, 9, {0x1B, 0xE4, 0xBF, 0xFF})),
              colorsOf({0, 1, 2, 3, 3, 2, 1, 0, 2}));
    EXPECT_EQ(rgbOf(indexedFile(4, 5, {0x01, 0x9A, 0xEF, 0xFF})), colorsOf({0, 1, 9, 10, 14}));
    EXPECT_EQ(rgbOf(indexedFile(8, 3, {0, 127, 255, 99})), colorsOf({0, 127, 255}));
}

TEST(BmpReader, grey_palettes_are_colours_too) {
    BmpFile file = indexedFile(1, 2, {0x40, 0, 0, 0});
    file.palette = {0, 0xFFFFFF};
    EXPECT_EQ(rgbOf(file), (Bytes{0, 0, 0, 255, 255, 255}));
}

TEST(BmpReader, indices_outside_of_the_palette_are_black) {
    const Bytes row{0, 1, 2, 255}, expected{1, 2, 3, 4, 5, 6, 0, 0, 0, 0, 0, 0};
    BmpFile file = indexedFile(8, 4, row);
    file.palette = {0x010203, 0x040506};
    file.colors = 2;
    EXPECT_EQ(rgbOf(file), expected);
    // Where the pixels begin ends the palette, whatever its declared length.
    for (const std::uint32_t declared : {0U, 3U, 256U, 257U, 0xFFFFFFFFU}) {
        file.colors = declared;
        EXPECT_EQ(rgbOf(file), expected) << declared;
    }
    file.headerBytes = 12;
    EXPECT_EQ(rgbOf(file), expected);
}

TEST(BmpReader, palettes_may_be_longer_than_any_index) {
    BmpFile file = indexedFile(1, 2, {0x40, 0, 0, 0});
    file.palette = {0x010203, 0x040506, 0x070809};
    file.colors = 3;
    EXPECT_EQ(rgbOf(file), (Bytes{1, 2, 3, 4, 5, 6}));
}

TEST(BmpReader, pixels_may_begin_further_on_or_at_no_sensible_place) {
    BmpFile file = plainFile();
    file.behindPalette = "anything";
    EXPECT_EQ(rgbOf(file), kPlainPixels);
    file.behindPalette.clear();
    for (const std::uint32_t begin : {0U, 14U, 53U}) {
        file.pixelsBegin = begin;
        EXPECT_EQ(rgbOf(file), kPlainPixels) << begin;
    }
    // Pictures of colours may have a palette, for displays that need one.
    file.palette = {1, 2, 3};
    file.colors = 3;
    EXPECT_EQ(rgbOf(file), kPlainPixels);
    BmpFile indexed = indexedFile(2, 3, {0x6C, 0, 0, 0});
    indexed.pixelsBegin = 0;
    EXPECT_EQ(rgbOf(indexed), colorsOf({1, 2, 3}));
    indexed.colors = 0xFFFFFFFF;
    EXPECT_EQ(rgbOf(indexed), colorsOf({1, 2, 3}));
}

TEST(BmpReader, sixteen_bits_are_five_for_each_colour) {
    BmpFile file = maskedFile(16, {}, {0x7C00, 0x03E0, 0x001F, 0x8000 | 16 << 10 | 1 << 5 | 30});
    file.storage = 0;
    // 16 / 31, 1 / 31 and 30 / 31 of 255 are 131.6, 8.2 and 246.8.
    EXPECT_EQ(rgbOf(file), (Bytes{255, 0, 0, 0, 255, 0, 0, 0, 255, 132, 8, 247}));
}

TEST(BmpReader, masks_place_the_colours) {
    EXPECT_EQ(rgbOf(maskedFile(16, {0xF800, 0x07E0, 0x001F}, {0xF800, 0x0020, 0x001E})),
              (Bytes{255, 0, 0, 0, 4, 0, 0, 0, 247}));  // 1 / 63: 4.05
    EXPECT_EQ(rgbOf(maskedFile(32, {0xFF000000, 0xFF0000, 0xFF00}, {0x01020304})),
              (Bytes{1, 2, 3}));
    EXPECT_EQ(rgbOf(maskedFile(32, {0xFF, 0xFF00, 0xFF0000}, {0x01020304})), (Bytes{4, 3, 2}));
    // Ten bits each: 512 / 1023 is 127.6 of 255, 1 / 1023 is 0.2, 1021 / 1023 is 254.5015.
    EXPECT_EQ(rgbOf(maskedFile(32, {0x3FF00000, 0xFFC00, 0x3FF}, {512U << 20 | 1U << 10 | 1021})),
              (Bytes{128, 0, 255}));
    // One bit, seven bits, 24 bits.
    EXPECT_EQ(rgbOf(maskedFile(32, {1, 0xFE, 0xFFFFFF00}, {0x80000000 | 64 << 1 | 1, 63 << 1})),
              (Bytes{255, 129, 128, 0, 126, 0}));
    EXPECT_EQ(rgbOf(maskedFile(32, {0xFFFFFFFF, 0, 0}, {0x7FFFFFFF, 0x80000000})),
              (Bytes{127, 0, 0, 128, 0, 0}));  // the two sides of 127.5
}

TEST(BmpReader, masks_follow_the_shortest_header_of_windows) {
    BmpFile file = maskedFile(16, {0xF800, 0x07E0, 0x001F}, {0xF800, 0x001F});
    file.headerBytes = 40;
    EXPECT_EQ(rgbOf(file), (Bytes{255, 0, 0, 0, 0, 255}));
    file.pixelsBegin = 0;
    EXPECT_EQ(rgbOf(file), (Bytes{255, 0, 0, 0, 0, 255}));
    file = maskedFile(16, {0xF00, 0xF0, 0xF, 0xF000}, {0x8F01});
    file.headerBytes = 40;
    file.storage = 6;
    EXPECT_EQ(rgbaOf(file), (Bytes{255, 0, 17, 136}));
}

TEST(BmpReader, alpha_is_what_a_mask_says) {
    for (const int length : {56, 108, 124}) {
        BmpFile file =
            maskedFile(32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}, {0x04010203, 0x00050607});
        file.headerBytes = length;
        EXPECT_EQ(rgbaOf(file), (Bytes{1, 2, 3, 4, 5, 6, 7, 0})) << length;
    }
    EXPECT_EQ(rgbaOf(maskedFile(16, {0x7C00, 0x3E0, 0x1F, 0x8000}, {0xFC00, 0x7C00})),
              (Bytes{255, 0, 0, 255, 255, 0, 0, 0}));
    // A header without room for the mask, a mask of no bits, pixels without masks.
    BmpFile file = maskedFile(32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}, {0x04010203});
    file.headerBytes = 52;
    EXPECT_EQ(rgbOf(file), (Bytes{1, 2, 3}));
    EXPECT_EQ(rgbOf(maskedFile(32, {0xFF0000, 0xFF00, 0xFF, 0}, {0x04010203})), (Bytes{1, 2, 3}));
    file = maskedFile(32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}, {0x04010203});
    file.storage = 0;
    EXPECT_EQ(rgbOf(file), (Bytes{1, 2, 3}));
}

TEST(BmpReader, reports_what_the_header_says) {
    const TempFolder folder;
    const auto infoOf = [&](const BmpFile& file, KVRMMImageProp& prop, KVRMMImageSize& size) {
        const std::string path = folder.write("a.bmp", file.build());
        return KVRMMRasterAdministrator::GetInstance()->GetImageInfo(path, prop, size, 0);
    };
    KVRMMImageProp prop;
    KVRMMImageSize size;
    BmpFile file = plainFile();
    file.xPerMetre = 11811;
    file.yPerMetre = 2835;
    file.pixels.clear();
    ASSERT_EQ(infoOf(file, prop, size), S_OK);
    EXPECT_EQ(size.width, 3);
    EXPECT_EQ(size.height, 2);
    EXPECT_EQ(size.GetXResolution(), 118.11);
    EXPECT_EQ(size.GetYResolution(), 28.35);
    EXPECT_EQ(size.GetResolutionUnit(), 3);
    EXPECT_EQ(prop.fileFormat, KVRUnicodeString("bmp"));
    EXPECT_EQ(prop.format, Format::RGB);
    EXPECT_EQ(prop.channels, 3);
    EXPECT_EQ(prop.bitsPerChannel, 8);
    ASSERT_EQ(infoOf(indexedFile(4, 5, {}), prop, size), S_OK);
    EXPECT_EQ(prop.channels, 1);
    EXPECT_EQ(prop.bitsPerChannel, 4);
    ASSERT_EQ(infoOf(maskedFile(16, {0xF800, 0x07E0, 0x001F}, {1}), prop, size), S_OK);
    EXPECT_EQ(prop.channels, 3);
    EXPECT_EQ(prop.bitsPerChannel, 6);
}

TEST(BmpReader, resolutions_of_zero_or_less_are_none) {
    for (const auto& [x, y] :
         {std::pair{0, 0}, std::pair{2835, 0}, std::pair{0, 2835}, std::pair{-2835, -2835}}) {
        BmpFile file = plainFile();
        file.xPerMetre = x;
        file.yPerMetre = y;
        const Image image = loadBytes(file.build());
        ASSERT_TRUE(image);
        EXPECT_EQ(image->GetXResolution(), 0);
        EXPECT_EQ(image->GetYResolution(), 0);
        EXPECT_EQ(image->GetResolutionUnit(), 1);
    }
}

TEST(BmpReader, only_embedded_profiles_count) {
    const auto sRGB = KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    const auto data = sRGB->GetData();
    BmpFile file = plainFile();
    file.headerBytes = 124;
    file.profile.assign(reinterpret_cast<const char*>(data.data()), data.size());
    const auto hasProfile = [](const std::string& content) {
        const Image image = loadBytes(content);
        return image && KVRVar<KVRMMColorProfile>::Adopt(image->GetColorProfile());
    };
    file.colorSpace = "DEBM";
    EXPECT_TRUE(hasProfile(file.build()));
    for (const char* other : {"KNIL", "BGRs", " niW"}) {
        file.colorSpace = other;
        EXPECT_FALSE(hasProfile(file.build())) << other;
    }
    file.colorSpace.clear();  // primaries and gamma
    EXPECT_FALSE(hasProfile(file.build()));
    // A damaged profile is no reason to refuse the picture.
    file.colorSpace = "DEBM";
    const std::string whole = file.build();
    EXPECT_FALSE(hasProfile(whole.substr(0, whole.size() - 1)));
    file.profile = "not a profile";
    EXPECT_FALSE(hasProfile(file.build()));
}
