#pragma once

/// @file  Colours in CIE Lab and what they are in sRGB, without any reader or colour engine.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <gtest/gtest.h>
#include <vector>

namespace rb::test {

/// CIE Lab (D50) to sRGB by the book: CIE 15, Bradford-adapted IEC 61966-2-1. From 0 to 255.
inline std::array<double, 3> sRgbOfLab(double l, double a, double b) {
    const auto cube = [](double t) {
        return t > 6.0 / 29 ? t * t * t : 3 * 36.0 / 841 * (t - 4.0 / 29);
    };
    const double fy = (l + 16) / 116;
    const double x = 0.96422 * cube(fy + a / 500), y = cube(fy), z = 0.82521 * cube(fy - b / 200);
    std::array<double, 3> rgb{3.1338561 * x - 1.6168667 * y - 0.4906146 * z,
                              -0.9787684 * x + 1.9161415 * y + 0.0334540 * z,
                              0.0719453 * x - 0.2289914 * y + 1.4052427 * z};
    for (double& v : rgb) {
        const double linear = std::clamp(v, 0.0, 1.0);
        v = 255 *
            (linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055);
    }
    return rgb;
}

struct LabColor {
    double l, a, b;
};

/// White, black, grey and others, all within sRGB.
inline constexpr std::array<LabColor, 6> kLabColors{
    {{100, 0, 0}, {0, 0, 0}, {53.59, 0, 0}, {60, 30, 40}, {70, -40, 20}, {40, 10, -50}}};

/// All of @p colors, members L, a and b, one after the other.
template <typename Colors>
std::vector<double> sRgbOfAll(const Colors& colors) {
    std::vector<double> values;
    for (const auto& [l, a, b] : colors)
        for (const double value : sRgbOfLab(l, a, b)) values.push_back(value);
    return values;
}

inline void expectNear(const std::vector<int>& found, const std::vector<double>& expected,
                       double tolerance) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i)
        EXPECT_NEAR(found[i], expected[i], tolerance) << i;
}

}  // namespace rb::test
