// Run-length-coded bitmaps, made by hand.

#include "tests/image/BmpBuilder.h"
#include "tests/image/ImageFiles.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Bytes = std::vector<int>;

/// Index i is the colour (i, 0, 100), so that index 0 is not black.
BmpFile runLengthFile(int bits, int width, int height, const Bytes& commands) {
    BmpFile file;
    file.bits = bits;
    file.storage = bits == 8 ? 1 : 2;
    file.width = width;
    file.height = height;
    for (std::uint32_t i = 0; i < 1U << bits; ++i) file.palette.push_back(i << 16 | 100);
    file.pixels = bytes(commands);
    return file;
}

/// The indices of all pixels, top row first.
Bytes indicesOf(const BmpFile& file) {
    const Bytes pixels =
        bytesOf(loadBytes(file.build()), file.width, std::abs(file.height), Format::RGB);
    Bytes indices;
    for (std::size_t i = 0; i < pixels.size(); i += 3) {
        indices.push_back(pixels[i]);
        EXPECT_EQ(pixels[i + 1], 0);
        EXPECT_EQ(pixels[i + 2], 100);
    }
    return indices;
}

}  // namespace

TEST(BmpRunLengths, repeat_and_copy_bytes) {
    EXPECT_EQ(
        indicesOf(runLengthFile(8, 8, 2,
                                {8, 9, 0, 0,                             // eight times
                                 3, 1, 0, 3, 5, 6, 7, 99, 2, 200, 0, 0,  // 3, 3 and a filler, 2
                                 0, 1})),
        (Bytes{1, 1, 1, 5, 6, 7, 200, 200, 9, 9, 9, 9, 9, 9, 9, 9}));
    EXPECT_EQ(indicesOf(runLengthFile(8, 5, 1, {0, 4, 1, 2, 3, 4, 1, 5, 0, 0, 0, 1})),
              (Bytes{1, 2, 3, 4, 5}));
}

TEST(BmpRunLengths, repeat_and_copy_halves_of_bytes) {
    EXPECT_EQ(indicesOf(runLengthFile(4, 13, 1,
                                      {5, 0x1A, 0, 3, 0x23, 0x4F, 0, 5, 0x56, 0x78, 0x9F, 99,  //
                                       0, 0, 0, 1})),
              (Bytes{1, 10, 1, 10, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(indicesOf(runLengthFile(4, 4, 1, {0, 4, 0x12, 0x34, 0, 1})), (Bytes{1, 2, 3, 4}));
}

TEST(BmpRunLengths, pixels_that_are_passed_over_have_the_first_colour) {
    // Two pixels, two on and one up, two pixels; one on, one pixel.
    EXPECT_EQ(indicesOf(runLengthFile(
                  8, 6, 3, {2, 5, 0, 2, 2, 1, 2, 6, 0, 0, 0, 2, 1, 0, 1, 7, 0, 0, 0, 1})),
              (Bytes{0, 7, 0, 0, 0, 0,  //
                     0, 0, 0, 0, 6, 6,  //
                     5, 5, 0, 0, 0, 0}));
    // Over whole rows; then the end, with a row to go.
    EXPECT_EQ(indicesOf(runLengthFile(4, 3, 5, {0, 2, 0, 3, 2, 0x11, 0, 1})),
              (Bytes{0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(indicesOf(runLengthFile(8, 2, 2, {1, 3, 0, 1})), (Bytes{0, 0, 3, 0}));
    EXPECT_EQ(indicesOf(runLengthFile(8, 2, 2, {0, 1})), (Bytes{0, 0, 0, 0}));
}

TEST(BmpRunLengths, what_lies_outside_of_the_picture_is_dropped) {
    const Bytes expected{4, 4, 3, 3};
    for (const Bytes& commands :
         {Bytes{9, 3, 0, 0, 2, 4, 0, 0, 0, 1},                            // a run too long
          Bytes{1, 3, 0, 4, 3, 9, 9, 9, 0, 0, 2, 4, 0, 0, 0, 1},          // copies too long
          Bytes{2, 3, 0, 3, 9, 9, 9, 9, 255, 9, 0, 0, 2, 4, 0, 0, 0, 1},  // beyond the row
          Bytes{2, 3, 0, 2, 255, 0, 1, 9, 0, 0, 2, 4, 0, 0, 0, 1},        // far beyond it
          Bytes{2, 3, 0, 0, 2, 4, 0, 0, 2, 9, 0, 0, 2, 9, 0, 0, 0, 1},    // rows too many
          Bytes{2, 3, 0, 0, 2, 4, 0, 2, 0, 255, 2, 9, 0, 1}})             // above the top
        EXPECT_EQ(indicesOf(runLengthFile(8, 2, 2, commands)), expected);
    EXPECT_EQ(indicesOf(runLengthFile(4, 2, 2, {9, 0x33, 0, 0, 0, 3, 0x44, 0x40, 0, 1})), expected);
    // From the second row on to beyond the top: the rest is empty.
    EXPECT_EQ(indicesOf(runLengthFile(8, 2, 3, {2, 3, 0, 0, 2, 4, 0, 2, 0, 200, 2, 9, 0, 1})),
              (Bytes{0, 0, 4, 4, 3, 3}));
}

TEST(BmpRunLengths, the_last_row_needs_no_end) {
    for (const Bytes& commands : {Bytes{2, 3, 0, 0, 2, 4}, Bytes{2, 3, 0, 0, 2, 4, 0, 0}})
        EXPECT_EQ(indicesOf(runLengthFile(8, 2, 2, commands)), (Bytes{4, 4, 3, 3}));
}

TEST(BmpRunLengths, the_top_row_may_come_first) {
    EXPECT_EQ(indicesOf(runLengthFile(8, 2, -2, {2, 3, 0, 0, 2, 4, 0, 1})), (Bytes{3, 3, 4, 4}));
}

TEST(BmpRunLengths, run_across_blocks_of_the_file) {
    // 40000 commands a row: more than is read at once.
    constexpr int kWidth = 40000, kHeight = 3;
    Bytes commands, expected;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            commands.insert(commands.end(), {1, (x + y) & 255});
            expected.push_back((x + kHeight - 1 - y) & 255);
        }
        commands.insert(commands.end(), {0, 0});
    }
    EXPECT_TRUE(indicesOf(runLengthFile(8, kWidth, kHeight, commands)) == expected);
}
