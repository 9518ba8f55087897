// TIFF files that are wrong: each is refused with its reason, before anything large is allocated,
// and the codec library prints nothing.

#include "tests/image/ImageFiles.h"
#include "tests/image/TiffBuilder.h"
#include "tests/support/AddressSpace.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace rb::test;
constexpr auto kShort = TiffBuilder::kShort, kLong = TiffBuilder::kLong;

/// A good picture of 4 x 4 pixels in two strips, in which one thing is changed.
struct Change {
    const char* name;
    std::function<void(TiffBuilder&)> apply;
    const char* reason;  ///< Somewhere in the message.
};

void PrintTo(const Change& change, std::ostream* stream) { *stream << change.name; }

TiffBuilder good() {
    TiffBuilder tiff(4, 4);
    tiff.set(278, kLong, {2}).block("ABCDEFGH").block("IJKLMNOP");
    return tiff;
}

class TiffDamage : public testing::TestWithParam<Change> {};

const Change kChanges[] = {
    {"no_width", [](auto& t) { t.set(256, kLong, {0}); }, ""},
    {"wide", [](auto& t) { t.set(256, kLong, {0xFFFFFFFF}); }, ""},
    {"high", [](auto& t) { t.set(257, kLong, {0xFFFFFFFF}); }, ""},
    {"large", [](auto& t) { t.set(256, kLong, {65535}).set(257, kLong, {65535}); }, "pixels"},
    {"larger_than_file", [](auto& t) { t.set(256, kLong, {5000}); }, "at least 20000 bytes"},
    {"no_rows_in_strip", [](auto& t) { t.set(278, kLong, {0}); }, ""},
    {"too_few_strips", [](auto& t) { t.set(278, kLong, {1}); }, ""},
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
    {"no_bits", [](auto& t) { t.set(258, kShort, {0}); }, ""},
    {"many_bits", [](auto& t) { t.set(258, kShort, {65535}); }, ""},
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
    {"more_samples_than_file", [](auto& t) { t.set(277, kShort, {65535}); }, ""},
    {"log_colours_without_their_compression", [](auto& t) { t.set(262, kShort, {32844}); },
     "SGI log"},
    {"deflate_of_nothing", [](auto& t) { t.set(259, kShort, {8}); }, "strip 0"},
    {"lzw_of_nothing", [](auto& t) { t.set(259, kShort, {5}); }, "strip 0"},
    {"jpeg_of_nothing", [](auto& t) { t.set(259, kShort, {7}); }, "strip 0"},
    {"zstd_of_nothing", [](auto& t) { t.set(259, kShort, {50000}); }, "strip 0"},
    {"lzma_of_nothing", [](auto& t) { t.set(259, kShort, {34925}); }, "strip 0"},
    {"packbits_cut_short", [](auto& t) { t.set(259, kShort, {32773}); }, "strip"},
    {"old_jpeg_of_nothing",
     [](auto& t) { t.samples(3, 8).set(259, kShort, {6}).set(262, kShort, {6}); }, ""},
    {"chroma_cut_short",
     [](auto& t) {
         t.samples(3, 8).set(262, kShort, {6}).set(530, kShort, {1, 1});
     },
     ""},
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
    EXPECT_NE(message, "");
    EXPECT_NE(message.find(GetParam().reason), std::string::npos) << message;
    constexpr long long kLittle = 48 << 20;
    EXPECT_LT(peakAddressSpace() - before, kLittle);
}

INSTANTIATE_TEST_SUITE_P(Changes, TiffDamage, testing::ValuesIn(kChanges),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(TiffDamage, tiles_much_larger_than_the_picture_are_refused) {
    for (const auto& [width, height] : {std::pair{1U << 30, 16U},
                                        {16U, 1U << 30},
                                        {1U << 20, 1U << 20},
                                        {0U, 16U},
                                        {32768U, 32768U}}) {
        TiffBuilder tiff(4, 4);
        tiff.tiles(width, height).set(259, kShort, {8}).block(std::string(4000, 'x'));
        EXPECT_NE(refusalOf(tiff.build()), "") << width << " x " << height;
    }
}

TEST(TiffDamage, directories_that_are_not_there_are_refused) {
    const std::string file = good().build();
    for (std::size_t length = 4; length < file.size(); ++length)
        EXPECT_NE(refusalOf(file.substr(0, length)), "") << length;
    std::string away = file;
    away.replace(4, 4, "\xF0\xFF\xFF\xFF");
    EXPECT_NE(refusalOf(away), "");
    std::string inItself = file;
    inItself.replace(4, 4, std::string(4, '\0'));
    EXPECT_NE(refusalOf(inItself), "");
}

TEST(TiffDamage, lists_longer_than_the_file_are_refused_without_their_memory) {
    for (const unsigned tag : {273U, 279U, 320U, 34675U, 700U}) {
        TiffBuilder tiff = good();
        tiff.raw(tag, kLong, 0x3FFFFFF0, "12345678");
        const std::string file = tiff.build();
        const long long before = peakAddressSpace();
        static_cast<void>(tryToLoad(file));
        EXPECT_LT(peakAddressSpace() - before, 48 << 20) << tag;
    }
}
