#include "tools/rba/PolarPlanes.h"

#include <algorithm>
#include <cmath>

namespace rb::cli {
namespace {

using KVRRbaIESLoader::IESPhotometry;
using Values = std::vector<PolarCurve::Value>;

/// Degrees by which directions are moved inwards: the very border may be black, and rounding may
/// lead beyond it.
constexpr float kInside = 1e-3F;

AngleRange rangeOf(const std::vector<float>& angles) {
    const auto [least, most] = std::minmax_element(angles.begin(), angles.end());
    return {*least, *most};
}

float inside(float angle, const AngleRange& range) {
    if (range.most - range.least < 2 * kInside) return range.least;
    return std::clamp(angle, range.least + kInside, range.most - kInside);
}

/// The angles within @p shown in ascending order, with those borders that the file goes beyond.
std::vector<float> anglesWithin(std::vector<float> angles, const AngleRange& shown) {
    const AngleRange range = rangeOf(angles);
    for (const float border : {shown.least, shown.most})
        if (range.least < border && border < range.most) angles.push_back(border);
    std::erase_if(angles, [&](float angle) { return angle < shown.least || angle > shown.most; });
    std::sort(angles.begin(), angles.end());
    return angles;
}

/// The angles, and others between where they are far apart: in polar coordinates what is linear
/// between two angles is bent.
std::vector<float> sampledAngles(const std::vector<float>& angles) {
    constexpr std::size_t kMany = 4096;
    constexpr float kFarthest = 1;
    const float closest = angles.size() > kMany ? 0.05F : 0;  // so that drawings stay small
    std::vector<float> sampled{angles.front()};
    for (const float next : angles) {
        const float from = sampled.back(), gap = next - from;
        if (gap <= closest) continue;
        const float steps = std::ceil(gap / kFarthest);
        for (float i = 1; i < steps; ++i) sampled.push_back(from + gap * i / steps);
        sampled.push_back(next);
    }
    return sampled;
}

/// One side of the axis, from the axis on. Where the file ends the curve goes to the middle.
/// @param candelaAt  Of an angle of @p angles.
template <class CandelaAt>
Values sideOf(const std::vector<float>& angles, const AngleRange& shown, CandelaAt candelaAt) {
    const std::vector<float> within = anglesWithin(angles, shown);
    if (within.empty()) return {{0, 0}};
    const std::vector<float> sampled = sampledAngles(within);
    const AngleRange range = rangeOf(angles);
    Values values;
    if (sampled.front() > 0) values.push_back({static_cast<double>(sampled.front()), 0});
    for (const float angle : sampled) {
        const float candela = candelaAt(inside(angle, range));
        const bool isShown = std::isfinite(candela) && candela > 0;
        values.push_back(
            {static_cast<double>(angle), isShown ? static_cast<double>(candela) : 0.0});
    }
    if (sampled.back() < 180) values.push_back({static_cast<double>(sampled.back()), 0});
    return values;
}

PolarCurve curveOf(std::string name, const Values& left, const Values& right) {
    PolarCurve curve{std::move(name), {}};
    for (auto value = left.rbegin(); value != left.rend(); ++value)
        curve.values.push_back({-value->degrees, value->candela});
    curve.values.insert(curve.values.end(), right.begin(), right.end());
    return curve;
}

std::vector<PolarCurve> planesOfTypeC(const IESPhotometry& record) {
    const auto half = [&record](float azimuth) {
        return sideOf(record.verticalAngles, verticalRange(record),
                      [&](float vertical) { return candelaAtAngles(record, vertical, azimuth); });
    };
    if (circleOf(record) == Circle::Axial) {
        const Values side = half(0);
        return {curveOf("all planes", side, side)};
    }
    return {curveOf("C180 - C0", half(180 - kInside), half(kInside)),
            curveOf("C270 - C90", half(270), half(90))};
}

/// A plane through the axis. Angles of one sign stand for both.
template <class CandelaAt>
PolarCurve planeOf(std::string name, const std::vector<float>& angles, const AngleRange& shown,
                   CandelaAt candelaAt) {
    const Values side = sideOf(angles, shown, candelaAt);
    if (angles.front() >= 0) return curveOf(std::move(name), side, side);
    Values values = side;
    values.insert(values.begin(), {side.front().degrees, 0});
    return {std::move(name), std::move(values)};
}

std::vector<PolarCurve> planesOfTypesAAndB(const IESPhotometry& record) {
    const float level = inside(kInside, rangeOf(record.verticalAngles));
    const float middle = inside(kInside, rangeOf(record.horizontalAngles));
    return {planeOf("vertical plane", record.verticalAngles, verticalRange(record),
                    [&](float vertical) { return candelaAtAngles(record, vertical, middle); }),
            planeOf("horizontal plane", record.horizontalAngles, horizontalRange(record),
                    [&](float horizontal) { return candelaAtAngles(record, level, horizontal); })};
}

}  // namespace

std::vector<PolarCurve> planesOf(const IESPhotometry& record) {
    return record.photometricType == kTypeC ? planesOfTypeC(record) : planesOfTypesAAndB(record);
}

}  // namespace rb::cli
