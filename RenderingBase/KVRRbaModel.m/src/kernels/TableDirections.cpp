#include "RenderingBase/KVRRbaModel.m/src/kernels/TableDirections.h"

#include "RenderingBase/KVRRbaModel.m/src/kernels/RotatedAngles.h"
#include "RenderingBase/host/base/KVRMathQuaternion.h"

#include <algorithm>
#include <cmath>

// Compiled once for every kind of processor; the order of these lines matters.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RenderingBase/KVRRbaModel.m/src/kernels/TableDirections.cpp"
#include <hwy/foreach_target.h>
#include "RenderingBase/KVRRbaModel.m/src/kernels/VectorLoop-inl.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {
namespace {

#if RB_IS_PLAIN_TARGET

std::size_t rotateVectors(const RowMap&, const float*, const float*, std::size_t, float*, float*) {
    return 0;
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::ScalableTag<float>;
using Float = hn::Vec<Floats>;
using Doubles = hn::ScalableTag<double>;
using Double = hn::Vec<Doubles>;
using HalfFloats = hn::Half<Floats>;

HWY_INLINE Float set(float value) { return hn::Set(Floats(), value); }

template <std::size_t kCount>
HWY_INLINE Float polynomialOf(const float (&coefficients)[kCount], Float x) {
    Float sum = set(coefficients[kCount - 1]);
    for (std::size_t i = kCount - 1; i-- > 0;) sum = hn::Add(hn::Mul(sum, x), set(coefficients[i]));
    return sum;
}

/// angle + angle square p(square)
template <std::size_t kCount>
HWY_INLINE Float seriesOf(const float (&coefficients)[kCount], Float angle, Float square) {
    return hn::Add(angle, hn::Mul(hn::Mul(angle, square), polynomialOf(coefficients, square)));
}

HWY_INLINE Float inverseCosineOf(Float x) {
    const Float one = set(1), half = set(0.5F);
    const Float size = hn::Min(hn::Abs(x), one);
    const auto isLarge = hn::Gt(size, half);
    const auto isNegative = hn::Lt(x, hn::Zero(Floats()));
    const Float square =
        hn::IfThenElse(isLarge, hn::Mul(hn::Sub(one, size), half), hn::Mul(size, size));
    const Float sine = hn::IfThenElse(isLarge, hn::Sqrt(square), size);
    const Float angle = seriesOf(kArcSine, sine, square);
    const Float twice = hn::Add(angle, angle);
    const Float large =
        hn::IfThenElse(isNegative, hn::Sub(set(kPi), hn::Sub(twice, set(kPiRest))), twice);
    const Float withSign = hn::IfThenElse(isNegative, hn::Neg(angle), angle);
    const Float small = hn::Sub(set(kHalfPi), hn::Sub(withSign, set(kHalfPiRest)));
    return hn::IfThenElse(isLarge, large, small);
}

HWY_INLINE Float azimuthOf(Float y, Float x) {
    const Float sizeX = hn::Abs(x), sizeY = hn::Abs(y), zero = hn::Zero(Floats());
    const Float t = hn::Div(hn::Min(sizeX, sizeY), hn::Max(sizeX, sizeY));
    Float angle = seriesOf(kArcTangent, t, hn::Mul(t, t));
    const Float steep = hn::Sub(set(kHalfPi), hn::Sub(angle, set(kHalfPiRest)));
    angle = hn::IfThenElse(hn::Gt(sizeY, sizeX), steep, angle);
    const Float backward = hn::Sub(set(kPi), hn::Sub(angle, set(kPiRest)));
    angle = hn::IfThenElse(hn::Lt(x, zero), backward, angle);
    return hn::IfThenElse(hn::Lt(y, zero), hn::Sub(set(kTwoPi), angle), angle);
}

/// Cosines and sines of half as many cells as a vector of floats has.
struct Halves {
    Double cosine, sine;
};

HWY_INLINE hn::Vec<HalfFloats> mapped(const Halves& in, double c, double s, double constant) {
    const Doubles d;
    const Double sum = hn::Add(hn::Mul(hn::Set(d, c), in.cosine), hn::Mul(hn::Set(d, s), in.sine));
    return hn::DemoteTo(HalfFloats(), hn::Add(sum, hn::Set(d, constant)));
}

HWY_INLINE Float mapped(const Halves& low, const Halves& high, double c, double s,
                        double constant) {
    return hn::Combine(Floats(), mapped(high, c, s, constant), mapped(low, c, s, constant));
}

/// Returns how many cells, from the first on, it has computed.
std::size_t rotateVectors(const RowMap& map, const float* cosines, const float* sines,
                          std::size_t count, float* theta, float* phi) {
    const Floats d;
    const HalfFloats half;
    const Doubles wide;
    const Float sine = set(map.sine);
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        const Float c = hn::Mul(hn::LoadU(d, cosines + i), sine);
        const Float s = hn::Mul(hn::LoadU(d, sines + i), sine);
        const Halves low{hn::PromoteTo(wide, hn::LowerHalf(half, c)),
                         hn::PromoteTo(wide, hn::LowerHalf(half, s))};
        const Halves high{hn::PromoteTo(wide, hn::UpperHalf(half, c)),
                          hn::PromoteTo(wide, hn::UpperHalf(half, s))};
        const Float x = mapped(low, high, map.xc, map.xs, map.x0);
        const Float y = mapped(low, high, map.yc, map.ys, map.y0);
        hn::StoreU(azimuthOf(y, x), d, phi + i);
        if (map.isLevel) continue;
        const Float z = mapped(low, high, map.zc, map.zs, map.z0);
        hn::StoreU(inverseCosineOf(z), d, theta + i);
    }
    return i;
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rb::kernels {
namespace {

RB_VERSIONS(rotateVectors);

float thetaOf(std::size_t row, const TableShape& shape) {
    return static_cast<float>(row) / static_cast<float>(shape.rows) * kPi;
}

float phiOf(std::size_t column, const TableShape& shape) {
    return static_cast<float>(column) / static_cast<float>(shape.columns) * kTwoPi;
}

/// The azimuth of a direction that is rotated to a pole: what signs of zeros make of it.
float azimuthAtPole(float cosine, float sine, float z, const Rotation& by) {
    const KVRMathQuaternion rotation(by.x, -by.y, -by.z, -by.scalar);
    const KVRMathQuaternion direction(static_cast<double>(cosine), static_cast<double>(sine),
                                      static_cast<double>(z), 0);
    KVRMathQuaternion conjugate = rotation;
    conjugate.Conjugate();
    double x = 0, y = 0, unused = 0, scalar = 0;
    (rotation * (direction * conjugate)).GetCoord(x, y, unused, scalar);
    const float phi = std::atan2(static_cast<float>(y), static_cast<float>(x));
    return phi < 0 ? phi + kTwoPi : phi;
}

}  // namespace

TableDirections::TableDirections(const TableShape& shape, const Rotation& rotation)
    : m_shape(shape),
      m_rotation(rotation),
      m_isRotated(rotation.x != 0 || rotation.y != 0 || rotation.z != 0 || rotation.scalar != 0),
      m_cosines(shape.columns),
      m_sines(m_isRotated ? shape.columns : 0) {
    const double x = rotation.x, y = -rotation.y, z = -rotation.z, w = -rotation.scalar;
    const double map[3][3] = {
        {w * w + x * x - y * y - z * z, 2 * (x * y - w * z), 2 * (x * z + w * y)},
        {2 * (x * y + w * z), w * w - x * x + y * y - z * z, 2 * (y * z - w * x)},
        {2 * (x * z - w * y), 2 * (y * z + w * x), w * w - x * x - y * y + z * z}};
    std::copy_n(&map[0][0], 9, &m_map[0][0]);
    m_areNumbers =
        std::all_of(&m_map[0][0], &m_map[0][0] + 9, [](double one) { return std::isfinite(one); });
    for (std::size_t j = 0; j < shape.columns; ++j) {
        const float phi = phiOf(j, shape);
        m_cosines[j] = m_isRotated ? std::cos(phi) : phi;
        if (m_isRotated) m_sines[j] = std::sin(phi);
    }
}

float TableDirections::polarAngle(std::size_t row) const {
    const float angle = thetaOf(row, m_shape);
    if (!m_isRotated) return angle;
    return inverseCosine(static_cast<float>(m_map[2][2] * static_cast<double>(std::cos(angle))));
}

void TableDirections::compute(std::size_t row, std::size_t begin, std::span<float> theta,
                              std::span<float> phi) const {
    if (m_isRotated) return rotate(row, begin, theta, phi);
    std::fill(theta.begin(), theta.end(), thetaOf(row, m_shape));
    std::copy_n(m_cosines.begin() + static_cast<std::ptrdiff_t>(begin), phi.size(), phi.begin());
}

void TableDirections::rotate(std::size_t row, std::size_t begin, std::span<float> theta,
                             std::span<float> phi) const {
    const float angle = thetaOf(row, m_shape), cosine = std::cos(angle);
    const double z = static_cast<double>(cosine);
    const RowMap map{std::sin(angle), m_map[0][0],     m_map[0][1],     m_map[0][2] * z,
                     m_map[1][0],     m_map[1][1],     m_map[1][2] * z, m_map[2][0],
                     m_map[2][1],     m_map[2][2] * z, areLevel()};
    const float* const cosines = m_cosines.data() + begin;
    const float* const sines = m_sines.data() + begin;
    std::size_t i =
        RB_BEST(rotateVectors)(map, cosines, sines, theta.size(), theta.data(), phi.data());
    for (; i < theta.size(); ++i) {
        const auto c = static_cast<double>(cosines[i] * map.sine);
        const auto s = static_cast<double>(sines[i] * map.sine);
        theta[i] = inverseCosine(static_cast<float>((map.zc * c + map.zs * s) + map.z0));
        phi[i] = azimuth(static_cast<float>((map.yc * c + map.ys * s) + map.y0),
                         static_cast<float>((map.xc * c + map.xs * s) + map.x0));
    }
    if (map.isLevel) std::fill(theta.begin(), theta.end(), polarAngle(row));
    for (i = 0; i < phi.size(); ++i)
        if (std::isnan(phi[i]))
            phi[i] = azimuthAtPole(cosines[i] * map.sine, sines[i] * map.sine, cosine, m_rotation);
}

}  // namespace rb::kernels
#endif
