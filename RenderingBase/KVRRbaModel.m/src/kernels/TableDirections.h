#pragma once

/// @file  The directions of the cells of a table of intensity. Pure computation.

#include "RenderingBase/KVRRbaModel.m/src/kernels/IntensityTable.h"

#include <cstddef>
#include <span>
#include <vector>

namespace rb::kernels {

/// What does not change along a row of rotated directions: with (c, s) the cosine and the sine of
/// the azimuth times the sine of the polar angle, x = xc c + xs s + x0, and so on.
struct RowMap {
    float sine = 0;  ///< Of the polar angle.
    double xc = 0, xs = 0, x0 = 0;
    double yc = 0, ys = 0, y0 = 0;
    double zc = 0, zs = 0, z0 = 0;
    bool isLevel = false;  ///< Of one polar angle, which needs no computing for each cell.
};

/// The directions of the cells of a table, rotated.
///
/// Sines, cosines and the rotation as a linear map (in double precision) are computed once; per
/// cell the rotated direction is narrowed to single precision and becomes two angles by the
/// functions of RotatedAngles.h, within 5e-7 radians of those that the standard library's inverse
/// cosine and arc tangent give, azimuths modulo a full circle. Exactly at a pole the azimuth is 0
/// or pi, depending on the signs of zeros, as the products of quaternions and std::atan2 make them.
/// Every processor gives the same angles.
///
/// Threads: const members may be called at once.
class TableDirections {
public:
    /// Errors: throws std::bad_alloc. Cost: two floats a column.
    TableDirections(const TableShape& shape, const Rotation& rotation);

    /// False when the rotation has no finite map: directions are no numbers then.
    bool areNumbers() const { return m_areNumbers; }

    /// Whether all cells of a row have one polar angle: not turned, or only about z.
    bool areLevel() const { return !m_isRotated || (m_map[2][0] == 0 && m_map[2][1] == 0); }

    /// That polar angle.
    float polarAngle(std::size_t row) const;

    /// Angles of the cells of a row from column @p begin on, as many as both spans have.
    void compute(std::size_t row, std::size_t begin, std::span<float> theta,
                 std::span<float> phi) const;

private:
    void rotate(std::size_t row, std::size_t begin, std::span<float> theta,
                std::span<float> phi) const;

    TableShape m_shape;
    Rotation m_rotation;
    bool m_isRotated, m_areNumbers;
    double m_map[3][3];
    /// By column: of the azimuth, or when nothing is rotated the azimuth itself in the first one.
    std::vector<float> m_cosines, m_sines;
};

}  // namespace rb::kernels
