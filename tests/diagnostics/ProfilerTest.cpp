#include "RenderingBase/public/KVRRbaProfiler.h"
#include "tests/diagnostics/CountedMemory.h"
#include "tests/diagnostics/TestClock.h"
#include "tests/support/LoadTimeEnvironment.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using rb::test::allocationsOf;
using rb::test::TestClock;

constexpr std::int64_t kMillisecondNs = 1'000'000;
constexpr std::int64_t kStartNs = 7 * kMillisecondNs;

KVRRbaProfiler& profiler() { return KVRRbaProfiler::GetInstance(); }

/// Starts each test with a clock of its own and "group" active, without timers.
class Profiler : public testing::Test {
protected:
    Profiler() {
        profiler().SetActive("group", false);
        profiler().SetActive("group", true);
    }

    void measure(const char* timer, std::int64_t durationNs) {
        profiler().Resume("group", timer);
        clock.advance(durationNs);
        profiler().Pause("group", timer);
    }

    int hits(const char* timer) const { return profiler().GetHitCount("group", timer); }
    double totalMs(const char* timer) const { return profiler().GetAccumulatedMS("group", timer); }
    std::vector<double> measuresMs(const char* timer) const {
        return profiler().GetAllMeasuresMS("group", timer);
    }

    TestClock clock{kStartNs};
};

TEST_F(Profiler, is_one_for_the_process) {
    EXPECT_EQ(&KVRRbaProfiler::GetInstance(), &profiler());
    KVRRbaProfiler* ofOtherThread = nullptr;
    std::thread([&] { ofOtherThread = &KVRRbaProfiler::GetInstance(); }).join();
    EXPECT_EQ(ofOtherThread, &profiler());
}

TEST_F(Profiler, activates_the_groups_of_the_environment_skipping_empty_names) {
    // The variable is "A,,B, C,D ,A," (see main).
    for (const char* name : {"A", "B", " C", "D "}) EXPECT_TRUE(profiler().IsActive(name)) << name;
    for (const char* name : {"", "C", "D", " B", "A,", "A,,B", "a", "A,,B, C,D ,A,"}) {
        EXPECT_FALSE(profiler().IsActive(name)) << name;
    }
}

TEST_F(Profiler, adds_up_durations_and_counts_them) {
    measure("timer", 3 * kMillisecondNs);
    clock.advance(100 * kMillisecondNs);
    measure("timer", 1'250'000);
    EXPECT_EQ(hits("timer"), 2);
    EXPECT_EQ(totalMs("timer"), 4.25);
}

TEST_F(Profiler, keeps_timers_apart) {
    profiler().Resume("group", "outer");
    clock.advance(kMillisecondNs);
    measure("inner", 2 * kMillisecondNs);
    profiler().Pause("group", "outer");
    EXPECT_EQ(totalMs("outer"), 3.0);
    EXPECT_EQ(totalMs("inner"), 2.0);
    profiler().SetActive("other group", true);
    EXPECT_EQ(profiler().GetHitCount("other group", "inner"), 0);
}

TEST_F(Profiler, counts_a_hit_of_less_than_a_microsecond_as_no_time) {
    measure("timer", 999);
    EXPECT_EQ(hits("timer"), 1);
    EXPECT_EQ(totalMs("timer"), 0.0);
    // Each duration is cut on its own.
    measure("timer", 999);
    measure("timer", 1'999);
    EXPECT_EQ(hits("timer"), 3);
    EXPECT_EQ(totalMs("timer"), 0.001);
    EXPECT_EQ(measuresMs("timer"), (std::vector<double>{0, 0, 0.001}));
}

TEST_F(Profiler, adds_the_whole_reading_of_the_clock_for_a_pause_without_resume) {
    profiler().Pause("group", "timer");
    EXPECT_EQ(hits("timer"), 1);
    EXPECT_EQ(totalMs("timer"), 7.0);
}

TEST_F(Profiler, counts_a_second_pause_from_the_same_start) {
    measure("timer", kMillisecondNs);
    clock.advance(2 * kMillisecondNs);
    profiler().Pause("group", "timer");
    EXPECT_EQ(hits("timer"), 2);
    EXPECT_EQ(measuresMs("timer"), (std::vector<double>{1, 3}));
}

TEST_F(Profiler, starts_anew_at_a_second_resume) {
    profiler().Resume("group", "timer");
    clock.advance(kMillisecondNs);
    measure("timer", 2 * kMillisecondNs);
    EXPECT_EQ(hits("timer"), 1);
    EXPECT_EQ(totalMs("timer"), 2.0);
}

TEST_F(Profiler, counts_no_hit_at_a_resume) {
    profiler().Resume("group", "timer");
    EXPECT_EQ(hits("timer"), 0);
    EXPECT_EQ(totalMs("timer"), 0.0);
    EXPECT_TRUE(measuresMs("timer").empty());
}

TEST_F(Profiler, gives_measures_in_the_order_of_recording) {
    for (const std::int64_t ms : {5, 1, 3}) measure("timer", ms * kMillisecondNs);
    measure("timer", 1'500);
    EXPECT_EQ(measuresMs("timer"), (std::vector<double>{5, 1, 3, 0.001}));
}

TEST_F(Profiler, gives_nothing_for_unknown_timers) {
    EXPECT_EQ(hits("unknown"), 0);
    EXPECT_EQ(totalMs("unknown"), 0.0);
    EXPECT_TRUE(measuresMs("unknown").empty());
    EXPECT_EQ(profiler().GetHitCount("unknown", "timer"), 0);
    EXPECT_EQ(profiler().GetAccumulatedMS("unknown", "timer"), 0.0);
    EXPECT_TRUE(profiler().GetAllMeasuresMS("unknown", "timer").empty());
    EXPECT_FALSE(profiler().IsActive("unknown"));
}

TEST_F(Profiler, leaves_inactive_groups_alone_without_memory_or_clock) {
    EXPECT_EQ(allocationsOf([] {
                  profiler().Resume("inactive", "timer");
                  profiler().Pause("inactive", "timer");
                  profiler().Reset("inactive", "timer");
                  profiler().ResetAll("inactive");
                  profiler().SetActive("inactive", false);
                  const KVRRbaProfiler::Probe probe("inactive", "timer");
              }),
              0U);
    EXPECT_EQ(clock.readings(), 0);
    profiler().SetActive("inactive", true);
    EXPECT_EQ(profiler().GetHitCount("inactive", "timer"), 0);
    EXPECT_EQ(profiler().GetAccumulatedMS("inactive", "timer"), 0.0);
    profiler().SetActive("inactive", false);
}

TEST_F(Profiler, reads_the_clock_once_a_call_in_active_groups) {
    profiler().Resume("group", "timer");
    EXPECT_EQ(clock.readings(), 1);
    profiler().Pause("group", "timer");
    EXPECT_EQ(clock.readings(), 2);
}

TEST_F(Profiler, allocates_nothing_for_a_known_timer_but_room_for_measures) {
    for (int i = 0; i < 5; ++i) measure("timer", 1);  // leaves room for three more
    EXPECT_EQ(allocationsOf([&] { measure("timer", 1); }), 0U);
}

TEST_F(Profiler, keeps_timers_when_an_active_group_is_activated) {
    measure("timer", kMillisecondNs);
    profiler().SetActive("group", true);
    EXPECT_EQ(hits("timer"), 1);
    EXPECT_EQ(totalMs("timer"), 1.0);
}

TEST_F(Profiler, forgets_timers_when_a_group_is_switched_off) {
    measure("timer", kMillisecondNs);
    profiler().SetActive("group", false);
    EXPECT_FALSE(profiler().IsActive("group"));
    EXPECT_EQ(hits("timer"), 0);
    profiler().SetActive("group", true);
    EXPECT_TRUE(profiler().IsActive("group"));
    EXPECT_EQ(hits("timer"), 0);
    EXPECT_EQ(totalMs("timer"), 0.0);
    EXPECT_TRUE(measuresMs("timer").empty());
}

TEST_F(Profiler, resets_one_timer_with_its_start) {
    measure("timer", kMillisecondNs);
    measure("other", kMillisecondNs);
    profiler().Reset("group", "timer");
    EXPECT_EQ(hits("timer"), 0);
    EXPECT_EQ(totalMs("timer"), 0.0);
    EXPECT_TRUE(measuresMs("timer").empty());
    EXPECT_EQ(hits("other"), 1);
    profiler().Pause("group", "timer");
    EXPECT_EQ(totalMs("timer"), 9.0);  // the whole reading: the start is 0 again
}

TEST_F(Profiler, makes_the_timer_that_it_resets) {
    EXPECT_GT(allocationsOf([] { profiler().Reset("group", "new"); }), 0U);
    EXPECT_EQ(allocationsOf([] { profiler().Resume("group", "new"); }), 0U);
}

TEST_F(Profiler, releases_the_memory_of_measures_at_a_reset) {
    constexpr std::size_t kMeasures = 1000;
    for (std::size_t i = 0; i < kMeasures; ++i) measure("timer", 1);
    ASSERT_EQ(measuresMs("timer").size(), kMeasures);
    const std::size_t before = rb::test::liveBytes();
    profiler().Reset("group", "timer");
    EXPECT_GE(before - rb::test::liveBytes(), kMeasures * sizeof(std::int64_t));
}

TEST_F(Profiler, forgets_the_timers_of_one_group_which_stays_active) {
    profiler().SetActive("second", true);
    profiler().Pause("second", "timer");
    measure("a", 1);
    measure("b", 1);
    profiler().ResetAll("group");
    EXPECT_EQ(hits("a"), 0);
    EXPECT_EQ(hits("b"), 0);
    EXPECT_TRUE(profiler().IsActive("group"));
    EXPECT_EQ(profiler().GetHitCount("second", "timer"), 1);
}

TEST_F(Profiler, forgets_the_timers_of_all_groups_which_stay_active) {
    profiler().SetActive("second", true);
    profiler().Pause("second", "timer");
    measure("a", 1);
    profiler().ResetAll();
    EXPECT_EQ(hits("a"), 0);
    EXPECT_EQ(profiler().GetHitCount("second", "timer"), 0);
    EXPECT_TRUE(profiler().IsActive("group"));
    EXPECT_TRUE(profiler().IsActive("second"));
    EXPECT_TRUE(profiler().IsActive("A"));
}

// Two pairs of words with equal hashes: 0x5e4daa9d and 0xe20e47d2.
TEST_F(Profiler, shares_groups_and_timers_between_names_with_equal_hashes) {
    measure("costarring", kMillisecondNs);
    measure("liquid", 2 * kMillisecondNs);
    EXPECT_EQ(hits("costarring"), 2);
    EXPECT_EQ(totalMs("liquid"), 3.0);
    profiler().SetActive("declinate", true);
    EXPECT_TRUE(profiler().IsActive("macallums"));
    profiler().SetActive("macallums", false);
    EXPECT_FALSE(profiler().IsActive("declinate"));
}

TEST_F(Profiler, takes_the_empty_name_for_a_name) {
    EXPECT_FALSE(profiler().IsActive(""));
    profiler().SetActive("", true);
    EXPECT_TRUE(profiler().IsActive(""));
    profiler().Pause("", "");
    EXPECT_EQ(profiler().GetHitCount("", ""), 1);
    profiler().SetActive("", false);
}

TEST_F(Profiler, copies_are_snapshots) {
    measure("timer", kMillisecondNs);
    KVRRbaProfiler copy = profiler();
    measure("timer", kMillisecondNs);
    EXPECT_EQ(copy.GetHitCount("group", "timer"), 1);
    EXPECT_EQ(copy.GetAllMeasuresMS("group", "timer"), std::vector<double>{1});
    copy.SetActive("group", false);
    EXPECT_EQ(hits("timer"), 2);
    copy = profiler();
    EXPECT_EQ(copy.GetHitCount("group", "timer"), 2);
}

TEST_F(Profiler, moves_with_everything_in_it) {
    static_assert(!std::is_default_constructible_v<KVRRbaProfiler>);
    measure("timer", kMillisecondNs);
    KVRRbaProfiler kept = std::move(profiler());
    EXPECT_FALSE(profiler().IsActive("group"));
    EXPECT_EQ(kept.GetHitCount("group", "timer"), 1);
    profiler() = std::move(kept);
    EXPECT_EQ(totalMs("timer"), 1.0);
}

TEST_F(Profiler, records_nothing_without_memory_and_goes_on) {
    std::optional<rb::test::NoMemory> noMemory(std::in_place);
    profiler().SetActive("no memory", true);
    profiler().Resume("group", "timer");
    profiler().Pause("group", "timer");
    profiler().Reset("group", "timer");
    noMemory.reset();
    EXPECT_FALSE(profiler().IsActive("no memory"));
    EXPECT_EQ(hits("timer"), 0);
    EXPECT_GT(allocationsOf([] { profiler().Reset("group", "timer"); }), 0U);  // there was none
}

TEST_F(Profiler, loses_a_measure_as_a_whole_when_there_is_no_room_to_keep_it) {
    measure("timer", kMillisecondNs);
    {
        const rb::test::NoMemory noMemory;
        measure("timer", kMillisecondNs);
    }
    EXPECT_EQ(hits("timer"), 1);
    EXPECT_EQ(totalMs("timer"), 1.0);
    EXPECT_EQ(measuresMs("timer"), std::vector<double>{1});
}

TEST_F(Profiler, gives_no_measures_without_memory) {
    measure("timer", kMillisecondNs);
    const rb::test::NoMemory noMemory;
    EXPECT_TRUE(measuresMs("timer").empty());
}

using ProfilerProbe = Profiler;

TEST_F(ProfilerProbe, measures_its_block) {
    {
        const KVRRbaProfiler::Probe probe("group", "block");
        clock.advance(2 * kMillisecondNs);
        EXPECT_EQ(hits("block"), 0);
    }
    clock.advance(kMillisecondNs);
    EXPECT_EQ(hits("block"), 1);
    EXPECT_EQ(totalMs("block"), 2.0);
}

TEST_F(ProfilerProbe, takes_names_that_are_made_at_run_time) {
    const std::string group = "group";
    char timer[16] = "run time";
    {
        const KVRRbaProfiler::Probe probe(group.c_str(), timer);
        clock.advance(kMillisecondNs);
        timer[0] = 'x';  // the name itself is not kept
    }
    EXPECT_EQ(totalMs("run time"), 1.0);
    EXPECT_EQ(hits("xun time"), 0);
}

TEST_F(ProfilerProbe, nests_with_timers_of_their_own) {
    {
        const KVRRbaProfiler::Probe outer("group", "outer");
        for (int i = 0; i < 3; ++i) {
            const KVRRbaProfiler::Probe inner("group", "inner");
            clock.advance(kMillisecondNs);
        }
        clock.advance(kMillisecondNs);
    }
    EXPECT_EQ(totalMs("outer"), 4.0);
    EXPECT_EQ(totalMs("inner"), 3.0);
    EXPECT_EQ(hits("inner"), 3);
}

TEST_F(ProfilerProbe, measures_nothing_when_its_group_is_switched_off_meanwhile) {
    {
        const KVRRbaProfiler::Probe probe("group", "block");
        profiler().SetActive("group", false);
    }
    profiler().SetActive("group", true);
    EXPECT_EQ(hits("block"), 0);
}

TEST_F(ProfilerProbe, adds_the_whole_reading_when_its_group_is_switched_on_meanwhile) {
    profiler().SetActive("group", false);
    {
        const KVRRbaProfiler::Probe probe("group", "block");
        clock.advance(kMillisecondNs);
        profiler().SetActive("group", true);
    }
    EXPECT_EQ(hits("block"), 1);
    EXPECT_EQ(totalMs("block"), 8.0);
}

}  // namespace

int main(int argc, char** argv) {
    rb::test::ensureLoadTimeEnvironment(argv, {{"KVRRbaProfilerActiveGroups", "A,,B, C,D ,A,"},
                                               {"KVRRbaProfilerKeepAllSamples", ""}});
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
