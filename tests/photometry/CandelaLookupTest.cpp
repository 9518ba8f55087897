// Intensities in single directions: worked out by hand, and by a second implementation in double
// precision that folds and searches in other ways.

#include "tests/photometry/Luminaires.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <utility>

namespace rb::test {
namespace {

constexpr float kDegrees = 57.295776F;
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// An angle in radians that comes out as exactly @p degrees, when there is one.
std::optional<float> exactRadiansOf(float degrees) {
    float radians = degrees / kDegrees;
    for (int i = 0; i < 8; ++i) radians = std::nextafter(radians, -1.0F);
    for (int i = 0; i < 16; ++i, radians = std::nextafter(radians, 10.0F))
        if (radians * kDegrees == degrees) return radians;
    return {};
}

float radiansOf(float degrees) {
    const auto radians = exactRadiansOf(degrees);
    EXPECT_TRUE(radians) << "no angle comes out as " << degrees << " degrees";
    return radians.value_or(0);
}

/// The intensity at angles of the file, of type C.
float at(const Luminaire& luminaire, float vertical, float horizontal) {
    return kernels::candelaAt(luminaire.grid(), radiansOf(180 - vertical), radiansOf(horizontal));
}

/// The same of types A and B, which count from the middle.
float atSigned(const Luminaire& luminaire, float vertical, float horizontal) {
    return at(luminaire, vertical + 90, horizontal + 180);
}

Luminaire typeC(Floats vertical, Floats horizontal, Floats candela) {
    return {"", 1, std::move(vertical), std::move(horizontal), std::move(candela), 1};
}

/// Quarters and halves between small numbers are exact; other ways are rounded.
constexpr float kRounded = 1e-4F;

}  // namespace

TEST(CandelaLookup, is_interpolated_between_vertical_angles_of_one_run) {
    const Luminaire axial = typeC({0, 90, 180}, {0}, {30, 20, 10});
    EXPECT_EQ(at(axial, 0, 0), 30);
    EXPECT_EQ(at(axial, 45, 0), 25);
    EXPECT_EQ(at(axial, 90, 0), 20);
    EXPECT_EQ(at(axial, 135, 0), 15);
    EXPECT_EQ(at(axial, 180, 0), 10);
    for (const float h : {10.0F, 90.0F, 200.0F, 359.0F}) EXPECT_EQ(at(axial, 45, h), 25) << h;
}

TEST(CandelaLookup, is_axial_when_the_last_horizontal_angle_is_nothing_much) {
    const Floats candela{30, 20, 10, 3, 2, 1};
    EXPECT_EQ(at(typeC({0, 90, 180}, {0, 1e-7F}, candela), 45, 77), 25);
    EXPECT_EQ(at(typeC({0, 90, 180}, {-90, 0}, candela), 45, 77), 25);  // the first run
    EXPECT_EQ(at(typeC({0, 90, 180}, {1e-7F}, candela), 45, 77), 0);    // it begins behind 0
    EXPECT_EQ(at(typeC({0, 90, 180}, {-5}, candela), 45, 77), 0);       // it ends before 0
    // The next number above the limit makes a quadrant of it, and 77 lies outside.
    EXPECT_EQ(at(typeC({0, 90, 180}, {0, 1.2e-7F}, candela), 45, 77), 0);
}

TEST(CandelaLookup, is_the_same_in_all_quadrants) {
    const Luminaire quadrant = typeC({0, 90}, {0, 90}, {10, 20, 30, 40});
    EXPECT_EQ(at(quadrant, 0, 0), 10);
    EXPECT_EQ(at(quadrant, 90, 0), 20);
    EXPECT_EQ(at(quadrant, 0, 90), 30);
    EXPECT_EQ(at(quadrant, 90, 90), 40);
    EXPECT_EQ(at(quadrant, 0, 180), 10);
    EXPECT_EQ(at(quadrant, 0, 270), 30);
    EXPECT_EQ(at(quadrant, 0, 360), 10);
    for (const float h : {45.0F, 135.0F, 225.0F, 315.0F}) EXPECT_EQ(at(quadrant, 45, h), 25) << h;
    for (const float h : {30.0F, 150.0F, 210.0F, 330.0F})
        EXPECT_NEAR(at(quadrant, 0, h), 10 + 20.0F / 3, kRounded) << h;
    EXPECT_EQ(at(quadrant, 91, 45), 0);
    // Behind the last angle of a smaller sector nothing is lit.
    const Luminaire sector = typeC({0, 90}, {0, 45}, {10, 20, 30, 40});
    EXPECT_EQ(at(sector, 0, 45), 30);
    EXPECT_EQ(at(sector, 0, 60), 0);
    EXPECT_EQ(at(sector, 0, 120), 0);
    EXPECT_EQ(at(sector, 0, 135), 30);
}

TEST(CandelaLookup, is_a_quadrant_up_to_90_and_a_half_circle_from_the_next_number_on) {
    const Floats candela{10, 20, 30, 40};
    // In single precision this is 90.
    EXPECT_EQ(at(typeC({0, 90}, {0, static_cast<float>(90.0000001)}, candela), 45, 0), 15);
    EXPECT_EQ(at(typeC({0, 90}, {0, std::nextafter(90.0F, 91.0F)}, candela), 45, 0), 0);
}

TEST(CandelaLookup, is_the_same_on_both_sides_and_black_at_the_borders) {
    const Luminaire half = typeC({0, 90, 180}, {0, 90, 180}, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_EQ(at(half, 90, 90), 5);
    EXPECT_EQ(at(half, 90, 270), 5);
    EXPECT_EQ(at(half, 45, 45), 3);
    EXPECT_EQ(at(half, 45, 315), 3);
    EXPECT_EQ(at(half, 135, 135), 7);
    EXPECT_EQ(at(half, 135, 225), 7);
    for (const float v : {0.0F, 45.0F, 90.0F, 180.0F}) {
        EXPECT_EQ(at(half, v, 0), 0) << v;
        EXPECT_EQ(at(half, v, 180), 0) << v;
        EXPECT_EQ(at(half, v, 360), 0) << v;
    }
    for (const float h : {0.0F, 45.0F, 90.0F, 300.0F}) {
        EXPECT_EQ(at(half, 0, h), 0) << h;
        EXPECT_EQ(at(half, 180, h), 0) << h;
    }
    EXPECT_GT(kernels::candelaAt(half.grid(), 1.5F, 1e-6F), 0);
}

TEST(CandelaLookup, is_folded_behind_when_angles_run_from_90_to_270) {
    const Luminaire behind = typeC({0, 90}, {90, 180, 270}, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(at(behind, 0, 90), 1);
    EXPECT_EQ(at(behind, 0, 180), 3);
    EXPECT_EQ(at(behind, 0, 270), 5);
    EXPECT_EQ(at(behind, 0, 0), 3);
    EXPECT_EQ(at(behind, 0, 360), 3);
    EXPECT_EQ(at(behind, 0, 45), at(behind, 0, 135));
    EXPECT_EQ(at(behind, 0, 45), 2);
    EXPECT_EQ(at(behind, 0, 315), at(behind, 0, 225));
    EXPECT_EQ(at(behind, 45, 315), 4.5F);
    // Angles from 0 to 270 count as such a list too.
    const Luminaire most = typeC({0, 90}, {0, 90, 180, 270}, {1, 1, 2, 2, 3, 3, 4, 4});
    EXPECT_EQ(at(most, 45, 0), 3);
}

TEST(CandelaLookup, runs_around_a_full_circle) {
    const Luminaire full = typeC({0, 90, 180}, {0, 90, 180, 270, 360},
                                 {1, 2, 3, 5, 6, 7, 9, 10, 11, 13, 14, 15, 1, 2, 3});
    EXPECT_EQ(at(full, 0, 0), 1);
    EXPECT_EQ(at(full, 90, 90), 6);
    EXPECT_EQ(at(full, 90, 270), 14);
    EXPECT_EQ(at(full, 180, 180), 11);
    EXPECT_EQ(at(full, 45, 45), 3.5F);
    EXPECT_EQ(at(full, 45, 315), 7.5F);
    EXPECT_EQ(at(full, 90, 360), 2);
}

TEST(CandelaLookup, goes_on_beyond_the_last_angle_of_a_circle_that_is_not_closed) {
    // Between 330 and the first angle, 0: (345 - 330) / (0 - 330).
    const Luminaire open = typeC({0, 90}, {0, 120, 240, 330}, {10, 10, 20, 20, 30, 30, 40, 40});
    constexpr float kWay = -15.0F / 330;
    EXPECT_NEAR(at(open, 45, 345), (1 - kWay) * 40 + kWay * 10, kRounded);
    // Before the first angle: (50 - 100) / 100.
    const Luminaire late = typeC({0, 90}, {100, 200, 300}, {10, 10, 20, 20, 30, 30});
    EXPECT_EQ(at(late, 45, 50), 1.5F * 10 - 0.5F * 20);
}

TEST(CandelaLookup, of_one_vertical_angle_is_no_number_there) {
    EXPECT_TRUE(std::isnan(at(typeC({90}, {0}, {7}), 90, 0)));
    EXPECT_EQ(at(typeC({90}, {0}, {7}), 91, 0), 0);
    // Without an axis there is no next angle, so nothing is lit.
    EXPECT_EQ(at(typeC({90}, {0, 90}, {7, 8}), 90, 45), 0);
    EXPECT_EQ(at(typeC({90}, {0, 360}, {7, 8}), 90, 45), 0);
}

TEST(CandelaLookup, counts_from_the_middle_for_types_a_and_b) {
    Luminaire luminaire{"", 2, {-90, 0, 90}, {-90, 0, 90}, {1, 2, 3, 4, 5, 6, 7, 8, 9}, 1};
    for (const int type : {2, 3}) {
        luminaire.type = type;
        EXPECT_EQ(atSigned(luminaire, 0, 0), 5);
        EXPECT_EQ(atSigned(luminaire, -90, -90), 1);
        EXPECT_EQ(atSigned(luminaire, -45, -45), 3);
        EXPECT_EQ(atSigned(luminaire, 45, 45), 7);
        EXPECT_EQ(atSigned(luminaire, 90, 90), 9);
        EXPECT_EQ(atSigned(luminaire, 0, 91), 0);
        EXPECT_EQ(atSigned(luminaire, 0, -91), 0);
    }
}

TEST(CandelaLookup, folds_vertical_angles_of_types_a_and_b_and_never_horizontal_ones) {
    const Luminaire upper{"", 3, {0, 90}, {-90, 90}, {1, 3, 5, 7}, 1};
    EXPECT_EQ(atSigned(upper, 45, 0), 4);
    EXPECT_EQ(atSigned(upper, -45, 0), 4);
    // Horizontal angles from 0 on fold the vertical ones.
    const Luminaire right{"", 3, {-90, 0, 90}, {0, 90}, {1, 2, 9, 3, 4, 11}, 1};
    EXPECT_EQ(atSigned(right, 90, 0), 9);
    EXPECT_EQ(atSigned(right, -90, 0), 9);
    EXPECT_EQ(atSigned(right, -45, 45), atSigned(right, 45, 45));
    EXPECT_EQ(atSigned(right, 0, -45), 0);
    const Luminaire both{"", 2, {0, 90}, {0, 90}, {1, 3, 5, 7}, 1};
    EXPECT_EQ(atSigned(both, -45, 45), 4);
    EXPECT_EQ(atSigned(both, 45, -45), 0);
}

TEST(CandelaLookup, is_0_for_other_types) {
    Luminaire luminaire = typeC({0, 180}, {0}, {5, 5});
    for (const int type : {0, -1, 4, 100}) {
        luminaire.type = type;
        EXPECT_EQ(at(luminaire, 90, 0), 0) << type;
    }
}

TEST(CandelaLookup, is_0_below_the_first_and_above_the_last_vertical_angle) {
    for (const Floats& horizontal : {Floats{0}, {0, 90}, {0, 180}, {90, 270}, {0, 360}}) {
        const Luminaire belt = typeC({30, 60, 90}, horizontal, Floats(3 * horizontal.size(), 8));
        EXPECT_EQ(at(belt, 29, 45), 0);
        EXPECT_EQ(at(belt, 30, 45), 8);
        EXPECT_EQ(at(belt, 60, 45), 8);
        EXPECT_EQ(at(belt, 90, 45), 8);
        EXPECT_EQ(at(belt, 91, 45), 0);
    }
}

TEST(CandelaLookup, searches_angles_out_of_order_as_if_they_were_in_order) {
    const Luminaire shuffled = typeC({0, 60, 30, 90}, {0}, {10, 20, 30, 40});
    // Halving asks 30 first: less than 45, so what is left is 90. Between 30 and 90.
    EXPECT_EQ(at(shuffled, 45, 0), 0.75F * 30 + 0.25F * 40);
    // 30 is not less than 15, nor is 60; 0 is. Between 0 and 60.
    EXPECT_EQ(at(shuffled, 15, 0), 0.75F * 10 + 0.25F * 20);
}

TEST(CandelaLookup, is_0_where_it_would_be_infinite) {
    EXPECT_EQ(at(typeC({0, 180}, {0}, {kInfinity, 1}), 90, 0), 0);
    EXPECT_EQ(at(typeC({0, 180}, {0}, {1, -kInfinity}), 90, 0), 0);
    // The sum may overflow without infinite values.
    Luminaire bright = typeC({0, 90}, {0, 360}, Floats(4, 3e38F));
    EXPECT_EQ(at(bright, 45, 180), 3e38F);
    bright.candela = {3e38F, -3e38F, 3e38F, -3e38F};
    bright.scale = 2;
    EXPECT_EQ(at(bright, 0, 180), kInfinity);  // scaled after it was looked at
}

TEST(CandelaLookup, lets_no_number_pass) {
    constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(std::isnan(at(typeC({0, 180}, {0}, {kNoNumber, 1}), 90, 0)));
    // Nothing of something infinite is no number either.
    EXPECT_TRUE(std::isnan(at(typeC({0, 180}, {0}, {kInfinity, 1}), 180, 0)));
    EXPECT_TRUE(std::isnan(kernels::candelaAt(typeC({0, 180}, {0}, {1, 1}).grid(), kNoNumber, 0)));
}

TEST(CandelaLookup, of_equal_angles_is_that_of_the_first_one) {
    const Luminaire steps = typeC({0, 45, 45, 90}, {0}, {10, 20, 40, 60});
    EXPECT_EQ(at(steps, 45, 0), 20);
    EXPECT_EQ(at(steps, 67.5F, 0), 50);
    EXPECT_TRUE(std::isnan(at(typeC({45, 45}, {0}, {1, 2}), 45, 0)));
}

TEST(CandelaLookup, is_0_without_angles_or_values) {
    for (const Luminaire& empty :
         {typeC({}, {}, {}), typeC({}, {0}, {}), typeC({0, 90}, {}, {}), typeC({0, 90}, {0}, {1})})
        EXPECT_EQ(kernels::candelaAt(empty.grid(), 2, 0), 0);
}

TEST(CandelaLookup, is_scaled) {
    Luminaire luminaire = typeC({0, 90}, {0}, {10, 20});
    luminaire.scale = 2.5F;
    EXPECT_EQ(at(luminaire, 45, 0), 37.5F);
    luminaire.scale = 0;
    EXPECT_EQ(at(luminaire, 45, 0), 0);
}

TEST(CandelaLookup, outside_of_the_angles_is_0_whatever_the_scale) {
    Luminaire sector = typeC({0, 90}, {0, 45}, {10, 20, 30, 40});
    for (const float scale : {-2.0F, kInfinity, std::numeric_limits<float>::quiet_NaN()}) {
        sector.scale = scale;
        for (const auto& [v, h] : {std::pair(45.0F, 60.0F), std::pair(91.0F, 10.0F)}) {
            EXPECT_EQ(at(sector, v, h), 0) << scale;
            EXPECT_FALSE(std::signbit(at(sector, v, h))) << scale;
        }
    }
}

TEST(CandelaLookup, at_the_angles_of_the_file_gives_its_values) {
    const Luminaire full = randomLuminaire("", 1, angles(0, 2.5F, 180), angles(0, 22.5F, 360));
    std::size_t count = 0;
    for (std::size_t h = 0; h < full.horizontal.size(); ++h)
        for (std::size_t v = 0; v < full.vertical.size(); ++v) {
            const auto theta = exactRadiansOf(180 - full.vertical[v]);
            const auto phi = exactRadiansOf(full.horizontal[h]);
            if (!theta || !phi) continue;
            ++count;
            EXPECT_EQ(kernels::candelaAt(full.grid(), *theta, *phi),
                      full.candela[h * full.vertical.size() + v] * full.scale);
        }
    EXPECT_GT(count, full.candela.size() * 3 / 4);
}

namespace {

/// A second implementation, for rising lists of type C: triangles of light around each angle,
/// summed over all of them, in double precision.
double hatSum(const Luminaire& luminaire, double v, double h) {
    const auto hat = [](const Floats& list, std::size_t i, double x) {
        const double here = static_cast<double>(list[i]);
        if (i > 0 && x < here) {
            const double before = static_cast<double>(list[i - 1]);
            return std::max(0.0, (x - before) / (here - before));
        }
        if (i + 1 < list.size() && x > here) {
            const double behind = static_cast<double>(list[i + 1]);
            return std::max(0.0, (behind - x) / (behind - here));
        }
        return x == here ? 1.0 : 0.0;
    };
    double sum = 0;
    for (std::size_t i = 0; i < luminaire.horizontal.size(); ++i)
        for (std::size_t k = 0; k < luminaire.vertical.size(); ++k)
            sum += hat(luminaire.horizontal, i, h) * hat(luminaire.vertical, k, v) *
                   static_cast<double>(luminaire.candela[i * luminaire.vertical.size() + k]);
    return sum * static_cast<double>(luminaire.scale);
}

/// The smallest angle between an azimuth and the plane of azimuths 0 and 180, or of 90 and 270.
double foldedBySine(double h, double last) {
    constexpr double kRadian = 57.29577951308232;
    const double s = std::sin(h / kRadian), c = std::cos(h / kRadian);
    return std::atan2(std::abs(s), last <= 90 ? std::abs(c) : c) * kRadian;
}

}  // namespace

TEST(CandelaLookup, equals_a_sum_of_hats) {
    // Angles are rounded to 2e-5 degrees, and the steepest slope is 1500 in 2.5 degrees.
    constexpr double kTolerance = 0.05;
    const Luminaire luminaires[] = {
        randomLuminaire("", 1, angles(0, 2.5F, 180), angles(0, 22.5F, 90)),
        randomLuminaire("", 1, {0, 10, 15, 40, 90, 180}, angles(0, 5, 180)),
        randomLuminaire("", 1, angles(0, 5, 180), {0, 10, 80, 90, 200, 300, 360})};
    std::mt19937 random(7);
    std::uniform_real_distribution<double> vertical(0.01, 179.99), horizontal(0.01, 359.99);
    for (const Luminaire& luminaire : luminaires)
        for (int i = 0; i < 2000; ++i) {
            const double v = vertical(random), h = horizontal(random);
            const double last = static_cast<double>(luminaire.horizontal.back());
            if (last == 180 && std::abs(h - 180) < 0.01) continue;  // black there
            const auto theta = static_cast<float>((180 - v) / 57.29577951308232);
            const auto phi = static_cast<float>(h / 57.29577951308232);
            const double expected = hatSum(luminaire, v, last > 180 ? h : foldedBySine(h, last));
            EXPECT_NEAR(static_cast<double>(kernels::candelaAt(luminaire.grid(), theta, phi)),
                        expected, kTolerance)
                << v << " " << h;
        }
}

}  // namespace rb::test
