// Softimage pictures, made by hand: the programs at hand do not write them.

#include "tests/image/FileParts.h"
#include "tests/image/ImageFiles.h"
#include "tests/support/AddressSpace.h"
#include "tests/support/ForeignPrograms.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Bytes = std::vector<int>;

constexpr int kPlain = 0, kPure = 1, kMixed = 2;
constexpr int kRed = 0x80, kGreen = 0x40, kBlue = 0x20, kAlpha = 0x10;
constexpr int kColors = kRed | kGreen | kBlue;

/// One description of channels; all but the last are chained.
struct Packet {
    int coding, mask, bits = 8;
};

std::string number16(int value) { return bigEndian(static_cast<std::uint64_t>(value), 2); }

std::string header(int width, int height, const std::vector<Packet>& packets, int fields = 3,
                   const std::string& kind = "PICT") {
    std::string text = bytes({0x53, 0x80, 0xF6, 0x34, 0x40, 0x60, 0, 0});
    text += "made by hand" + std::string(68, '\0') + kind;
    text += number16(width) + number16(height) + bytes({0x3F, 0x80, 0, 0}) + number16(fields);
    text += number16(0);
    for (std::size_t i = 0; i < packets.size(); ++i)
        text +=
            bytes({i + 1 < packets.size(), packets[i].bits, packets[i].coding, packets[i].mask});
    return text;
}

std::string picture(int width, int height, const std::vector<Packet>& packets,
                    const std::string& scanlines) {
    return header(width, height, packets) + scanlines;
}

/// The channels of @p mask out of one pixel.
std::string pixelOf(const RawPicture& from, int x, int y, int mask) {
    std::string pixel;
    for (int c = 0; c < from.channels; ++c)
        if (mask & (0x80 >> c)) pixel += static_cast<char>(from.at(x, y, c));
    return pixel;
}

/// One scanline of a packet, with the shortest runs that its coding has for it.
std::string encoded(const RawPicture& from, int y, const Packet& packet) {
    std::string text;
    for (int x = 0; x < from.width;) {
        const std::string pixel = pixelOf(from, x, y, packet.mask);
        int equal = 1;
        while (x + equal < from.width && pixelOf(from, x + equal, y, packet.mask) == pixel) ++equal;
        if (packet.coding == kPlain) {
            text += pixel;
            ++x;
        } else if (packet.coding == kPure) {
            equal = std::min(equal, 255);
            text += bytes({equal}) + pixel;
            x += equal;
        } else if (equal > 128) {
            text += bytes({128}) + number16(equal) + pixel;
            x += equal;
        } else if (equal > 1) {
            text += bytes({127 + equal}) + pixel;
            x += equal;
        } else {
            text += bytes({0}) + pixel;
            ++x;
        }
    }
    return text;
}

std::string encoded(const RawPicture& from, const std::vector<Packet>& packets) {
    std::string text = header(from.width, from.height, packets);
    for (int y = 0; y < from.height; ++y)
        for (const Packet& packet : packets) text += encoded(from, y, packet);
    return text;
}

/// Broad and narrow stripes with some noise between them.
RawPicture stripes(int width, int height, int channels) {
    RawPicture result{width, height, channels, 8, {}};
    const RawPicture noise = gradients(width, height, channels);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c)
                result.append(x % 700 < 500 ? (x / (3 + 100 * c) + y) & 255 : noise.at(x, y, c));
    return result;
}

}  // namespace

TEST(PicReader, reads_plain_scanlines) {
    EXPECT_EQ(bytesOf(loadBytes(picture(2, 2, {{kPlain, kColors}},
                                        bytes({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}))),
                      2, 2, Format::RGB),
              (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    EXPECT_EQ(bytesOf(loadBytes(picture(1, 2, {{kPlain, kColors | kAlpha}},
                                        bytes({1, 2, 3, 4, 5, 6, 7, 8}))),
                      1, 2, Format::RGBA),
              (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(PicReader, reads_pure_runs) {
    const std::string scanlines = bytes({3, 10, 20, 30, 1, 40, 50, 60,  //
                                         1, 1, 2, 3, 3, 4, 5, 6});
    EXPECT_EQ(bytesOf(loadBytes(picture(4, 2, {{kPure, kColors}}, scanlines)), 4, 2, Format::RGB),
              (Bytes{10, 20, 30, 10, 20, 30, 10, 20, 30, 40, 50, 60,  //
                     1,  2,  3,  4,  5,  6,  4,  5,  6,  4,  5,  6}));
}

TEST(PicReader, reads_mixed_runs) {
    // Two as they are, three times one (130 - 127); then 300 times one with a count of 16 bits.
    const std::string scanline = bytes({1, 1, 2, 3, 4, 5, 6, 130, 7, 8, 9, 128, 1, 44, 10, 11, 12});
    Bytes expected{1, 2, 3, 4, 5, 6, 7, 8, 9, 7, 8, 9, 7, 8, 9};
    for (int i = 0; i < 300; ++i) expected.insert(expected.end(), {10, 11, 12});
    EXPECT_EQ(
        bytesOf(loadBytes(picture(305, 1, {{kMixed, kColors}}, scanline)), 305, 1, Format::RGB),
        expected);
    // The longest of the short ones: 128 either way.
    std::string longest = bytes({127});
    Bytes pixels;
    for (int i = 0; i < 384; ++i) longest += static_cast<char>(i % 251), pixels.push_back(i % 251);
    longest += bytes({255, 9, 9, 9});
    pixels.insert(pixels.end(), 384, 9);
    EXPECT_EQ(
        bytesOf(loadBytes(picture(256, 1, {{kMixed, kColors}}, longest)), 256, 1, Format::RGB),
        pixels);
}

TEST(PicReader, packets_take_turns_in_each_scanline) {
    const std::string scanlines = bytes({1, 2, 3, 4, 5, 6, 2, 77,  // colours, alpha
                                         7, 8, 9, 10, 11, 12, 1, 78, 1, 79});
    EXPECT_EQ(bytesOf(loadBytes(picture(2, 2, {{kPlain, kColors}, {kPure, kAlpha}}, scanlines)), 2,
                      2, Format::RGBA),
              (Bytes{1, 2, 3, 77, 4, 5, 6, 77, 7, 8, 9, 78, 10, 11, 12, 79}));
}

TEST(PicReader, packets_come_in_any_order_and_number) {
    const std::string scanline = bytes({
        4, 44,          // alpha
        2, 22,          // green
        130 - 1, 1, 3,  // red and blue, twice
    });
    EXPECT_EQ(
        bytesOf(loadBytes(picture(
                    2, 1, {{kPlain, kAlpha}, {kPlain, kGreen}, {kMixed, kRed | kBlue}}, scanline)),
                2, 1, Format::RGBA),
        (Bytes{1, 2, 3, 4, 1, 22, 3, 44}));
    EXPECT_EQ(bytesOf(loadBytes(picture(1, 1, {{kPlain, kBlue}, {kPlain, kRed}, {kPlain, kGreen}},
                                        bytes({3, 1, 2}))),
                      1, 1, Format::RGB),
              (Bytes{1, 2, 3}));
}

TEST(PicReader, decodes_any_way_of_coding_to_the_same_pixels) {
    const std::vector<std::vector<int>> colours{
        {kColors}, {kRed, kGreen | kBlue}, {kGreen, kRed | kBlue}, {kBlue, kGreen, kRed}};
    const std::vector<std::vector<int>> transparent{{kColors | kAlpha},
                                                    {kColors, kAlpha},
                                                    {kAlpha, kColors},
                                                    {kRed | kAlpha, kGreen | kBlue},
                                                    {kRed, kGreen, kBlue, kAlpha},
                                                    {kGreen | kBlue | kAlpha, kRed}};
    const RawPicture three = stripes(1501, 7, 3), four = stripes(1501, 7, 4);
    for (int first = 0; first <= 2; ++first)
        for (int others = 0; others <= 2; ++others)
            for (const auto* masks : {&colours, &transparent})
                for (const auto& list : *masks) {
                    std::vector<Packet> packets;
                    for (const int mask : list)
                        packets.push_back({packets.empty() ? first : others, mask});
                    const RawPicture& from = masks == &colours ? three : four;
                    EXPECT_TRUE(rawPixels(loadBytes(encoded(from, packets))) == from.samples)
                        << first << ' ' << others << ' ' << list[0];
                }
}

TEST(PicReader, reads_the_longest_scanlines) {
    constexpr int kWidth = 65535;
    // The shortest coding of such a scanline, and the longest: one pixel a run with a count of 16
    // bits.
    std::string shortest = bytes({128, 255, 255, 1, 2, 3, 4}), longest;
    for (int i = 0; i < kWidth; ++i) longest += bytes({128, 0, 1, 1, 2, 3, 4});
    Bytes expected;
    for (int i = 0; i < 2 * kWidth; ++i) expected.insert(expected.end(), {1, 2, 3, 4});
    for (const std::string& scanlines : {shortest + shortest, longest + longest})
        EXPECT_TRUE(bytesOf(loadBytes(picture(kWidth, 2, {{kMixed, kColors | kAlpha}}, scanlines)),
                            kWidth, 2, Format::RGBA) == expected);
}

TEST(PicReader, fields_of_a_frame_are_delivered_as_they_are) {
    for (const int fields : {0, 1, 2, 3})
        EXPECT_EQ(bytesOf(loadBytes(header(1, 2, {{kPlain, kColors}}, fields) +
                                    bytes({1, 2, 3, 4, 5, 6})),
                          1, 2, Format::RGB),
                  (Bytes{1, 2, 3, 4, 5, 6}))
            << fields;
}

TEST(PicReader, reports_what_the_header_says) {
    const TempFolder folder;
    const std::string path =
        folder.write("a.pic", header(9, 3, {{kMixed, kColors}, {kMixed, kAlpha}}));
    expectInfo(path, 9, 3, "pic", Format::RGBA);
}

TEST(PicReader, broken_headers_are_refused) {
    const auto reason = [](const std::vector<Packet>& packets, int width = 1, int height = 1,
                           const std::string& kind = "PICT") {
        return refusalOf(header(width, height, packets, 3, kind) + std::string(64, '\x01'));
    };
    const std::vector<Packet> good{{kPlain, kColors}};
    ASSERT_EQ(reason(good), "");
    EXPECT_NE(reason(good, 0, 1).find("0 x 1 pixels"), std::string::npos);
    EXPECT_NE(reason(good, 1, 0).find("1 x 0 pixels"), std::string::npos);
    EXPECT_NE(reason(good, 1, 1, "PI\x1B\x01").find("byte 88: expected \"PICT\", found \"PI??\""),
              std::string::npos);
    const std::vector<std::pair<std::vector<Packet>, std::string>> cases{
        {{{kPlain, kColors, 16}}, "byte 105: expected channels of 8 bits, found 16 bits"},
        {{{kPlain, kColors, 0}}, "channels of 8 bits, found 0 bits"},
        {{{3, kColors}}, "byte 106: expected coding 0, 1 or 2, found 0x03"},
        {{{0x12, kColors}}, "coding 0, 1 or 2, found 0x12"},  // signed samples
        {{{0x20, kColors}}, "coding 0, 1 or 2, found 0x20"},  // floating samples
        {{{kPlain, 0}}, "each once, found 0x00"},
        {{{kPlain, kColors | 0x08}}, "each once, found 0xe8"},                     // shadow
        {{{kPlain, kColors}, {kPlain, 0x04}}, "byte 111: expected channels red"},  // depth
        {{{kPlain, kColors}, {kPlain, kRed}}, "each once, found 0x80"},
        {{{kPlain, kAlpha}}, "red, green and blue channels (0xe0), found 0x10"},
        {{{kPlain, kRed | kGreen}}, "(0xe0), found 0xc0"},
        {{{kPlain, kRed | kGreen}, {kPlain, kAlpha}}, "(0xe0), found 0xd0"},
    };
    for (const auto& [packets, expected] : cases)
        EXPECT_NE(reason(packets).find(expected), std::string::npos) << expected << "\n"
                                                                     << reason(packets);
    EXPECT_NE(refusalOf(header(1, 1, good).substr(0, 103)).find("104 bytes, found 103"),
              std::string::npos);
    EXPECT_NE(refusalOf(header(1, 1, {{kPlain, kColors}, {kPlain, kAlpha}}).substr(0, 110))
                  .find("byte 108: expected the description of a channel, found 2 bytes"),
              std::string::npos);
}

TEST(PicReader, broken_scanlines_are_refused_with_their_place) {
    const auto reason = [](int coding, const std::string& scanline, const std::string& rest = {}) {
        return refusalOf(
            picture(4, 2, {{coding, kColors}}, bytes({1, 1, 2, 3, 3, 4, 5, 6}) + scanline + rest));
    };
    const auto mixed = [](const std::string& scanline) {
        return refusalOf(
            picture(4, 2, {{kMixed, kColors}},
                    bytes({130, 9, 9, 9, 0, 1, 1, 1}) + scanline + std::string(9, '\0')));
    };
    ASSERT_EQ(reason(kPure, bytes({4, 1, 1, 1})), "");
    ASSERT_EQ(mixed(bytes({131, 1, 1, 1})), "");
    EXPECT_NE(reason(kPure, bytes({5, 1, 1, 1}))
                  .find("byte 116, row 1: expected a run of 1 to 4 pixels, found 5"),
              std::string::npos);
    EXPECT_NE(reason(kPure, bytes({0, 1, 1, 1})).find("a run of 1 to 4 pixels, found 0"),
              std::string::npos);
    EXPECT_NE(reason(kPure, bytes({3, 1, 1, 1, 2, 1, 1, 1}))
                  .find("byte 120, row 1: expected a run of 1 to 1 pixels, found 2"),
              std::string::npos);
    EXPECT_NE(reason(kPure, bytes({3, 1, 1, 1}))
                  .find("byte 120, row 1: expected a run, found the end of the file"),
              std::string::npos);
    EXPECT_NE(reason(kPure, bytes({3, 1, 1, 1, 1, 2, 2}))
                  .find("expected a run of 1 pixels, found the end of the file"),
              std::string::npos);
    EXPECT_NE(mixed(bytes({132, 1, 1, 1})).find("1 to 4 pixels, found 5"), std::string::npos);
    EXPECT_NE(mixed(bytes({4, 1, 1, 1})).find("1 to 4 pixels, found 5"), std::string::npos);
    EXPECT_NE(mixed(bytes({128, 0, 0, 1, 1, 1})).find("1 to 4 pixels, found 0"), std::string::npos);
    EXPECT_NE(mixed(bytes({128, 1, 0, 1, 1, 1})).find("1 to 4 pixels, found 256"),
              std::string::npos);
    // A scanline that lies before one that is cut off.
    EXPECT_NE(
        refusalOf(picture(3, 1, {{kPlain, kColors}, {kPure, kAlpha}}, bytes({1, 2, 3}) + "456789"))
            .find("at least 123 bytes"),
        std::string::npos);
}

TEST(PicReader, cut_short_anywhere_is_refused) {
    const RawPicture from = stripes(600, 5, 4);
    for (const std::vector<Packet>& packets :
         {std::vector<Packet>{{kMixed, kColors}, {kPure, kAlpha}},
          std::vector<Packet>{{kPlain, kColors | kAlpha}}}) {
        const std::string file = encoded(from, packets);
        ASSERT_EQ(refusalOf(file), "");
        for (std::size_t length = 4; length < file.size(); length += length < 150 ? 1 : 7)
            ASSERT_NE(refusalOf(file.substr(0, length)), "") << length;
        EXPECT_NE(refusalOf(file.substr(0, file.size() - 1)), "");
    }
}

TEST(PicReader, flipped_bytes_never_hurt) {
    const std::string file = encoded(stripes(48, 32, 4), {{kMixed, kColors}, {kPure, kAlpha}});
    const long long before = peakAddressSpace();
    std::mt19937 random(20260101);
    for (int version = 0; version < 1000; ++version) {
        std::string damaged = file;
        const auto flips = 1 + random() % 6;
        for (unsigned i = 0; i < flips; ++i) {
            const std::size_t range = random() % 2 ? damaged.size() : 112;  // or the header only
            damaged[random() % range] = static_cast<char>(random());
        }
        const Image image = tryToLoad(damaged);
        EXPECT_EQ(KVRLastImageError().found.empty(), static_cast<bool>(image));
    }
    // The best ratio is that of a run: 65535 pixels of four bytes in seven. A sanitizer keeps 256
    // MiB of what was freed.
    constexpr long long kKept = 320LL << 20;
    EXPECT_LT(peakAddressSpace() - before, 40000LL * static_cast<long long>(file.size()) + kKept);
}

TEST(PicReader, the_least_size_of_a_file_is_that_of_its_longest_runs) {
    // Width, packets, and what the shortest scanline takes.
    struct Case {
        int width;
        std::vector<Packet> packets;
        int bytes;
    };
    const std::vector<Case> cases{
        {1, {{kMixed, kColors}}, 4},           {128, {{kMixed, kColors}}, 4},
        {129, {{kMixed, kColors}}, 6},         {65535, {{kMixed, kColors}}, 6},
        {255, {{kPure, kColors}}, 4},          {256, {{kPure, kColors}}, 8},
        {7, {{kPlain, kColors | kAlpha}}, 28}, {300, {{kMixed, kColors}, {kPure, kAlpha}}, 10}};
    for (const Case& one : cases) {
        const std::string head = header(one.width, 9, one.packets);
        const std::string least =
            "at least " + std::to_string(head.size() + static_cast<std::size_t>(9 * one.bytes));
        EXPECT_NE(refusalOf(head).find(least), std::string::npos) << refusalOf(head);
    }
}

TEST(PicReader, declared_sizes_are_compared_with_the_file) {
    for (const int coding : {kPlain, kPure, kMixed})
        for (const auto& [width, height] :
             {std::pair{65535, 65535}, std::pair{1, 65535}, std::pair{4096, 65535}}) {
            const long long before = peakAddressSpace();
            EXPECT_NE(
                refusalOf(picture(width, height, {{coding, kColors}}, std::string(2000, '\x01'))),
                "");
            EXPECT_LT(peakAddressSpace() - before, 16 << 20);
        }
}
