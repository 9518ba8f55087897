// PNG files of other encoders: every colour type and depth, with the pixels that went in.

#include "tests/image/ImageFiles.h"
#include "tests/image/PngBuilder.h"
#include "tests/support/ForeignPrograms.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace rb::test;
using Values = std::vector<int>;

constexpr Format kFormats[] = {Format::None, Format::L, Format::LA, Format::RGB, Format::RGBA};

/// The samples of a picture as 8 bits, 16-bit ones scaled and rounded.
Values delivered(const RawPicture& picture) {
    Values values;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            for (int c = 0; c < picture.channels; ++c) {
                const int value = picture.at(x, y, c);
                values.push_back(picture.bits == 8 ? value : (value * 255 + 32767) / 65535);
            }
    return values;
}

Values pixelsOf(const Image& image, const RawPicture& picture) {
    return bytesOf(image, picture.width, picture.height, kFormats[picture.channels]);
}

/// Has `convert` write @p picture, and forces colour type and depth (it prefers to save bytes).
std::string encoded(const TempFolder& folder, const RawPicture& picture, int colorType, int bits,
                    const std::string& options = {}) {
    const std::string in = writePortableMap(folder, "in.pnm", picture);
    const std::string out = folder.file("out.png");
    runProgram("convert " + shellWord(in) + " -define png:color-type=" + std::to_string(colorType) +
               " -define png:bit-depth=" + std::to_string(bits) + " " + options + " " +
               shellWord(out));
    return out;
}

constexpr int kColorTypes[] = {-1, 0, 4, 2, 6};  // by the number of channels

struct Stored {
    int channels = 0, bits = 0;
    bool operator==(const Stored&) const = default;
};

void PrintTo(const Stored& stored, std::ostream* stream) {
    *stream << stored.channels << " x " << stored.bits;
}

Stored storedIn(const std::string& path) {
    KVRMMImageProp prop;
    KVRMMImageSize size;
    EXPECT_EQ(KVRMMRasterAdministrator::GetInstance()->GetImageInfo(path, prop, size, 0), S_OK)
        << KVRLastImageError().Message();
    return {prop.channels, prop.bitsPerChannel};
}

}  // namespace

class PngColorType : public testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(PngColorType, pixels_with_every_filter) {
    const auto [channels, bits] = GetParam();
    const TempFolder folder;
    const RawPicture picture = gradients(53, 29, channels, bits);
    std::string command = "convert " + shellWord(writePortableMap(folder, "in.pnm", picture)) +
                          " -define png:color-type=" + std::to_string(kColorTypes[channels]) +
                          " -define png:bit-depth=" + std::to_string(bits);
    const auto path = [&](int filter) { return folder.file(std::to_string(filter) + ".png"); };
    for (int filter = 0; filter <= 5; ++filter)  // 5: chosen row by row
        command += " -define png:compression-filter=" + std::to_string(filter) + " -write " +
                   shellWord(path(filter));
    runProgram(command + " null:");
    for (int filter = 0; filter <= 5; ++filter) {
        EXPECT_EQ(storedIn(path(filter)), (Stored{channels, bits}));
        EXPECT_EQ(pixelsOf(loadFile(path(filter)), picture), delivered(picture)) << filter;
    }
}

TEST_P(PngColorType, interlaced_pixels_in_small_and_odd_sizes) {
    const auto [channels, bits] = GetParam();
    const TempFolder folder;
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 9}, {37, 21}}) {
        const RawPicture picture = gradients(width, height, channels, bits);
        const std::string path =
            encoded(folder, picture, kColorTypes[channels], bits, "-interlace PNG");
        EXPECT_EQ(pixelsOf(loadFile(path), picture), delivered(picture))
            << width << " x " << height;
    }
}

INSTANTIATE_TEST_SUITE_P(All, PngColorType,
                         testing::Combine(testing::Values(1, 2, 3, 4), testing::Values(8, 16)));

class PngFewBits : public testing::TestWithParam<std::tuple<int, bool>> {
protected:
    static std::string interlace() { return std::get<1>(GetParam()) ? "-interlace PNG" : ""; }
};

TEST_P(PngFewBits, grey_spreads_over_the_whole_range) {
    const int bits = std::get<0>(GetParam()), most = (1 << bits) - 1;
    const TempFolder folder;
    for (const int width : {1, 8, 21}) {
        RawPicture picture{width, 5, 1, 8, {}};
        for (int i = 0; i < width * 5; ++i)
            picture.append((i * 7 + i / 3) % (most + 1) * 255 / most);
        const std::string path = encoded(folder, picture, 0, bits, interlace());
        EXPECT_EQ(storedIn(path), (Stored{1, bits}));
        EXPECT_EQ(pixelsOf(loadFile(path), picture), delivered(picture)) << width;
    }
}

TEST_P(PngFewBits, palette_gives_its_colours) {
    const int bits = std::get<0>(GetParam());
    const TempFolder folder;
    for (const int width : {1, 8, 21}) {
        RawPicture picture{width, 5, 3, 8, {}};
        for (int i = 0; i < width * 5; ++i) {
            const int index = (i * 5 + i / 4) % (1 << bits);
            for (const int value : {index * 13 + 5, 255 - index * 11, index * index}) {
                picture.append(value & 0xFF);
            }
        }
        const std::string path = encoded(folder, picture, 3, bits, interlace());
        EXPECT_EQ(storedIn(path).channels, 1);  // the program may take more bits than asked for
        EXPECT_EQ(pixelsOf(loadFile(path), picture), delivered(picture)) << width;
    }
}

INSTANTIATE_TEST_SUITE_P(All, PngFewBits,
                         testing::Combine(testing::Values(1, 2, 4), testing::Bool()));

TEST(Png, every_16_bit_value_is_rounded_to_the_nearest) {
    RawPicture picture{256, 256, 1, 16, {}};
    for (int value = 0; value < 65536; ++value) picture.append(value);
    const TempFolder folder;
    for (const char* options : {"", "-interlace PNG"})
        EXPECT_EQ(pixelsOf(loadFile(encoded(folder, picture, 0, 16, options)), picture),
                  delivered(picture));
}

TEST(Png, files_of_a_second_encoder) {
    const TempFolder folder;
    for (const int channels : {1, 3}) {
        const RawPicture picture = gradients(40, 31, channels);
        const std::string in = writePortableMap(folder, "in.pnm", picture);
        const std::string out = folder.file("out.png");
        runProgram("oiiotool " + shellWord(in) + " -o " + shellWord(out));
        EXPECT_EQ(pixelsOf(loadFile(out), picture), delivered(picture));
    }
}

TEST(Png, transparency_of_a_palette_becomes_alpha) {
    PngBuilder png{.width = 4, .height = 1, .colorType = 3};
    png.before = chunk("PLTE", std::string("\x0a\x14\x1e\x28\x32\x3c\x46\x50\x5a", 9)) +
                 chunk("tRNS", std::string("\x00\x80", 2));
    png.rows = std::string("\0\2\1\0\2", 5);
    EXPECT_EQ(bytesOf(loadBytes(png.build()), 4, 1, Format::RGBA),
              (Values{70, 80, 90, 255, 40, 50, 60, 128, 10, 20, 30, 0, 70, 80, 90, 255}));
}

TEST(Png, indices_of_every_depth) {
    const TempFolder folder;
    std::string palette;  // entry i is the colour i, 100 + i, 200 + i
    for (int i = 0; i < 16; ++i)
        for (const int value : {i, 100 + i, 200 + i}) palette += static_cast<char>(value);
    struct Case {
        int bits;
        std::string row;
        Values indices;
    };
    for (const auto& [bits, row, indices] :
         {Case{1, "\xa0", {1, 0, 1}}, Case{2, "\xc8", {3, 0, 2}}, Case{4, "\xf7\xa0", {15, 7, 10}},
          Case{8, "\x0f\x07\x0a", {15, 7, 10}}}) {
        PngBuilder png{.width = 3, .height = 1, .bits = bits, .colorType = 3};
        png.before = chunk("PLTE", palette.substr(0, 3 * std::min<std::size_t>(16, 1U << bits)));
        png.rows = std::string(1, '\0') + row;
        Values expected;
        for (const int i : indices) expected.insert(expected.end(), {i, 100 + i, 200 + i});
        const std::string path = folder.write("a.png", png.build());
        EXPECT_EQ(storedIn(path), (Stored{1, bits}));
        EXPECT_EQ(bytesOf(loadFile(path), 3, 1, Format::RGB), expected);
    }
}

TEST(Png, an_index_beyond_the_palette_is_black) {
    PngBuilder png{.width = 2, .height = 1, .colorType = 3};
    png.before = chunk("PLTE", "abc");
    png.rows = std::string("\0\0\7", 3);
    EXPECT_EQ(bytesOf(loadBytes(png.build()), 2, 1, Format::RGB), (Values{'a', 'b', 'c', 0, 0, 0}));
}

TEST(Png, the_transparent_colour_of_grey_and_rgb_becomes_alpha) {
    PngBuilder grey{.width = 3, .height = 1, .before = chunk("tRNS", std::string("\0\7", 2))};
    grey.rows = std::string("\0\6\7\x08", 4);
    EXPECT_EQ(bytesOf(loadBytes(grey.build()), 3, 1, Format::LA), (Values{6, 255, 7, 0, 8, 255}));

    PngBuilder twoBits{
        .width = 4, .height = 1, .bits = 2, .before = chunk("tRNS", std::string("\0\2", 2))};
    twoBits.rows = std::string("\0\x1b", 2);  // 0 1 2 3
    EXPECT_EQ(bytesOf(loadBytes(twoBits.build()), 4, 1, Format::LA),
              (Values{0, 255, 85, 255, 170, 0, 255, 255}));

    PngBuilder rgb{.width = 2, .height = 1, .colorType = 2};
    rgb.before = chunk("tRNS", std::string("\0\1\0\2\0\3", 6));
    rgb.rows = std::string("\0\1\2\3\1\2\4", 7);
    EXPECT_EQ(bytesOf(loadBytes(rgb.build()), 2, 1, Format::RGBA),
              (Values{1, 2, 3, 0, 1, 2, 4, 255}));
}

TEST(Png, a_transparent_colour_of_16_bits_is_compared_before_rounding) {
    // 0x1234 and 0x1235 become the same 8-bit value; only one of them is transparent.
    PngBuilder png{.width = 2, .height = 1, .bits = 16};
    png.before = chunk("tRNS", "\x12\x34");
    png.rows = std::string("\0\x12\x34\x12\x35", 5);
    EXPECT_EQ(bytesOf(loadBytes(png.build()), 2, 1, Format::LA), (Values{18, 0, 18, 255}));
}

TEST(Png, alpha_is_not_multiplied_in) {
    PngBuilder png{.width = 1, .height = 1, .colorType = 6};
    png.rows = std::string("\0\xff\x80\x40\0", 5);
    EXPECT_EQ(bytesOf(loadBytes(png.build()), 1, 1, Format::RGBA), (Values{255, 128, 64, 0}));
}

TEST(Png, gamma_background_and_chromaticities_change_nothing) {
    PngBuilder png{.width = 2, .height = 1, .colorType = 6};
    png.before = chunk("gAMA", bigEndian(100000, 4)) + chunk("cHRM", std::string(32, '\1')) +
                 chunk("sBIT", "\5\5\5\5") + chunk("bKGD", std::string("\0\xff\0\xff\0\xff", 6));
    png.rows = std::string("\0\x0a\x64\xc8\x80\x0b\x65\xc9\0", 9);
    EXPECT_EQ(bytesOf(loadBytes(png.build()), 2, 1, Format::RGBA),
              (Values{10, 100, 200, 128, 11, 101, 201, 0}));
}

TEST(Png, the_best_compression_there_is_passes_for_whole) {
    const TempFolder folder;
    const std::string out = folder.file("black.png");
    for (const char* type : {"-define png:color-type=2 -define png:bit-depth=8",
                             "-define png:color-type=0 -define png:bit-depth=1",
                             "-define png:color-type=0 -define png:bit-depth=1 -interlace PNG"}) {
        runProgram("convert -size 3000x2000 xc:black -define png:compression-level=9 " +
                   std::string(type) + " " + shellWord(out));
        const Image image = loadFile(out);
        ASSERT_TRUE(image);
        for (const std::byte value : image->GetRawPixels()) ASSERT_EQ(value, std::byte{0});
    }
}
