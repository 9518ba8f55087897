#include "RenderingBase/KVRRbaModel.m/src/kernels/CandelaLookup.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace rb::kernels {
namespace {

constexpr float kEpsilon = 1.1920929e-7F;

/// A direction in the angles of the file, degrees.
struct FileDirection {
    float horizontal, vertical;
    bool isInside;
};

Symmetry symmetryOfTypeC(float first, float last) {
    if (last <= kEpsilon) return first > 0 || 0 > last ? Symmetry::Dark : Symmetry::Axial;
    if (last - 90 <= kEpsilon) return Symmetry::Quadrant;
    if (last - 180 <= kEpsilon) return Symmetry::Bilateral;
    if (first - 90 <= kEpsilon && last - 270 <= kEpsilon) return Symmetry::FacingX;
    return Symmetry::Full;
}

FileDirection foldedToQuadrant(float h, float v) {
    if (h > 90 && h <= 180)
        h = 180 - h;
    else if (h > 180 && h <= 270)
        h = h - 180;
    else if (h > 270 && h <= 360)
        h = 360 - h;
    return {h, v, !(h < 0 || h > 90 || v < 0 || v > 180)};
}

FileDirection foldedToHalf(float h, float v) {
    if (h > 180) h = 360 - h;
    // Open at the borders: azimuth 0 and the poles are black. Kept for compatibility.
    return {h, v, !(h <= 0 || h >= 180 || v <= 0 || v >= 180)};
}

FileDirection foldedToFacingX(float h, float v) {
    if (h < 90) h = 180 - h;
    if (h > 270) h = 540 - h;
    return {h, v, !(h < 90 || h > 270)};
}

/// Both types alike. The horizontal angle keeps its sign; kept for compatibility.
FileDirection foldedToSigned(const CandelaGrid& grid, float h, float v) {
    v = v - 90;
    h = h - 180;
    if (foldsVertical(grid)) v = std::abs(v);
    return {h, v,
            !(grid.horizontal.front() > h || h > grid.horizontal.back() ||
              grid.vertical.front() > v || v > grid.vertical.back())};
}

FileDirection folded(const CandelaGrid& grid, Symmetry symmetry, float h, float v) {
    switch (symmetry) {
        case Symmetry::Axial:
            return {0, v, true};
        case Symmetry::Quadrant:
            return foldedToQuadrant(h, v);
        case Symmetry::Bilateral:
            return foldedToHalf(h, v);
        case Symmetry::FacingX:
            return foldedToFacingX(h, v);
        case Symmetry::Full:
            return {h, v, true};
        case Symmetry::Signed:
            return foldedToSigned(grid, h, v);
        case Symmetry::Dark:
            break;
    }
    return {h, v, false};
}

/// The index before the first angle that is not less than @p angle; 0 at least.
std::size_t indexBelow(std::span<const float> angles, float angle) {
    const auto notLess = std::lower_bound(angles.begin(), angles.end(), angle);
    const auto index = static_cast<std::size_t>(notLess - angles.begin());
    return index > 0 ? index - 1 : 0;
}

/// The angle behind the one at @p index, as far as interpolation needs one. False where the
/// intensity is 0.
bool nextHorizontal(const CandelaGrid& grid, Symmetry symmetry, std::size_t index, float& next) {
    const std::size_t last = grid.horizontal.size() - 1;
    if (index < last) {
        next = grid.horizontal[index + 1];
    } else if (symmetry == Symmetry::Full) {
        next = grid.horizontal[(index + 1) % grid.horizontal.size()];
    } else if (symmetry == Symmetry::Axial) {
        next = grid.horizontal[index];
    } else {
        return false;
    }
    return true;
}

/// Nothing where there is no next angle.
std::optional<float> interpolated(const CandelaGrid& grid, Symmetry symmetry,
                                  const FileDirection& at) {
    const float h = at.horizontal, v = at.vertical;
    const std::size_t hCount = grid.horizontal.size(), vCount = grid.vertical.size();
    const std::size_t hi = indexBelow(grid.horizontal, h), vi = indexBelow(grid.vertical, v);
    const bool isLastV = vi + 1 >= vCount;
    if (isLastV && symmetry != Symmetry::Axial) return {};
    float nextH = 0;
    if (!nextHorizontal(grid, symmetry, hi, nextH)) return {};
    const float nextV = isLastV ? grid.vertical[vi] : grid.vertical[vi + 1];

    const float t = (v - grid.vertical[vi]) / (nextV - grid.vertical[vi]);
    const float s = 1 - t;
    const std::size_t vn = (vi + 1) % vCount;
    const float* const c = grid.candela.data();
    if (symmetry == Symmetry::Axial) return s * c[vi] + t * c[vn];

    const float* const c0 = c + hi * vCount;
    const float* const c1 = c + (hi + 1) % hCount * vCount;
    const float u = (h - grid.horizontal[hi]) / (nextH - grid.horizontal[hi]);
    return (1 - u) * (t * c0[vn] + s * c0[vi]) + u * (t * c1[vn] + s * c1[vi]);
}

}  // namespace

Symmetry symmetryOf(const CandelaGrid& grid) {
    if (!grid.isComplete()) return Symmetry::Dark;
    switch (grid.photometricType) {
        case 1:
            return symmetryOfTypeC(grid.horizontal.front(), grid.horizontal.back());
        case 2:
        case 3:
            return Symmetry::Signed;
        default:
            return Symmetry::Dark;
    }
}

float candelaAt(const CandelaGrid& grid, float theta, float phi) {
    const Symmetry symmetry = symmetryOf(grid);
    if (symmetry == Symmetry::Dark) return 0;
    const FileDirection at =
        folded(grid, symmetry, phi * kDegreesPerRadian, 180 - theta * kDegreesPerRadian);
    if (!at.isInside) return 0;
    if (at.vertical < grid.vertical.front() || at.vertical > grid.vertical.back()) return 0;
    const std::optional<float> value = interpolated(grid, symmetry, at);
    return !value || std::isinf(*value) ? 0 : *value * grid.scale;
}

}  // namespace rb::kernels
