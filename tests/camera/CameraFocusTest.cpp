#include "RenderingBase/host/visu/KVR3DViewpoint.h"
#include "RenderingBase/public/KVRRbaCameraServices.h"

#include <cmath>
#include <csignal>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

using Camera = KVRRbaCameraServices;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kOtherProjections[] = {2, 7, -1, std::numeric_limits<int>::min()};

struct Converted {
    HRESULT status;
    double x, y;
    friend bool operator==(const Converted&, const Converted&) = default;
};

std::ostream& operator<<(std::ostream& out, const Converted& point) {
    return out << point.status << ": " << point.x << ", " << point.y;
}

/// The result, from outputs that held something else.
Converted toScreen(double rx, double ry, double width = 800, double height = 600) {
    Converted result{1, 12345, 54321};
    result.status = Camera::Convert2DFocusPointRatioToScreenCoordinates(rx, ry, width, height,
                                                                        result.x, result.y);
    return result;
}

Converted toRatio(double sx, double sy, double width = 800, double height = 600) {
    Converted result{1, 12345, 54321};
    result.status = Camera::Convert2DFocusPointScreenCoordinatesToRatio(sx, sy, width, height,
                                                                        result.x, result.y);
    return result;
}

constexpr Converted kCentre{E_FAIL, 400, 300}, kZero{E_FAIL, 0, 0};

TEST(CameraFocusPoint, ratios_have_their_origin_in_the_centre_and_grow_upwards) {
    EXPECT_EQ(toScreen(0, 0), (Converted{S_OK, 400, 300}));
    EXPECT_EQ(toScreen(0.5, 0.25), (Converted{S_OK, 600, 225}));
    EXPECT_EQ(toScreen(-0.25, -0.5), (Converted{S_OK, 300, 450}));
    EXPECT_EQ(toScreen(0.5, 0.5, 1, 3), (Converted{S_OK, 0.75, 0.75}));
    EXPECT_EQ(toRatio(400, 300), (Converted{S_OK, 0, 0}));
    EXPECT_EQ(toRatio(600, 225), (Converted{S_OK, 0.5, 0.25}));
    EXPECT_EQ(toRatio(300, 450), (Converted{S_OK, -0.25, -0.5}));
}

TEST(CameraFocusPoint, edges_are_inside) {
    EXPECT_EQ(toScreen(1, 1), (Converted{S_OK, 800, 0}));
    EXPECT_EQ(toScreen(-1, 1), (Converted{S_OK, 0, 0}));
    EXPECT_EQ(toScreen(1, -1), (Converted{S_OK, 800, 600}));
    EXPECT_EQ(toScreen(-1, -1), (Converted{S_OK, 0, 600}));
    EXPECT_EQ(toRatio(0, 600), (Converted{S_OK, -1, -1}));
    EXPECT_EQ(toRatio(0, 0), (Converted{S_OK, -1, 1}));
    EXPECT_EQ(toRatio(800, 0), (Converted{S_OK, 1, 1}));
    EXPECT_EQ(toRatio(800, 600), (Converted{S_OK, 1, -1}));
}

TEST(CameraFocusPoint, outside_gives_the_centre_and_an_error) {
    for (const double beyond : {1.01, 1.0000001, 1e300, kInfinity}) {
        EXPECT_EQ(toScreen(beyond, 0), kCentre) << beyond;
        EXPECT_EQ(toScreen(-beyond, 0), kCentre) << beyond;
        EXPECT_EQ(toScreen(0, beyond), kCentre) << beyond;
        EXPECT_EQ(toScreen(0, -beyond), kCentre) << beyond;
        EXPECT_EQ(toScreen(1, beyond), kCentre) << beyond;
    }
    for (const double beyond : {0.001, 1.0, 1e300, kInfinity}) {
        EXPECT_EQ(toRatio(-beyond, 300), kZero) << beyond;
        EXPECT_EQ(toRatio(800 + beyond, 300), kZero) << beyond;
        EXPECT_EQ(toRatio(400, -beyond), kZero) << beyond;
        EXPECT_EQ(toRatio(400, 600 + beyond), kZero) << beyond;
        EXPECT_EQ(toRatio(0, 600 + beyond), kZero) << beyond;
    }
    EXPECT_EQ(E_FAIL, static_cast<HRESULT>(0x80004005));
}

TEST(CameraFocusPoint, both_directions_are_inverse) {
    for (int i = -10; i <= 10; ++i)
        for (int j = -10; j <= 10; ++j) {
            const Converted screen = toScreen(i / 10.0, j / 10.0, 1919, 1081);
            ASSERT_EQ(screen.status, S_OK) << i << ' ' << j;
            const Converted ratio = toRatio(screen.x, screen.y, 1919, 1081);
            ASSERT_EQ(ratio.status, S_OK) << i << ' ' << j;
            EXPECT_NEAR(ratio.x, i / 10.0, 1e-15);
            EXPECT_NEAR(ratio.y, j / 10.0, 1e-15);
        }
}

TEST(CameraFocusPoint, what_is_not_a_number_is_not_outside) {
    const Converted screen = toScreen(kNaN, 0.5);
    EXPECT_EQ(screen.status, S_OK);
    EXPECT_TRUE(std::isnan(screen.x));
    EXPECT_EQ(screen.y, 150);
    EXPECT_EQ(toScreen(kNaN, 1.5), kCentre);
    const Converted ratio = toRatio(200, kNaN);
    EXPECT_EQ(ratio.status, S_OK);
    EXPECT_EQ(ratio.x, -0.5);
    EXPECT_TRUE(std::isnan(ratio.y));
    EXPECT_EQ(toRatio(-1, kNaN), kZero);
    EXPECT_EQ(toScreen(0, 0, kNaN, 600).status, S_OK);
    EXPECT_TRUE(std::isnan(toRatio(1, 300, kNaN, 600).x));
}

TEST(CameraFocusPoint, viewport_without_width_or_height) {
    EXPECT_EQ(toScreen(0.5, -0.5, 0, 0), (Converted{S_OK, 0, 0}));
    EXPECT_EQ(toScreen(7, 7, 0, 0), (Converted{S_OK, 0, 0}));
    EXPECT_TRUE(std::isnan(toScreen(kInfinity, 0, 0, 600).x));
    const Converted narrow = toRatio(0, 300, 0, 600);
    EXPECT_EQ(narrow.status, S_OK);
    EXPECT_TRUE(std::isnan(narrow.x));
    EXPECT_EQ(narrow.y, 0);
    const Converted flat = toRatio(400, 0, 800, 0);
    EXPECT_EQ(flat.status, S_OK);
    EXPECT_EQ(flat.x, 0);
    EXPECT_TRUE(std::isnan(flat.y));
    EXPECT_EQ(toRatio(1, 300, 0, 600), kZero);
    EXPECT_EQ(toRatio(400, 1, 800, 0), kZero);
}

TEST(CameraFocusPoint, viewport_of_negative_size_has_nothing_inside_on_screen) {
    EXPECT_EQ(toScreen(0, 0, -800, 600), (Converted{E_FAIL, -400, 300}));
    EXPECT_EQ(toScreen(0, 0, 800, -600), (Converted{E_FAIL, 400, -300}));
    EXPECT_EQ(toRatio(-400, 300, -800, 600), (Converted{S_OK, 0, 0}));
}

TEST(CameraFocusDistance, conic_takes_the_whole_way) {
    const KVR3DViewpoint viewpoint(KVR3DViewpoint::kConic, {1, 2, 3}, {1, 2, -100});
    EXPECT_EQ(Camera::GetFocusDistance(&viewpoint, {4, 6, 15}), 13.0F);
    EXPECT_EQ(Camera::GetFocusDistance(&viewpoint, {1, 2, 8}), 5.0F);  // behind the eye
    EXPECT_EQ(Camera::GetFocusDistance(&viewpoint, {1, 2, 3}), 0.0F);
}

TEST(CameraFocusDistance, parallel_takes_the_part_along_the_line_of_sight) {
    const KVR3DViewpoint viewpoint(KVR3DViewpoint::kParallel, {1, 2, 3}, {1, 2, -100});
    EXPECT_EQ(Camera::GetFocusDistance(&viewpoint, {4, 6, -9}), 12.0F);
    EXPECT_EQ(Camera::GetFocusDistance(&viewpoint, {4, 6, 15}), -12.0F);  // behind the eye
    EXPECT_EQ(Camera::GetFocusDistance(&viewpoint, {500, -7, 3}), 0.0F);
    // Along (2, 3, 6) / 7: 7 x 2/7 + 14 x 3/7 - 7 x 6/7 = 2.
    const KVR3DViewpoint slanted(KVR3DViewpoint::kParallel, {0, 0, 0}, {2, 3, 6});
    EXPECT_FLOAT_EQ(Camera::GetFocusDistance(&slanted, {7, 14, -7}), 2.0F);
    const KVR3DViewpoint blind(KVR3DViewpoint::kParallel, {1, 2, 3}, {1, 2, 3});
    EXPECT_EQ(Camera::GetFocusDistance(&blind, {4, 6, 15}), 0.0F);
}

TEST(CameraFocusDistance, every_other_projection_takes_the_whole_way) {
    for (const int projection : kOtherProjections) {
        const KVR3DViewpoint viewpoint(projection, {1, 2, 3}, {1, 2, -100});
        EXPECT_EQ(Camera::GetFocusDistance(&viewpoint, {4, 6, 15}), 13.0F) << projection;
    }
}

TEST(CameraFocusDistance, is_computed_in_single_precision) {
    const KVR3DViewpoint conic(KVR3DViewpoint::kConic);
    EXPECT_EQ(Camera::GetFocusDistance(&conic, {1e19F, 0, 0}), 1e19F);
    EXPECT_EQ(Camera::GetFocusDistance(&conic, {2e19F, 0, 0}),
              std::numeric_limits<float>::infinity());
    const KVR3DViewpoint parallel(KVR3DViewpoint::kParallel, {0, 0, 0}, {5, 0, 0});
    EXPECT_EQ(Camera::GetFocusDistance(&parallel, {2e19F, 0, 0}), 2e19F);
    // 1 is lost beside 2^25 when the way is computed.
    const KVR3DViewpoint far(KVR3DViewpoint::kParallel, {33554432, 0, 0}, {33554400, 0, 0});
    EXPECT_EQ(Camera::GetFocusDistance(&far, {-1, 0, 0}), 33554432.0F);
    EXPECT_TRUE(std::isnan(Camera::GetFocusDistance(&conic, {std::nanf(""), 0, 0})));
}

TEST(CameraFocusDistance, asking_leaves_the_focus_that_was_set_alone) {
    KVR3DViewpoint viewpoint(KVR3DViewpoint::kConic);
    viewpoint.SetFocus(2.5F);
    EXPECT_EQ(Camera::GetFocusDistance(&viewpoint, {0, 3, 4}), 5.0F);
    EXPECT_EQ(viewpoint.GetFocus(), 2.5F);
}

void expectPoint(const KVRMathPointf& point, float x, float y, float z) {
    EXPECT_EQ(point.GetX(), x);
    EXPECT_EQ(point.GetY(), y);
    EXPECT_EQ(point.GetZ(), z);
}

TEST(CameraSetFocusDistance, conic_keeps_the_distance_and_stays) {
    KVR3DViewpoint viewpoint(KVR3DViewpoint::kConic, {1, 2, 3}, {4, 6, 15});
    for (const float distance : {6.5F, 0.0F, -3.0F}) {
        Camera::SetFocusDistance(&viewpoint, distance);
        EXPECT_EQ(viewpoint.GetFocus(), distance);
        expectPoint(viewpoint.GetOrigin(), 1, 2, 3);
        expectPoint(viewpoint.GetTarget(), 4, 6, 15);
    }
}

TEST(CameraSetFocusDistance, parallel_moves_the_origin_along_the_line_of_sight) {
    struct Move {
        float distance;
        KVRMathPointf origin;
        float toTarget;  // |2 x 13 - distance|
    };
    const std::vector<Move> moves = {
        {13, {1, 2, 3}, 13},      {19.5F, {2.5F, 4, 9}, 6.5F}, {6.5F, {-0.5F, 0, -3}, 19.5F},
        {0, {-2, -2, -9}, 26},    {26, {4, 6, 15}, 0},         {39, {7, 10, 27}, 13},
        {-13, {-5, -6, -21}, 39},
    };
    for (const Move& move : moves) {
        KVR3DViewpoint viewpoint(KVR3DViewpoint::kParallel, {1, 2, 3}, {4, 6, 15});
        viewpoint.SetFocus(99);
        Camera::SetFocusDistance(&viewpoint, move.distance);
        expectPoint(viewpoint.GetOrigin(), move.origin.GetX(), move.origin.GetY(),
                    move.origin.GetZ());
        expectPoint(viewpoint.GetTarget(), 4, 6, 15);
        EXPECT_EQ((viewpoint.GetTarget() - viewpoint.GetOrigin()).Norm(), move.toTarget);
        EXPECT_EQ(viewpoint.GetFocus(), 99);
    }
}

TEST(CameraSetFocusDistance, parallel_again_starts_from_the_new_origin) {
    KVR3DViewpoint viewpoint(KVR3DViewpoint::kParallel, {0, 0, 0}, {0, 0, -8});
    Camera::SetFocusDistance(&viewpoint, 12);  // 2 x 8 - 12
    EXPECT_EQ(Camera::GetFocusDistance(&viewpoint, {0, 0, -8}), 4.0F);
    Camera::SetFocusDistance(&viewpoint, 5);  // 2 x 4 - 5
    EXPECT_EQ(Camera::GetFocusDistance(&viewpoint, {0, 0, -8}), 3.0F);
}

TEST(CameraSetFocusDistance, parallel_stays_when_origin_and_target_coincide) {
    KVR3DViewpoint viewpoint(KVR3DViewpoint::kParallel, {1, 2, 3}, {1, 2, 3});
    viewpoint.SetFocus(4);
    Camera::SetFocusDistance(&viewpoint, 7);
    expectPoint(viewpoint.GetOrigin(), 1, 2, 3);
    expectPoint(viewpoint.GetTarget(), 1, 2, 3);
    EXPECT_EQ(viewpoint.GetFocus(), 4);
    // So near that the squares vanish in single precision.
    KVR3DViewpoint near(KVR3DViewpoint::kParallel, {0, 0, 0}, {1e-30F, 0, 0});
    Camera::SetFocusDistance(&near, 7);
    expectPoint(near.GetOrigin(), 0, 0, 0);
}

TEST(CameraSetFocusDistance, other_projections_change_nothing) {
    for (const int projection : kOtherProjections) {
        KVR3DViewpoint viewpoint(projection, {1, 2, 3}, {4, 6, 15});
        viewpoint.SetFocus(4);
        Camera::SetFocusDistance(&viewpoint, 19.5F);
        expectPoint(viewpoint.GetOrigin(), 1, 2, 3);
        EXPECT_EQ(viewpoint.GetFocus(), 4);
        EXPECT_EQ(viewpoint.GetProjectionType(), projection);
    }
}

TEST(CameraSetFocusDistance, what_is_not_a_number_goes_through) {
    KVR3DViewpoint viewpoint(KVR3DViewpoint::kParallel, {0, 0, 0}, {0, 0, -8});
    Camera::SetFocusDistance(&viewpoint, std::nanf(""));
    EXPECT_TRUE(std::isnan(viewpoint.GetOrigin().GetZ()));
}

TEST(CameraFocusDeathTest, no_viewpoint_is_fatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(Camera::GetFocusDistance(nullptr, {0, 0, 0}), testing::KilledBySignal(SIGABRT),
                "viewpoint \\(RenderingBase/KVRRbaModel\\.m/src/KVRRbaCameraServices, line 126\\)");
    EXPECT_EXIT(Camera::SetFocusDistance(nullptr, 1), testing::KilledBySignal(SIGABRT),
                "viewpoint \\(RenderingBase/KVRRbaModel\\.m/src/KVRRbaCameraServices, line 139\\)");
}

}  // namespace
