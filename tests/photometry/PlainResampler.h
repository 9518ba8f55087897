#pragma once

/// @file  The table of intensity as its definition reads, cell after cell, with a lookup of its
/// own, the quaternions of the host and the standard library's inverse functions: the expectation
/// of tests and benchmarks.

#include "RenderingBase/KVRRbaModel.m/src/kernels/IntensityTable.h"
#include "RenderingBase/host/base/KVRMathQuaternion.h"

#include <algorithm>
#include <cmath>
#include <span>
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

constexpr float kPlainEpsilon = 1.1920929e-7F;

/// The azimuth in the angles of a file of type C. @p isDark  Set where the intensity is 0.
inline float plainlyFolded(float h, float v, float first, float last, bool& isDark) {
    if (last <= kPlainEpsilon) {
        isDark = first > 0 || 0 > last;
        return 0;
    }
    if (last - 90 <= kPlainEpsilon) {
        if (90 < h && h <= 180)
            h = 180 - h;
        else if (180 < h && h <= 270)
            h = h - 180;
        else if (270 < h && h <= 360)
            h = 360 - h;
        isDark = h < 0 || h > 90 || v < 0 || v > 180;
    } else if (last - 180 <= kPlainEpsilon) {
        if (h > 180) h = 360 - h;
        isDark = h <= 0 || h >= 180 || v <= 0 || v >= 180;
    } else if (first - 90 <= kPlainEpsilon && last - 270 <= kPlainEpsilon) {
        if (h < 90) h = 180 - h;
        if (h > 270) h = 540 - h;
        isDark = h < 90 || h > 270;
    }
    return h;
}

inline std::size_t plainIndexBelow(std::span<const float> angles, float angle) {
    std::size_t notLess = 0;
    for (std::size_t count = angles.size(); count > 0;) {
        const std::size_t half = count / 2;
        if (angles[notLess + half] < angle) {
            notLess += half + 1;
            count -= half + 1;
        } else {
            count = half;
        }
    }
    return notLess == 0 ? 0 : notLess - 1;
}

inline float plainCandelaAt(const kernels::CandelaGrid& grid, float theta, float phi) {
    const std::span<const float> hs = grid.horizontal, vs = grid.vertical, c = grid.candela;
    const std::size_t nH = hs.size(), nV = vs.size();
    if (nH == 0 || nV == 0 || c.size() < nH * nV) return 0;
    float h = phi * 57.295776F, v = 180 - theta * 57.295776F;
    bool isAxial = false, isWrapped = false;
    if (grid.photometricType == 1) {
        bool isDark = false;
        h = plainlyFolded(h, v, hs.front(), hs.back(), isDark);
        if (isDark) return 0;
        isAxial = hs.back() <= kPlainEpsilon;
        isWrapped = hs.back() - 180 > kPlainEpsilon &&
                    !(hs.front() - 90 <= kPlainEpsilon && hs.back() - 270 <= kPlainEpsilon);
    } else if (grid.photometricType == 2 || grid.photometricType == 3) {
        v -= 90;
        h -= 180;
        if (vs.front() >= 0) v = std::fabs(v);
        if (hs.front() >= 0) v = std::fabs(v);
        if (hs.front() > h || h > hs.back() || vs.front() > v || v > vs.back()) return 0;
    } else {
        return 0;
    }
    if (v < vs.front() || v > vs.back()) return 0;
    const std::size_t hi = plainIndexBelow(hs, h), vi = plainIndexBelow(vs, v);
    if (isWrapped && vi + 1 >= nV) return 0;
    if (!isWrapped && !isAxial && (hi + 1 >= nH || vi + 1 >= nV)) return 0;
    const std::size_t hn = (hi + 1) % nH, vn = (vi + 1) % nV;
    const float h1 = isAxial && hi + 1 >= nH ? hs[hi] : hs[hn];
    const float v1 = vi + 1 < nV ? vs[vi + 1] : vs[vi];
    const float t = (v - vs[vi]) / (v1 - vs[vi]), s = 1 - t;
    float value = 0;
    if (isAxial) {
        value = s * c[vi] + t * c[vn];
    } else {
        const float u = (h - hs[hi]) / (h1 - hs[hi]);
        value = (1 - u) * (t * c[hi * nV + vn] + s * c[hi * nV + vi]) +
                u * (t * c[hn * nV + vn] + s * c[hn * nV + vi]);
    }
    return std::isinf(value) ? 0 : value * grid.scale;
}

inline void plainlyResample(const kernels::CandelaGrid& grid, const kernels::TableShape& shape,
                            const kernels::Rotation& rotation, std::vector<float>& table) {
    table.resize(shape.rows * shape.columns * shape.channels);
    std::size_t at = 0;
    for (std::size_t i = 0; i < shape.rows; ++i)
        for (std::size_t j = 0; j < shape.columns; ++j) {
            const Direction d = plainlyRotated(plainCellDirection(shape, i, j), rotation);
            const float value = plainCandelaAt(grid, d.theta, d.phi);
            for (std::size_t k = 0; k < shape.channels; ++k) table[at++] = value;
        }
}

}  // namespace rb::test
