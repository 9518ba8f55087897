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

/// Which directions a grid tells apart, and how the others are found from those.
enum class Symmetry {
    Dark,       ///< Nothing is lit: other types, and grids that are not complete.
    Axial,      ///< The same in all azimuths: the first run of values counts.
    Quadrant,   ///< 0 to 90 degrees, for all four quadrants.
    Bilateral,  ///< 0 to 180 degrees, for both halves.
    FacingX,    ///< 90 to 270 degrees, for both halves.
    Full,       ///< Behind the last angle comes the first one.
    Signed,     ///< Types A and B: horizontal angles from -180 degrees on.
};
Symmetry symmetryOf(const CandelaGrid& grid);

/// Whether only the size of the vertical angle counts. For Symmetry::Signed.
inline bool foldsVertical(const CandelaGrid& grid) {
    return grid.vertical.front() >= 0 || grid.horizontal.front() >= 0;
}

inline constexpr float kDegreesPerRadian = 57.295776F;

/// Interpolates linearly in both angles; 0 outside of them, for other types and for a grid that is
/// not complete. All in single precision.
///
/// Kept for compatibility: of a half circle (0 to 180) the borders are 0, in both angles; grids of
/// types A and B keep the sign of the horizontal angle although they are folded.
/// @param theta  Polar angle from +z, radians: pi is 0 degrees of the vertical angles.
/// @param phi    Azimuth, radians from 0 to 2 pi.
float candelaAt(const CandelaGrid& grid, float theta, float phi);

}  // namespace rb::kernels
