// PSD files that are not as they should be: refused with what is wrong and where.

#include "tests/image/ImageFiles.h"
#include "tests/image/PsdBuilder.h"
#include "tests/support/AddressSpace.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Planes = std::vector<PsdBuilder::Plane>;

/// A picture of 5 x 4 pixels with everything that a file can have.
std::string wholeFile(int compression, std::uint64_t version = 1) {
    PsdBuilder psd(5, 4);
    psd.version = version;
    psd.compression = compression;
    psd.resource(1005, bytes({0, 72, 0, 0, 0, 1, 0, 1, 0, 72, 0, 0, 0, 1, 0, 1}), "a name");
    psd.layerCount(-1, PsdBuilder::block("Mtrn", "", version == 2 ? 8 : 4));
    PsdBuilder::Plane plane;
    for (int i = 0; i < 20; ++i) plane.push_back(i < 10 ? 3 : i);
    return psd.planes(Planes(4, plane)).build();
}

template <typename Change>
std::string refusalWith(const Change& change) {
    PsdBuilder psd(2, 2);
    psd.planes(Planes(3, {1, 2, 3, 4}));
    EXPECT_EQ(refusalOf(psd.build()), "");
    change(psd);
    return refusalOf(psd.build());
}

void expectPart(const std::string& text, const std::string& part) {
    EXPECT_NE(text.find(part), std::string::npos) << text;
}

}  // namespace

TEST(PsdDamage, broken_headers_are_refused) {
    using Builder = PsdBuilder;
    expectPart(refusalWith([](Builder& p) { p.version = 3; }), "version 1 or 2, found 3");
    expectPart(refusalWith([](Builder& p) { p.version = 0; }), "version 1 or 2, found 0");
    expectPart(refusalWith([](Builder& p) { p.width = 0; }), "found 0 x 2 pixels");
    expectPart(refusalWith([](Builder& p) { p.height = 0; }), "found 2 x 0 pixels");
    expectPart(refusalWith([](Builder& p) { p.width = 30001; }), "1 to 30000 pixels");
    expectPart(refusalWith([](Builder& p) { p.height = 0xFFFFFFFF; }), "1 to 30000 pixels");
    expectPart(refusalWith([](Builder& p) {
                   p.version = 2;
                   p.width = 300001;
               }),
               "1 to 300000 pixels");
    expectPart(refusalWith([](Builder& p) { p.mode = 5; }), "found 5");
    expectPart(refusalWith([](Builder& p) { p.mode = 10; }), "found 10");
    expectPart(refusalWith([](Builder& p) { p.channels = 2; }), "3 to 56 channels");
    expectPart(refusalWith([](Builder& p) { p.channels = 57; }), "found 57");
    expectPart(refusalWith([](Builder& p) {
                   p.mode = 1;
                   p.channels = 0;
               }),
               "1 to 56 channels");
    expectPart(refusalWith([](Builder& p) { p.compression = 4; }), "compression 0 to 3, found 4");
    expectPart(refusalWith([](Builder& p) {
                   p.mode = 0;
                   p.depth = 1;
                   p.compression = 3;
               }),
               "compression 0 to 2");
    expectPart(refusalWith([](Builder& p) { p.mode = 2; }), "a palette of 768 bytes, found 0");
    expectPart(refusalWith([](Builder& p) {
                   p.mode = 2;
                   p.palette.assign(769, 'x');
               }),
               "a palette of 768 bytes, found 769");
}

TEST(PsdDamage, depths_that_a_mode_cannot_have_are_refused) {
    struct Case {
        int mode;
        std::vector<unsigned> depths;  // that it has
    };
    const Case cases[] = {{0, {1}},     {1, {8, 16, 32}}, {2, {8}},     {3, {8, 16, 32}},
                          {4, {8, 16}}, {7, {8, 16}},     {8, {8, 16}}, {9, {8, 16}}};
    for (const Case& c : cases)
        for (unsigned depth = 0; depth <= 64; ++depth) {
            PsdBuilder psd(1, 1, c.mode, depth);
            if (c.mode == 2) psd.palette.assign(768, 'x');
            psd.planes(Planes(4, PsdBuilder::Plane(depth / 8 + 1, 1)));
            bool allowed = false;
            for (const unsigned one : c.depths) allowed = allowed || one == depth;
            const std::string refusal = refusalOf(psd.build());
            if (allowed)
                EXPECT_EQ(refusal, "") << c.mode << ", " << depth;
            else
                expectPart(refusal, "a depth that");
        }
}

TEST(PsdDamage, sections_longer_than_the_file_are_refused) {
    PsdBuilder psd(1, 1);
    const std::string file = psd.planes({{1}, {2}, {3}}).build();
    struct Section {
        std::size_t at;
        const char* name;
    };
    for (const Section& section :
         {Section{26, "palette"}, Section{30, "resources"}, Section{34, "layers"}})
        for (const char* length : {"\xFF\xFF\xFF\xFF", "\x00\x00\x01\x00", "\x80\x00\x00\x00"}) {
            std::string damaged = file;
            damaged.replace(section.at, 4, length, 4);
            const std::string refusal = refusalOf(damaged);
            expectPart(refusal, section.name);
            expectPart(refusal, "byte " + std::to_string(section.at));
        }
    psd.version = 2;
    std::string big = psd.build();
    big.replace(34, 8, 8, '\xFF');
    expectPart(refusalOf(big), "18446744073709551615 bytes of layers");
}

TEST(PsdDamage, broken_run_lengths_are_refused) {
    const auto reason = [](const std::string& runs) {
        PsdBuilder psd(4, 2, 1);
        psd.channels = 1;
        psd.compression = 1;
        // The first row is sound.
        psd.bytes(bigEndian(2, 2) + bigEndian(runs.size(), 2) + bytes({253, 1}) + runs);
        return refusalOf(psd.build() + "and more");
    };
    EXPECT_EQ(reason(bytes({1, 1, 2, 255, 3})), "");
    expectPart(reason(bytes({252, 1})), "found one of 5 bytes");
    expectPart(reason(bytes({4, 1, 2, 3, 4, 5})), "found one of 5 bytes");
    expectPart(reason(bytes({1, 1, 2, 2, 3, 4, 5})), "found one of 3 bytes");
    expectPart(reason(bytes({3, 1, 2})), "found one of 4 bytes");
    expectPart(reason(bytes({253})), "found one of 4 bytes");
    expectPart(reason(bytes({254, 1})), "1 bytes more of the row");
    expectPart(reason(""), "4 bytes more of the row");
    expectPart(reason(std::string(5000, '\x80')), "4 bytes more of the row");
    expectPart(reason(bytes({254, 1})), "channel 0, row 1");
    PsdBuilder none(1, 1, 1);
    none.channels = 1;
    none.compression = 1;
    expectPart(refusalOf(none.bytes(std::string(2, '\0')).build() + "and more"),
               "1 bytes more of the row");
}

TEST(PsdDamage, broken_zlib_streams_are_refused) {
    PsdBuilder psd(3, 2, 1);
    psd.compression = 2;
    psd.planes({{1, 2, 3, 4, 5, 6}});
    const std::string good = psd.data;
    ASSERT_EQ(refusalOf(psd.build()), "");
    psd.data = "no zlib stream";
    expectPart(refusalOf(psd.build()), "zlib stream");
    psd.data = good;
    psd.data[9] = 'x';  // the checksum is another one now
    expectPart(refusalOf(psd.build()), "zlib stream");
    psd.data = zlibStream("12345");
    expectPart(refusalOf(psd.build()), "the end of the zlib stream");
    psd.data = zlibStream("1234567");
    expectPart(refusalOf(psd.build()), "bytes behind the last row");
    // A dictionary that nobody knows.
    psd.data = bytes({0x78, 0x20, 0, 0, 0, 0}) + std::string(20, 'x');
    expectPart(refusalOf(psd.build()), "zlib stream");
    // With a channel that is not wanted, what follows may be missing.
    psd.data = good.substr(0, good.size() - 4);
    psd.data[2] = '\0';  // not the last block
    psd.channels = 2;
    EXPECT_EQ(refusalOf(psd.build()), "");
}

TEST(PsdDamage, cut_short_anywhere_is_refused) {
    for (const std::uint64_t version : {1U, 2U})
        for (int compression = 0; compression < 4; ++compression) {
            const std::string file = wholeFile(compression, version);
            ASSERT_EQ(refusalOf(file), "");
            for (std::size_t length = 0; length < file.size(); ++length)
                EXPECT_NE(refusalOf(file.substr(0, length)), "")
                    << compression << ", " << length << " of " << file.size();
        }
}

TEST(PsdDamage, channels_that_are_not_wanted_may_be_missing) {
    PsdBuilder psd(5, 4);
    psd.planes(Planes(3, PsdBuilder::Plane(20, 7)));
    psd.channels = 56;
    EXPECT_EQ(refusalOf(psd.build()), "");
}

TEST(PsdDamage, changed_bytes_never_hurt) {
    std::mt19937 random(20260202);
    for (const std::uint64_t version : {1U, 2U})
        for (int compression = 0; compression < 4; ++compression) {
            const std::string file = wholeFile(compression, version);
            for (int i = 0; i < 2000; ++i) {
                std::string damaged = file;
                for (unsigned flips = 1 + random() % 4; flips > 0; --flips)
                    damaged[random() % damaged.size()] = static_cast<char>(random());
                const Image image = tryToLoad(damaged);
                EXPECT_EQ(KVRLastImageError().found.empty(), static_cast<bool>(image));
            }
        }
}

TEST(PsdDamage, declared_sizes_are_compared_with_the_file) {
    for (int compression = 0; compression < 4; ++compression)
        for (const unsigned depth : {8U, 16U, 32U})
            for (const std::uint64_t version : {1U, 2U}) {
                PsdBuilder psd(16000, 16000, 3, depth);
                psd.version = version;
                psd.channels = 56;
                psd.compression = compression;
                psd.bytes(std::string(4000, '\x01'));
                const long long before = peakAddressSpace();
                expectPart(refusalOf(psd.build()), "at least ");
                EXPECT_LT(peakAddressSpace() - before, 16 << 20);
            }
}

TEST(PsdDamage, channels_that_are_not_wanted_cost_no_memory) {
    // All 56 channels would be 235 MB.
    constexpr unsigned kSide = 2048;
    PsdBuilder psd(kSide, kSide, 1);
    psd.compression = 2;
    psd.planes({PsdBuilder::Plane(std::size_t{kSide} * kSide, 5)});
    psd.channels = 56;
    const std::string file = psd.build();
    static_cast<void>(tryToLoad(file));  // threads keep some memory of their own
    const long long before = peakAddressSpace();
    const Image image = loadBytes(file);
    EXPECT_TRUE(image);
    EXPECT_LT(peakAddressSpace() - before, 64 << 20);
}
