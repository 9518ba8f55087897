// Many directions at once against one by one, bit by bit, for every kind of processor.

#include "RenderingBase/KVRRbaModel.m/src/kernels/CandelaSampler.h"
#include "tests/image/VectorTargets.h"
#include "tests/photometry/Luminaires.h"

#include <limits>

namespace rb::test {
namespace {

constexpr float kDegrees = 57.295776F, kPi = 3.1415927F, kTwoPi = 6.2831855F;

/// Adds an angle and its neighbours, as far as they lie between 0 and @p most.
void addAround(float angle, float most, Floats& out) {
    float near = angle;
    for (int i = 0; i < 4; ++i) near = std::nextafter(near, -1.0F);
    for (int i = 0; i < 9; ++i, near = std::nextafter(near, 10.0F))
        if (near >= 0 && near <= most) out.push_back(near);
}

struct Directions {
    Floats theta, phi;
};

/// Random ones, and those around each angle of the luminaire and around each border of a symmetry.
Directions directionsFor(const Luminaire& luminaire, std::size_t count) {
    const float shift = luminaire.type == 1 ? 0.0F : 90.0F;
    Floats thetas, phis{-0.0F};
    for (const float v : luminaire.vertical)
        for (const float sign : {1.0F, -1.0F})
            addAround((180 - (sign * v + shift)) / kDegrees, kPi, thetas);
    for (const float h : luminaire.horizontal)
        for (const float folded : {h, -h, 180 - h, h + 180, 360 - h, 540 - h})
            addAround(folded / kDegrees, kTwoPi, phis);
    for (const float border : {0.0F, 90.0F, 180.0F, 270.0F, 360.0F}) {
        addAround(border / kDegrees, kPi, thetas);
        addAround(border / kDegrees, kTwoPi, phis);
    }
    std::mt19937 random(static_cast<std::uint32_t>(count));
    std::uniform_real_distribution<float> theta(0, kPi), phi(0, kTwoPi);
    Directions directions;
    for (std::size_t i = 0; i < count; ++i) {
        directions.theta.push_back(random() % 2 ? theta(random) : thetas[random() % thetas.size()]);
        directions.phi.push_back(random() % 2 ? phi(random) : phis[random() % phis.size()]);
    }
    return directions;
}

void expectOneByOne(const Luminaire& luminaire, const Directions& directions) {
    const kernels::CandelaSampler sampler(luminaire.grid());
    Floats found(directions.theta.size(), -1);
    sampler.sample(directions.theta, directions.phi, found);
    for (std::size_t i = 0; i < found.size(); ++i) {
        const float theta = directions.theta[i], phi = directions.phi[i];
        ASSERT_EQ(bitsOf(found[i]), bitsOf(kernels::candelaAt(luminaire.grid(), theta, phi)))
            << luminaire.name << ": " << theta << " " << phi << ": " << found[i];
    }
}

}  // namespace

TEST(CandelaSampler, gives_the_bits_of_single_lookups_for_every_kind_of_luminaire) {
    for (const Luminaire& luminaire : luminairesOfEveryKind()) {
        const Directions directions = directionsFor(luminaire, 20011);
        forEachTarget([&] { expectOneByOne(luminaire, directions); });
    }
}

TEST(CandelaSampler, gives_the_bits_of_single_lookups_for_values_that_are_no_numbers) {
    using Limits = std::numeric_limits<float>;
    const float odd[] = {
        Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(), 3e38F, -3e38F, 0, -0.0F};
    for (Luminaire luminaire : luminairesOfEveryKind()) {
        for (std::size_t i = 0; i < luminaire.candela.size(); ++i)
            if (i % 3 == 0) luminaire.candela[i] = odd[i / 3 % std::size(odd)];
        for (const float scale : {1.0F, -2.0F, 0.0F, Limits::infinity(), Limits::quiet_NaN()}) {
            luminaire.scale = scale;
            const Directions directions = directionsFor(luminaire, 1009);
            forEachTarget([&] { expectOneByOne(luminaire, directions); });
        }
    }
}

TEST(CandelaSampler, gives_the_bits_of_single_lookups_for_angles_that_are_no_numbers) {
    using Limits = std::numeric_limits<float>;
    for (const float odd : {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(), 1e30F,
                            -1e30F, 3e38F, -3e38F, 1e-40F})
        for (Luminaire luminaire : luminairesOfEveryKind()) {
            if (luminaire.vertical.empty() || luminaire.horizontal.empty()) continue;
            const Directions directions = directionsFor(luminaire, 503);
            Luminaire vertical = luminaire, horizontal = luminaire;
            vertical.vertical.back() = odd;
            horizontal.horizontal.front() = odd;
            luminaire.horizontal.back() = odd;
            for (const Luminaire& one : {vertical, horizontal, luminaire})
                forEachTarget([&] { expectOneByOne(one, directions); });
        }
}

TEST(CandelaSampler, gives_the_bits_of_single_lookups_along_one_polar_angle) {
    std::vector<Luminaire> luminaires = luminairesOfEveryKind();
    // Values of all runs at once: as many as are taken, and one more.
    luminaires.push_back(
        randomLuminaire("512 runs", 1, angles(0, 45, 180), angles(0, 0.5F, 255.5F)));
    luminaires.push_back(randomLuminaire("513 runs", 1, angles(0, 45, 180), angles(0, 0.5F, 256)));
    luminaires[0].candela[3] = std::numeric_limits<float>::infinity();
    for (const Luminaire& luminaire : luminaires) {
        const Directions directions = directionsFor(luminaire, 1021);
        const kernels::CandelaSampler sampler(luminaire.grid());
        forEachTarget([&] {
            for (std::size_t k = 0; k < 200; ++k) {
                const float theta = directions.theta[k];
                Floats found(directions.phi.size(), -1);
                sampler.sampleLevel(theta, directions.phi, found);
                for (std::size_t i = 0; i < found.size(); ++i)
                    ASSERT_EQ(bitsOf(found[i]), bitsOf(kernels::candelaAt(luminaire.grid(), theta,
                                                                          directions.phi[i])))
                        << luminaire.name << ": " << theta << " " << directions.phi[i];
            }
        });
    }
}

TEST(CandelaSampler, fills_any_number_of_places_and_no_others) {
    const Luminaire luminaire = luminairesOfEveryKind()[6];
    const Directions directions = directionsFor(luminaire, 100);
    const kernels::CandelaSampler sampler(luminaire.grid());
    forEachTarget([&] {
        for (std::size_t count = 0; count <= 70; ++count) {
            Floats found(directions.theta.size(), -1);
            sampler.sample(std::span(directions.theta).first(count),
                           std::span(directions.phi).first(count), std::span(found).first(count));
            for (std::size_t i = 0; i < found.size(); ++i)
                ASSERT_EQ(found[i] == -1, i >= count) << i << " of " << count;
        }
    });
}

}  // namespace rb::test
