#pragma once

/// @file  The intensity of a luminaire in one direction. Pure computation.

#include <cstddef>
#include <cstdint>
#include <span>

namespace rb::kernels {

/// The candela values of a photometric file with the angles that they belong to, in degrees.
struct CandelaGrid {
    std::int32_t photometricType = 1;  ///< 1 type C, 2 type B, 3 type A.
    std::span<const float> vertical;
    std::span<const float> horizontal;
    std::span<const float> candela;  ///< h * vertical.size() + v
    float scale = 1;

    /// Whether there is a value for each pair of angles.
    bool isComplete() const {
        return !vertical.empty() && !horizontal.empty() &&
               candela.size() / vertical.size() >= horizontal.size();
    }
};

/// Interpolates linearly in both angles; 0 outside of them, for other types and for a grid that is
/// not complete. All in single precision.
///
/// Kept for compatibility: of a half circle (0 to 180) the borders are 0, in both angles; grids of
/// types A and B keep the sign of the horizontal angle although they are folded.
/// @param theta  Polar angle from +z, radians: pi is 0 degrees of the vertical angles.
/// @param phi    Azimuth, radians from 0 to 2 pi.
float candelaAt(const CandelaGrid& grid, float theta, float phi);

}  // namespace rb::kernels
