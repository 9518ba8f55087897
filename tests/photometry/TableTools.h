#pragma once

/// @file  What tests of tables of intensity share: rotations, and comparison with the plain table.

#include "RenderingBase/KVRRbaModel.m/src/kernels/IntensityTable.h"
#include "tests/photometry/Luminaires.h"
#include "tests/photometry/PlainResampler.h"

#include <gtest/gtest.h>
#include <random>

namespace rb::test {

/// How far angles may be from those by std::acos and std::atan2, radians.
constexpr float kAngleTolerance = 5e-7F;

inline kernels::Rotation randomRotation(std::mt19937& random) {
    std::normal_distribution<double> normal;
    kernels::Rotation r{normal(random), normal(random), normal(random), normal(random)};
    const double size = std::sqrt(r.x * r.x + r.y * r.y + r.z * r.z + r.scalar * r.scalar);
    return {r.x / size, r.y / size, r.z / size, r.scalar / size};
}

/// None, a turn by nothing, turns about each axis by parts of a circle, and some others.
inline std::vector<kernels::Rotation> someRotations() {
    std::vector<kernels::Rotation> rotations{{0, 0, 0, 0}, {0, 0, 0, 1}, {0, 0, 0, -1}};
    for (const double half : {1e-9, 0.1, 0.7853981633974483, 1.5707963267948966}) {
        rotations.push_back({std::sin(half), 0, 0, std::cos(half)});
        rotations.push_back({0, std::sin(half), 0, std::cos(half)});
        rotations.push_back({0, 0, std::sin(half), std::cos(half)});
    }
    std::mt19937 random(3);
    for (int i = 0; i < 4; ++i) rotations.push_back(randomRotation(random));
    return rotations;
}

inline Floats tableOf(const Luminaire& luminaire, const kernels::TableShape& shape,
                      const kernels::Rotation& rotation) {
    Floats table(shape.rows * shape.columns * shape.channels, -1);
    kernels::resample(luminaire.grid(), shape, rotation, table);
    return table;
}

/// Whether @p value lies between the intensities around a direction, as far as angles may differ.
inline bool isAround(const Luminaire& luminaire, const Direction& d, float value) {
    float least = value, most = value;
    bool isFirst = true;
    for (const float dTheta : {0.0F, -kAngleTolerance, kAngleTolerance})
        for (const float dPhi : {0.0F, -kAngleTolerance, kAngleTolerance}) {
            float phi = d.phi + dPhi;
            if (phi < 0) phi += 6.2831855F;
            if (phi > 6.2831855F) phi -= 6.2831855F;
            const float theta = std::clamp(d.theta + dTheta, 0.0F, 3.1415927F);
            const float here = kernels::candelaAt(luminaire.grid(), theta, phi);
            if (bitsOf(here) == bitsOf(value)) return true;
            if (std::isnan(here)) continue;
            least = isFirst ? here : std::min(least, here);
            most = isFirst ? here : std::max(most, here);
            isFirst = false;
        }
    // Between the directions asked there may be a crest.
    const float slack = most - least + 1e-5F * std::max(std::abs(least), std::abs(most));
    return !isFirst && value >= least - slack && value <= most + slack;
}

/// Each cell is the plain one, but for what the tolerance of angles makes of it.
inline void expectPlainTable(const Luminaire& luminaire, const kernels::TableShape& shape,
                             const kernels::Rotation& rotation) {
    const Floats table = tableOf(luminaire, shape, rotation);
    std::size_t at = 0;
    for (std::size_t i = 0; i < shape.rows; ++i)
        for (std::size_t j = 0; j < shape.columns; ++j)
            for (std::size_t k = 0; k < shape.channels; ++k, ++at) {
                const Direction d = plainlyRotated(plainCellDirection(shape, i, j), rotation);
                if (bitsOf(kernels::candelaAt(luminaire.grid(), d.theta, d.phi)) ==
                    bitsOf(table[at]))
                    continue;
                ASSERT_TRUE(isAround(luminaire, d, table[at]))
                    << luminaire.name << " row " << i << " column " << j << ": " << table[at]
                    << ", plainly " << kernels::candelaAt(luminaire.grid(), d.theta, d.phi)
                    << " at " << d.theta << " " << d.phi;
            }
}

}  // namespace rb::test
