// TIFF files that are wrong: each is refused with its reason, before anything large is allocated,
// and the codec library prints nothing.

#include "tests/image/ImageFiles.h"
#include "tests/image/TiffBuilder.h"
#include "tests/support/AddressSpace.h"

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using namespace std::string_literals;
constexpr auto kShort = TiffBuilder::kShort, kLong = TiffBuilder::kLong;
constexpr long long kLittle = 48 << 20;

/// A good picture of 4 x 4 pixels in two strips, in which one thing is changed.
struct Change {
    const char* name;
    std::function<void(TiffBuilder&)> apply;
    const char* reason;  ///< Somewhere in the message.
};

void PrintTo(const Change& change, std::ostream* stream) { *stream << change.name; }

TiffBuilder good(bool bigEndian = false) {
    TiffBuilder tiff(4, 4, bigEndian);
    tiff.set(278, kLong, {2}).block("ABCDEFGH").block("IJKLMNOP");
    return tiff;
}

class TiffDamage : public testing::TestWithParam<Change> {};

const Change kChanges[] = {
    {"no_width", [](auto& t) { t.set(256, kLong, {0}); }, "scanline size is zero"},
    {"wide", [](auto& t) { t.set(256, kLong, {0xFFFFFFFF}); }, "sides of 1 to"},
    {"high", [](auto& t) { t.set(257, kLong, {0xFFFFFFFF}); }, "zero number of strips"},
    {"large", [](auto& t) { t.set(256, kLong, {65535}).set(257, kLong, {65535}); }, "pixels"},
    {"larger_than_file", [](auto& t) { t.set(256, kLong, {5000}); }, "at least 20000 bytes"},
    {"no_rows_in_strip", [](auto& t) { t.set(278, kLong, {0}); }, "value 0 for \"RowsPerStrip\""},
    {"too_few_strips", [](auto& t) { t.set(278, kLong, {1}); },
     "strip 2: expected at least 4 bytes"},
    {"strip_behind_the_end",
     [](auto& t) {
         t.set(273, kLong, {8, 100000});
     },
     "strip 1"},
    {"strip_over_the_end",
     [](auto& t) {
         t.set(279, kLong, {8, 100000});
     },
     "strip 1"},
    {"short_strip",
     [](auto& t) {
         t.set(279, kLong, {8, 7});
     },
     "strip 1: expected at least 8"},
    {"empty_strip",
     [](auto& t) {
         t.set(279, kLong, {0, 8});
     },
     "strip 0"},
    {"no_bits", [](auto& t) { t.set(258, kShort, {0}); }, "scanline size is zero"},
    {"many_bits", [](auto& t) { t.set(258, kShort, {65535}); }, "bits: 65535"},
    {"odd_float", [](auto& t) { t.samples(1, 8, 3); }, "16, 24, 32 or 64"},
    {"complex_numbers", [](auto& t) { t.samples(1, 8, 6); }, "sample format 6"},
    {"unknown_compression", [](auto& t) { t.set(259, kShort, {34661}); }, "compression 34661"},
    {"unknown_colours", [](auto& t) { t.set(262, kShort, {32803}); }, "interpretation 32803"},
    {"colours_without_samples", [](auto& t) { t.set(262, kShort, {2}); }, "sample for each colour"},
    {"six_inks",
     [](auto& t) {
         t.samples(6, 8).set(262, kShort, {5}).set(332, kShort, {2}).set(334, kShort, {6});
     },
     "four inks"},
    {"float_inks", [](auto& t) { t.samples(4, 32, 3).set(262, kShort, {5}); }, "integer samples"},
    {"lab_of_12_bits",
     [](auto& t) {
         t.set(257, kLong, {2}).set(256, kLong, {1}).samples(3, 12).set(262, kShort, {8});
     },
     "8 or 16 bits"},
    {"many_samples", [](auto& t) { t.samples(33, 8); }, "32 samples"},
    {"more_samples_than_file", [](auto& t) { t.set(277, kShort, {65535}); }, "at most 32 samples"},
    {"log_colours_without_their_compression", [](auto& t) { t.set(262, kShort, {32844}); },
     "SGI log"},
    {"deflate_of_nothing", [](auto& t) { t.set(259, kShort, {8}); }, "strip 0"},
    {"lzw_of_nothing", [](auto& t) { t.set(259, kShort, {5}); }, "strip 0"},
    {"jpeg_of_nothing", [](auto& t) { t.set(259, kShort, {7}); }, "strip 0"},
    {"zstd_of_nothing", [](auto& t) { t.set(259, kShort, {50000}); }, "strip 0"},
    {"lzma_of_nothing", [](auto& t) { t.set(259, kShort, {34925}); }, "strip 0"},
    {"packbits_cut_short", [](auto& t) { t.set(259, kShort, {32773}); }, "strip"},
    {"old_jpeg_of_nothing",
     [](auto& t) {
         t.samples(3, 8).set(259, kShort, {6}).set(262, kShort, {6}).set(530, kShort, {1, 1});
     },
     "row 0: expected pixels that decode"},
    {"chroma_cut_short",
     [](auto& t) {
         t.samples(3, 8).set(262, kShort, {6}).set(530, kShort, {1, 1});
     },
     "Not enough data for scanline 0"},
    {"chroma_over_the_end",
     [](auto& t) {
         t.samples(3, 8).set(262, kShort, {6}).set(530, kShort, {1, 1});
         t.set(279, kLong, {8, 100000});
     },
     "strip 1: expected 100000 bytes at byte 16"},
    {"chroma_without_luminance",
     [](auto& t) {
         t.samples(3, 8).set(262, kShort, {6}).set(530, kShort, {1, 1});
         t.set(279, kLong, {8, 7});
     },
     "strip 1: expected at least 8"},
};

}  // namespace

TEST_P(TiffDamage, is_refused_with_a_reason_and_little_memory) {
    ASSERT_EQ(refusalOf(good().build()), "");
    TiffBuilder tiff = good();
    GetParam().apply(tiff);
    const long long before = peakAddressSpace();
    testing::internal::CaptureStderr();
    const std::string message = refusalOf(tiff.build());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_NE(message.find(GetParam().reason), std::string::npos) << message;
    EXPECT_LT(peakAddressSpace() - before, kLittle);
}

INSTANTIATE_TEST_SUITE_P(Changes, TiffDamage, testing::ValuesIn(kChanges),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(TiffDamage, tiles_much_larger_than_the_picture_are_refused) {
    struct Case {
        unsigned width, height;
        const char* reason;
    };
    for (const auto& [width, height, reason] :
         {Case{1U << 30, 16U, "at least"}, Case{16U, 1U << 30, "at least"},
          Case{1U << 20, 1U << 20, "at least"}, Case{0U, 16U, "zero number of tiles"},
          Case{8192U, 8192U, "tiles of at most"}, Case{16U, 1U << 22, "tiles of at most"}}) {
        TiffBuilder tiff(4, 4);
        // Enough for what 8192 x 8192 pixels take at best.
        tiff.tiles(width, height).set(259, kShort, {8}).block(std::string(70000, 'x'));
        const std::string file = tiff.build();
        const long long before = peakAddressSpace();
        const std::string message = refusalOf(file);
        EXPECT_NE(message.find(reason), std::string::npos) << message;
        EXPECT_LT(peakAddressSpace() - before, kLittle) << width << " x " << height;
    }
}

TEST(TiffDamage, tiles_of_luminance_and_chroma_much_larger_than_the_picture_are_refused) {
    TiffBuilder tiff(4, 4);
    tiff.samples(3, 8).set(262, kShort, {6}).set(530, kShort, {1, 1});
    // Enough for what such a tile takes at best.
    tiff.tiles(16, 1 << 24).set(259, kShort, {8}).block(std::string(900000, 'x'));
    const std::string file = tiff.build();
    const long long before = peakAddressSpace();
    const std::string message = refusalOf(file);
    EXPECT_NE(message.find("tiles of at most 16777216 bytes"), std::string::npos) << message;
    EXPECT_LT(peakAddressSpace() - before, kLittle);
}

TEST(TiffDamage, blocks_that_together_have_more_bytes_than_the_file_are_refused) {
    // Of the bytes that a strip claims, its first 15 are four zeros in DEFLATE. Each strip for
    // itself is good.
    const std::string block =
        "\x78\x01\x01\x04\x00\xFB\xFF\x00\x00\x00\x00\x00\x04\x00\x01"s + std::string(50000, 'x');
    const auto build = [&block](unsigned strips, bool chroma) {
        TiffBuilder tiff(chroma ? 1 : 4, strips);
        if (chroma) tiff.samples(3, 8).set(262, kShort, {6}).set(530, kShort, {1, 1});
        tiff.set(259, kShort, {8}).set(278, kLong, {1}).block(block);
        tiff.set(273, kLong, std::vector<std::uint32_t>(strips, 8));
        tiff.set(279, kLong,
                 std::vector<std::uint32_t>(strips, static_cast<std::uint32_t>(block.size())));
        return tiff.build();
    };
    for (const bool chroma : {false, true}) {
        EXPECT_EQ(refusalOf(build(2, chroma)), "") << chroma;
        const std::string message = refusalOf(build(200, chroma));
        // Two and a bit of them are twice the file.
        EXPECT_NE(message.find("strip 2: expected blocks of together at most"), std::string::npos)
            << message;
    }
}

TEST(TiffDamage, blocks_of_samples_that_are_not_wanted_do_not_count) {
    // Three planes of colour, and many more that all claim the bytes of the first one.
    constexpr unsigned kPlanes = 40;
    TiffBuilder tiff(128, 64);
    tiff.samples(kPlanes, 8).set(262, kShort, {2}).set(284, kShort, {2}).set(259, kShort, {32773});
    std::vector<std::uint32_t> offsets, counts;
    for (const char value : {'a', 'b', 'c'}) {
        std::string plane;
        for (int y = 0; y < 64; ++y) plane += '\x7F' + std::string(128, value);  // not packed
        offsets.push_back(static_cast<std::uint32_t>(8 + offsets.size() * plane.size()));
        counts.resize(kPlanes, static_cast<std::uint32_t>(plane.size()));
        tiff.block(plane);
    }
    offsets.resize(kPlanes, 8);
    const Image image = loadBytes(tiff.set(273, kLong, offsets).set(279, kLong, counts).build());
    const auto found = valuesOf<char>(image, 128, 64, Format::RGB);
    ASSERT_EQ(found.size(), 3U * 128 * 64);
    EXPECT_EQ(std::string(found.begin(), found.begin() + 6), "abcabc");
}

TEST(TiffDamage, blocks_may_share_bytes_that_are_no_more_than_their_pixels) {
    // A row of 5 x 201 zeros in LZW, codes of 9 bits: 256 empties the table, so that codes get no
    // longer; then one zero, and 258, which is two, a hundred times; 257 ends the row.
    std::vector<unsigned> codes;
    for (int i = 0; i < 5; ++i) {
        codes.insert(codes.end(), {256, 0});
        codes.insert(codes.end(), 100, 258);
    }
    codes.push_back(257);
    std::string row((codes.size() * 9 + 7) / 8, '\0');
    for (std::size_t bit = 0; bit < codes.size() * 9; ++bit)
        if (codes[bit / 9] >> (8 - bit % 9) & 1)
            row[bit / 8] = static_cast<char>(row[bit / 8] | 0x80 >> bit % 8);
    constexpr unsigned kWidth = 5 * 201, kRows = 500;
    TiffBuilder tiff(kWidth, kRows);
    tiff.set(259, kShort, {5}).set(278, kLong, {1}).block(row);
    tiff.set(273, kLong, std::vector<std::uint32_t>(kRows, 8));
    tiff.set(279, kShort,
             std::vector<std::uint32_t>(kRows, static_cast<std::uint32_t>(row.size())));
    const std::string file = tiff.build();
    ASSERT_GT(kRows * row.size(), 20 * file.size());
    const auto found = bytesOf(loadBytes(file), kWidth, kRows, Format::L);
    EXPECT_EQ(found, std::vector<int>(std::size_t{kWidth} * kRows, 0));
}

TEST(TiffDamage, directories_that_are_not_there_are_refused) {
    for (const bool bigEndian : {false, true})
        for (const bool bigTiff : {false, true}) {
            TiffBuilder tiff = good(bigEndian);
            if (bigTiff) tiff.bigTiff();
            const std::string file = tiff.build();
            ASSERT_EQ(refusalOf(file), "");
            const auto word = static_cast<std::size_t>(tiff.wordBytes());
            // Both lists fit into the directory of a BigTIFF file. Its last word, which says that
            // no directory follows, may be missing.
            for (std::size_t length = 4; length < file.size() - (bigTiff ? word : 0); ++length)
                EXPECT_NE(refusalOf(file.substr(0, length)), "") << length;
            const std::size_t begin = tiff.headerBytes() - word;
            for (const std::uint64_t offset :
                 {std::uint64_t{0}, std::uint64_t{2}, std::uint64_t{file.size()},
                  std::uint64_t{file.size() - 1}, std::uint64_t{0xFFFFFFF0}, ~std::uint64_t{0}}) {
                std::string away = file;
                away.replace(begin, word, tiff.number(offset, tiff.wordBytes()));
                const std::string message = refusalOf(away);
                EXPECT_NE(message.find("expected a directory within"), std::string::npos)
                    << message;
            }
        }
}

TEST(TiffDamage, directories_of_more_fields_than_there_are_bytes_are_refused) {
    for (const bool bigEndian : {false, true})
        for (const bool bigTiff : {false, true}) {
            TiffBuilder tiff = good(bigEndian);
            if (bigTiff) tiff.bigTiff();
            std::string file = tiff.build();
            const auto header = static_cast<std::size_t>(tiff.headerBytes());
            const std::size_t directory = header + 16;  // behind the two strips
            const int countBytes = bigTiff ? 8 : 2;
            for (const std::uint64_t count : {std::uint64_t{60}, ~std::uint64_t{0},
                                              ~std::uint64_t{0} / 20, std::uint64_t{0xCCCD}}) {
                file.replace(directory, static_cast<std::size_t>(countBytes),
                             tiff.number(count, countBytes));
                const std::string message = refusalOf(file);
                EXPECT_NE(message.find("byte " + std::to_string(directory) + ": expected room for"),
                          std::string::npos)
                    << message;
            }
            file.replace(directory, static_cast<std::size_t>(countBytes),
                         tiff.number(0, countBytes));
            EXPECT_NE(refusalOf(file).find("expected a directory with fields"), std::string::npos);
            // As many as the directory may have, and one more.
            file.resize(200000, '\0');
            file.replace(directory, static_cast<std::size_t>(countBytes),
                         tiff.number(4097, countBytes));
            EXPECT_NE(refusalOf(file).find("at most 4096 fields"), std::string::npos);
        }
}

TEST(TiffDamage, fields_that_all_have_the_whole_file_as_their_value_are_refused) {
    constexpr unsigned kBytes = 1 << 20, kFields = 500, kFirstTag = 40000;
    for (const bool bigEndian : {false, true})
        for (const bool bigTiff : {false, true}) {
            TiffBuilder tiff(1, 1, bigEndian);
            if (bigTiff) tiff.bigTiff();
            tiff.block(std::string(kBytes, 'x'));
            for (unsigned i = 0; i < kFields; ++i)
                // Bytes, and pairs of numbers of four bytes.
                tiff.elsewhere(kFirstTag + i, i % 2 ? TiffBuilder::kByte : TiffBuilder::kRational,
                               i % 2 ? kBytes : kBytes / 8, tiff.headerBytes());
            const std::string file = tiff.build();
            const long long before = peakAddressSpace();
            const std::string message = refusalOf(file);
            EXPECT_NE(message.find("values of together at most"), std::string::npos) << message;
            EXPECT_LT(peakAddressSpace() - before, kLittle);
        }
}

TEST(TiffDamage, fields_that_share_a_value_are_no_damage) {
    for (const bool bigTiff : {false, true}) {
        TiffBuilder tiff(1, 1);
        if (bigTiff) tiff.bigTiff();
        tiff.block("A" + std::string(9999, 'x'));
        for (const unsigned tag : {40000U, 40001U})
            tiff.elsewhere(tag, TiffBuilder::kByte, 10000, tiff.headerBytes());
        EXPECT_EQ(bytesOf(loadBytes(tiff.build()), 1, 1, Format::L), std::vector<int>{'A'});
    }
}

TEST(TiffDamage, lists_longer_than_the_file_are_refused_without_their_memory) {
    for (const unsigned tag : {273U, 279U, 320U, 34675U, 700U}) {
        TiffBuilder tiff = good();
        tiff.raw(tag, kLong, 0x3FFFFFF0, "12345678");
        const std::string file = tiff.build();
        const long long before = peakAddressSpace();
        static_cast<void>(tryToLoad(file));
        EXPECT_LT(peakAddressSpace() - before, kLittle) << tag;
    }
}
