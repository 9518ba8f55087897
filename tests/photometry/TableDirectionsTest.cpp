// The directions of cells: against the plain ones, against matrices, and vectors against the
// functions of single numbers.

#include "RenderingBase/KVRRbaModel.m/src/kernels/RotatedAngles.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/TableDirections.h"
#include "tests/image/VectorTargets.h"
#include "tests/photometry/TableTools.h"

#include <numbers>

namespace rb::test {
namespace {

constexpr double kFullCircle = 2 * std::numbers::pi;

/// Units in the last place of @p expected, in single precision.
double unitsBetween(float found, double expected) {
    const float rounded = static_cast<float>(expected);
    const float unit = std::nextafter(std::abs(rounded), 10.0F) - std::abs(rounded);
    return std::abs(static_cast<double>(found) - expected) / static_cast<double>(unit);
}

double between(float one, float other) {
    const double distance = std::abs(static_cast<double>(one) - static_cast<double>(other));
    return std::min(distance, std::abs(kFullCircle - distance));
}

struct Row {
    Floats theta, phi;
};

Row rowOf(const kernels::TableDirections& directions, std::size_t row, std::size_t columns) {
    Row angles{Floats(columns, -1), Floats(columns, -1)};
    directions.compute(row, 0, angles.theta, angles.phi);
    return angles;
}

void expectPlainDirections(const kernels::TableShape& shape, const kernels::Rotation& rotation) {
    const kernels::TableDirections directions(shape, rotation);
    ASSERT_TRUE(directions.areNumbers());
    for (std::size_t i = 0; i < shape.rows; ++i) {
        const Row row = rowOf(directions, i, shape.columns);
        for (std::size_t j = 0; j < shape.columns; ++j) {
            const Direction d = plainlyRotated(plainCellDirection(shape, i, j), rotation);
            ASSERT_LE(between(row.theta[j], d.theta), static_cast<double>(kAngleTolerance))
                << i << " " << j << ": " << d.theta;
            // Next to a pole an azimuth is the quotient of two roundings.
            if (std::sin(d.theta) < 1e-6F && d.theta != 0) continue;
            ASSERT_LE(between(row.phi[j], d.phi), static_cast<double>(kAngleTolerance))
                << i << " " << j << ": " << d.phi << " at " << d.theta;
        }
    }
}

}  // namespace

TEST(RotatedAngles, inverse_cosine_is_within_2_units_of_the_last_place) {
    double most = 0;
    const auto check = [&most](float x) {
        most = std::max(most,
                        unitsBetween(kernels::inverseCosine(x), std::acos(static_cast<double>(x))));
    };
    for (int i = -4000000; i <= 4000000; ++i) check(static_cast<float>(i) / 4000000);
    for (const float border : {1.0F, 0.5F, -0.5F, -1.0F, 0.0F}) {
        float x = border;
        for (int i = 0; i < 100000 && std::abs(x) <= 1; ++i, x = std::nextafter(x, 0.0F)) check(x);
    }
    EXPECT_LE(most, 2);
    EXPECT_GT(most, 0);
    RecordProperty("units", std::to_string(most));
}

TEST(RotatedAngles, inverse_cosine_ends_at_the_poles) {
    EXPECT_EQ(kernels::inverseCosine(1), 0);
    EXPECT_EQ(kernels::inverseCosine(-1), 3.1415927F);
    EXPECT_EQ(kernels::inverseCosine(0), 1.5707964F);
    EXPECT_EQ(kernels::inverseCosine(std::nextafter(1.0F, 2.0F)), 0);
    EXPECT_EQ(kernels::inverseCosine(std::nextafter(-1.0F, -2.0F)), 3.1415927F);
}

TEST(RotatedAngles, azimuth_is_within_2_units_of_the_last_place) {
    double most = 0;
    std::mt19937 random(5);
    std::uniform_real_distribution<float> angle(0, 6.2831855F), exponent(-12, 0);
    const auto check = [&most](float y, float x) {
        double expected = std::atan2(static_cast<double>(y), static_cast<double>(x));
        const double full = static_cast<double>(6.2831855F);
        if (static_cast<float>(expected) < 0) expected += full;
        most = std::max(most, unitsBetween(kernels::azimuth(y, x), expected));
    };
    for (int i = 0; i < 4000000; ++i) {
        const float a = angle(random), size = std::pow(10.0F, exponent(random));
        check(size * std::sin(a), size * std::cos(a));
        check(size, std::cos(a));
        check(std::cos(a), -size);
    }
    EXPECT_LE(most, 2);
    EXPECT_GT(most, 0);
    RecordProperty("units", std::to_string(most));
}

TEST(RotatedAngles, azimuth_of_the_axes_is_that_of_the_standard_library) {
    for (const float y : {1.0F, -1.0F, 0.0F, -0.0F})
        for (const float x : {1.0F, -1.0F, 0.0F, -0.0F}) {
            if (x == 0 && y == 0) {
                EXPECT_TRUE(std::isnan(kernels::azimuth(y, x)));
                continue;
            }
            const float expected = std::atan2(y, x);
            EXPECT_EQ(kernels::azimuth(y, x), expected < 0 ? expected + 6.2831855F : expected)
                << y << " " << x;
        }
}

TEST(TableDirections, are_the_plain_ones_but_for_the_last_places) {
    for (const kernels::Rotation& rotation : someRotations()) {
        SCOPED_TRACE(testing::Message() << rotation.x << " " << rotation.y << " " << rotation.z
                                        << " " << rotation.scalar);
        expectPlainDirections({64, 128, 1}, rotation);
        expectPlainDirections({37, 51, 1}, rotation);
        expectPlainDirections({3, 1500, 1}, rotation);
    }
}

TEST(TableDirections, are_the_same_in_vectors_and_one_by_one) {
    constexpr kernels::TableShape kShape{23, 211, 1};
    for (const kernels::Rotation& rotation : someRotations()) {
        const kernels::TableDirections directions(kShape, rotation);
        for (std::size_t i = 0; i < kShape.rows; ++i) {
            Row single{Floats(kShape.columns), Floats(kShape.columns)};
            for (std::size_t j = 0; j < kShape.columns; ++j)
                directions.compute(i, j, {&single.theta[j], 1}, {&single.phi[j], 1});
            forEachTarget([&] {
                const Row row = rowOf(directions, i, kShape.columns);
                for (std::size_t j = 0; j < kShape.columns; ++j) {
                    ASSERT_EQ(bitsOf(row.theta[j]), bitsOf(single.theta[j])) << i << " " << j;
                    ASSERT_EQ(bitsOf(row.phi[j]), bitsOf(single.phi[j])) << i << " " << j;
                }
            });
        }
    }
}

TEST(TableDirections, at_a_pole_have_the_azimuth_of_signed_zeros) {
    const kernels::TableDirections directions({16, 64, 1}, {0, 0, 0, 1});
    const Row row = rowOf(directions, 0, 64);
    for (std::size_t j = 0; j < 64; ++j) {
        const Direction d = plainlyRotated(plainCellDirection({16, 64, 1}, 0, j), {0, 0, 0, 1});
        EXPECT_EQ(row.theta[j], 0);
        EXPECT_EQ(row.phi[j], d.phi) << j;
        EXPECT_TRUE(d.phi == 0 || d.phi == 3.1415927F) << d.phi;
    }
}

namespace {

/// Rotation matrix by the formula of Rodrigues: about the unit vector (x, y, z), by an angle.
std::array<std::array<double, 3>, 3> rotationAbout(double x, double y, double z, double angle) {
    const double c = std::cos(angle), s = std::sin(angle), k = 1 - c;
    return {{{c + x * x * k, x * y * k - z * s, x * z * k + y * s},
             {y * x * k + z * s, c + y * y * k, y * z * k - x * s},
             {z * x * k - y * s, z * y * k + x * s, c + z * z * k}}};
}

}  // namespace

TEST(TableDirections, are_turned_as_a_matrix_does) {
    // (x, -y, -z, -scalar) turns by the angle whose half has the cosine -scalar.
    constexpr kernels::TableShape kShape{40, 80, 1};
    std::mt19937 random(11);
    for (int n = 0; n < 50; ++n) {
        const kernels::Rotation r = randomRotation(random);
        const double sine = std::sqrt(r.x * r.x + r.y * r.y + r.z * r.z);
        const auto m =
            rotationAbout(r.x / sine, -r.y / sine, -r.z / sine, 2 * std::atan2(sine, -r.scalar));
        const kernels::TableDirections directions(kShape, r);
        for (std::size_t i = 0; i < kShape.rows; ++i) {
            const Row row = rowOf(directions, i, kShape.columns);
            for (std::size_t j = 0; j < kShape.columns; ++j) {
                const double theta = std::numbers::pi * static_cast<double>(i) / 40;
                const double phi = kFullCircle * static_cast<double>(j) / 80;
                const double p[] = {std::cos(phi) * std::sin(theta),
                                    std::sin(phi) * std::sin(theta), std::cos(theta)};
                const auto t = static_cast<double>(row.theta[j]);
                const auto f = static_cast<double>(row.phi[j]);
                const double found[] = {std::cos(f) * std::sin(t), std::sin(f) * std::sin(t),
                                        std::cos(t)};
                // Angles up to 6.3 in single precision, before and behind; a unit of a cosine is
                // more of an angle near a pole.
                const double tolerance = 1.5e-6 + 2e-7 / std::max(std::sin(t), 1e-4);
                for (std::size_t k = 0; k < 3; ++k)
                    ASSERT_NEAR(found[k], m[k][0] * p[0] + m[k][1] * p[1] + m[k][2] * p[2],
                                tolerance);
            }
        }
    }
}

TEST(TableDirections, are_numbers_where_rounding_makes_a_direction_longer_than_1) {
    // Sines and cosines of this cell are rounded so that it is 1.06e-7 longer, almost a unit of the
    // last place, and it is turned to the upper pole, or to the lower one.
    constexpr kernels::TableShape kShape{2048, 1440, 1};
    constexpr std::size_t kRow = 975, kColumn = 553;
    const Direction d = plainCellDirection(kShape, kRow, kColumn);
    const auto theta = static_cast<double>(d.theta), phi = static_cast<double>(d.phi);
    const float sine = std::sin(d.theta), z = std::cos(d.theta);
    const float x = std::cos(d.phi) * sine, y = std::sin(d.phi) * sine;
    const auto wide = [](float value) { return static_cast<double>(value); };
    EXPECT_GT(std::sqrt(wide(x) * wide(x) + wide(y) * wide(y) + wide(z) * wide(z)), 1 + 6e-8);
    for (const double turn : {-theta, std::numbers::pi - theta}) {
        // Back about z by the azimuth, then about y: (0, sin, 0, cos) (0, 0, sin, cos), and the
        // three signs that the rotation changes.
        const double sy = std::sin(turn / 2), cy = std::cos(turn / 2);
        const double sz = std::sin(-phi / 2), cz = std::cos(-phi / 2);
        const kernels::Rotation rotation{sy * sz, -sy * cz, -cy * sz, -cy * cz};
        const kernels::TableDirections directions(kShape, rotation);
        float thetaFound = -1, phiFound = -1;
        directions.compute(kRow, kColumn, {&thetaFound, 1}, {&phiFound, 1});
        EXPECT_EQ(thetaFound, turn < 0 ? 0 : 3.1415927F);
        EXPECT_TRUE(std::isfinite(phiFound));
        forEachTarget([&] {
            const Row row = rowOf(directions, kRow, kShape.columns);
            EXPECT_EQ(row.theta[kColumn], thetaFound);
            EXPECT_EQ(row.phi[kColumn], phiFound);
        });
    }
}

}  // namespace rb::test
