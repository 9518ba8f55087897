// PSD and PSB files: every mode, depth and compression made by hand, what the other sections say,
// and files of other programs.

#include "tests/image/ImageFiles.h"
#include "tests/image/PsdBuilder.h"
#include "tests/support/ForeignPrograms.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Bytes = std::vector<int>;
using Planes = std::vector<PsdBuilder::Plane>;

/// One mode and depth: what is stored and what must come out.
struct Picture {
    const char* name;
    Format format;
    int mode;
    std::uint64_t depth;
    unsigned width, height;
    Planes planes;
    Bytes expected;
    bool opacity = false;
};

std::string ramp256() {
    std::string palette;  // entry i is (i, 255 - i, i / 2)
    for (int i = 0; i < 256; ++i) palette += static_cast<char>(i);
    for (int i = 0; i < 256; ++i) palette += static_cast<char>(255 - i);
    for (int i = 0; i < 256; ++i) palette += static_cast<char>(i / 2);
    return palette;
}

// 16 bits become 8 by v / 257 rounded: 0x0081 = 129 is 0.502, 0xFF7E = 65406 is 254.498.
const Picture kPictures[] = {
    // Nine pixels and a filled-up byte a row; 1 is black.
    {"bitmap",
     Format::L,
     0,
     1,
     9,
     2,
     {{0xA5, 0x80, 0x0F, 0x00}},
     {0, 255, 0, 255, 255, 0, 255, 0, 0, 255, 255, 255, 255, 0, 0, 0, 0, 255}},
    {"grey", Format::L, 1, 8, 3, 2, {{1, 2, 3, 3, 3, 255}}, {1, 2, 3, 3, 3, 255}},
    {"grey with opacity",
     Format::LA,
     1,
     8,
     2,
     2,
     {{1, 2, 3, 4}, {9, 9, 9, 0}},
     {1, 9, 2, 9, 3, 9, 4, 0},
     true},
    {"grey of 16 bits",
     Format::L,
     1,
     16,
     3,
     1,
     {{0x00, 0x80, 0x00, 0x81, 0xFF, 0x7E}},
     {0, 1, 254}},
    {"grey of 16 bits with opacity",
     Format::LA,
     1,
     16,
     2,
     1,
     {{0x80, 0x80, 0xFF, 0xFF}, {0x12, 0x12, 0x34, 0x34}},
     {0x80, 0x12, 255, 0x34},
     true},
    {"indexed",
     Format::RGB,
     2,
     8,
     3,
     2,
     {{0, 100, 255, 4, 4, 4}},
     {0, 255, 0, 100, 155, 50, 255, 0, 127, 4, 251, 2, 4, 251, 2, 4, 251, 2}},
    {"RGB", Format::RGB, 3, 8, 2, 1, {{1, 2}, {11, 12}, {21, 22}}, {1, 11, 21, 2, 12, 22}},
    {"RGB with opacity",
     Format::RGBA,
     3,
     8,
     2,
     1,
     {{1, 2}, {11, 12}, {21, 22}, {31, 32}, {99, 99}},
     {1, 11, 21, 31, 2, 12, 22, 32},
     true},
    {"RGB with a selection",
     Format::RGB,
     3,
     8,
     2,
     1,
     {{1, 2}, {11, 12}, {21, 22}, {31, 32}},
     {1, 11, 21, 2, 12, 22}},
    {"RGB of 16 bits",
     Format::RGB,
     3,
     16,
     2,
     1,
     {{0, 0, 1, 1}, {0x7F, 0xFF, 0x80, 0x00}, {0xFF, 0xFF, 0x10, 0x0F}},
     {0, 127, 255, 1, 128, 16}},
    {"RGB of 16 bits with opacity",
     Format::RGBA,
     3,
     16,
     1,
     2,
     {{1, 1, 2, 2}, {3, 3, 4, 4}, {5, 5, 6, 6}, {7, 7, 8, 8}},
     {1, 3, 5, 7, 2, 4, 6, 8},
     true},
    // Stored is what an ink leaves of the paper: 255 is no ink. (255 - C) (255 - K) / 255.
    {"CMYK",
     Format::RGB,
     4,
     8,
     3,
     1,
     {{255, 0, 155}, {255, 255, 55}, {255, 255, 255}, {255, 255, 204}},
     {255, 255, 255, 0, 255, 255, 124, 44, 204}},
    {"CMYK with opacity",
     Format::RGBA,
     4,
     8,
     1,
     1,
     {{255}, {0}, {255}, {255}, {77}, {1}},
     {255, 0, 255, 77},
     true},
    {"CMYK of 16 bits",
     Format::RGB,
     4,
     16,
     1,
     1,
     {{155, 155}, {55, 55}, {255, 255}, {204, 204}},
     {124, 44, 204}},
    {"CMYK of 16 bits with opacity",
     Format::RGBA,
     4,
     16,
     1,
     1,
     {{155, 155}, {55, 55}, {255, 255}, {204, 204}, {66, 66}},
     {124, 44, 204, 66},
     true},
    {"multichannel", Format::L, 7, 8, 2, 1, {{5, 6}, {1, 1}, {2, 2}}, {5, 6}, true},
    {"multichannel of 16 bits", Format::L, 7, 16, 1, 1, {{5, 5}, {1, 1}}, {5}},
    {"duotone", Format::L, 8, 8, 2, 2, {{5, 6, 7, 8}}, {5, 6, 7, 8}},
    {"duotone of 16 bits", Format::L, 8, 16, 1, 2, {{5, 5, 6, 6}}, {5, 6}},
    // White and black, whatever the colour engine.
    {"Lab", Format::RGB, 9, 8, 2, 1, {{255, 0}, {128, 128}, {128, 128}}, {255, 255, 255, 0, 0, 0}},
    {"Lab with opacity",
     Format::RGBA,
     9,
     8,
     1,
     1,
     {{255}, {128}, {128}, {44}},
     {255, 255, 255, 44},
     true},
    {"Lab of 16 bits",
     Format::RGB,
     9,
     16,
     2,
     1,
     {{255, 255, 0, 0}, {128, 0, 128, 0}, {128, 0, 128, 0}},
     {255, 255, 255, 0, 0, 0}},
    {"Lab of 16 bits with opacity",
     Format::RGBA,
     9,
     16,
     1,
     1,
     {{255, 255}, {128, 0}, {128, 0}, {44, 44}},
     {255, 255, 255, 44},
     true},
};

PsdBuilder builderOf(const Picture& picture, std::uint64_t version, int compression) {
    PsdBuilder psd(picture.width, picture.height, picture.mode, picture.depth);
    psd.version = version;
    psd.compression = compression;
    if (picture.mode == 2) psd.palette = ramp256();
    if (picture.opacity) psd.layerCount(-1);
    psd.planes(picture.planes);
    return psd;
}

PsdBuilder::Plane bigEndianFloats(const std::vector<float>& values) {
    PsdBuilder::Plane plane;
    for (const float value : values) {
        std::uint32_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        for (int shift = 24; shift >= 0; shift -= 8)
            plane.push_back(static_cast<int>(bits >> shift & 0xFF));
    }
    return plane;
}

PsdBuilder redPixel() { return PsdBuilder(1, 1).planes({{255}, {0}, {0}}); }

std::string versionInfo(bool real) {
    return std::string("\0\0\0\1", 4) + (real ? '\1' : '\0') + std::string(12, '\0');
}

}  // namespace

TEST(PsdReader, reads_every_mode_depth_and_compression) {
    for (const Picture& picture : kPictures)
        for (const std::uint64_t version : {1U, 2U})
            for (int compression = 0; compression < 4; ++compression) {
                if (compression == 3 && picture.depth == 1) continue;  // not defined
                SCOPED_TRACE(std::string(picture.name) + ", version " + std::to_string(version) +
                             ", compression " + std::to_string(compression));
                const std::string file = builderOf(picture, version, compression).build();
                EXPECT_EQ(bytesOf(loadBytes(file), static_cast<int>(picture.width),
                                  static_cast<int>(picture.height), picture.format),
                          picture.expected);
            }
}

TEST(PsdReader, reads_floating_point_numbers_as_they_are) {
    const std::vector<float> red{0, 1, -2.5F, 1e30F}, green{0.5F, 65504, 1e-40F, 3},
        blue{std::numeric_limits<float>::infinity(), -0.0F, 7, 8}, alpha{0.25F, 0.5F, 0.75F, 1};
    struct Case {
        int mode;
        bool opacity;
        Format format;
        std::vector<std::vector<float>> stored, delivered;
    };
    const Case cases[] = {
        {1, false, Format::L_f, {red}, {red}},
        {1, true, Format::RGBA_f, {red, alpha}, {red, red, red, alpha}},
        {3, false, Format::RGB_f, {red, green, blue}, {red, green, blue}},
        {3, true, Format::RGBA_f, {red, green, blue, alpha}, {red, green, blue, alpha}},
        {3, false, Format::RGB_f, {red, green, blue, alpha}, {red, green, blue}},
    };
    for (const Case& c : cases)
        for (int compression = 0; compression < 4; ++compression) {
            PsdBuilder psd(2, 2, c.mode, 32);
            psd.compression = compression;
            if (c.opacity) psd.layerCount(-2);
            Planes planes;
            for (const auto& plane : c.stored) planes.push_back(bigEndianFloats(plane));
            std::vector<float> expected;
            for (std::size_t i = 0; i < 4; ++i)
                for (const auto& plane : c.delivered) expected.push_back(plane[i]);
            EXPECT_EQ(floatsOf(loadBytes(psd.planes(planes).build()), 2, 2, c.format), expected)
                << c.mode << ", compression " << compression;
        }
}

TEST(PsdReader, reads_runs_of_any_length) {
    // 128 different bytes, 128 times the same, three with things without meaning around them.
    std::string runs = "\x7F";
    Bytes expected;
    for (int i = 0; i < 128; ++i) {
        runs += static_cast<char>(i);
        expected.push_back(i);
    }
    runs += bytes({0x81, 9, 0x80, 0x80, 2, 1, 2, 3, 0x80});
    expected.insert(expected.end(), 128, 9);
    expected.insert(expected.end(), {1, 2, 3});
    PsdBuilder psd(259, 1, 1);
    psd.channels = 1;
    psd.compression = 1;
    psd.bytes(bigEndian(runs.size(), 2) + runs);
    EXPECT_EQ(bytesOf(loadBytes(psd.build()), 259, 1, Format::L), expected);
}

TEST(PsdReader, rows_are_found_by_their_lengths) {
    // Bytes without meaning behind the runs of the first row, as many as a length can tell.
    const std::string filling(60000, '\x55');
    PsdBuilder psd(2, 2, 1);
    psd.channels = 1;
    psd.compression = 1;
    psd.bytes(bigEndian(2 + filling.size(), 2) + bigEndian(3, 2) + bytes({255, 7}) + filling +
              bytes({1, 8, 9}));
    EXPECT_EQ(bytesOf(loadBytes(psd.build()), 2, 2, Format::L), (Bytes{7, 7, 8, 9}));
}

TEST(PsdReader, large_pictures_are_whole) {
    // Rows on several threads, each from its own place; wide and tall ones.
    for (const auto& [width, height] : {std::pair{2000U, 700U}, std::pair{3U, 250000U}})
        for (const int compression : {0, 1, 2}) {
            Planes planes(3);
            Bytes expected;
            for (unsigned i = 0; i < width * height; ++i)
                for (unsigned c = 0; c < 3; ++c) {
                    // Runs and no runs, different in every row.
                    const unsigned value = (i / width * 7 + (i % 100 < 50 ? i : 3) + c * 80) & 255;
                    planes[c].push_back(static_cast<int>(value));
                    expected.push_back(static_cast<int>(value));
                }
            PsdBuilder psd(width, height);
            psd.version = 2;
            psd.compression = compression;
            const auto found =
                bytesOf(loadBytes(psd.planes(planes).build()), static_cast<int>(width),
                        static_cast<int>(height), Format::RGB);
            EXPECT_TRUE(found == expected) << width << " x " << height << ", " << compression;
        }
}

TEST(PsdReader, only_the_marked_extra_channel_is_alpha) {
    const auto formatWith = [](auto&& prepare, std::uint64_t version = 1, unsigned depth = 8) {
        PsdBuilder psd(1, 1, 3, depth);
        psd.version = version;
        prepare(psd);
        psd.planes(Planes(4, PsdBuilder::Plane(depth / 8, 1)));
        const Image image = loadBytes(psd.build());
        return image ? image->GetFormat() : Format::None;
    };
    const std::string minusTwo = bigEndian(0xFFFE, 2) + std::string(6, '\0');
    const std::string two = bigEndian(2, 2) + std::string(6, '\0');
    EXPECT_EQ(formatWith([](PsdBuilder&) {}), Format::RGB);
    EXPECT_EQ(formatWith([](PsdBuilder& psd) { psd.layerCount(1); }), Format::RGB);
    EXPECT_EQ(formatWith([](PsdBuilder& psd) { psd.layerCount(-1); }), Format::RGBA);
    EXPECT_EQ(formatWith([](PsdBuilder& psd) { psd.layerCount(-1); }, 2), Format::RGBA);
    for (const char* key : {"Layr", "Lr16", "Lr32"}) {
        const auto with = [&](const std::string& content, int lengthBytes, const char* signature) {
            return [=](PsdBuilder& psd) {
                // After an odd block that is filled up to four bytes.
                psd.layerCount(0, PsdBuilder::block("Patt", "x") + std::string(3, '\0') +
                                      PsdBuilder::block(key, content, lengthBytes, signature));
            };
        };
        EXPECT_EQ(formatWith(with(minusTwo, 4, "8BIM"), 1, 16), Format::RGBA) << key;
        EXPECT_EQ(formatWith(with(two, 4, "8BIM"), 1, 16), Format::RGB) << key;
        EXPECT_EQ(formatWith(with(minusTwo, 8, "8BIM"), 2, 16), Format::RGBA) << key;
        EXPECT_EQ(formatWith(with(minusTwo, 8, "8B64"), 2, 16), Format::RGBA) << key;
    }
    // A block that only says that there is opacity.
    for (const char* key : {"Mtrn", "Mt16", "Mt32"})
        EXPECT_EQ(formatWith([&](PsdBuilder& psd) {
                      psd.layerCount(
                          0, PsdBuilder::block("Anno", "abcd") + PsdBuilder::block(key, ""));
                  }),
                  Format::RGBA)
            << key;
}

TEST(PsdReader, a_missing_extra_channel_is_no_alpha) {
    EXPECT_EQ(bytesOf(loadBytes(redPixel().layerCount(-1).build()), 1, 1, Format::RGB),
              (Bytes{255, 0, 0}));
}

TEST(PsdReader, damaged_layers_do_not_hide_the_picture) {
    for (const std::string& layers :
         {std::string("\0", 1), std::string("\xFF\xFF\xFF\xFF\0\1", 6), std::string("\0\0\0\2", 4),
          std::string("\0\0\0\0\0\0\0\xFF", 8),
          std::string(8, '\0') + PsdBuilder::block("Lr16", "\xFF").substr(0, 10),
          std::string(8, '\0') + "8BIMLr16" + std::string("\xFF\xFF\xFF\xFF\xFF\xFF", 6),
          std::string(8, '\0') + "no block at all"}) {
        PsdBuilder psd = redPixel();
        psd.layers = layers;
        EXPECT_EQ(bytesOf(loadBytes(psd.build()), 1, 1, Format::RGB), (Bytes{255, 0, 0}));
    }
}

TEST(PsdReader, transparent_entry_of_the_palette_becomes_alpha) {
    PsdBuilder psd(3, 1, 2);
    psd.palette = ramp256();
    psd.resource(1047, bytes({0, 100})).planes({{99, 100, 101}});
    EXPECT_EQ(bytesOf(loadBytes(psd.build()), 3, 1, Format::RGBA),
              (Bytes{99, 156, 49, 255, 100, 155, 50, 0, 101, 154, 50, 255}));
    // An index that no palette has.
    psd.resources.clear();
    psd.resource(1047, bytes({255, 255}));
    EXPECT_EQ(bytesOf(loadBytes(psd.build()), 3, 1, Format::RGB).size(), 9U);
}

TEST(PsdReader, resolution_is_pixels_per_inch) {
    const auto resolutionOf = [](const std::string& content, const std::string& name = {}) {
        const Image image = loadBytes(redPixel().resource(1005, content, name).build());
        return std::vector<double>{image->GetXResolution(), image->GetYResolution(),
                                   static_cast<double>(image->GetResolutionUnit())};
    };
    const Bytes inches{0x01, 0x2C, 0x80, 0, 0, 1, 0, 1, 0, 0x48, 0, 0, 0, 1, 0, 1};
    EXPECT_EQ(resolutionOf(bytes(inches)), (std::vector<double>{300.5, 72, 2}));
    EXPECT_EQ(resolutionOf(bytes(inches), "odd"), (std::vector<double>{300.5, 72, 2}));
    EXPECT_EQ(resolutionOf(bytes(inches), "even"), (std::vector<double>{300.5, 72, 2}));
    // Shown in centimetres; the numbers stay the same.
    const Bytes centimetres{0x01, 0x2C, 0x80, 0, 0, 2, 0, 2, 0, 0x48, 0, 0, 0, 2, 0, 2};
    EXPECT_EQ(resolutionOf(bytes(centimetres)), (std::vector<double>{300.5, 72, 2}));
    // What programs write that know no resolution.
    const std::vector<double> none{0, 0, 1};
    EXPECT_EQ(resolutionOf(bytes({0, 0, 0, 1, 0, 1, 0, 1, 0, 0, 0, 1, 0, 1, 0, 1})), none);
    EXPECT_EQ(resolutionOf(std::string(16, '\0')), none);
    EXPECT_EQ(resolutionOf(bytes({0, 72, 0, 0})), none);  // cut short
}

TEST(PsdReader, resources_are_found_behind_others) {
    PsdBuilder psd = redPixel();
    psd.resource(1036, std::string(5, '\xFF'), "a name").resource(4000, "");
    psd.resource(1005, bytes({0, 72, 0, 0, 0, 1, 0, 1, 0, 72, 0, 0, 0, 1, 0, 1}));
    EXPECT_EQ(loadBytes(psd.build())->GetXResolution(), 72);
    // One with a damaged length ends the list.
    psd.resources = "8BIM" + bytes({3, 0xED, 0, 0, 255, 255, 255, 255}) + psd.resources;
    EXPECT_EQ(loadBytes(psd.build())->GetXResolution(), 0);
}

TEST(PsdReader, reports_what_the_header_says) {
    const TempFolder folder;
    PsdBuilder psd(7, 5, 4, 16);
    psd.planes(Planes(5, PsdBuilder::Plane(70, 1))).layerCount(-1);
    psd.version = 2;
    psd.layerCount(-1);
    const std::string path = folder.write("a.psb", psd.build());
    KVRMMImageProp prop;
    KVRMMImageSize size;
    ASSERT_EQ(KVRMMRasterAdministrator::GetInstance()->GetImageInfo(path, prop, size, 0), S_OK);
    EXPECT_EQ(size.width, 7);
    EXPECT_EQ(size.height, 5);
    EXPECT_EQ(prop.fileFormat, KVRUnicodeString("psd"));
    EXPECT_EQ(prop.format, Format::RGBA);
}

TEST(PsdReader, file_without_a_merged_picture_is_refused) {
    PsdBuilder psd = redPixel();
    psd.resource(1057, versionInfo(false)).layerCount(3);
    EXPECT_NE(refusalOf(psd.build()).find("only its layers"), std::string::npos);
    psd.layerCount(0, PsdBuilder::block("Lr16", bigEndian(1, 2)));
    EXPECT_NE(refusalOf(psd.build()).find("only its layers"), std::string::npos);
    // Without layers, the picture is all that there is.
    psd.layers.clear();
    EXPECT_EQ(refusalOf(psd.build()), "");
    PsdBuilder real = redPixel();
    real.resource(1057, versionInfo(true)).layerCount(3);
    EXPECT_EQ(refusalOf(real.build()), "");
}

TEST(PsdReader, decodes_what_another_program_writes) {
    const TempFolder folder;
    struct Case {
        int channels, bits;
        Format format;
    };
    constexpr Case kCases[] = {{1, 8, Format::L},    {1, 16, Format::L},   {2, 8, Format::LA},
                               {2, 16, Format::LA},  {3, 8, Format::RGB},  {3, 16, Format::RGB},
                               {4, 8, Format::RGBA}, {4, 16, Format::RGBA}};
    constexpr int kWidth = 307, kHeight = 83;
    for (const Case& c : kCases)
        for (const char* extension : {"psd", "psb"})
            for (const char* compression : {"None", "RLE"}) {
                const RawPicture picture = gradients(kWidth, kHeight, c.channels, c.bits);
                const std::string in = writePortableMap(folder, "in.pam", picture);
                const std::string out = folder.file(std::string("a.") + extension);
                runProgram("convert " + shellWord(in) + " -compress " + compression + " " +
                           shellWord(out));
                const auto found = bytesOf(loadFile(out), kWidth, kHeight, c.format);
                Bytes expected;
                for (int y = 0; y < kHeight; ++y)
                    for (int x = 0; x < kWidth; ++x)
                        for (int channel = 0; channel < c.channels; ++channel) {
                            const int value = picture.at(x, y, channel);
                            expected.push_back(c.bits == 8 ? value : (value + 128) / 257);
                        }
                EXPECT_TRUE(found == expected) << c.channels << " channels of " << c.bits
                                               << " bits, " << extension << ", " << compression;
            }
}
