// Tables of intensity: their shape, the plain table, rotations, and light that is neither lost nor
// gained.

#include "RenderingBase/KVRRbaModel.m/src/kernels/TableDirections.h"
#include "RenderingBase/public/KVRRbaIESLoader.h"
#include "tests/photometry/IesBuilder.h"
#include "tests/photometry/TableTools.h"

#include <limits>
#include <numbers>
#include <omp.h>

namespace rb::test {
namespace {

constexpr kernels::Rotation kIdentity{0, 0, 0, 1}, kNone{0, 0, 0, 0};

/// Sets the number of threads while it lives.
class Threads {
public:
    explicit Threads(int count) : m_before(omp_get_max_threads()) { omp_set_num_threads(count); }
    ~Threads() { omp_set_num_threads(m_before); }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

private:
    int m_before;
};

/// The light of a table of one channel, in lumens: a cell stands for a step in both angles.
double fluxOf(const Floats& table, const kernels::TableShape& shape) {
    const double dTheta = std::numbers::pi / static_cast<double>(shape.rows);
    const double dPhi = 2 * std::numbers::pi / static_cast<double>(shape.columns);
    double sum = 0;
    for (std::size_t i = 0; i < shape.rows; ++i)
        for (std::size_t j = 0; j < shape.columns; ++j)
            sum += static_cast<double>(table[i * shape.columns + j]) *
                   std::sin(dTheta * static_cast<double>(i)) * dTheta * dPhi;
    return sum;
}

}  // namespace

TEST(IntensityTable, begins_at_the_pole_above_and_ends_a_step_before_both_ends) {
    // Rows at 180, 135, 90 and 45 degrees from below; columns at 0, 90, 180 and 270.
    const Luminaire luminaire{"",
                              1,
                              {0, 45, 90, 135, 180},
                              {0, 90, 180, 270, 360},
                              {0,  1,  2,  3,  4,  10, 11, 12, 13, 14, 20, 21, 22,
                               23, 24, 30, 31, 32, 33, 34, 40, 41, 42, 43, 44},
                              1};
    const Floats table = tableOf(luminaire, {4, 4, 1}, kNone);
    for (std::size_t i = 0; i < 4; ++i)
        for (std::size_t j = 0; j < 4; ++j)
            EXPECT_NEAR(table[4 * i + j], 10 * static_cast<float>(j) + 4 - static_cast<float>(i),
                        1e-4)
                << i << " " << j;
}

TEST(IntensityTable, has_the_same_value_in_all_channels) {
    for (const Luminaire& luminaire : luminairesOfEveryKind())
        for (const std::size_t columns : {1U, 5U, 16U, 67U, 513U, 1100U}) {
            const Floats one = tableOf(luminaire, {3, columns, 1}, kIdentity);
            for (std::size_t channels = 2; channels <= 7; ++channels) {
                const Floats table = tableOf(luminaire, {3, columns, channels}, kIdentity);
                for (std::size_t i = 0; i < table.size(); ++i)
                    ASSERT_EQ(bitsOf(table[i]), bitsOf(one[i / channels]))
                        << i << " of " << channels << " channels";
            }
        }
}

TEST(IntensityTable, is_not_written_without_rows_columns_or_channels) {
    const std::string text = IesBuilder().build();
    const int shapes[][3] = {{0, 4, 1}, {4, 0, 1}, {4, 4, 0}, {-1, 4, 1}, {4, -3, 1}, {4, 4, -2}};
    for (const auto& [rows, columns, channels] : shapes) {
        Floats table(64, -1);
        EXPECT_EQ(KVRRbaIESLoader::loadIES(std::as_bytes(std::span(text)), rows, columns, channels,
                                           {0, 0, 0}, table.data()),
                  S_OK);
        EXPECT_EQ(table, Floats(64, -1)) << rows << " " << columns << " " << channels;
    }
}

TEST(IntensityTable, of_a_text_is_that_of_its_luminaire) {
    // Of (0.3, 0, 0) the quaternion is (sin 0.15, 0, 0, cos 0.15).
    Floats table(12 * 17 * 3, -1);
    const std::string text = IesBuilder().build();
    ASSERT_EQ(KVRRbaIESLoader::loadIES(std::as_bytes(std::span(text)), 12, 17, 3, {0.3, 0, 0},
                                       table.data()),
              S_OK);
    const Luminaire same{"", 1, {0, 90, 180}, {0}, {30, 20, 10}, 1};
    EXPECT_EQ(table, tableOf(same, {12, 17, 3}, {std::sin(0.15), 0, 0, std::cos(0.15)}));
}

TEST(IntensityTable, turned_by_nothing_is_the_one_that_is_not_turned) {
    // A rotated direction is up to 7e-7 radians off; values change by 1650 candelas in 0.5 degrees
    // at most.
    constexpr float kTolerance = 7e-7F * 57.3F * 1650 / 0.5F;
    constexpr kernels::TableShape kShape{45, 90, 1};
    for (const char* const name : {"axial", "quadrant", "full circle"})
        for (Luminaire luminaire : luminairesOfEveryKind()) {
            if (luminaire.name != name) continue;
            // At a pole the azimuth is lost.
            const std::size_t verticals = luminaire.vertical.size();
            for (std::size_t i = 0; i < luminaire.candela.size(); i += verticals)
                luminaire.candela[i + verticals - 1] = 77;
            const Floats turned = tableOf(luminaire, kShape, kIdentity);
            const Floats straight = tableOf(luminaire, kShape, kNone);
            for (std::size_t i = 0; i < turned.size(); ++i) {
                // The border of the lit part, where neither value is wrong.
                if ((turned[i] == 0) != (straight[i] == 0) && i / kShape.columns == 22) continue;
                ASSERT_NEAR(turned[i], straight[i], kTolerance) << name << " " << i;
            }
        }
}

TEST(IntensityTable, of_an_axial_luminaire_is_the_same_in_all_columns) {
    const Luminaire axial = luminairesOfEveryKind()[0];
    const Floats table = tableOf(axial, {32, 65, 1}, kIdentity);
    for (std::size_t i = 0; i < 32; ++i)
        for (std::size_t j = 1; j < 65; ++j) ASSERT_EQ(table[65 * i + j], table[65 * i]) << i;
}

TEST(IntensityTable, of_a_half_circle_is_0_in_the_first_column) {
    for (const Luminaire& luminaire : luminairesOfEveryKind()) {
        if (luminaire.name != "bilateral") continue;
        const Floats table = tableOf(luminaire, {32, 64, 1}, kIdentity);
        for (std::size_t i = 0; i < 32; ++i) {
            EXPECT_EQ(table[64 * i], 0) << i;
            EXPECT_EQ(table[64 * i + 1] > 0, i > 0) << i;
        }
    }
}

TEST(IntensityTable, is_the_plain_one_but_for_the_last_places_of_angles) {
    for (const Luminaire& luminaire : luminairesOfEveryKind())
        for (const kernels::Rotation& rotation : someRotations()) {
            expectPlainTable(luminaire, {16, 32, 1}, rotation);
            expectPlainTable(luminaire, {19, 67, 1}, rotation);
            expectPlainTable(luminaire, {2, 700, 3}, rotation);
            expectPlainTable(luminaire, {1, 1, 4}, rotation);
        }
}

TEST(IntensityTable, has_the_single_lookups_of_its_directions_bit_by_bit) {
    constexpr kernels::TableShape kShape{9, 600, 1};
    for (const Luminaire& luminaire : luminairesOfEveryKind())
        for (const kernels::Rotation& rotation : someRotations()) {
            const kernels::TableDirections directions(kShape, rotation);
            const Floats table = tableOf(luminaire, kShape, rotation);
            for (std::size_t i = 0; i < kShape.rows; ++i) {
                Floats theta(kShape.columns), phi(kShape.columns);
                directions.compute(i, 0, theta, phi);
                for (std::size_t j = 0; j < kShape.columns; ++j)
                    ASSERT_EQ(bitsOf(table[i * kShape.columns + j]),
                              bitsOf(kernels::candelaAt(luminaire.grid(), theta[j], phi[j])))
                        << luminaire.name << " " << i << " " << j;
            }
        }
}

TEST(IntensityTable, has_only_numbers_however_a_luminaire_is_turned) {
    const Luminaire luminaires[] = {
        randomLuminaire("", 1, angles(0, 10, 180), {0}),
        randomLuminaire("", 1, angles(0, 2.5F, 90), angles(0, 22.5F, 90)),
        randomLuminaire("", 1, angles(0, 5, 180), angles(0, 5, 180)),
        randomLuminaire("", 1, angles(0, 5, 180), angles(0, 5, 360)),
        randomLuminaire("", 2, angles(-90, 10, 90), angles(-90, 10, 90))};
    constexpr kernels::TableShape kShape{16, 36, 1};
    std::mt19937 random(17);
    std::uniform_real_distribution<double> angle(-7, 7);
    for (int n = 0; n < 400; ++n)
        for (const Luminaire& luminaire : luminaires) {
            const kernels::Rotation rotation = randomRotation(random);
            for (const float value : tableOf(luminaire, kShape, rotation))
                ASSERT_TRUE(value >= 0 && value < 2000) << rotation.x << " " << rotation.y;
        }
    KVRRbaIESLoader::IESPhotometry photometry;
    ASSERT_EQ(KVRRbaIESLoader::parseIESText(IesBuilder().build(), photometry), S_OK);
    for (int n = 0; n < 400; ++n) {
        const KVRMathVector orientation(angle(random), angle(random), angle(random));
        Floats table(kShape.rows * kShape.columns);
        KVRRbaIESLoader::resample(photometry, kShape.rows, kShape.columns, 1, orientation,
                                  table.data());
        // Of 30, 20 and 10 candelas; at the lower pole angles may end before the last one.
        for (const float value : table)
            ASSERT_TRUE(value == 0 || (value >= 9.9F && value <= 30.1F));
    }
}

TEST(IntensityTable, of_an_orientation_that_is_no_number_is_the_plain_one) {
    constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const kernels::Rotation rotations[] = {{kNoNumber, 0, 0, 1},
                                           {0, kNoNumber, 0, 0},
                                           {0, 0, kInfinity, 1},
                                           {0, 0, 0, -kInfinity},
                                           {kNoNumber, kNoNumber, kNoNumber, kNoNumber}};
    for (const Luminaire& luminaire : luminairesOfEveryKind())
        for (const kernels::Rotation& rotation : rotations) {
            Floats plain;
            plainlyResample(luminaire.grid(), {3, 17, 2}, rotation, plain);
            const Floats table = tableOf(luminaire, {3, 17, 2}, rotation);
            for (std::size_t i = 0; i < table.size(); ++i)
                ASSERT_EQ(bitsOf(table[i]), bitsOf(plain[i])) << luminaire.name;
        }
}

TEST(IntensityTable, is_the_same_on_one_thread_and_on_more) {
    for (const Luminaire& luminaire : luminairesOfEveryKind()) {
        const kernels::Rotation rotation = someRotations().back();
        Floats one, other;
        {
            const Threads single(1);
            one = tableOf(luminaire, {67, 129, 3}, rotation);
        }
        for (const int count : {2, 3}) {
            const Threads several(count);
            other = tableOf(luminaire, {67, 129, 3}, rotation);
            for (std::size_t i = 0; i < one.size(); ++i)
                ASSERT_EQ(bitsOf(one[i]), bitsOf(other[i])) << luminaire.name << " " << i;
        }
    }
}

TEST(IntensityTable, holds_the_light_of_the_luminaire_however_it_is_turned) {
    constexpr kernels::TableShape kShape{256, 512, 1};
    // The rule over steps of 0.7 degrees; at the edge of a half sphere half a row more or less.
    constexpr double kTolerance = 1e-4, kEdgeTolerance = 1.01 * std::numbers::pi / 256 / 2;
    const Luminaire even{"", 1, {0, 180}, {0}, {100, 100}, 1};
    Luminaire cosine{"", 1, angles(0, 1, 90), {0}, {}, 1};
    for (const float v : cosine.vertical)
        cosine.candela.push_back(
            static_cast<float>(100 * std::cos(static_cast<double>(v) * std::numbers::pi / 180)));
    Luminaire lower{"", 1, {0, 90}, angles(0, 30, 360), {}, 1};
    lower.candela.assign(2 * lower.horizontal.size(), 100);
    for (const kernels::Rotation& rotation : someRotations()) {
        const double pi = std::numbers::pi;
        EXPECT_NEAR(fluxOf(tableOf(even, kShape, rotation), kShape) / (4 * pi * 100), 1,
                    kTolerance);
        EXPECT_NEAR(fluxOf(tableOf(cosine, kShape, rotation), kShape) / (pi * 100), 1, kTolerance);
        EXPECT_NEAR(fluxOf(tableOf(lower, kShape, rotation), kShape) / (2 * pi * 100), 1,
                    kEdgeTolerance);
    }
}

}  // namespace rb::test
