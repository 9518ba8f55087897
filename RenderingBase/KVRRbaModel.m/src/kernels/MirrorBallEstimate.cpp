// Loops without branches, over arrays that do not overlap: compilers make vector code of them.

#include "RenderingBase/KVRRbaModel.m/src/kernels/MirrorBallEstimate.h"

#include <algorithm>
#include <cmath>

// Becomes part of its caller, and so code for the processor that the caller is for.
#define RB_PART_OF_CALLER __attribute__((always_inline)) inline

#if defined(__x86_64__)
#define RB_AVX2 __attribute__((target("avx2")))
#else
#define RB_AVX2
#endif

namespace rb::kernels::ball {
namespace {

constexpr double kMargin = 0x1p-30;  // of a side of a picture

enum Axis : std::int32_t {
    X,
    Y,
    Z
};

bool hasAvx2() {
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

}  // namespace

bool RowEstimate::isPossible(std::size_t width, std::size_t height) {
    constexpr std::size_t kLongest = std::size_t{1} << 20, kMostTexels = std::size_t{1} << 30;
    return width > 1 && width <= kLongest && height <= kLongest && width <= 16 * height &&
           height <= 16 * width && width * height <= kMostTexels;
}

RowEstimate::RowEstimate(std::size_t width, std::size_t height, bool mayUseAvx2)
    : m_width(static_cast<std::int32_t>(width)),
      m_height(static_cast<std::int32_t>(height)),
      m_usesAvx2(mayUseAvx2 && hasAvx2()),
      m_u(width),
      m_x(width),
      m_y(width),
      m_z(width),
      m_axes(width),
      m_faces(width),
      m_texels(width) {
    for (std::size_t i = 0; i < width; ++i) m_u[i] = place(i, width);
}

/// The unit ray is (2wu, 2wv, rz) from a thousandth of (u, v, -w). It leaves the box on the axis
/// whose plane is nearest in its direction: where `to` / `r` is least.
RB_PART_OF_CALLER void RowEstimate::findHits(double v, std::size_t begin, std::size_t end) {
    const double a = m_width / kTexelsPerLength, b = m_height / kTexelsPerLength;
    const double toY = b - kRadius * std::abs(v);
    const double* const us = m_u.data();
    double* const xs = m_x.data();
    double* const ys = m_y.data();
    double* const zs = m_z.data();
    std::int32_t* const axes = m_axes.data();
    for (std::size_t i = begin; i < end; ++i) {
        const double u = us[i];
        const double square = u * u + v * v;
        const double w = std::sqrt(1 - square);
        const double rx = 2 * w * std::abs(u), ry = 2 * w * std::abs(v), rz = 2 * square - 1;
        const double toX = a - kRadius * std::abs(u);
        const double toZ = a + (rz > 0 ? kRadius : -kRadius) * w;

        const bool isY = toY * rx < toX * ry;
        const double toXY = isY ? toY : toX, rxy = isY ? ry : rx;
        const bool isZ = toZ * rxy < toXY * std::abs(rz);
        const double t = (isZ ? toZ : toXY) / (isZ ? std::abs(rz) : rxy);

        const double fromAxis = kRadius + 2 * w * t;
        xs[i] = u * fromAxis;
        ys[i] = v * fromAxis;
        zs[i] = t * rz - kRadius * w;
        axes[i] = isZ ? Z : isY ? Y : X;
    }
}

/// Pictures on the sides across x show -z along their columns, those across y show z along their
/// rows. Face 2 counts its columns from the far end, face 1 its rows.
RB_PART_OF_CALLER void RowEstimate::findTexels(double v, std::size_t begin, std::size_t end) {
    const double columns = m_width, rows = m_height;
    const double perLength = kTexelsPerLength / 2, rowsPerDepth = perLength * rows / columns;
    const double clear = 0.5 - kMargin * std::max(columns, rows);
    const std::int32_t width = m_width, height = m_height;
    const std::int32_t faceY = v > 0 ? 0 : 1;
    const double* const xs = m_x.data();
    const double* const ys = m_y.data();
    const double* const zs = m_z.data();
    const std::int32_t* const axes = m_axes.data();
    std::int32_t* const faces = m_faces.data();
    std::int32_t* const texels = m_texels.data();
    for (std::size_t i = begin; i < end; ++i) {
        const double x = xs[i], y = ys[i], z = zs[i];
        const std::int32_t axis = axes[i];
        const double column = columns / 2 + perLength * (axis == X ? -z : x);
        const double row = rows / 2 + (axis == Y ? rowsPerDepth * z : perLength * y);
        const auto wholeColumn = static_cast<std::int32_t>(column);
        const auto wholeRow = static_cast<std::int32_t>(row);
        const double offColumn = std::abs(column - wholeColumn - 0.5);
        const double offRow = std::abs(row - wholeRow - 0.5);

        const std::int32_t faceX = x > 0 ? 2 : 3, faceZ = z > 0 ? 4 : 5;
        const std::int32_t face = axis == Z ? faceZ : axis == Y ? faceY : faceX;
        faces[i] = (offColumn > offRow ? offColumn : offRow) < clear ? face : kInDoubt;
        texels[i] = (face == 1 ? height - wholeRow : wholeRow) * width +
                    (face == 2 ? width - wholeColumn : wholeColumn);
    }
}

RB_AVX2 void RowEstimate::computeAvx2(double v, std::size_t begin, std::size_t end) {
    findHits(v, begin, end);
    findTexels(v, begin, end);
}

void RowEstimate::compute(double v, std::size_t begin, std::size_t end) {
    if (m_usesAvx2) return computeAvx2(v, begin, end);
    findHits(v, begin, end);
    findTexels(v, begin, end);
}

}  // namespace rb::kernels::ball
