#include "RenderingBase/public/KVRRbaCameraServices.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

namespace {

using Camera = KVRRbaCameraServices;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
/// A few roundings of an argument near 1, seen through the logarithm.
constexpr double kTolerance = 2e-15;

// Expectations are literal: worked out with 60 decimal digits.

TEST(CameraExposure, value_of_a_sensitivity_has_default_time_and_aperture) {
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(1), -6.522032127527896, kTolerance);
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(25), -1.8781759377531717, kTolerance);
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(100), 0.12182406224682825, kTolerance);
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(400), 2.1218240622468283, kTolerance);
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(6400), 6.121824062246828, kTolerance);
    EXPECT_EQ(Camera::ComputeEVValuefromISO(100),
              Camera::ComputeEVValuefromISO(100, 0.006000000052154064, 8.0));
    // The default time is the float next to 0.006 and not the double.
    EXPECT_EQ(Camera::kDefaultExposureTime, 0.006000000052154064);
    EXPECT_EQ(Camera::kDefaultAperture, 8.0);
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(100, 0.006, 8.0), 0.12182407478722979, kTolerance);
}

TEST(CameraExposure, value_follows_time_and_aperture) {
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(400, 1.0 / 60, 5.6), 1.6770392321143341, kTolerance);
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(100, 1.0 / 125, 16), -2.293213424491614, kTolerance);
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(100, 1, 1), -1.258997709153701, kTolerance);
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(100, 0.006, -2.8), 3.1509704204467464, kTolerance);
}

TEST(CameraExposure, value_is_computed_in_one_order) {
    const double constant = std::exp2(-1.4) * 18.0 / 1632.4;
    EXPECT_EQ(Camera::ComputeEVValuefromISO(100),
              std::log2(constant / (0.006000000052154064 * 8.0 * 8.0) * 100));
    // (t N) N stays finite where N N would not: log2(K 1e-200 1e100).
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(1e100, 1e-200, 1e200), -340.0956633876647, 1e-12);
    // K / (t N N) overflows before the sensitivity can make it small.
    EXPECT_EQ(Camera::ComputeEVValuefromISO(1e-100, 1e-200, 1e-60), kInfinity);
    // And the denominator vanishes: t N is less than the least double.
    EXPECT_EQ(Camera::ComputeEVValuefromISO(1, 1e-200, 1e-200), kInfinity);
}

TEST(CameraExposure, value_of_no_sensitivity_is_the_exponent) {
    for (const double iso : {0.0, -0.0, -1e-300, -100.0, -kInfinity}) {
        EXPECT_EQ(Camera::ComputeEVValuefromISO(iso), -1.4) << iso;
        EXPECT_EQ(Camera::ComputeEVValuefromISO(iso, 0, 0), -1.4) << iso;
        EXPECT_EQ(Camera::ComputeEVValuefromISO(iso, kNaN, kNaN), -1.4) << iso;
    }
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(1e-300), -1003.1004605937366, 1e-12);
}

TEST(CameraExposure, aperture_of_zero_is_replaced_in_one_direction_only) {
    for (const double zero : {0.0, -0.0}) {
        EXPECT_EQ(Camera::ComputeEVValuefromISO(250, 0.02, zero),
                  Camera::ComputeEVValuefromISO(250, 0.02, 8));
        EXPECT_EQ(Camera::ComputeISOfromEVValue(3, 0.02, zero), 0.0);
    }
    EXPECT_NE(Camera::ComputeEVValuefromISO(250, 0.02, 0),
              Camera::ComputeEVValuefromISO(250, 0.02, 8.001));
    EXPECT_GT(Camera::ComputeISOfromEVValue(3, 0.02, 8), 0.0);
}

TEST(CameraExposure, sensitivity_of_a_value) {
    EXPECT_DOUBLE_EQ(Camera::ComputeISOfromEVValue(0), 91.90249524346346);
    EXPECT_DOUBLE_EQ(Camera::ComputeISOfromEVValue(1), 183.80499048692693);
    EXPECT_DOUBLE_EQ(Camera::ComputeISOfromEVValue(-1.4), 34.82453363604016);
    EXPECT_DOUBLE_EQ(Camera::ComputeISOfromEVValue(10), 94108.15512930659);
    EXPECT_DOUBLE_EQ(Camera::ComputeISOfromEVValue(0, 1, 1), 239.32941261618583);
    EXPECT_DOUBLE_EQ(Camera::ComputeISOfromEVValue(-3, 0.5, 2), 59.83235315404646);
    EXPECT_DOUBLE_EQ(Camera::ComputeISOfromEVValue(0.5, 1.0 / 60, 5.6), 176.90327635875443);
    EXPECT_EQ(Camera::ComputeISOfromEVValue(2),
              Camera::ComputeISOfromEVValue(2, 0.006000000052154064, 8.0));
    EXPECT_NE(Camera::ComputeISOfromEVValue(2), Camera::ComputeISOfromEVValue(2, 0.006, 8.0));
}

TEST(CameraExposure, sensitivity_is_computed_in_one_order) {
    EXPECT_EQ(Camera::ComputeISOfromEVValue(0, 1, 1), 1 / (std::exp2(-1.4) * 18.0 / 1632.4));
    // (t N) N is a number where N N vanishes, and so is 2^ev times it, where 2^ev t overflows.
    EXPECT_DOUBLE_EQ(Camera::ComputeISOfromEVValue(1000, 1e300, 1e-170), 2.5644352557107676e263);
    // t N N / K overflows before 2^ev can make it small.
    EXPECT_EQ(Camera::ComputeISOfromEVValue(-100, 1e307, 1), kInfinity);
}

TEST(CameraExposure, both_directions_are_inverse) {
    for (const double iso : {1e-9, 0.8, 50.0, 100.0, 3200.0, 409600.0, 1e12})
        for (const double time : {1e-5, 1.0 / 8000, 0.006, 1.0, 30.0, 3600.0})
            for (const double aperture : {0.7, 1.4, 8.0, 22.0, 64.0, -4.0}) {
                const double ev = Camera::ComputeEVValuefromISO(iso, time, aperture);
                EXPECT_NEAR(Camera::ComputeISOfromEVValue(ev, time, aperture) / iso, 1.0, 4e-14)
                    << iso << ' ' << time << ' ' << aperture;
            }
    EXPECT_NEAR(Camera::ComputeISOfromEVValue(Camera::ComputeEVValuefromISO(640)), 640, 1e-11);
}

TEST(CameraExposure, a_stop_is_one) {
    const double ev = Camera::ComputeEVValuefromISO(100, 0.01, 4);
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(200, 0.01, 4), ev + 1, kTolerance);
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(100, 0.005, 4), ev + 1, kTolerance);
    EXPECT_NEAR(Camera::ComputeEVValuefromISO(100, 0.01, 2), ev + 2, kTolerance);
}

TEST(CameraExposure, what_is_not_finite_goes_through) {
    EXPECT_TRUE(std::isnan(Camera::ComputeEVValuefromISO(kNaN)));
    EXPECT_TRUE(std::isnan(Camera::ComputeEVValuefromISO(100, kNaN, 8)));
    EXPECT_TRUE(std::isnan(Camera::ComputeEVValuefromISO(100, 0.006, kNaN)));
    EXPECT_TRUE(std::isnan(Camera::ComputeEVValuefromISO(100, -1, 8)));
    EXPECT_EQ(Camera::ComputeEVValuefromISO(kInfinity), kInfinity);
    EXPECT_EQ(Camera::ComputeEVValuefromISO(100, 0, 8), kInfinity);
    EXPECT_EQ(Camera::ComputeEVValuefromISO(100, kInfinity, 8), -kInfinity);
    EXPECT_EQ(Camera::ComputeEVValuefromISO(100, 0.006, kInfinity), -kInfinity);
    EXPECT_TRUE(std::isnan(Camera::ComputeISOfromEVValue(kNaN)));
    EXPECT_EQ(Camera::ComputeISOfromEVValue(kInfinity), kInfinity);
    EXPECT_EQ(Camera::ComputeISOfromEVValue(-kInfinity), 0.0);
    EXPECT_EQ(Camera::ComputeISOfromEVValue(2000), kInfinity);
    EXPECT_TRUE(std::isnan(Camera::ComputeISOfromEVValue(2000, 0.006, 0)));  // infinity times 0
    EXPECT_LT(Camera::ComputeISOfromEVValue(0, -1, 8), 0.0);
}

TEST(CameraExposure, first_use_by_several_threads_gives_one_constant) {
    constexpr std::size_t kThreads = 8;
    std::array<double, 2 * kThreads> results{};
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kThreads; ++i)
        threads.emplace_back([&results, i] {
            results[2 * i] = Camera::ComputeEVValuefromISO(100);
            results[2 * i + 1] = Camera::ComputeISOfromEVValue(0);
        });
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < kThreads; ++i) {
        EXPECT_NEAR(results[2 * i], 0.12182406224682825, kTolerance);
        EXPECT_DOUBLE_EQ(results[2 * i + 1], 91.90249524346346);
    }
}

struct ColourCase {
    double value;
    std::array<double, 6> results;
};

TEST(CameraColour, parameters_are_factors_around_one_or_offsets_around_zero) {
    const std::vector<ColourCase> cases = {
        {0, {1, 1, 0, 0, 1, 0}},
        {1, {1.00333, 1.02, 0.0025, 0.005, 1.01, 0.01}},
        {12.5, {1.041625, 1.25, 0.03125, 0.0625, 1.125, 0.125}},
        {50, {1.1665, 2, 0.125, 0.25, 1.5, 0.5}},
        {100, {1.333, 3, 0.25, 0.5, 2, 1}},
        {-100, {0.667, -1, -0.25, -0.5, 0, -1}},
    };
    for (const ColourCase& colour : cases)
        for (int p = 0; p < 6; ++p)
            EXPECT_DOUBLE_EQ(Camera::convertToRenderingParam(
                                 colour.value, static_cast<ColorCorrectionParameter>(p)),
                             colour.results[static_cast<std::size_t>(p)])
                << colour.value << ' ' << p;
}

TEST(CameraColour, parameters_are_numbered_from_zero) {
    EXPECT_EQ(static_cast<int>(ColorCorrectionParameter::Factor0), 0);
    EXPECT_EQ(static_cast<int>(ColorCorrectionParameter::Factor1), 1);
    EXPECT_EQ(static_cast<int>(ColorCorrectionParameter::Offset2), 2);
    EXPECT_EQ(static_cast<int>(ColorCorrectionParameter::Offset3), 3);
    EXPECT_EQ(static_cast<int>(ColorCorrectionParameter::Factor4), 4);
    EXPECT_EQ(static_cast<int>(ColorCorrectionParameter::Offset5), 5);
}

TEST(CameraColour, other_parameters_give_zero) {
    for (const int other : {6, 7, -1, std::numeric_limits<int>::max()})
        for (const double value : {0.0, 50.0, -1.0, kNaN})
            EXPECT_EQ(Camera::convertToRenderingParam(value,
                                                      static_cast<ColorCorrectionParameter>(other)),
                      0.0);
    EXPECT_TRUE(
        std::isnan(Camera::convertToRenderingParam(kNaN, ColorCorrectionParameter::Factor1)));
    EXPECT_EQ(Camera::convertToRenderingParam(-kInfinity, ColorCorrectionParameter::Offset5),
              -kInfinity);
}

}  // namespace
