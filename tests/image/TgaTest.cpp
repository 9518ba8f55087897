// TGA files: of other programs, and made by hand.

#include "tests/image/TgaBuilder.h"
#include "tests/support/AddressSpace.h"
#include "tests/support/ForeignPrograms.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Bytes = std::vector<int>;
constexpr Format L = Format::L, LA = Format::LA, RGB = Format::RGB, RGBA = Format::RGBA;

/// Without it, `convert` writes the top row first into a file whose header says the bottom row.
const std::string kTopFirst = " -orient TopLeft ";

TgaFile fileOf(int type, int bits, int width, int height, const Bytes& pixels) {
    TgaFile file;
    file.type = type;
    file.bits = bits;
    file.width = width;
    file.height = height;
    file.pixels = bytes(pixels);
    return file;
}

/// Indices into a map of entries of @p mapBits bits that begins with index @p first.
TgaFile mappedFile(int bits, const Bytes& indices, int mapBits, int first, const Bytes& map) {
    TgaFile file = fileOf(1, bits, static_cast<int>(indices.size()) * 8 / bits, 1, indices);
    file.mapType = 1;
    file.mapBits = mapBits;
    file.mapFirst = first;
    file.mapEntries = static_cast<int>(map.size()) / ((mapBits + 7) / 8);
    file.map = bytes(map);
    return file;
}

Bytes pixelsOf(const TgaFile& file, Format format) {
    return bytesOf(loadTga(file), file.width, file.height, format);
}

Format formatOf(const TgaFile& file) {
    const Image image = loadTga(file);
    return image ? image->GetFormat() : Format::None;
}

bool refusedFor(const TgaFile& file, const std::string& reason) {
    const std::string refusal = tgaRefusal(file.build());
    if (refusal.find(reason) != std::string::npos) return true;
    ADD_FAILURE() << "not for " << reason << ": " << refusal;
    return false;
}

/// 7 x 5 pixels of @p bits bits in packets that do not care for rows.
TgaFile packedFile(int type, int bits) {
    TgaFile file = fileOf(type, bits, 7, 5, {});
    const std::string pixel(static_cast<std::size_t>(bits / 8), '\x11');
    file.pixels = bytes({0x80 | 9}) + pixel + bytes({4}) + pixel + pixel + pixel + pixel + pixel;
    file.pixels += bytes({0x80 | 19}) + pixel;
    return file;
}

}  // namespace

TEST(TgaReader, decodes_what_convert_writes) {
    struct Case {
        int channels;
        const char* options;
    };
    const TempFolder folder;
    for (const Case& test : {Case{3, ""}, Case{4, ""}, Case{1, ""}, Case{3, "-compress RLE"},
                             Case{4, "-compress RLE"}, Case{1, "-compress RLE"}})
        for (const int width : {1, 45}) {
            SCOPED_TRACE(testing::Message() << test.options << test.channels << ' ' << width);
            const RawPicture picture = gradients(width, 31, test.channels);
            const std::string out = folder.file("a.tga");
            runProgram("convert " + shellWord(writePortableMap(folder, "in", picture)) + " " +
                       test.options + kTopFirst + shellWord(out));
            EXPECT_TRUE(rawPixels(loadFile(out)) == picture.samples);
        }
}

TEST(TgaReader, decodes_palettes_of_convert) {
    const TempFolder folder;
    const std::string out = folder.file("a.tga");
    runProgram("convert " + shellWord(writePortableMap(folder, "in", gradients(45, 31, 3))) +
               " -colors 100 -type Palette" + kTopFirst + shellWord(out));
    ASSERT_EQ(contentOf(out).at(2), 1);
    EXPECT_TRUE(rawPixels(loadFile(out)) == decodedByConvert(out, "rgb"));
}

TEST(TgaReader, decodes_what_oiiotool_writes) {
    const TempFolder folder;
    const RawPicture picture = gradients(45, 31, 3);
    const std::string in = writePortableMap(folder, "in.ppm", picture);
    const std::string out = folder.file("a.tga");
    for (const char* compression : {"none", "rle"})
        for (const std::size_t channels : {1U, 3U, 4U}) {
            SCOPED_TRACE(testing::Message() << compression << ' ' << channels);
            const char* const choice[] = {"", "R", "", "R,G,B", "R,G,B,A=R"};
            runProgram("oiiotool " + shellWord(in) + " --ch " + choice[channels] +
                       " --attrib oiio:UnassociatedAlpha 1 --compression " + compression + " -o " +
                       shellWord(out));
            std::string expected;
            for (std::size_t i = 0; i < picture.samples.size(); i += 3)
                for (std::size_t c = 0; c < channels; ++c) expected += picture.samples[i + c % 3];
            EXPECT_TRUE(rawPixels(loadFile(out)) == expected);
        }
}

TEST(TgaReader, delivers_the_top_row_first_from_the_left) {
    // 1 2 3 / 4 5 6 as it is stored from each corner.
    const Bytes expected{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(pixelsOf(fileOf(3, 8, 3, 2, {1, 2, 3, 4, 5, 6}), L), expected);
    for (const auto& [corner, stored] :
         {std::pair{0x20, Bytes{1, 2, 3, 4, 5, 6}}, std::pair{0x00, Bytes{4, 5, 6, 1, 2, 3}},
          std::pair{0x30, Bytes{3, 2, 1, 6, 5, 4}}, std::pair{0x10, Bytes{6, 5, 4, 3, 2, 1}}}) {
        SCOPED_TRACE(corner);
        TgaFile file = fileOf(3, 8, 3, 2, stored);
        file.descriptor = corner;
        EXPECT_EQ(pixelsOf(file, L), expected);
        // The same with three channels.
        file = fileOf(2, 24, 3, 2, {});
        file.descriptor = corner;
        Bytes colors;
        for (const int value : stored) file.pixels += bytes({value + 2, value + 1, value});
        for (const int value : expected) colors.insert(colors.end(), {value, value + 1, value + 2});
        EXPECT_EQ(pixelsOf(file, RGB), colors);
    }
}

TEST(TgaReader, reads_colours_of_all_sizes) {
    EXPECT_EQ(pixelsOf(fileOf(2, 24, 2, 1, {1, 2, 3, 4, 5, 6}), RGB), (Bytes{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(pixelsOf(fileOf(2, 32, 2, 1, {1, 2, 3, 4, 5, 6, 7, 0}), RGBA),
              (Bytes{3, 2, 1, 4, 7, 6, 5, 0}));
    // Red 31, green 1, blue 16: 1 / 31 and 16 / 31 of 255 are 8.2 and 131.6. 0x7C30, 0xFC30.
    for (const int bits : {15, 16})
        EXPECT_EQ(pixelsOf(fileOf(2, bits, 2, 1, {0x30, 0x7C, 0x30, 0xFC}), RGB),
                  (Bytes{255, 8, 132, 255, 8, 132}));
}

TEST(TgaReader, reads_grey_of_both_sizes) {
    EXPECT_EQ(pixelsOf(fileOf(3, 8, 4, 1, {0, 1, 254, 255}), L), (Bytes{0, 1, 254, 255}));
    EXPECT_EQ(pixelsOf(fileOf(3, 16, 2, 1, {10, 200, 30, 0}), LA), (Bytes{10, 200, 30, 0}));
}

TEST(TgaReader, counted_bits_decide_on_alpha_of_sixteen) {
    TgaFile file = fileOf(2, 16, 2, 1, {0x00, 0xFC, 0x00, 0x7C});
    file.descriptor = 0x21;
    EXPECT_EQ(pixelsOf(file, RGBA), (Bytes{255, 0, 0, 255, 255, 0, 0, 0}));
    file.bits = 15;
    EXPECT_EQ(pixelsOf(file, RGB), (Bytes{255, 0, 0, 255, 0, 0}));
}

TEST(TgaReader, thirty_two_bits_have_alpha_though_none_is_counted) {
    for (const int counted : {0, 8}) {
        TgaFile file = fileOf(2, 32, 1, 1, {1, 2, 3, 4});
        file.descriptor |= counted;
        EXPECT_EQ(pixelsOf(file, RGBA), (Bytes{3, 2, 1, 4}));
        file = fileOf(3, 16, 1, 1, {1, 2});
        file.descriptor |= counted;
        EXPECT_EQ(pixelsOf(file, LA), (Bytes{1, 2}));
    }
}

TEST(TgaReader, extension_area_can_say_that_alpha_means_nothing) {
    for (const int type : {0, 1, 2, 3, 4}) {
        SCOPED_TRACE(type);
        const bool alpha = type == 0 || type > 2;
        TgaFile file = fileOf(2, 32, 1, 1, {10, 20, 30, 40});
        file.descriptor |= 8;
        file.alphaType = type;
        // As stored, also when alpha was multiplied in.
        EXPECT_EQ(pixelsOf(file, alpha ? RGBA : RGB),
                  alpha ? (Bytes{30, 20, 10, 40}) : (Bytes{30, 20, 10}));
        file = fileOf(3, 16, 2, 1, {10, 20, 30, 40});
        file.alphaType = type;
        EXPECT_EQ(pixelsOf(file, alpha ? LA : L),
                  alpha ? (Bytes{10, 20, 30, 40}) : (Bytes{10, 30}));
        file = fileOf(2, 16, 1, 1, {0, 0xFC});
        file.descriptor |= 1;
        file.alphaType = type;
        EXPECT_EQ(formatOf(file), alpha ? RGBA : RGB);
        file = mappedFile(8, {0}, 32, 0, {10, 20, 30, 40});
        file.alphaType = type;
        EXPECT_EQ(formatOf(file), alpha ? RGBA : RGB);
    }
    // An area that is too short, or not in the file, says nothing.
    TgaFile file = fileOf(2, 32, 1, 1, {10, 20, 30, 40});
    file.alphaType = 1;
    std::string content = file.build();
    content[22] = 10;
    content[23] = 0;
    EXPECT_EQ(tryToLoad(content, kTgaName)->GetFormat(), RGBA);
    content = file.build();
    content[content.size() - 24] = 1;
    EXPECT_EQ(tryToLoad(content, kTgaName)->GetFormat(), RGBA);
}

TEST(TgaReader, reads_maps_of_all_sizes) {
    const Bytes indices{1, 0, 1};
    EXPECT_EQ(pixelsOf(mappedFile(8, indices, 24, 0, {1, 2, 3, 4, 5, 6}), RGB),
              (Bytes{6, 5, 4, 3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(pixelsOf(mappedFile(8, indices, 32, 0, {1, 2, 3, 4, 5, 6, 7, 0}), RGBA),
              (Bytes{7, 6, 5, 0, 3, 2, 1, 4, 7, 6, 5, 0}));
    for (const int bits : {15, 16})
        EXPECT_EQ(pixelsOf(mappedFile(8, indices, bits, 0, {0x30, 0x7C, 0x1F, 0x80}), RGB),
                  (Bytes{0, 0, 255, 255, 8, 132, 0, 0, 255}));
    TgaFile file = mappedFile(8, indices, 16, 0, {0x30, 0x7C, 0x1F, 0x80});
    file.descriptor |= 1;
    EXPECT_EQ(pixelsOf(file, RGBA), (Bytes{0, 0, 255, 255, 255, 8, 132, 0, 0, 0, 255, 255}));
}

TEST(TgaReader, maps_may_begin_with_any_index) {
    // Index 300 is the map's first; those outside are black.
    EXPECT_EQ(pixelsOf(mappedFile(16, {45, 1, 44, 1, 46, 1, 43, 1, 0, 0, 255, 255}, 24, 300,
                                  {1, 2, 3, 4, 5, 6}),
                       RGB),
              (Bytes{6, 5, 4, 3, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(pixelsOf(mappedFile(8, {254, 253, 255}, 32, 254, {1, 2, 3, 4}), RGBA),
              (Bytes{3, 2, 1, 4, 0, 0, 0, 255, 0, 0, 0, 255}));
    // Entries for indices that cannot occur.
    EXPECT_EQ(pixelsOf(mappedFile(8, {255, 0}, 24, 255, {1, 2, 3, 4, 5, 6}), RGB),
              (Bytes{3, 2, 1, 0, 0, 0}));
    EXPECT_EQ(pixelsOf(mappedFile(8, {255}, 24, 40000, {1, 2, 3}), RGB), (Bytes{0, 0, 0}));
    EXPECT_EQ(pixelsOf(mappedFile(8, {0}, 24, 0, {}), RGB), (Bytes{0, 0, 0}));
}

TEST(TgaReader, passes_over_text_and_maps_that_are_not_needed) {
    TgaFile file = fileOf(2, 24, 1, 1, {1, 2, 3});
    file.text = std::string(255, 'x');
    file.mapType = 1;
    file.mapEntries = 3;
    file.mapBits = 18;  // whatever it is, three bytes an entry
    file.map = std::string(9, 'm');
    EXPECT_EQ(pixelsOf(file, RGB), (Bytes{3, 2, 1}));
    // Numbers of a map that is not there.
    file.mapType = 0;
    file.map.clear();
    EXPECT_EQ(pixelsOf(file, RGB), (Bytes{3, 2, 1}));
}

TEST(TgaReader, reads_packets) {
    EXPECT_EQ(pixelsOf(fileOf(10, 24, 4, 1, {0x81, 1, 2, 3, 1, 4, 5, 6, 7, 8, 9}), RGB),
              (Bytes{3, 2, 1, 3, 2, 1, 6, 5, 4, 9, 8, 7}));
    EXPECT_EQ(pixelsOf(fileOf(10, 32, 2, 1, {0x81, 1, 2, 3, 4}), RGBA),
              (Bytes{3, 2, 1, 4, 3, 2, 1, 4}));
    EXPECT_EQ(pixelsOf(fileOf(10, 16, 3, 1, {0x81, 0, 0x7C, 0, 0x1F, 0}), RGB),
              (Bytes{255, 0, 0, 255, 0, 0, 0, 0, 255}));
    EXPECT_EQ(pixelsOf(fileOf(11, 8, 5, 1, {0x82, 9, 1, 7, 8}), L), (Bytes{9, 9, 9, 7, 8}));
    EXPECT_EQ(pixelsOf(fileOf(11, 16, 3, 1, {0x81, 9, 8, 0, 7, 6}), LA), (Bytes{9, 8, 9, 8, 7, 6}));
    TgaFile mapped = mappedFile(8, {0x81, 1, 0, 0}, 24, 0, {1, 2, 3, 4, 5, 6});
    mapped.type = 9;
    mapped.width = 3;
    EXPECT_EQ(pixelsOf(mapped, RGB), (Bytes{6, 5, 4, 6, 5, 4, 3, 2, 1}));
    Bytes longest(128, 5);
    EXPECT_EQ(pixelsOf(fileOf(11, 8, 128, 1, {0xFF, 5}), L), longest);
}

TEST(TgaReader, packets_may_go_on_in_the_next_row) {
    // Seven times 1, then 2 to 9 as they are, in rows of five from the bottom.
    TgaFile file = fileOf(11, 8, 5, 3, {0x86, 1, 7, 2, 3, 4, 5, 6, 7, 8, 9});
    file.descriptor = 0;
    EXPECT_EQ(pixelsOf(file, L), (Bytes{5, 6, 7, 8, 9, 1, 1, 2, 3, 4, 1, 1, 1, 1, 1}));
    // One packet over several rows, and over the last one.
    EXPECT_EQ(pixelsOf(fileOf(11, 8, 2, 3, {0xFF, 4}), L), (Bytes{4, 4, 4, 4, 4, 4}));
}

TEST(TgaReader, reports_what_the_header_says) {
    const TempFolder folder;
    const auto infoOf = [&](const TgaFile& file, KVRMMImageProp& prop, KVRMMImageSize& size) {
        const std::string path = folder.write("a.TGA", file.build());
        return KVRMMRasterAdministrator::GetInstance()->GetImageInfo(path, prop, size, 0);
    };
    KVRMMImageProp prop;
    KVRMMImageSize size;
    ASSERT_EQ(infoOf(fileOf(2, 32, 300, 2, {}), prop, size), S_OK);
    EXPECT_EQ(size.width, 300);
    EXPECT_EQ(size.height, 2);
    EXPECT_EQ(size.GetXResolution(), 0);
    EXPECT_EQ(size.GetYResolution(), 0);
    EXPECT_EQ(size.GetResolutionUnit(), 1);
    EXPECT_EQ(prop.fileFormat, KVRUnicodeString("tga"));
    EXPECT_EQ(prop.format, RGBA);
    EXPECT_EQ(prop.channels, 4);
    EXPECT_EQ(prop.bitsPerChannel, 8);
    ASSERT_EQ(infoOf(fileOf(2, 15, 1, 1, {}), prop, size), S_OK);
    EXPECT_EQ(prop.bitsPerChannel, 5);
    ASSERT_EQ(infoOf(mappedFile(16, {0, 0}, 24, 0, {}), prop, size), S_OK);
    EXPECT_EQ(prop.channels, 1);
    EXPECT_EQ(prop.bitsPerChannel, 16);
}

TEST(TgaReader, only_the_extension_tells_a_file) {
    const std::string file = fileOf(2, 24, 1, 1, {1, 2, 3}).build();
    EXPECT_NE(refusalOf(file).find("first bytes"), std::string::npos);
    EXPECT_EQ(tgaRefusal(file), "");
    // Whatever has a magic number is what that says.
    EXPECT_NE(tgaRefusal("#?RADIANCE\n").find("line of text"), std::string::npos);
}

TEST(TgaReader, implausible_headers_are_no_tga_files) {
    const std::string whole = fileOf(2, 24, 1, 1, {1, 2, 3}).build();
    for (const auto& [at, value] :
         {std::pair{1, 2}, std::pair{2, 4}, std::pair{2, 8}, std::pair{2, 255}, std::pair{12, 0},
          std::pair{14, 0}, std::pair{16, 0}, std::pair{16, 12}, std::pair{16, 64}}) {
        std::string file = whole;
        file[static_cast<std::size_t>(at)] = static_cast<char>(value);
        EXPECT_NE(tgaRefusal(file).find("or tga file, found the first bytes"), std::string::npos)
            << at << ": " << value;
    }
    EXPECT_NE(tgaRefusal(whole.substr(0, 17)).find("found the first bytes"), std::string::npos);
}

TEST(TgaReader, what_is_not_supported_is_refused_by_name) {
    for (const int type : {0, 32, 33})
        EXPECT_TRUE(refusedFor(fileOf(type, 24, 1, 1, {1, 2, 3}),
                               "type 1, 2, 3, 9, 10 or 11, found " + std::to_string(type)));
    for (const int way : {0x40, 0x80, 0xC0}) {
        TgaFile file = fileOf(2, 24, 1, 1, {1, 2, 3});
        file.descriptor |= way;
        EXPECT_TRUE(refusedFor(file, "byte 17: expected rows that are not interleaved"));
    }
    EXPECT_TRUE(refusedFor(fileOf(2, 8, 1, 1, {1}), "15, 16, 24 or 32 bits a pixel, found 8"));
    EXPECT_TRUE(refusedFor(fileOf(3, 24, 1, 1, {1, 2, 3}), "8 or 16 bits a pixel, found 24"));
    EXPECT_TRUE(refusedFor(mappedFile(32, {0, 0, 0, 0}, 24, 0, {1, 2, 3}),
                           "8 or 16 bits a pixel, found 32"));
    EXPECT_TRUE(refusedFor(mappedFile(8, {0}, 8, 0, {1}), "entry of the colour map, found 8"));
    TgaFile file = mappedFile(8, {0}, 24, 0, {1, 2, 3});
    file.mapType = 0;
    EXPECT_TRUE(refusedFor(file, "a colour map (1), found 0"));
}

TEST(TgaReader, cut_short_anywhere_is_refused) {
    for (const TgaFile& test :
         {fileOf(2, 24, 2, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}), packedFile(10, 24),
          packedFile(10, 32), packedFile(11, 8), packedFile(11, 16),
          mappedFile(8, {1, 0}, 24, 0, {1, 2, 3, 4, 5, 6})}) {
        const std::string file = test.build();
        ASSERT_EQ(tgaRefusal(file), "");
        for (std::size_t length = 0; length < file.size(); ++length)
            EXPECT_NE(tgaRefusal(file.substr(0, length)), "") << length;
    }
}

TEST(TgaReader, packets_that_end_too_early_say_where) {
    TgaFile file = packedFile(11, 8);
    file.pixels.resize(8);  // 15 pixels in two packets, and the head of the third
    EXPECT_TRUE(refusedFor(file, "byte 26, row 2: expected packets up to the last pixel"));
    file.width = 9;
    file.pixels = bytes({8, 1, 2, 3, 4, 5, 6, 7, 8, 9, 8, 1, 2, 3});
    EXPECT_TRUE(refusedFor(file, "byte 32, row 1: expected packets up to the last pixel"));
}

TEST(TgaReader, declared_sizes_are_compared_with_the_file) {
    for (const int type : {2, 10})
        for (const auto& [width, height] : {std::pair{65535, 65535}, std::pair{65535, 4000},
                                            std::pair{4000, 65535}, std::pair{16384, 16384}}) {
            const long long before = peakAddressSpace();
            EXPECT_NE(tgaRefusal(fileOf(type, 24, width, height, Bytes(500, 200)).build()), "");
            EXPECT_LT(peakAddressSpace() - before, 16 << 20);
        }
    // A map that reaches beyond the file.
    TgaFile file = mappedFile(16, {0, 0}, 32, 0, {1, 2, 3, 4});
    file.mapEntries = 65535;
    EXPECT_TRUE(refusedFor(file, "at least 262160 bytes"));
}
