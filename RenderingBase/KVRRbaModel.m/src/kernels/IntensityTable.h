#pragma once

/// @file  The intensity of a luminaire over a grid of directions. Pure computation.

#include "RenderingBase/KVRRbaModel.m/src/kernels/CandelaLookup.h"

#include <cstddef>
#include <span>

namespace rb::kernels {

/// Rows of theta, from the pole +z on, by columns of phi; cells of equal channels.
struct TableShape {
    std::size_t rows = 0, columns = 0, channels = 0;
};

/// A rotation as the components x, y, z and scalar of a quaternion.
struct Rotation {
    double x = 0, y = 0, z = 0, scalar = 1;
};

/// Fills a table: cell (i, j) is the intensity in the direction theta = pi i / rows,
/// phi = 2 pi j / columns, rotated. A rotation of zeros is none. Rows are computed in parallel.
///
/// The rotation is that by (x, -y, -z, -scalar), kept for compatibility. Rotated angles are in
/// single precision, so even a rotation by nothing moves a direction a little (7e-7 radians); see
/// TableDirections.h. Intensities are those of candelaAt(), bit by bit. Every processor and every
/// number of threads gives the same table.
/// @param table  rows x columns x channels.
/// Errors: throws std::bad_alloc, with nothing written.
void resample(const CandelaGrid& grid, const TableShape& shape, const Rotation& rotation,
              std::span<float> table);

}  // namespace rb::kernels
