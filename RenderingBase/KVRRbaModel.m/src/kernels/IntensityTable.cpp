#include "RenderingBase/KVRRbaModel.m/src/kernels/IntensityTable.h"

#include "RenderingBase/host/base/KVRMathQuaternion.h"

#include <algorithm>
#include <cmath>

namespace rb::kernels {
namespace {

constexpr float kPi = 3.1415927F, kTwoPi = 6.2831855F;

struct Direction {
    float theta, phi;
};

Direction rotated(const Direction& d, const Rotation& by) {
    const KVRMathQuaternion rotation(by.x, -by.y, -by.z, -by.scalar);
    const float sine = std::sin(d.theta);
    const KVRMathQuaternion direction(static_cast<double>(std::cos(d.phi) * sine),
                                      static_cast<double>(std::sin(d.phi) * sine),
                                      static_cast<double>(std::cos(d.theta)), 0);
    KVRMathQuaternion conjugate = rotation;
    conjugate.Conjugate();
    double x = 0, y = 0, z = 0, scalar = 0;
    (rotation * (direction * conjugate)).GetCoord(x, y, z, scalar);
    // Narrowed first: just beyond 1 there is no inverse cosine.
    const float theta = std::acos(static_cast<float>(z));
    const float phi = std::atan2(static_cast<float>(y), static_cast<float>(x));
    return {theta, phi < 0 ? phi + kTwoPi : phi};
}

}  // namespace

void resample(const CandelaGrid& grid, const TableShape& shape, const Rotation& rotation,
              std::span<float> table) {
    const bool isRotated =
        rotation.x != 0 || rotation.y != 0 || rotation.z != 0 || rotation.scalar != 0;
    const auto rows = static_cast<std::ptrdiff_t>(shape.rows);
#pragma omp parallel for schedule(static)
    for (std::ptrdiff_t i = 0; i < rows; ++i) {
        float* cell = table.data() + static_cast<std::size_t>(i) * shape.columns * shape.channels;
        const float theta = static_cast<float>(i) / static_cast<float>(shape.rows) * kPi;
        for (std::size_t j = 0; j < shape.columns; ++j, cell += shape.channels) {
            const float phi = static_cast<float>(j) / static_cast<float>(shape.columns) * kTwoPi;
            Direction at{theta, phi};
            if (isRotated) at = rotated(at, rotation);
            std::fill_n(cell, shape.channels, candelaAt(grid, at.theta, at.phi));
        }
    }
}

}  // namespace rb::kernels
