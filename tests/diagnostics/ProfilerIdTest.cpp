#include "RenderingBase/KVRRbaModel.m/src/kernels/CounterTime.h"
#include "RenderingBase/public/KVRRbaProfiler.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace {

using rb::kernels::microsecondsBetween;
using rb::kernels::nanosecondsOfCounter;
using Id = KVRRbaProfiler::Id;

// A literal is hashed when the program is compiled.
static_assert(Id("foobar").Value() == 0xbf9cf968);
static_assert(sizeof(KVRRbaProfiler::Probe) == 2 * sizeof(std::uint32_t));

std::uint32_t idAtRunTime(const std::string& name) { return Id(name.c_str()).Value(); }

TEST(ProfilerId, is_the_published_hash_of_names_of_seven_bits) {
    EXPECT_EQ(idAtRunTime(""), 0x811c9dc5U);
    EXPECT_EQ(idAtRunTime("a"), 0xe40c292cU);
    EXPECT_EQ(idAtRunTime("b"), 0xe70c2de5U);
    EXPECT_EQ(idAtRunTime("foobar"), 0xbf9cf968U);
    EXPECT_EQ(idAtRunTime("chongo was here!\n"), 0xd49930d5U);
    EXPECT_EQ(idAtRunTime("\x7f"), 0xfa0c4bceU);
}

// As the published hash, with 0xffffff00 flipped for each byte from 128 on; in brackets what the
// published hash is.
TEST(ProfilerId, takes_bytes_from_128_on_for_negative_numbers) {
    EXPECT_EQ(idAtRunTime("\x80"), 0x04f3b29fU);          // 850b939f
    EXPECT_EQ(idAtRunTime("\xe9"), 0xebf38b44U);          // 6c0b6c44
    EXPECT_EQ(idAtRunTime("\xff"), 0xf9f3a14eU);          // 7a0b824e
    EXPECT_EQ(idAtRunTime("caf\xe9"), 0xf4f5ed7cU);       // 3308be7c
    EXPECT_EQ(idAtRunTime("\xe9t\xe9"), 0xfb67177bU);     // a39e1b7b
    EXPECT_EQ(idAtRunTime("\xc3\xa9"), 0x3cfa68c1U);      // 1e9de8c1
    EXPECT_EQ(idAtRunTime("\x80\x80"), 0x535d67cdU);      // 903899cd
    static_assert(Id("caf\xe9").Value() == 0xf4f5ed7cU);  // whatever the sign of char
}

TEST(ProfilerId, is_the_same_whatever_holds_the_name) {
    constexpr char kArray[] = "foobar";
    char buffer[32] = "foobar";
    const char constBuffer[] = "foobar";
    char* const text = buffer;
    const char* const constText = buffer;
    EXPECT_EQ(Id(kArray).Value(), 0xbf9cf968U);
    EXPECT_EQ(Id(buffer).Value(), 0xbf9cf968U);
    EXPECT_EQ(Id(text).Value(), 0xbf9cf968U);
    EXPECT_EQ(Id(constText).Value(), 0xbf9cf968U);
    EXPECT_EQ(Id(&constBuffer[0]).Value(), 0xbf9cf968U);
    const Id copy = Id(constText);
    Id again = copy;
    EXPECT_EQ(Id(again).Value(), 0xbf9cf968U);
}

TEST(ProfilerId, ends_at_the_first_zero_byte) {
    EXPECT_EQ(Id("a\0b").Value(), 0xe40c292cU);
    EXPECT_EQ(Id("\0").Value(), 0x811c9dc5U);
}

TEST(CounterTime, is_a_hundred_nanoseconds_a_count_at_ten_megahertz) {
    EXPECT_EQ(nanosecondsOfCounter(0, 10'000'000), 0);
    EXPECT_EQ(nanosecondsOfCounter(1, 10'000'000), 100);
    EXPECT_EQ(nanosecondsOfCounter(123'456'789'012'345, 10'000'000), 12'345'678'901'234'500);
}

TEST(CounterTime, is_the_counter_itself_at_a_gigahertz) {
    EXPECT_EQ(nanosecondsOfCounter(0, 1'000'000'000), 0);
    EXPECT_EQ(nanosecondsOfCounter(999'999'999, 1'000'000'000), 999'999'999);
    EXPECT_EQ(nanosecondsOfCounter(9'223'372'036'854'775'807, 1'000'000'000),
              9'223'372'036'854'775'807);
}

TEST(CounterTime, is_rounded_down_at_other_frequencies) {
    EXPECT_EQ(nanosecondsOfCounter(1, 3), 333'333'333);
    EXPECT_EQ(nanosecondsOfCounter(2, 3), 666'666'666);
    EXPECT_EQ(nanosecondsOfCounter(3, 3), 1'000'000'000);
    EXPECT_EQ(nanosecondsOfCounter(3'579'546, 3'579'545), 1'000'000'279);
    // Nearly a hundred years at three gigahertz: the counter times 10^9 would not fit.
    EXPECT_EQ(nanosecondsOfCounter(9'223'000'000'000'000'001, 3'000'000'000),
              3'074'333'333'333'333'333);
}

TEST(CounterTime, cuts_durations_to_whole_microseconds_toward_zero) {
    EXPECT_EQ(microsecondsBetween(5'000, 5'999), 0);
    EXPECT_EQ(microsecondsBetween(5'000, 6'000), 1);
    EXPECT_EQ(microsecondsBetween(999, 2'998), 1);
    EXPECT_EQ(microsecondsBetween(0, 987'654'321'987), 987'654'321);
    EXPECT_EQ(microsecondsBetween(1'999, 0), -1);
    EXPECT_EQ(microsecondsBetween(999, 0), 0);
}

}  // namespace
