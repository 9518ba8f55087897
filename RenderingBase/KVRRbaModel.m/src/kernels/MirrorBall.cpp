// The ball stands in the middle of a box whose sides are the pictures. It is small: a ray leaves
// near the middle, from a thousandth of the normal. Everything depends on the direction alone.
//
// `rayAt` and `Box::texel` define what a pixel shows, operation by operation. Most pixels are
// estimated instead (`MirrorBallEstimate.h`), which gives the same texel in less time.

#include "RenderingBase/KVRRbaModel.m/src/kernels/MirrorBall.h"

#include "RenderingBase/KVRRbaModel.m/src/kernels/MirrorBallEstimate.h"

#include <cmath>
#include <cstring>
#include <vector>

namespace rb::kernels {
namespace {

using ball::kRadius, ball::kTexelsPerLength, ball::place;

constexpr std::array<std::uint8_t, 4> kNothing{0, 0, 0, 1};

struct Vector {
    double x, y, z;
};

struct Ray {
    Vector from, direction;
};

/// A view along z, mirrored where the ball is seen at (@p u, @p v).
Ray rayAt(double u, double v) {
    const double square = u * u + v * v;
    const double depth = -std::sqrt(1 - square);
    const double norm = std::sqrt(square + depth * depth);
    const Vector n{u / norm, v / norm, depth / norm};
    const Vector r{-2 * n.z * n.x, -2 * n.z * n.y, 1 - 2 * n.z * n.z};
    const double length = std::sqrt(r.x * r.x + r.y * r.y + r.z * r.z);
    return {{kRadius * n.x, kRadius * n.y, kRadius * n.z},
            {r.x / length, r.y / length, r.z / length}};
}

/// Finds the texel that a ray hits.
class Box {
public:
    explicit Box(const CubePictures& cube)
        : m_cube(cube),
          m_columns(static_cast<double>(cube.width)),
          m_rows(static_cast<double>(cube.height)),
          m_a(m_columns / kTexelsPerLength),
          m_b(m_rows / kTexelsPerLength),
          m_c(m_columns / kTexelsPerLength) {}

    /// @return  Four bytes, which stay the cube's.
    const std::uint8_t* texel(const Ray& whole) const {
        const Vector &from = whole.from, &ray = whole.direction;
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

    /// A texel by its index, which may be beyond the picture.
    const std::uint8_t* at(std::size_t face, std::size_t texel) const {
        return texel < m_cube.width * m_cube.height ? m_cube.faces[face] + 4 * texel
                                                    : kNothing.data();
    }

private:
    const std::uint8_t* at(std::size_t face, double column, double row) const {
        return at(face,
                  static_cast<std::size_t>(row) * m_cube.width + static_cast<std::size_t>(column));
    }

    const CubePictures& m_cube;
    double m_columns, m_rows;
    double m_a, m_b, m_c;  // half the sides of the box
};

void put(const std::uint8_t* texel, std::uint8_t* out) { std::memcpy(out, texel, 4); }

bool isOutside(double u, double v) { return u * u + v * v > 1; }

/// Every pixel by its definition.
void renderLiterally(const CubePictures& cube, std::uint8_t* out) {
    const Box box(cube);
    for (std::size_t row = 0; row < cube.width; ++row) {
        const double v = place(row, cube.width);
        for (std::size_t i = 0; i < cube.width; ++i, out += 4) {
            const double u = place(i, cube.width);
            put(isOutside(u, v) ? kNothing.data() : box.texel(rayAt(u, v)), out);
        }
    }
}

void renderByEstimates(const CubePictures& cube, std::uint8_t* out, bool mayUseAvx2) {
    const Box box(cube);
    ball::RowEstimate estimate(cube.width, cube.height, mayUseAvx2);
    const auto us = estimate.u();
    std::vector<const std::uint8_t*> shown(cube.width);
    for (std::size_t row = 0; row < cube.width; ++row, out += 4 * cube.width) {
        const double v = place(row, cube.width);
        std::size_t begin = 0, end = cube.width;
        for (; begin < end && isOutside(us[begin], v); ++begin)
            put(kNothing.data(), out + 4 * begin);
        for (; end > begin && isOutside(us[end - 1], v); --end)
            put(kNothing.data(), out + 4 * (end - 1));
        estimate.compute(v, begin, end);
        const auto faces = estimate.faces(), texels = estimate.texels();
        for (std::size_t i = begin; i < end; ++i) {
            shown[i] = faces[i] == estimate.kInDoubt ? box.texel(rayAt(us[i], v))
                                                     : box.at(static_cast<std::size_t>(faces[i]),
                                                              static_cast<std::size_t>(texels[i]));
            // They lie far apart, each in a line of memory of its own.
            __builtin_prefetch(shown[i]);
        }
        for (std::size_t i = begin; i < end; ++i) put(shown[i], out + 4 * i);
    }
}

void render(const CubePictures& cube, std::span<std::uint8_t> ball, bool mayUseAvx2) {
    if (ball::RowEstimate::isPossible(cube.width, cube.height))
        renderByEstimates(cube, ball.data(), mayUseAvx2);
    else
        renderLiterally(cube, ball.data());
}

}  // namespace

void renderMirrorBall(const CubePictures& cube, std::span<std::uint8_t> ball) {
    render(cube, ball, true);
}

void detail::renderMirrorBallPortable(const CubePictures& cube, std::span<std::uint8_t> ball) {
    render(cube, ball, false);
}

}  // namespace rb::kernels
