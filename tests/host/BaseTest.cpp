#include "RenderingBase/host/base/KVREnvironment.h"
#include "RenderingBase/host/base/KVRFatalError.h"
#include "RenderingBase/host/base/KVRList.h"
#include "RenderingBase/host/base/KVRMath.h"
#include "RenderingBase/host/base/KVRMathQuaternion.h"
#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/base/ZWTSysTrace.h"
#include "tests/host/ChildProcess.h"
#include "tests/host/EnvironmentVariable.h"
#include "tests/support/TempFolder.h"

#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using rb::test::ChildProcess;
using rb::test::EnvironmentVariable;

TEST(HResult, failures_are_the_negative_codes) {
    EXPECT_TRUE(Succeeded(S_OK));
    EXPECT_TRUE(Succeeded(1));
    for (const HRESULT code : {E_FAIL, E_INVALIDARG, E_NOTIMPL, E_OUTOFMEMORY, E_NOINTERFACE, -1}) {
        EXPECT_TRUE(Failed(code));
        EXPECT_FALSE(Succeeded(code));
    }
    EXPECT_EQ(E_FAIL, -2147467259);
    EXPECT_EQ(E_INVALIDARG, -2147024809);
    EXPECT_EQ(E_NOTIMPL, -2147467263);
    EXPECT_EQ(E_OUTOFMEMORY, -2147024882);
}

TEST(KVRList, positions_count_from_one) {
    KVRListValKVRUnicodeString list;
    EXPECT_EQ(list.Size(), 0);
    list.Append("a");
    list.Append("b");
    list.Append("a");
    EXPECT_EQ(list.Size(), 3);
    EXPECT_EQ(list[1], KVRUnicodeString("a"));
    EXPECT_EQ(list[2], KVRUnicodeString("b"));
    list[2] = "c";
    EXPECT_EQ(list.Locate("a"), 1);
    EXPECT_EQ(list.Locate("c"), 2);
    EXPECT_EQ(list.Locate("b"), 0);
}

TEST(KVRList, removes_by_position) {
    KVRList<int> list;
    for (const int value : {10, 20, 30, 40}) list.Append(value);
    list.RemovePosition(1);
    list.RemovePosition(3);
    for (const int outside : {0, -1, 3, 99}) list.RemovePosition(outside);
    EXPECT_EQ(std::vector<int>(list.begin(), list.end()), (std::vector<int>{20, 30}));
    list.RemoveAll();
    EXPECT_EQ(list.Size(), 0);
    EXPECT_EQ(list.begin(), list.end());
}

TEST(KVRListDeathTest, position_outside_the_list_is_fatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    KVRList<int> list;
    list.Append(1);
    EXPECT_EXIT(list[0] = 2, testing::KilledBySignal(SIGABRT), "position outside the list");
    EXPECT_EXIT(list[2] = 2, testing::KilledBySignal(SIGABRT), "position outside the list");
}

TEST(KVRFatalErrorDeathTest, ends_the_process_with_message_file_and_line) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(KVRFatalErrorSimple("viewpoint", "Camera.cpp", 139),
                testing::KilledBySignal(SIGABRT), "viewpoint.*Camera\\.cpp.*139");
    EXPECT_EXIT(KVRFatalErrorSimple(nullptr, nullptr, 1), testing::KilledBySignal(SIGABRT),
                "line 1");
}

TEST(KVRMathVector, normalises_to_length_one) {
    KVRMathVector vector(3.0, -4.0, 12.0);  // length 13
    vector.Normalize();
    EXPECT_DOUBLE_EQ(vector.GetX(), 3.0 / 13.0);
    EXPECT_DOUBLE_EQ(vector.GetY(), -4.0 / 13.0);
    EXPECT_DOUBLE_EQ(vector.GetZ(), 12.0 / 13.0);
}

TEST(KVRMathVector, zero_stays_zero_when_normalised) {
    KVRMathVector zero;
    zero.Normalize();
    EXPECT_EQ(zero.GetX(), 0.0);
    EXPECT_EQ(zero.GetY(), 0.0);
    EXPECT_EQ(zero.GetZ(), 0.0);
}

TEST(KVRMathVectorf, computes_in_single_precision) {
    const KVRMathPointf eye(1.0F, 2.0F, 3.0F), target(4.0F, 6.0F, 15.0F);
    const KVRMathVectorf sight = target - eye;
    EXPECT_EQ(sight.GetX(), 3.0F);
    EXPECT_EQ(sight.GetY(), 4.0F);
    EXPECT_EQ(sight.GetZ(), 12.0F);
    EXPECT_EQ(sight.Norm(), 13.0F);
    EXPECT_EQ(sight * KVRMathVectorf(1.0F, -1.0F, 2.0F), 23.0F);
    EXPECT_EQ((eye + 2.0F * sight).GetZ(), 27.0F);
    EXPECT_EQ((sight - KVRMathVectorf(1.0F, 1.0F, 1.0F)).GetY(), 3.0F);
    // 1 is lost beside 2^24 in single precision, and stays in double precision.
    EXPECT_EQ(KVRMathVectorf(16777216.0F, 1.0F, 0.0F) * KVRMathVectorf(1.0F, 1.0F, 0.0F),
              16777216.0F);
}

TEST(KVRMathQuaternion, multiplies_as_hamilton_does) {
    const auto product = [](const KVRMathQuaternion& a, const KVRMathQuaternion& b) {
        std::array<double, 4> c{};
        (a * b).GetCoord(c[0], c[1], c[2], c[3], 1);
        return c;
    };
    const KVRMathQuaternion i(1, 0, 0, 0), j(0, 1, 0, 0), k(0, 0, 1, 0), one(0, 0, 0, 1);
    using Coord = std::array<double, 4>;
    EXPECT_EQ(product(i, j), (Coord{0, 0, 1, 0}));
    EXPECT_EQ(product(j, i), (Coord{0, 0, -1, 0}));
    EXPECT_EQ(product(j, k), (Coord{1, 0, 0, 0}));
    EXPECT_EQ(product(k, i), (Coord{0, 1, 0, 0}));
    EXPECT_EQ(product(i, i), (Coord{0, 0, 0, -1}));
    EXPECT_EQ(product(one, k), (Coord{0, 0, 1, 0}));
    // (1 + 2i + 3j + 4k)(5 + 6i + 7j + 8k) = -60 + 12i + 30j + 24k
    EXPECT_EQ(product({2, 3, 4, 1, 1}, {6, 7, 8, 5, 1}), (Coord{12, 30, 24, -60}));
}

TEST(KVRMathQuaternion, conjugate_negates_the_vector_part_in_place) {
    KVRMathQuaternion original(1, -2, 3, 4, 1);
    KVRMathQuaternion copy(original);
    copy.Conjugate();
    double x = 0, y = 0, z = 0, s = 0;
    copy.GetCoord(x, y, z, s);
    EXPECT_EQ((std::array{x, y, z, s}), (std::array{-1.0, 2.0, -3.0, 4.0}));
    original.GetCoord(x, y, z, s);
    EXPECT_EQ((std::array{x, y, z, s}), (std::array{1.0, -2.0, 3.0, 4.0}));
}

TEST(KVRGetEnv, tells_undefined_from_empty) {
    const EnvironmentVariable undefined("RB_TEST_UNDEFINED", nullptr);
    const EnvironmentVariable empty("RB_TEST_EMPTY", "");
    const EnvironmentVariable full("RB_TEST_FULL", "a;b");
    EXPECT_EQ(KVRGetEnv("RB_TEST_UNDEFINED"), nullptr);
    EXPECT_EQ(KVRGetEnv(nullptr), nullptr);
    EXPECT_STREQ(KVRGetEnv("RB_TEST_EMPTY"), "");
    EXPECT_STREQ(KVRGetEnv("RB_TEST_FULL"), "a;b");
}

TEST(KVRGetTempDirectory, follows_the_environment_and_has_no_separator_at_its_end) {
    const rb::test::TempFolder folder;
    ChildProcess child({RB_HOST_TEST_PROGRAM, "temp-directory"},
                       {{"TMPDIR", folder.path().string() + "//"}});
    ASSERT_EQ(child.wait(), 0);
    EXPECT_EQ(child.output(), folder.path().string());
}

TEST(KVRRegisterExitCallback, phases_ascend_and_the_last_registered_runs_first) {
    ChildProcess child({RB_HOST_TEST_PROGRAM, "exit-callbacks"});
    EXPECT_EQ(child.wait(), 7);  // the process's own exit status stands
    EXPECT_EQ(child.output(),
              "main ends\n"
              "first(1)\n"
              "second(3)\nsecond(3)\nfirst(3)\n"
              "registers(5)\nlate(5)\n"
              "first(9)\n"
              "static destroyed\n");
}

TEST(ZWTSysTrace, is_off_unless_its_name_is_listed) {
    {
        const EnvironmentVariable unset("ZWTSysTraces", nullptr);
        EXPECT_EQ(ZWTSysTraceCreate("One"), nullptr);
    }
    for (const char* list : {"", ";", "Two", "One2;OneOne", "one", " One"}) {
        const EnvironmentVariable variable("ZWTSysTraces", list);
        EXPECT_EQ(ZWTSysTraceCreate("One"), nullptr) << list;
        EXPECT_EQ(ZWTSysTraceCreate(""), nullptr) << list;
        EXPECT_EQ(ZWTSysTraceCreate(nullptr), nullptr) << list;
    }
    for (const char* list : {"One", "Two;One", "One;Two", ";;One;"}) {
        const EnvironmentVariable variable("ZWTSysTraces", list);
        EXPECT_NE(ZWTSysTraceCreate("One"), nullptr) << list;
    }
}

TEST(ZWTSysTrace, writes_lines_to_standard_error_only) {
    const EnvironmentVariable variable("ZWTSysTraces", "Resolver");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    {
        const auto trace = ZWTSysTraceCreate("Resolver");
        ASSERT_NE(trace, nullptr);
        trace->Info("Resolving %s ...", "a%s.png");
        trace->Error("Resolver.cpp", 37, "Found into %s path", "graphic");
    }
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_NE(errors.find("Resolver: Resolving a%s.png ...\n"), std::string::npos) << errors;
    EXPECT_NE(errors.find("Resolver: Resolver.cpp, line 37: Found into graphic path\n"),
              std::string::npos)
        << errors;
}
