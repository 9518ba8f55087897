#include "tests/diagnostics/Probe.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using rb::test::probed;

std::string activeOf(const std::string& groups) {
    return probed("groups", {{"KVRRbaProfilerActiveGroups", groups}});
}

TEST(ProfilerEnvironment, activates_no_group_when_undefined_or_empty) {
    EXPECT_EQ(probed("groups", {}), "active:\n");
    EXPECT_EQ(activeOf(""), "active:\n");
    EXPECT_EQ(activeOf(","), "active:\n");
    EXPECT_EQ(activeOf(",,,"), "active:\n");
}

TEST(ProfilerEnvironment, activates_every_group_between_commas) {
    EXPECT_EQ(activeOf("A"), "active: <A>\n");
    EXPECT_EQ(activeOf("A,,B"), "active: <A> <B>\n");
    EXPECT_EQ(activeOf(",B,B,"), "active: <B>\n");
}

TEST(ProfilerEnvironment, takes_blanks_and_other_separators_for_parts_of_a_name) {
    EXPECT_EQ(activeOf(" A, "), "active: < > < A>\n");
    EXPECT_EQ(activeOf("A;B"), "active: <A;B>\n");
    EXPECT_EQ(activeOf("A\nB"), "active:\n");
}

TEST(ProfilerEnvironment, keeps_no_measures_when_undefined) {
    EXPECT_EQ(probed("samples", {}), "3 hits, 0 kept\n");
}

TEST(ProfilerEnvironment, keeps_measures_when_defined_whatever_the_value) {
    for (const char* value : {"1", "", "0", "false"}) {
        EXPECT_EQ(probed("samples", {{"KVRRbaProfilerKeepAllSamples", value}}),
                  "3 hits, 3 kept, which add up to the time\n")
            << value;
    }
}

TEST(ProfilerEnvironment, decides_at_the_first_pause_whether_measures_are_kept) {
    EXPECT_EQ(probed("samples-defined-late", {}), "3 hits, 3 kept, which add up to the time\n");
    EXPECT_EQ(probed("samples-defined-too-late", {}), "3 hits, 0 kept\n");
    EXPECT_EQ(probed("samples-undefined-too-late", {{"KVRRbaProfilerKeepAllSamples", "1"}}),
              "3 hits, 3 kept, which add up to the time\n");
}

}  // namespace
