#include "RenderingBase/public/KVRRbaProfiler.h"

#include <gtest/gtest.h>

namespace {

KVRRbaProfiler& profiler() { return KVRRbaProfiler::GetInstance(); }

TEST(Profiler, measures_an_active_group) {
    profiler().SetActive("measures", true);
    for (int i = 0; i < 3; ++i) {
        profiler().Resume("measures", "timer");
        profiler().Pause("measures", "timer");
    }
    EXPECT_EQ(profiler().GetHitCount("measures", "timer"), 3);
    EXPECT_GE(profiler().GetAccumulatedMS("measures", "timer"), 0.0);
    EXPECT_EQ(profiler().GetHitCount("measures", "other"), 0);
}

TEST(Profiler, leaves_an_inactive_group_alone) {
    profiler().Resume("inactive", "timer");
    profiler().Pause("inactive", "timer");
    EXPECT_EQ(profiler().GetHitCount("inactive", "timer"), 0);
    EXPECT_EQ(profiler().GetAccumulatedMS("inactive", "timer"), 0.0);
    EXPECT_FALSE(profiler().IsActive("inactive"));
}

TEST(ProfilerProbe, counts_one_hit_at_the_end_of_its_block) {
    profiler().SetActive("probe", true);
    {
        const KVRRbaProfiler::Probe probe("probe", "block");
        EXPECT_EQ(profiler().GetHitCount("probe", "block"), 0);
    }
    EXPECT_EQ(profiler().GetHitCount("probe", "block"), 1);
}

}  // namespace
