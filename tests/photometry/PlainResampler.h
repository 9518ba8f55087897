#pragma once

/// @file  The table of intensity as its definition reads, cell after cell, with the quaternions of
/// the host and the standard library's inverse functions: the expectation of tests and benchmarks.

#include "RenderingBase/KVRRbaModel.m/src/kernels/IntensityTable.h"
#include "RenderingBase/host/base/KVRMathQuaternion.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace rb::test {

struct Direction {
    float theta, phi;
};

inline Direction plainCellDirection(const kernels::TableShape& shape, std::size_t i,
                                    std::size_t j) {
    return {static_cast<float>(i) / static_cast<float>(shape.rows) * 3.1415927F,
            static_cast<float>(j) / static_cast<float>(shape.columns) * 6.2831855F};
}

inline Direction plainlyRotated(const Direction& d, const kernels::Rotation& by) {
    if (by.x == 0 && by.y == 0 && by.z == 0 && by.scalar == 0) return d;
    const KVRMathQuaternion q(by.x, -by.y, -by.z, -by.scalar);
    const float sine = std::sin(d.theta);
    const KVRMathQuaternion p(static_cast<double>(std::cos(d.phi) * sine),
                              static_cast<double>(std::sin(d.phi) * sine),
                              static_cast<double>(std::cos(d.theta)), 0);
    KVRMathQuaternion conjugate = q;
    conjugate.Conjugate();
    double x = 0, y = 0, z = 0, scalar = 0;
    (q * (p * conjugate)).GetCoord(x, y, z, scalar);
    // Sines and cosines are rounded, so the direction may be longer than 1.
    const float theta = std::acos(std::clamp(static_cast<float>(z), -1.0F, 1.0F));
    const float phi = std::atan2(static_cast<float>(y), static_cast<float>(x));
    return {theta, phi < 0 ? phi + 6.2831855F : phi};
}

inline void plainlyResample(const kernels::CandelaGrid& grid, const kernels::TableShape& shape,
                            const kernels::Rotation& rotation, std::vector<float>& table) {
    table.resize(shape.rows * shape.columns * shape.channels);
    std::size_t at = 0;
    for (std::size_t i = 0; i < shape.rows; ++i)
        for (std::size_t j = 0; j < shape.columns; ++j) {
            const Direction d = plainlyRotated(plainCellDirection(shape, i, j), rotation);
            const float value = kernels::candelaAt(grid, d.theta, d.phi);
            for (std::size_t k = 0; k < shape.channels; ++k) table[at++] = value;
        }
}

}  // namespace rb::test
