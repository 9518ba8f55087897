// The ball stands in the middle of a box whose sides are the pictures. It is small: a ray leaves
// near the middle, from a thousandth of the normal. Everything depends on the direction alone.
//
// A row is computed in two passes: directions, in loops that compilers turn into vector code, then
// the search for the side that each ray hits. Every operation of a pixel is the same, in the same
// order, as if it were computed for itself; so are its bits.

#include "RenderingBase/KVRRbaModel.m/src/kernels/MirrorBall.h"

#include <cmath>
#include <cstring>
#include <vector>

namespace rb::kernels {
namespace {

constexpr std::array<std::uint8_t, 4> kNothing{0, 0, 0, 1};

struct Vector {
    double x, y, z;
};

/// Finds the texel that a ray hits.
class Box {
public:
    explicit Box(const CubePictures& cube)
        : m_cube(cube),
          m_columns(static_cast<double>(cube.width)),
          m_rows(static_cast<double>(cube.height)),
          m_a(m_columns / 100),
          m_b(m_rows / 100),
          m_c(m_columns / 100) {}

    /// @return  Four bytes, which stay the cube's.
    const std::uint8_t* texel(const Vector& from, const Vector& ray) const {
        // Sides in this order: where two meet, a ray belongs to the first. Rows and columns count
        // in the other direction on two of them.
        if (ray.y != 0) {
            const bool isFirst = ray.y > 0;
            const double t = ((isFirst ? m_b : -m_b) - from.y) / ray.y;
            const double hx = from.x + t * ray.x, hz = from.z + t * ray.z;
            if (std::abs(hx) <= m_a && std::abs(hz) <= m_c) {
                const double column = std::floor((hx / m_a + 1) / 2 * m_columns);
                return isFirst ? at(0, column, std::floor((hz / m_c + 1) / 2 * m_rows))
                               : at(1, column, m_rows - std::floor((hz / m_c + 1) * m_rows * 0.5));
            }
        }
        if (ray.x != 0) {
            const bool isFirst = ray.x > 0;
            const double t = ((isFirst ? m_a : -m_a) - from.x) / ray.x;
            const double hy = from.y + t * ray.y, hz = from.z + t * ray.z;
            if (std::abs(hy) <= m_b && std::abs(hz) <= m_c) {
                const double row = std::floor((hy / m_b + 1) / 2 * m_rows);
                return isFirst
                           ? at(2, m_columns - std::floor((1 - hz / m_c) * 0.5 * m_columns), row)
                           : at(3, std::floor((1 - hz / m_c) / 2 * m_columns), row);
            }
        }
        if (ray.z != 0) {
            const bool isFirst = ray.z > 0;
            const double t = ((isFirst ? m_c : -m_c) - from.z) / ray.z;
            const double hx = from.x + t * ray.x, hy = from.y + t * ray.y;
            if (std::abs(hx) <= m_a && std::abs(hy) <= m_b)
                return at(isFirst ? 4 : 5, std::floor((hx / m_a + 1) / 2 * m_columns),
                          std::floor((hy / m_b + 1) / 2 * m_rows));
        }
        return kNothing.data();
    }

private:
    const std::uint8_t* at(std::size_t face, double column, double row) const {
        const std::size_t texel =
            static_cast<std::size_t>(row) * m_cube.width + static_cast<std::size_t>(column);
        return texel < m_cube.width * m_cube.height ? m_cube.faces[face] + 4 * texel
                                                    : kNothing.data();
    }

    const CubePictures& m_cube;
    double m_columns, m_rows;
    double m_a, m_b, m_c;  // half the sides of the box
};

/// The normals and the reflected rays of one row of the ball.
class RowOfRays {
public:
    explicit RowOfRays(std::size_t size)
        : m_u(size),
          m_depth(size),
          m_nx(size),
          m_ny(size),
          m_nz(size),
          m_rx(size),
          m_ry(size),
          m_rz(size) {
        for (std::size_t i = 0; i < size; ++i) m_u[i] = place(i);
    }

    void compute(std::size_t row) {
        const double v = place(row);
        const std::size_t size = m_u.size();
        for (std::size_t i = 0; i < size; ++i) {
            const double u = m_u[i];
            const double square = u * u + v * v;
            const double nz = -std::sqrt(1 - square);
            const double norm = std::sqrt(square + nz * nz);
            m_depth[i] = square;
            m_nx[i] = u / norm;
            m_ny[i] = v / norm;
            m_nz[i] = nz / norm;
        }
        for (std::size_t i = 0; i < size; ++i) {
            const double x = -2 * m_nz[i] * m_nx[i];
            const double y = -2 * m_nz[i] * m_ny[i];
            const double z = 1 - 2 * m_nz[i] * m_nz[i];
            const double norm = std::sqrt(x * x + y * y + z * z);
            m_rx[i] = x / norm;
            m_ry[i] = y / norm;
            m_rz[i] = z / norm;
        }
    }

    bool isOutside(std::size_t i) const { return m_depth[i] > 1; }
    Vector begin(std::size_t i) const {
        return {0.001 * m_nx[i], 0.001 * m_ny[i], 0.001 * m_nz[i]};
    }
    Vector direction(std::size_t i) const { return {m_rx[i], m_ry[i], m_rz[i]}; }

private:
    /// From -1 to 1 over the ball. A ball of one pixel has no such place, and no ray hits.
    double place(std::size_t i) const {
        return 2 * (static_cast<double>(i) / (static_cast<double>(m_u.size()) - 1) - 0.5);
    }

    std::vector<double> m_u, m_depth, m_nx, m_ny, m_nz, m_rx, m_ry, m_rz;
};

}  // namespace

void renderMirrorBall(const CubePictures& cube, std::span<std::uint8_t> ball) {
    const Box box(cube);
    RowOfRays rays(cube.width);
    std::uint8_t* out = ball.data();
    for (std::size_t row = 0; row < cube.width; ++row) {
        rays.compute(row);
        for (std::size_t i = 0; i < cube.width; ++i, out += 4)
            std::memcpy(
                out,
                rays.isOutside(i) ? kNothing.data() : box.texel(rays.begin(i), rays.direction(i)),
                4);
    }
}

}  // namespace rb::kernels
