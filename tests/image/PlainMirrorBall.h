#pragma once

/// @file  The mirror ball computed as its definition reads: every pixel for itself, in double
/// precision, nothing kept from one to the next.

#include "RenderingBase/KVRRbaModel.m/src/kernels/MirrorBall.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace rb::test {

/// One pixel of the ball: four bytes into @p out.
inline void plainMirrorBallPixel(const kernels::CubePictures& cube, std::size_t column,
                                 std::size_t row, std::uint8_t* out) {
    const auto set = [&](std::size_t face, double x, double y) {
        const auto index = static_cast<std::size_t>(y) * cube.width + static_cast<std::size_t>(x);
        if (index < cube.width * cube.height) std::copy_n(cube.faces[face] + 4 * index, 4, out);
    };
    constexpr std::uint8_t kNothing[] = {0, 0, 0, 1};
    std::copy_n(kNothing, 4, out);
    const double w = static_cast<double>(cube.width), h = static_cast<double>(cube.height);
    const double u = 2 * (static_cast<double>(column) / (w - 1) - 0.5);
    const double v = 2 * (static_cast<double>(row) / (w - 1) - 0.5);
    if (u * u + v * v > 1) return;

    double nx = u, ny = v, nz = -std::sqrt(1 - (u * u + v * v));
    const double normalLength = std::sqrt(nx * nx + ny * ny + nz * nz);
    nx /= normalLength, ny /= normalLength, nz /= normalLength;
    double rx = -2 * nz * nx, ry = -2 * nz * ny, rz = 1 - 2 * nz * nz;
    const double rayLength = std::sqrt(rx * rx + ry * ry + rz * rz);
    rx /= rayLength, ry /= rayLength, rz /= rayLength;
    const double ox = 0.001 * nx, oy = 0.001 * ny, oz = 0.001 * nz;
    const double a = w / 100, b = h / 100, c = w / 100;

    if (ry != 0) {
        const double t = ((ry > 0 ? b : -b) - oy) / ry, x = ox + t * rx, z = oz + t * rz;
        if (std::abs(x) <= a && std::abs(z) <= c) {
            if (ry > 0)
                return set(0, std::floor((x / a + 1) / 2 * w), std::floor((z / c + 1) / 2 * h));
            return set(1, std::floor((x / a + 1) / 2 * w), h - std::floor((z / c + 1) * h * 0.5));
        }
    }
    if (rx != 0) {
        const double t = ((rx > 0 ? a : -a) - ox) / rx, y = oy + t * ry, z = oz + t * rz;
        if (std::abs(y) <= b && std::abs(z) <= c) {
            if (rx > 0)
                return set(2, w - std::floor((1 - z / c) * 0.5 * w),
                           std::floor((y / b + 1) / 2 * h));
            return set(3, std::floor((1 - z / c) / 2 * w), std::floor((y / b + 1) / 2 * h));
        }
    }
    if (rz != 0) {
        const double t = ((rz > 0 ? c : -c) - oz) / rz, x = ox + t * rx, y = oy + t * ry;
        if (std::abs(x) <= a && std::abs(y) <= b)
            set(rz > 0 ? 4 : 5, std::floor((x / a + 1) / 2 * w), std::floor((y / b + 1) / 2 * h));
    }
}

/// The whole ball.
inline std::vector<std::uint8_t> plainMirrorBall(const kernels::CubePictures& cube) {
    std::vector<std::uint8_t> ball(4 * cube.width * cube.width);
    for (std::size_t row = 0; row < cube.width; ++row)
        for (std::size_t column = 0; column < cube.width; ++column)
            plainMirrorBallPixel(cube, column, row, &ball[4 * (row * cube.width + column)]);
    return ball;
}

}  // namespace rb::test
