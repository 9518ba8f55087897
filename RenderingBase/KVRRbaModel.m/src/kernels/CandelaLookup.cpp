#include "RenderingBase/KVRRbaModel.m/src/kernels/CandelaLookup.h"

#include <algorithm>
#include <cmath>

namespace rb::kernels {
namespace {

constexpr float kEpsilon = 1.1920929e-7F;
constexpr float kDegrees = 57.295776F;  // to the radian

/// How neighbours are found along the horizontal angles.
enum class Neighbours {
    None,   ///< Outside of the angles: the intensity is 0.
    Plain,  ///< The next angle.
    Axial,  ///< The same in all directions: the first run of values counts.
    Wrap,   ///< Behind the last angle comes the first one.
};

/// A direction in the angles of the file, degrees.
struct FileDirection {
    float horizontal, vertical;
    Neighbours neighbours;
};

FileDirection outside() { return {0, 0, Neighbours::None}; }

FileDirection foldTypeC(const CandelaGrid& grid, float h, float v) {
    const float first = grid.horizontal.front(), last = grid.horizontal.back();
    if (last <= kEpsilon) {
        if (first > 0 || 0 > last) return outside();
        return {0, v, Neighbours::Axial};
    }
    if (last - 90 <= kEpsilon) {
        if (h > 90 && h <= 180)
            h = 180 - h;
        else if (h > 180 && h <= 270)
            h = h - 180;
        else if (h > 270 && h <= 360)
            h = 360 - h;
        if (h < 0 || h > 90 || v < 0 || v > 180) return outside();
        return {h, v, Neighbours::Plain};
    }
    if (last - 180 <= kEpsilon) {
        if (h > 180) h = 360 - h;
        // Open at the borders: azimuth 0 and the poles are black. Kept for compatibility.
        if (h <= 0 || h >= 180 || v <= 0 || v >= 180) return outside();
        return {h, v, Neighbours::Plain};
    }
    if (first - 90 <= kEpsilon && last - 270 <= kEpsilon) {
        if (h < 90) h = 180 - h;
        if (h > 270) h = 540 - h;
        if (h < 90 || h > 270) return outside();
        return {h, v, Neighbours::Plain};
    }
    return {h, v, Neighbours::Wrap};
}

/// Both types alike. The horizontal angle keeps its sign; kept for compatibility.
FileDirection foldTypesAAndB(const CandelaGrid& grid, float h, float v) {
    v = v - 90;
    h = h - 180;
    if (grid.vertical.front() >= 0) v = std::abs(v);
    if (grid.horizontal.front() >= 0) v = std::abs(v);
    const bool isInside = !(grid.horizontal.front() > h || h > grid.horizontal.back() ||
                            grid.vertical.front() > v || v > grid.vertical.back());
    return isInside ? FileDirection{h, v, Neighbours::Plain} : outside();
}

FileDirection folded(const CandelaGrid& grid, float h, float v) {
    switch (grid.photometricType) {
        case 1:
            return foldTypeC(grid, h, v);
        case 2:
        case 3:
            return foldTypesAAndB(grid, h, v);
        default:
            return outside();
    }
}

/// The index before the first angle that is not less than @p angle; 0 at least.
std::size_t indexBelow(std::span<const float> angles, float angle) {
    const auto notLess = std::lower_bound(angles.begin(), angles.end(), angle);
    const auto index = static_cast<std::size_t>(notLess - angles.begin());
    return index > 0 ? index - 1 : 0;
}

/// The angle behind the one at @p index, as far as interpolation needs one. False where the
/// intensity is 0.
bool nextHorizontal(const CandelaGrid& grid, Neighbours neighbours, std::size_t index,
                    float& next) {
    const std::size_t last = grid.horizontal.size() - 1;
    if (index < last) {
        next = grid.horizontal[index + 1];
    } else if (neighbours == Neighbours::Wrap) {
        next = grid.horizontal[(index + 1) % grid.horizontal.size()];
    } else if (neighbours == Neighbours::Axial) {
        next = grid.horizontal[index];
    } else {
        return false;
    }
    return true;
}

float interpolated(const CandelaGrid& grid, const FileDirection& at) {
    const float h = at.horizontal, v = at.vertical;
    const std::size_t hCount = grid.horizontal.size(), vCount = grid.vertical.size();
    const std::size_t hi = indexBelow(grid.horizontal, h), vi = indexBelow(grid.vertical, v);
    const bool isLastV = vi + 1 >= vCount;
    if (isLastV && at.neighbours != Neighbours::Axial) return 0;
    float nextH = 0;
    if (!nextHorizontal(grid, at.neighbours, hi, nextH)) return 0;
    const float nextV = isLastV ? grid.vertical[vi] : grid.vertical[vi + 1];

    const float t = (v - grid.vertical[vi]) / (nextV - grid.vertical[vi]);
    const float s = 1 - t;
    const std::size_t vn = (vi + 1) % vCount;
    const float* const c = grid.candela.data();
    if (at.neighbours == Neighbours::Axial) return s * c[vi] + t * c[vn];

    const float* const c0 = c + hi * vCount;
    const float* const c1 = c + (hi + 1) % hCount * vCount;
    const float u = (h - grid.horizontal[hi]) / (nextH - grid.horizontal[hi]);
    return (1 - u) * (t * c0[vn] + s * c0[vi]) + u * (t * c1[vn] + s * c1[vi]);
}

}  // namespace

float candelaAt(const CandelaGrid& grid, float theta, float phi) {
    if (!grid.isComplete()) return 0;
    const FileDirection at = folded(grid, phi * kDegrees, 180 - theta * kDegrees);
    if (at.neighbours == Neighbours::None) return 0;
    if (at.vertical < grid.vertical.front() || at.vertical > grid.vertical.back()) return 0;
    const float value = interpolated(grid, at);
    return std::isinf(value) ? 0 : value * grid.scale;
}

}  // namespace rb::kernels
