#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/host/visu/KVR3DViewpoint.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

void expectVector(const KVRMathVectorf& vector, float x, float y, float z) {
    EXPECT_FLOAT_EQ(vector.GetX(), x);
    EXPECT_FLOAT_EQ(vector.GetY(), y);
    EXPECT_FLOAT_EQ(vector.GetZ(), z);
}

TEST(KVR3DViewpoint, new_one_is_conic_and_looks_along_minus_z) {
    const auto viewpoint = KVRVar<KVR3DViewpoint>::Adopt(new KVR3DViewpoint);
    EXPECT_EQ(viewpoint->GetProjectionType(), 1);
    EXPECT_EQ(viewpoint->GetFocus(), 0);
    expectVector(viewpoint->GetOrigin() - KVRMathPointf(), 0, 0, 0);
    expectVector(viewpoint->GetSightDirection(), 0, 0, -1);
    EXPECT_STREQ(viewpoint->IsA(), "KVR3DViewpoint");
    EXPECT_EQ(viewpoint->IsAKindOf("KVRBaseUnknown"), 1);
}

TEST(KVR3DViewpoint, keeps_every_projection) {
    EXPECT_EQ(KVR3DViewpoint::kParallel, 0);
    EXPECT_EQ(KVR3DViewpoint::kConic, 1);
    for (const int projection : {0, 1, 2, -1, std::numeric_limits<int>::max()})
        EXPECT_EQ(KVR3DViewpoint(projection).GetProjectionType(), projection);
}

TEST(KVR3DViewpoint, sight_direction_has_length_one_and_follows_both_points) {
    KVR3DViewpoint viewpoint(KVR3DViewpoint::kParallel, {1, 2, 3}, {4, 6, 15});
    expectVector(viewpoint.GetSightDirection(), 3.0F / 13, 4.0F / 13, 12.0F / 13);
    viewpoint.SetOrigin({4, 9, 11});
    expectVector(viewpoint.GetOrigin() - KVRMathPointf(), 4, 9, 11);
    expectVector(viewpoint.GetSightDirection(), 0, -0.6F, 0.8F);
    viewpoint.SetTarget({-2, 9, 11});
    expectVector(viewpoint.GetTarget() - KVRMathPointf(), -2, 9, 11);
    expectVector(viewpoint.GetSightDirection(), -1, 0, 0);
}

TEST(KVR3DViewpoint, sight_direction_is_zero_when_origin_and_target_coincide) {
    expectVector(KVR3DViewpoint(1, {5, 6, 7}, {5, 6, 7}).GetSightDirection(), 0, 0, 0);
}

TEST(KVR3DViewpoint, sight_direction_has_length_one_over_all_floats) {
    constexpr float kMost = std::numeric_limits<float>::max();
    constexpr float kLeast = std::numeric_limits<float>::denorm_min();
    const float third = 1 / std::sqrt(3.0F);
    expectVector(
        KVR3DViewpoint(1, {-kMost, -kMost, kMost}, {kMost, kMost, -kMost}).GetSightDirection(),
        third, third, -third);
    expectVector(KVR3DViewpoint(1, {0, 0, 0}, {0, kLeast, 0}).GetSightDirection(), 0, 1, 0);
    EXPECT_TRUE(
        std::isnan(KVR3DViewpoint(1, {0, 0, 0}, {0, INFINITY, 0}).GetSightDirection().GetY()));
}

TEST(KVR3DViewpoint, focus_is_kept_and_moves_nothing) {
    KVR3DViewpoint viewpoint(KVR3DViewpoint::kConic, {1, 2, 3}, {4, 6, 15});
    for (const float focus : {2.5F, -1.0F, 0.0F}) {
        viewpoint.SetFocus(focus);
        EXPECT_EQ(viewpoint.GetFocus(), focus);
        expectVector(viewpoint.GetOrigin() - KVRMathPointf(), 1, 2, 3);
        expectVector(viewpoint.GetTarget() - KVRMathPointf(), 4, 6, 15);
    }
}

}  // namespace
