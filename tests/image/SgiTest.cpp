// SGI images: of other programs, and made by hand.

#include "tests/image/FileParts.h"
#include "tests/image/ImageFiles.h"
#include "tests/support/AddressSpace.h"
#include "tests/support/ForeignPrograms.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Bytes = std::vector<int>;

/// Numbers of the header; the defaults are those of a grey picture as it is.
struct Head {
    int storage = 0, sampleBytes = 1, dimensions = 3;
    int width = 1, height = 1, channels = 1;
    int colormap = 0;
};

std::string header(const Head& head) {
    std::string text = bigEndian(474, 2) + bytes({head.storage, head.sampleBytes});
    for (const int value : {head.dimensions, head.width, head.height, head.channels})
        text += bigEndian(static_cast<unsigned>(value), 2);
    text += bigEndian(0, 4) + bigEndian(head.sampleBytes == 1 ? 255 : 65535, 4) + bigEndian(0, 4);
    text += "made by hand" + std::string(68, '\0');
    text += bigEndian(static_cast<unsigned>(head.colormap), 4);
    return text + std::string(512 - text.size(), '\0');
}

/// A row of a file: its offset behind the tables, and its length.
struct Place {
    unsigned offset, length;
};

std::string tables(const std::vector<Place>& places) {
    const unsigned begin = 512 + 8 * static_cast<unsigned>(places.size());
    std::string offsets, lengths;
    for (const Place& place : places) {
        offsets += bigEndian(begin + place.offset, 4);
        lengths += bigEndian(place.length, 4);
    }
    return offsets + lengths;
}

/// A run-length-coded file with rows one after the other: the channels' planes, from the bottom.
std::string coded(Head head, const std::vector<std::string>& rows) {
    head.storage = 1;
    std::vector<Place> places;
    std::string data;
    for (const std::string& row : rows) {
        places.push_back({static_cast<unsigned>(data.size()), static_cast<unsigned>(row.size())});
        data += row;
    }
    return header(head) + tables(places) + data;
}

/// A row of @p width equal samples.
std::string evenRow(int width, int value) {
    std::string row;
    for (; width > 0; width -= 127) row += bytes({std::min(width, 127), value});
    return row + '\0';
}

Format formatOf(int channels) {
    const Format formats[] = {Format::L, Format::LA, Format::RGB, Format::RGBA};
    return formats[channels - 1];
}

}  // namespace

TEST(SgiReader, decodes_what_other_programs_write) {
    const TempFolder folder;
    constexpr int kWidth = 301, kHeight = 83;
    for (const int channels : {1, 3, 4}) {
        for (const int bits : {8, 16}) {
            const RawPicture picture = gradients(kWidth, kHeight, channels, bits);
            const std::string in = writePortableMap(folder, "in.pnm", picture);
            for (const char* const way : {"None", "RLE"}) {
                const std::string out = folder.file("a.sgi");
                runProgram("convert " + shellWord(in) + " -compress " + way + " " + shellWord(out));
                const auto found = bytesOf(loadFile(out), kWidth, kHeight, formatOf(channels));
                ASSERT_EQ(found.size(), static_cast<std::size_t>(kWidth * kHeight * channels));
                std::size_t i = 0;
                for (int y = 0; y < kHeight; ++y)
                    for (int x = 0; x < kWidth; ++x)
                        for (int c = 0; c < channels; ++c, ++i)
                            ASSERT_EQ(found[i],
                                      std::lround(picture.at(x, y, c) / (bits == 8 ? 1 : 257.0)))
                                << way << ' ' << channels << " channels of " << bits << " bits at "
                                << x << ' ' << y;
            }
        }
    }
}

TEST(SgiReader, decodes_what_a_second_program_writes) {
    const TempFolder folder;
    constexpr int kWidth = 96, kHeight = 41;
    const RawPicture picture = gradients(kWidth, kHeight, 3);
    const std::string in = writePortableMap(folder, "in.ppm", picture);
    // The lists of channels tell what is written: grey, grey and alpha, colour, colour and alpha.
    const char* const lists[] = {"R", "Y=R,A=G", "R,G,B", "R,G,B,A=G"};
    const std::vector<std::vector<int>> sources{{0}, {0, 1}, {0, 1, 2}, {0, 1, 2, 1}};
    for (std::size_t kind = 0; kind < 4; ++kind)
        for (const char* const depth : {"uint8", "uint16"})
            for (const char* const way : {"none", "rle"}) {
                const std::string out = folder.file("a.rgb");
                runProgram("oiiotool " + shellWord(in) + " --ch " + lists[kind] + " -d " + depth +
                           " --compression " + way + " -o " + shellWord(out));
                Bytes expected;
                for (int y = 0; y < kHeight; ++y)
                    for (int x = 0; x < kWidth; ++x)
                        for (const int c : sources[kind]) expected.push_back(picture.at(x, y, c));
                const int channels = static_cast<int>(sources[kind].size());
                EXPECT_TRUE(bytesOf(loadFile(out), kWidth, kHeight, formatOf(channels)) == expected)
                    << lists[kind] << ' ' << depth << ' ' << way;
            }
}

TEST(SgiReader, large_pictures_are_those_of_another_reader) {
    const TempFolder folder;
    constexpr int kWidth = 1500, kHeight = 900;
    const RawPicture picture = gradients(kWidth, kHeight, 3);
    const std::string in = writePortableMap(folder, "in.ppm", picture);
    for (const char* const way : {"None", "RLE"}) {
        const std::string out = folder.file("a.sgi");
        runProgram("convert " + shellWord(in) + " -compress " + way + " " + shellWord(out));
        EXPECT_TRUE(rawPixels(loadFile(out)) == picture.samples) << way;
    }
}

TEST(SgiReader, reads_samples_as_they_are) {
    // Planes from the bottom row on, delivered from the top.
    for (int channels = 1; channels <= 4; ++channels) {
        std::string file = header({.width = 2, .height = 2, .channels = channels});
        Bytes expected;
        for (int c = 0; c < channels; ++c)
            file += bytes({10 * c + 3, 10 * c + 4, 10 * c + 1, 10 * c + 2});
        for (int pixel = 1; pixel <= 4; ++pixel)
            for (int c = 0; c < channels; ++c) expected.push_back(10 * c + pixel);
        EXPECT_EQ(bytesOf(loadBytes(file), 2, 2, formatOf(channels)), expected);
    }
}

TEST(SgiReader, rounds_16_bits_to_8) {
    // 1 of 255 is 257 of 65535: 128 lies just below a half of that, 129 just above.
    const std::string file =
        header({.sampleBytes = 2, .width = 8}) +
        bytes({0, 0, 0, 128, 0, 129, 1, 1, 127, 255, 128, 0, 255, 126, 255, 127});
    EXPECT_EQ(bytesOf(loadBytes(file), 8, 1, Format::L), (Bytes{0, 0, 1, 1, 127, 128, 254, 255}));
}

TEST(SgiReader, fewer_dimensions_leave_fields_without_meaning) {
    const std::string pixels = bytes({1, 2, 3, 4, 5, 6});
    EXPECT_EQ(bytesOf(loadBytes(header({.dimensions = 1, .width = 6, .height = 77, .channels = 9}) +
                                pixels),
                      6, 1, Format::L),
              (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(bytesOf(loadBytes(header({.dimensions = 2, .width = 3, .height = 2, .channels = 9}) +
                                pixels),
                      3, 2, Format::L),
              (Bytes{4, 5, 6, 1, 2, 3}));
}

TEST(SgiReader, expands_runs) {
    const std::string file =
        coded({.width = 5, .height = 2, .channels = 2},
              {bytes({0x85, 1, 2, 3, 4, 5, 0}), bytes({5, 6, 0}),  // grey, from the bottom
               bytes({2, 7, 0x83, 8, 9, 10, 0}), bytes({0x81, 11, 4, 12, 0})});
    EXPECT_EQ(bytesOf(loadBytes(file), 5, 2, Format::LA),
              (Bytes{6, 11, 6, 12, 6, 12, 6, 12, 6, 12, 1, 7, 2, 7, 3, 8, 4, 9, 5, 10}));
}

TEST(SgiReader, expands_runs_of_16_bits) {
    // The count stands in the second byte; what the first one holds means nothing.
    const std::string file = coded({.sampleBytes = 2, .width = 5, .height = 1, .channels = 1},
                                   {bytes({0, 0x82, 255, 255, 1, 1, 0xEE, 3, 2, 2, 0, 0})});
    EXPECT_EQ(bytesOf(loadBytes(file), 5, 1, Format::L), (Bytes{255, 1, 2, 2, 2}));
}

TEST(SgiReader, rows_may_lack_the_mark_of_their_end) {
    EXPECT_EQ(bytesOf(loadBytes(coded({.width = 4}, {bytes({1, 9, 3, 8})})), 4, 1, Format::L),
              (Bytes{9, 8, 8, 8}));
}

TEST(SgiReader, rows_lie_anywhere_and_may_share_their_bytes) {
    // Top row last in the tables, first in the file; the three others are one and the same.
    const std::string file = header({.storage = 1, .width = 3, .height = 4}) +
                             tables({{5, 3}, {5, 3}, {5, 3}, {0, 4}}) +
                             bytes({0x83, 1, 2, 3, 99, 3, 7, 0});
    EXPECT_EQ(bytesOf(loadBytes(file), 3, 4, Format::L),
              (Bytes{1, 2, 3, 7, 7, 7, 7, 7, 7, 7, 7, 7}));
}

TEST(SgiReader, a_table_may_overstate_the_length_of_rows) {
    // All rows claim the rest of the file; decoding stops where the row is full.
    const std::string file = header({.storage = 1, .width = 2, .height = 2}) +
                             tables({{0, 1004}, {4, 1000}}) + bytes({2, 5, 0, 0, 2, 6, 0}) +
                             std::string(997, '\x01');
    EXPECT_EQ(bytesOf(loadBytes(file), 2, 2, Format::L), (Bytes{6, 6, 5, 5}));
}

TEST(SgiReader, reads_the_longest_rows) {
    constexpr int kWidth = 65535;
    const auto found = bytesOf(
        loadBytes(coded({.width = kWidth, .height = 2}, {evenRow(kWidth, 4), evenRow(kWidth, 5)})),
        kWidth, 2, Format::L);
    ASSERT_EQ(found.size(), 2U * kWidth);
    for (std::size_t i = 0; i < found.size(); ++i) ASSERT_EQ(found[i], i < kWidth ? 5 : 4) << i;
}

TEST(SgiReader, reports_what_the_header_says) {
    const TempFolder folder;
    const std::string path =
        folder.write("a.rgba", header({.sampleBytes = 2, .width = 9, .height = 3, .channels = 4}));
    expectInfo(path, 9, 3, "sgi", Format::RGBA);
}

TEST(SgiReader, broken_headers_are_refused) {
    const auto reason = [](const Head& head) {
        return refusalOf(header(head) + std::string(64, '\0'));
    };
    ASSERT_EQ(reason({}), "");
    const std::vector<std::pair<Head, std::string>> cases{
        {{.storage = 2}, "byte 2: expected storage 0 or 1, found 2"},
        {{.sampleBytes = 0}, "1 or 2 bytes a sample, found 0"},
        {{.sampleBytes = 4}, "1 or 2 bytes a sample, found 4"},
        {{.dimensions = 0}, "1 to 3 dimensions, found 0"},
        {{.dimensions = 4}, "1 to 3 dimensions, found 4"},
        {{.width = 0}, "0 x 1 pixels"},
        {{.height = 0}, "1 x 0 pixels"},
        {{.channels = 0}, "1 to 4 channels, found 0"},
        {{.channels = 5}, "byte 10: expected 1 to 4 channels, found 5"},
        {{.colormap = 1}, "dithered pixels (colormap 1)"},
        {{.colormap = 2}, "screen colours (colormap 2)"},
        {{.colormap = 3}, "a table of colours (colormap 3)"},
        {{.colormap = -1}, "an unknown kind (colormap 4294967295)"},
    };
    for (const auto& [head, expected] : cases)
        EXPECT_NE(reason(head).find(expected), std::string::npos) << expected << "\n"
                                                                  << reason(head);
    EXPECT_NE(refusalOf(header({}).substr(0, 300)).find("512 bytes, found 300"), std::string::npos);
}

TEST(SgiReader, broken_rows_are_refused_with_their_place) {
    const auto reason = [](const std::string& row) {
        return refusalOf(coded({.width = 4}, {row}));
    };
    ASSERT_EQ(reason(bytes({4, 1, 0})), "");
    const std::vector<std::pair<std::string, std::string>> cases{
        {bytes({5, 1, 0}), "byte 520, channel 0, row 0: expected a run of 1 to 4 samples, found 5"},
        {bytes({3, 1, 2, 1}),
         "byte 522, channel 0, row 0: expected a run of 1 to 1 samples, found 2"},
        {bytes({3, 1, 0}),
         "byte 522, channel 0, row 0: expected a run of 1 to 1 samples, found the "
         "end of the row"},
        {bytes({0x85, 1, 2, 3, 4, 5}), "found 5"},
        {bytes({0x80, 1, 2, 3, 4}), "found the end of the row"},
        {bytes({3, 1}), "byte 522, channel 0, row 0: expected a run, found the end of the row's"},
        {bytes({3, 1, 1}), "expected a run of 1 samples, found the end of the row's bytes"},
        {bytes({0x84, 1, 2, 3}), "expected a run of 4 samples, found the end of the row's bytes"},
    };
    for (const auto& [row, expected] : cases)
        EXPECT_NE(reason(row).find(expected), std::string::npos) << expected << "\n" << reason(row);
    // Half a sample.
    EXPECT_NE(refusalOf(coded({.sampleBytes = 2, .width = 2}, {bytes({0, 2, 0})}) + "x")
                  .find("the end of the row's bytes"),
              std::string::npos);
}

TEST(SgiReader, the_topmost_broken_row_is_named) {
    // Large enough for several threads; the rows at the top and at the bottom are broken.
    constexpr int kSide = 1024;
    std::vector<std::string> rows(kSide, evenRow(kSide, 1));
    rows[3] = rows[kSide - 1] = bytes({0});
    EXPECT_NE(refusalOf(coded({.width = kSide, .height = kSide}, rows)).find("channel 0, row 0"),
              std::string::npos);
    rows[kSide - 1] = rows[0];
    EXPECT_NE(refusalOf(coded({.width = kSide, .height = kSide}, rows)).find("channel 0, row 1020"),
              std::string::npos);
}

TEST(SgiReader, tables_are_held_against_the_file) {
    const auto reason = [](unsigned offset, unsigned length) {
        return refusalOf(header({.storage = 1, .width = 4}) + bigEndian(offset, 4) +
                         bigEndian(length, 4) + bytes({4, 1, 0}));
    };
    ASSERT_EQ(reason(520, 3), "");
    for (const auto& [offset, length] :
         std::vector<std::pair<unsigned, unsigned>>{{519, 3},  // still in the tables
                                                    {0, 3},
                                                    {520, 4},
                                                    {521, 3},
                                                    {523, 1},
                                                    {0xFFFFFFFF, 1},
                                                    {520, 0xFFFFFFFF},
                                                    {0xFFFFFFFF, 0xFFFFFFFF}}) {
        const std::string expected = "byte " + std::to_string(offset) +
                                     ", channel 0, row 0: expected bytes of a row between 520 and "
                                     "523, found " +
                                     std::to_string(length) + " bytes";
        EXPECT_NE(reason(offset, length).find(expected), std::string::npos)
            << reason(offset, length);
    }
    EXPECT_NE(reason(523, 0).find("expected a run, found"), std::string::npos);
}

TEST(SgiReader, cut_short_anywhere_is_refused) {
    std::vector<std::string> rows;
    for (int i = 0; i < 9; ++i) rows.push_back(evenRow(200, i));
    const Head head{.width = 200, .height = 3, .channels = 3};
    for (const std::string& file : {coded(head, rows), header(head) + std::string(1800, 'x')}) {
        ASSERT_EQ(refusalOf(file), "");
        for (std::size_t length = 2; length < file.size(); ++length)
            ASSERT_NE(refusalOf(file.substr(0, length)), "") << length;
    }
}

TEST(SgiReader, declared_sizes_are_compared_with_the_file) {
    for (const int storage : {0, 1})
        for (const Head& head :
             {Head{.storage = storage, .width = 65535, .height = 65535, .channels = 4},
              Head{.storage = storage, .sampleBytes = 2, .width = 1, .height = 65535},
              Head{.storage = storage, .width = 16384, .height = 16384, .channels = 3}}) {
            const long long before = peakAddressSpace();
            EXPECT_NE(refusalOf(header(head) + std::string(2000, '\x01')), "");
            EXPECT_LT(peakAddressSpace() - before, 16 << 20);
        }
    // Exactly the bytes that are needed.
    const std::string whole =
        header({.width = 3, .height = 2, .channels = 4}) + std::string(24, 'x');
    EXPECT_EQ(refusalOf(whole), "");
    EXPECT_NE(refusalOf(whole.substr(0, whole.size() - 1)).find("at least 536 bytes"),
              std::string::npos);
}
