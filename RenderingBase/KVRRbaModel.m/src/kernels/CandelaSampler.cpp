#include "RenderingBase/KVRRbaModel.m/src/kernels/CandelaSampler.h"

#include <algorithm>
#include <limits>
#include <type_traits>

// Compiled once for every kind of processor; the order of these lines matters.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RenderingBase/KVRRbaModel.m/src/kernels/CandelaSampler.cpp"
#include <hwy/foreach_target.h>
#include "RenderingBase/KVRRbaModel.m/src/kernels/VectorLoop-inl.h"
// clang-format on

#ifndef RB_CANDELA_SAMPLER_COMMON
#define RB_CANDELA_SAMPLER_COMMON
namespace rb::kernels {
namespace {

template <Symmetry kSymmetry>
using Constant = std::integral_constant<Symmetry, kSymmetry>;

}  // namespace
}  // namespace rb::kernels
#endif

HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {
namespace {

#if RB_IS_PLAIN_TARGET

std::size_t sampleVectors(const CandelaSampler&, const float*, const float*, std::size_t, float*) {
    return 0;
}
std::size_t sampleLevelVectors(const CandelaSampler&, float, const float*, std::size_t, float*) {
    return 0;
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::ScalableTag<float>;
using Float = hn::Vec<Floats>;
using Mask = hn::Mask<Floats>;
using Ints = hn::RebindToSigned<Floats>;
using Int = hn::Vec<Ints>;

HWY_INLINE Float set(float value) { return hn::Set(Floats(), value); }
HWY_INLINE Int setInt(std::int32_t value) { return hn::Set(Ints(), value); }

HWY_INLINE Float chosen(Mask where, Float there, Float elsewhere) {
    return hn::IfThenElse(where, there, elsewhere);
}

/// Directions in the angles of the file, degrees, and which of them are lit.
struct FileDirections {
    Float horizontal, vertical;
    Mask isInside;
};

HWY_INLINE Mask isBetween(Float value, float least, float most) {
    return hn::And(hn::Ge(value, set(least)), hn::Le(value, set(most)));
}

template <Symmetry kSymmetry>
HWY_INLINE FileDirections foldedAs(const CandelaSampler& sampler, Float h, Float v) {
    Mask isInside = isBetween(v, sampler.vertical().first, sampler.vertical().last);
    if constexpr (kSymmetry == Symmetry::Quadrant) {
        const Mask isUpTo180 = hn::And(hn::Gt(h, set(90)), hn::Le(h, set(180)));
        const Mask isUpTo270 = hn::And(hn::Gt(h, set(180)), hn::Le(h, set(270)));
        const Mask isUpTo360 = hn::And(hn::Gt(h, set(270)), hn::Le(h, set(360)));
        h = chosen(
            isUpTo180, hn::Sub(set(180), h),
            chosen(isUpTo270, hn::Sub(h, set(180)), chosen(isUpTo360, hn::Sub(set(360), h), h)));
        isInside = hn::And(isInside, hn::And(isBetween(h, 0, 90), isBetween(v, 0, 180)));
    } else if constexpr (kSymmetry == Symmetry::Bilateral) {
        h = chosen(hn::Gt(h, set(180)), hn::Sub(set(360), h), h);
        const Mask isOpen = hn::And(hn::And(hn::Gt(h, set(0)), hn::Lt(h, set(180))),
                                    hn::And(hn::Gt(v, set(0)), hn::Lt(v, set(180))));
        isInside = hn::And(isInside, isOpen);
    } else if constexpr (kSymmetry == Symmetry::FacingX) {
        h = chosen(hn::Lt(h, set(90)), hn::Sub(set(180), h), h);
        h = chosen(hn::Gt(h, set(270)), hn::Sub(set(540), h), h);
        isInside = hn::And(isInside, isBetween(h, 90, 270));
    } else if constexpr (kSymmetry == Symmetry::Signed) {
        v = hn::Sub(v, set(90));
        h = hn::Sub(h, set(180));
        if (foldsVertical(sampler.grid())) v = hn::Abs(v);
        isInside = hn::And(isBetween(v, sampler.vertical().first, sampler.vertical().last),
                           isBetween(h, sampler.horizontal().first, sampler.horizontal().last));
    }
    return {h, v, isInside};
}

/// Places in a list of angles: the index before the first angle that is not less, 0 at least; the
/// angle there, and the next one.
struct Places {
    Int index;
    Float here, next;
};

HWY_INLINE Float angleAt(const AngleIndex& index, Float place) {
    return hn::Add(set(index.first), hn::Mul(place, set(index.step)));
}

HWY_INLINE Places placesByStep(const AngleIndex& index, Float angle) {
    const Float one = set(1), zero = hn::Zero(Floats());
    const Float last = set(static_cast<float>(index.count - 1));
    const Float scaled = hn::Mul(hn::Sub(angle, set(index.first)), set(index.bucketsPerDegree));
    const Float guess = hn::Trunc(hn::Min(hn::Max(scaled, zero), last));
    const Mask isOneLess = hn::Le(angle, angleAt(index, guess));
    const Mask isOneMore = hn::Gt(angle, angleAt(index, hn::Add(guess, one)));
    Float place = chosen(isOneLess, hn::Sub(guess, one), guess);
    place = chosen(isOneMore, hn::Add(guess, one), place);
    place = hn::Min(hn::Max(place, zero), last);
    const Float next =
        chosen(hn::Eq(place, last), set(index.first), angleAt(index, hn::Add(place, one)));
    return {hn::ConvertTo(Ints(), place), angleAt(index, place), next};
}

HWY_INLINE Places placesByBuckets(const AngleIndex& index, Float angle) {
    const Floats d;
    const Ints di;
    const Float scaled = hn::Mul(hn::Sub(angle, set(index.first)), set(index.bucketsPerDegree));
    // Bounded before it becomes an integer: it may be far off.
    const Float bounded =
        hn::Min(hn::Max(scaled, set(0)), set(static_cast<float>(index.lastBucket)));
    Int less = hn::GatherIndex(di, index.before.data(), hn::ConvertTo(di, bounded));
    for (std::int32_t i = 0; i < index.mostInBucket; ++i) {
        const Mask isLess = hn::Lt(hn::GatherIndex(d, index.angles.data(), less), angle);
        less = hn::Sub(less, hn::VecFromMask(di, hn::RebindMask(di, isLess)));
    }
    const Int place = hn::Max(hn::Sub(less, setInt(1)), hn::Zero(di));
    return {place, hn::GatherIndex(d, index.angles.data(), place),
            hn::GatherIndex(d, index.next.data(), place)};
}

HWY_INLINE Places placesOf(const AngleIndex& index, Float angle) {
    return index.step != 0 ? placesByStep(index, angle) : placesByBuckets(index, angle);
}

/// How far angles are from the one at their place to the next, 0 to 1.
HWY_INLINE Float wayToNext(const Places& places, Float angle) {
    return hn::Div(hn::Sub(angle, places.here), hn::Sub(places.next, places.here));
}

/// The candela values of a pair of vertical angles, mixed.
HWY_INLINE Float alongVertical(const float* candela, Int place, Float s, Float t) {
    const Floats d;
    const Float here = hn::GatherIndex(d, candela, place);
    const Float next = hn::GatherIndex(d, candela + 1, place);
    return hn::Add(hn::Mul(t, next), hn::Mul(s, here));
}

/// Between which vertical angles directions lie, and how far.
struct VerticalWay {
    Int index;
    Float s, t;
};

HWY_INLINE VerticalWay verticalWayOf(const AngleIndex& vertical, Float angle) {
    const Places places = placesOf(vertical, angle);
    const Float t = wayToNext(places, angle);
    // Above the last angle nothing is lit, but its place is read.
    return {hn::Min(places.index, setInt(vertical.count - 2)), hn::Sub(set(1), t), t};
}

/// The values of runs at vertical angles.
HWY_INLINE Float valuesOfRuns(const CandelaSampler& sampler, Int run, const VerticalWay& way) {
    const Int place = hn::Add(hn::Mul(run, setInt(sampler.vertical().count)), way.index);
    return alongVertical(sampler.grid().candela.data(), place, way.s, way.t);
}

/// @param values  What the runs at some horizontal angles have there.
template <Symmetry kSymmetry, class Values>
HWY_INLINE Float between(const CandelaSampler& sampler, const FileDirections& at, Values values) {
    const Floats d;
    const Ints di;
    Mask isLit = at.isInside;
    Float value;
    if constexpr (kSymmetry == Symmetry::Axial) {
        value = values(hn::Zero(di));
    } else {
        const AngleIndex& horizontal = sampler.horizontal();
        const Places h = placesOf(horizontal, at.horizontal);
        const auto isLast = hn::Eq(h.index, setInt(horizontal.count - 1));
        if constexpr (kSymmetry != Symmetry::Full)
            isLit = hn::AndNot(hn::RebindMask(d, isLast), isLit);
        const Int behind = hn::IfThenElse(isLast, hn::Zero(di), hn::Add(h.index, setInt(1)));
        const Float u = wayToNext(h, at.horizontal);
        value = hn::Add(hn::Mul(hn::Sub(set(1), u), values(h.index)), hn::Mul(u, values(behind)));
    }
    const Mask isInfinite = hn::Eq(hn::Abs(value), set(std::numeric_limits<float>::infinity()));
    return hn::IfThenElseZero(hn::AndNot(isInfinite, isLit),
                              hn::Mul(value, set(sampler.grid().scale)));
}

template <Symmetry kSymmetry>
HWY_INLINE FileDirections directionsOf(const CandelaSampler& sampler, Float theta, Float phi) {
    const Float toDegrees = set(kDegreesPerRadian);
    return foldedAs<kSymmetry>(sampler, hn::Mul(phi, toDegrees),
                               hn::Sub(set(180), hn::Mul(theta, toDegrees)));
}

template <Symmetry kSymmetry>
std::size_t sampleVectorsAs(const CandelaSampler& sampler, const float* theta, const float* phi,
                            std::size_t count, float* out) {
    const Floats d;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        const auto at =
            directionsOf<kSymmetry>(sampler, hn::LoadU(d, theta + i), hn::LoadU(d, phi + i));
        const VerticalWay way = verticalWayOf(sampler.vertical(), at.vertical);
        const auto values = [&](Int run) HWY_ATTR { return valuesOfRuns(sampler, run, way); };
        hn::StoreU(between<kSymmetry>(sampler, at, values), d, out + i);
    }
    return i;
}

/// Of one polar angle: the values of all runs are mixed once.
template <Symmetry kSymmetry>
std::size_t sampleLevelVectorsAs(const CandelaSampler& sampler, float theta, const float* phi,
                                 std::size_t count, float* out) {
    const Floats d;
    const Ints di;
    const std::int32_t runs = std::max(sampler.horizontal().count, 1);  // of axial ones the first
    const Float level = set(theta);
    const Float vertical =
        directionsOf<kSymmetry>(sampler, level, hn::Zero(d)).vertical;  // whatever the azimuth
    const VerticalWay way = verticalWayOf(sampler.vertical(), vertical);
    HWY_ALIGN float mixed[CandelaSampler::kMostMixedRuns + hn::MaxLanes(d)];
    for (std::int32_t h = 0; h < runs; h += static_cast<std::int32_t>(hn::Lanes(d))) {
        const Int run = hn::Min(hn::Iota(di, h), setInt(runs - 1));
        hn::Store(valuesOfRuns(sampler, run, way), d, mixed + h);
    }
    const auto values = [&](Int run) HWY_ATTR { return hn::GatherIndex(Floats(), mixed, run); };
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        const auto at = directionsOf<kSymmetry>(sampler, level, hn::LoadU(d, phi + i));
        hn::StoreU(between<kSymmetry>(sampler, at, values), d, out + i);
    }
    return i;
}

/// Calls @p sample with the symmetry of the sampler as a constant.
template <class Sample>
HWY_INLINE std::size_t withSymmetry(const CandelaSampler& sampler, Sample sample) {
    switch (sampler.symmetry()) {
        case Symmetry::Axial:
            return sample(Constant<Symmetry::Axial>());
        case Symmetry::Quadrant:
            return sample(Constant<Symmetry::Quadrant>());
        case Symmetry::Bilateral:
            return sample(Constant<Symmetry::Bilateral>());
        case Symmetry::FacingX:
            return sample(Constant<Symmetry::FacingX>());
        case Symmetry::Full:
            return sample(Constant<Symmetry::Full>());
        case Symmetry::Signed:
            return sample(Constant<Symmetry::Signed>());
        case Symmetry::Dark:
            break;
    }
    return 0;
}

/// Return how many directions, from the first on, they have looked up.
std::size_t sampleVectors(const CandelaSampler& sampler, const float* theta, const float* phi,
                          std::size_t count, float* out) {
    return withSymmetry(sampler, [=, &sampler](auto symmetry) {
        return sampleVectorsAs<symmetry()>(sampler, theta, phi, count, out);
    });
}
std::size_t sampleLevelVectors(const CandelaSampler& sampler, float theta, const float* phi,
                               std::size_t count, float* out) {
    return withSymmetry(sampler, [=, &sampler](auto symmetry) {
        return sampleLevelVectorsAs<symmetry()>(sampler, theta, phi, count, out);
    });
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rb::kernels {
namespace {

RB_VERSIONS(sampleVectors);
RB_VERSIONS(sampleLevelVectors);

}  // namespace

CandelaSampler::CandelaSampler(const CandelaGrid& grid)
    : m_grid(grid), m_symmetry(symmetryOf(grid)) {
    // Places of candela values are 32 bits.
    constexpr std::size_t kMostValues = std::size_t{1} << 30;
    if (m_symmetry == Symmetry::Dark || grid.candela.size() > kMostValues) return;
    m_vertical = indexOf(grid.vertical);
    if (m_symmetry != Symmetry::Axial) m_horizontal = indexOf(grid.horizontal);
    m_hasVectors = m_vertical.isUsable && (m_symmetry == Symmetry::Axial || m_horizontal.isUsable);
}

void CandelaSampler::sample(std::span<const float> theta, std::span<const float> phi,
                            std::span<float> out) const {
    std::size_t i = 0;
    if (m_hasVectors)
        i = RB_BEST(sampleVectors)(*this, theta.data(), phi.data(), out.size(), out.data());
    for (; i < out.size(); ++i) out[i] = candelaAt(m_grid, theta[i], phi[i]);
}

void CandelaSampler::sampleLevel(float theta, std::span<const float> phi,
                                 std::span<float> out) const {
    std::size_t i = 0;
    if (m_hasVectors && m_horizontal.count <= kMostMixedRuns)
        i = RB_BEST(sampleLevelVectors)(*this, theta, phi.data(), out.size(), out.data());
    for (; i < out.size(); ++i) out[i] = candelaAt(m_grid, theta, phi[i]);
}

}  // namespace rb::kernels
#endif
