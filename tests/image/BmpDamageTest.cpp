// Bitmaps that cannot be read: refused with the reason, and at little cost.

#include "tests/image/BmpBuilder.h"
#include "tests/image/ImageFiles.h"
#include "tests/support/AddressSpace.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace rb::test;

BmpFile onePixel() {
    BmpFile file;
    file.pixels = bytes({1, 2, 3, 0});
    return file;
}

/// Three rows of five indices as run lengths.
BmpFile runLengths() {
    BmpFile file;
    file.bits = 8;
    file.storage = 1;
    file.width = 5;
    file.height = 3;
    file.palette = std::vector<std::uint32_t>(256, 0x123456);
    file.pixels = bytes({5, 1, 0, 0, 0, 5, 1, 2, 3, 4, 5, 0, 0, 0, 2, 3, 1, 1});
    file.pixels += bytes({1, 7, 1, 8, 0, 0, 0, 1});
    return file;
}

bool refusedFor(const BmpFile& file, const std::string& reason) {
    const std::string refusal = refusalOf(file.build());
    if (refusal.find(reason) != std::string::npos) return true;
    ADD_FAILURE() << "not for " << reason << ": " << refusal;
    return false;
}

}  // namespace

TEST(BmpDamage, other_storage_is_refused_by_name) {
    const auto stored = [](std::uint32_t storage, int headerBytes = 40) {
        BmpFile file = onePixel();
        file.storage = storage;
        file.headerBytes = headerBytes;
        return file;
    };
    EXPECT_TRUE(refusedFor(stored(4), "an embedded JPEG picture"));
    EXPECT_TRUE(refusedFor(stored(5), "an embedded PNG picture"));
    EXPECT_TRUE(refusedFor(stored(3, 64), "Huffman codes"));
    EXPECT_TRUE(refusedFor(stored(4, 64), "run lengths of 24 bits"));
    EXPECT_TRUE(refusedFor(stored(6, 64), "compression 6"));
    for (const std::uint32_t cmyk : {11U, 12U, 13U})
        EXPECT_TRUE(refusedFor(stored(cmyk), "CMYK pixels"));
    EXPECT_TRUE(refusedFor(stored(7), "byte 30: expected plain pixels"));
    EXPECT_TRUE(refusedFor(stored(4000000000), "compression 4000000000"));
}

TEST(BmpDamage, bits_that_do_not_fit_the_storage_are_refused) {
    struct Case {
        std::uint32_t storage;
        int bits;
        const char* expected;
    };
    for (const Case& test :
         {Case{0, 0, "1, 2, 4, 8, 16, 24 or 32 bits a pixel, found 0"},
          Case{0, 3, "1, 2, 4, 8, 16, 24 or 32 bits a pixel, found 3"}, Case{0, 64, "found 64"},
          Case{0, 65535, "found 65535"}, Case{1, 4, "8 bits a pixel"},
          Case{1, 24, "8 bits a pixel"}, Case{2, 8, "4 bits a pixel"},
          Case{3, 24, "16 or 32 bits a pixel"}, Case{6, 8, "16 or 32 bits a pixel"}}) {
        BmpFile file = onePixel();
        file.storage = test.storage;
        file.bits = test.bits;
        file.masks = {1, 2, 4, 8};
        EXPECT_TRUE(refusedFor(file, test.expected));
    }
}

TEST(BmpDamage, bad_masks_are_refused) {
    const auto masked = [](int bits, const std::vector<std::uint32_t>& masks) {
        BmpFile file = onePixel();
        file.headerBytes = 108;
        file.storage = 3;
        file.bits = bits;
        file.masks = masks;
        return file;
    };
    ASSERT_EQ(refusalOf(masked(32, {0xFF, 0xFF00, 0xFF0000}).build()), "");
    for (const auto& [bits, masks] :
         {std::pair{32, std::vector<std::uint32_t>{0xFF00FF, 0xFF00, 0}},  // a hole
          std::pair{32, std::vector<std::uint32_t>{0xFF, 0x1FF00, 0xFF0000}},
          std::pair{32, std::vector<std::uint32_t>{0xFF, 0xFF00, 0xFF0000, 0xFF}},
          std::pair{32, std::vector<std::uint32_t>{0xFF, 0xFF00, 0xFF0000, 0x81000000}},
          std::pair{32, std::vector<std::uint32_t>{0, 0, 0, 0xFF}},
          std::pair{32, std::vector<std::uint32_t>{}},
          std::pair{16, std::vector<std::uint32_t>{0x1F800, 0x7E0, 0x1F}}})
        EXPECT_TRUE(refusedFor(masked(bits, masks), "byte 54: expected a mask of adjacent bits"));
    EXPECT_TRUE(refusedFor(masked(32, {0xFF00FF, 0xFF00, 0}), "00ff00ff 0000ff00 00000000"));
}

TEST(BmpDamage, headers_of_other_lengths_are_refused) {
    for (const std::uint32_t length : {0U, 11U, 13U, 15U, 65U, 107U, 109U, 125U, 65535U}) {
        std::string file = onePixel().build() + std::string(200, '\0');
        for (std::size_t i = 0; i < 4; ++i) file[14 + i] = static_cast<char>(length >> 8 * i);
        EXPECT_NE(refusalOf(file).find("found " + std::to_string(length)), std::string::npos)
            << length;
    }
}

TEST(BmpDamage, two_letters_do_not_make_a_bitmap) {
    EXPECT_NE(refusalOf("BM is how this text begins").find("first bytes 42 4d"), std::string::npos);
    EXPECT_NE(refusalOf("BM").find("the end of the file"), std::string::npos);
}

TEST(BmpDamage, impossible_sides_are_refused) {
    constexpr int kLeast = std::numeric_limits<int>::min();
    for (const auto& [width, height] :
         {std::pair{0, 1}, std::pair{1, 0}, std::pair{-1, 1}, std::pair{kLeast, 1},
          std::pair{1, kLeast}, std::pair{kLeast, kLeast}}) {
        BmpFile file = onePixel();
        file.width = width;
        file.height = height;
        EXPECT_TRUE(refusedFor(file, "sides of 1 to 2147483647 pixels"));
    }
}

TEST(BmpDamage, cut_short_anywhere_is_refused) {
    BmpFile plain;
    plain.width = 3;
    plain.height = 4;
    plain.pixels = std::string(4 * 12, '\x55');
    // The last row may lack its three fillers.
    const std::string whole = plain.build();
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(refusalOf(whole.substr(0, length)).empty(), length + 3 >= whole.size()) << length;
    EXPECT_NE(refusalOf(whole.substr(0, whole.size() - 4)).find("at least 99 bytes"),
              std::string::npos);
    // The last row is whole before its end, four bytes from the end of the file.
    const std::string runs = runLengths().build();
    for (std::size_t length = 0; length < runs.size(); ++length)
        EXPECT_EQ(refusalOf(runs.substr(0, length)).empty(), length + 4 >= runs.size()) << length;
}

TEST(BmpDamage, run_lengths_that_end_too_early_say_where) {
    const std::string runs = runLengths().build();
    const std::size_t begin = runs.size() - runLengths().pixels.size();
    EXPECT_NE(refusalOf(runs.substr(0, begin + 8))
                  .find("byte " + std::to_string(begin + 8) + ", row 1: expected run lengths"),
              std::string::npos);
}

TEST(BmpDamage, declared_sizes_are_compared_with_the_file) {
    constexpr int kMost = std::numeric_limits<int>::max();
    for (const int bits : {1, 8, 24, 32})
        for (const auto& [width, height] :
             {std::pair{65535, 65535}, std::pair{kMost, 1}, std::pair{1, kMost},
              std::pair{16384, 16384}, std::pair{kMost, kMost}}) {
            BmpFile file = onePixel();
            file.bits = bits;
            file.width = width;
            file.height = height;
            const long long before = peakAddressSpace();
            EXPECT_NE(refusalOf(file.build()), "") << bits << ": " << width << " x " << height;
            EXPECT_LT(peakAddressSpace() - before, 16 << 20);
        }
}

TEST(BmpDamage, pixels_beyond_the_file_are_refused) {
    for (const std::uint32_t begin : {55U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        BmpFile file = onePixel();
        file.width = 1000;
        file.pixelsBegin = begin;
        EXPECT_TRUE(refusedFor(file, "bytes for 1000 x 1 pixels"));
        file = runLengths();
        file.pixelsBegin = begin + 2000;
        EXPECT_NE(refusalOf(file.build()), "") << begin;
    }
}

TEST(BmpDamage, commands_that_go_nowhere_come_to_an_end) {
    BmpFile file = runLengths();
    file.pixels.clear();
    for (int i = 0; i < 500000; ++i) file.pixels += bytes({0, 2, 0, 0});
    EXPECT_TRUE(refusedFor(file, "row 0: expected run lengths up to the end of the bitmap"));
    file.pixels.clear();
    for (int i = 0; i < 500000; ++i) file.pixels += bytes({0, 2, 255, 0});
    EXPECT_TRUE(refusedFor(file, "row 0: expected run lengths up to the end of the bitmap"));
}
