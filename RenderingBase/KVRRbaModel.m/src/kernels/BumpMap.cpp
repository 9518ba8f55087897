#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/BumpMap.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <utility>

// Compiled once for every kind of processor; the order of these lines matters.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RenderingBase/KVRRbaModel.m/src/kernels/BumpMap.cpp"
#include <hwy/foreach_target.h>
#include "RenderingBase/KVRRbaModel.m/src/kernels/VectorLoop-inl.h"
// clang-format on

#ifndef RB_BUMP_MAP_COMMON
#define RB_BUMP_MAP_COMMON
namespace rb::kernels::bump {

/// Brightnesses around a row of pixels, by column.
struct Rows {
    const double *above, *middle, *below;
    const double* belowLeft;  ///< What counts as below and one to the left, from column 1 on.
};

}  // namespace rb::kernels::bump
#endif

HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {
namespace {

#if RB_IS_PLAIN_TARGET

std::size_t leastColumns() { return std::numeric_limits<std::size_t>::max(); }
void brightnessVectors(const std::uint8_t*, std::size_t, double*) {}
void normalVectors(const bump::Rows&, std::size_t, std::uint8_t*) {}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::ScalableTag<double>;
using Double = hn::Vec<Doubles>;
using SomeBytes = hn::Rebind<std::uint8_t, Doubles>;

/// Columns of one step: as many as a vector has bytes.
HWY_INLINE std::size_t stepColumns() { return hn::Lanes(ByteVectors()); }

/// Calls @p step for the columns from 0 on, a step at a time; the last step may repeat columns.
template <class Step>
HWY_INLINE void forAllSteps(std::size_t columns, Step step) {
    const std::size_t last = columns - stepColumns();
    for (std::size_t x = 0; x < last; x += stepColumns()) step(x);
    step(last);
}

/// The brightness of a step of columns: of three bytes each, wherever they begin in a pixel.
HWY_INLINE void computeBrightness(const std::uint8_t* bytes, double* out) {
    const ByteVectors d;
    const hn::Repartition<std::uint16_t, ByteVectors> sumsTag;
    hn::Vec<ByteVectors> a, b, c;
    hn::LoadInterleaved3(d, bytes, a, b, c);
    const auto halfOf = [](auto half) HWY_ATTR {
        return hn::PromoteTo(hn::Repartition<std::uint16_t, ByteVectors>(), half);
    };
    const hn::Half<ByteVectors> halfTag;
    const auto low =
        hn::Add(hn::Add(halfOf(hn::LowerHalf(halfTag, a)), halfOf(hn::LowerHalf(halfTag, b))),
                halfOf(hn::LowerHalf(halfTag, c)));
    const auto high =
        hn::Add(hn::Add(halfOf(hn::UpperHalf(halfTag, a)), halfOf(hn::UpperHalf(halfTag, b))),
                halfOf(hn::UpperHalf(halfTag, c)));
    HWY_ALIGN std::uint16_t sums[hn::MaxLanes(ByteVectors())];
    hn::Store(low, sumsTag, sums);
    hn::Store(high, sumsTag, sums + hn::Lanes(sumsTag));

    const Doubles doubles;
    const Double largest = hn::Set(doubles, plain::kLargestSum);
    for (std::size_t x = 0; x < stepColumns(); x += hn::Lanes(doubles)) {
        const auto some = hn::Load(hn::Rebind<std::uint16_t, Doubles>(), sums + x);
        const auto wide = hn::PromoteTo(hn::Rebind<std::int32_t, Doubles>(), some);
        hn::StoreU(hn::Div(hn::PromoteTo(doubles, wide), largest), doubles, out + x);
    }
}

HWY_INLINE hn::Vec<SomeBytes> byteOf(Double component) {
    const Doubles d;
    const Double scaled =
        hn::Mul(hn::Mul(hn::Add(component, hn::Set(d, 1.0)), hn::Set(d, 255.0)), hn::Set(d, 0.5));
    return hn::DemoteTo(SomeBytes(), hn::DemoteTo(hn::Rebind<std::int32_t, Doubles>(), scaled));
}

/// The bytes of a step of normals, each component on its own.
struct Components {
    HWY_ALIGN std::uint8_t x[hn::MaxLanes(ByteVectors())];
    HWY_ALIGN std::uint8_t y[hn::MaxLanes(ByteVectors())];
    HWY_ALIGN std::uint8_t z[hn::MaxLanes(ByteVectors())];
};

/// Twice the first and both others, in the order of the plain version.
HWY_INLINE Double weighted(Double twice, Double once, Double onceMore) {
    return hn::Add(hn::Add(hn::Add(twice, twice), once), onceMore);
}

HWY_INLINE void computeNormals(const bump::Rows& rows, std::size_t column, std::size_t offset,
                               Components& out) {
    const Doubles d;
    const auto at = [](const double* row) HWY_ATTR { return hn::LoadU(Doubles(), row); };
    const double* const above = rows.above + column;
    const double* const middle = rows.middle + column;
    const double* const below = rows.below + column;
    const Double aboveLeft = at(above - 1), aboveRight = at(above + 1);
    const Double belowLeft = at(rows.belowLeft + column - 1), belowRight = at(below + 1);
    const Double x = hn::Neg(hn::Sub(weighted(at(middle + 1), aboveRight, belowRight),
                                     weighted(at(middle - 1), aboveLeft, belowLeft)));
    const Double y = hn::Neg(hn::Sub(weighted(at(below), belowLeft, belowRight),
                                     weighted(at(above), aboveLeft, aboveRight)));
    const Double z = hn::Set(d, plain::kNormalZ);
    const Double norm = hn::Sqrt(hn::Add(hn::Add(hn::Mul(x, x), hn::Mul(y, y)), hn::Mul(z, z)));
    const SomeBytes bytes;
    hn::StoreU(byteOf(hn::Div(x, norm)), bytes, out.x + offset);
    hn::StoreU(byteOf(hn::Div(y, norm)), bytes, out.y + offset);
    hn::StoreU(byteOf(hn::Div(z, norm)), bytes, out.z + offset);
}

void brightnessVectors(const std::uint8_t* bytes, std::size_t columns, double* out) {
    forAllSteps(columns,
                [=](std::size_t x) HWY_ATTR { computeBrightness(bytes + 3 * x, out + x); });
}

/// The map from column 1 to the last but one; @p out is that of column 1.
void normalVectors(const bump::Rows& rows, std::size_t columns, std::uint8_t* out) {
    forAllSteps(columns, [&](std::size_t x) HWY_ATTR {
        const ByteVectors d;
        Components parts;
        for (std::size_t i = 0; i < stepColumns(); i += hn::Lanes(Doubles()))
            computeNormals(rows, 1 + x + i, i, parts);
        hn::StoreInterleaved3(hn::Load(d, parts.x), hn::Load(d, parts.y), hn::Load(d, parts.z), d,
                              out + 3 * x);
    });
}

std::size_t leastColumns() { return stepColumns(); }

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rb::kernels {
namespace {

HWY_EXPORT(brightnessVectors);
HWY_EXPORT(normalVectors);
HWY_EXPORT(leastColumns);

using Picture = std::span<const std::uint8_t>;

/// The brightnesses of three rows, one after the other, and what counts as below and to the left.
class BrightnessRows {
public:
    BrightnessRows(Picture rgb, std::size_t width)
        : m_rgb(rgb), m_width(width), m_height(rgb.size() / (3 * width)) {
        for (auto& row : m_rows) row = std::make_unique_for_overwrite<double[]>(width);
        m_belowLeft = std::make_unique_for_overwrite<double[]>(width - 1);
        compute(0, m_rows[kBelow]);
        advance(0);
        // Above the first row it repeats itself.
        std::copy_n(m_rows[kMiddle].get(), width, m_rows[kAbove].get());
    }

    std::size_t height() const { return m_height; }

    /// Around @p row, one more than the last time.
    bump::Rows around(std::size_t row) {
        if (row > 0) advance(row);
        const double* const middle = m_rows[kMiddle].get();
        // Below the last row it repeats itself, to the left as well.
        if (row + 1 == m_height) return {m_rows[kAbove].get(), middle, middle, middle};
        return {m_rows[kAbove].get(), middle, m_rows[kBelow].get(), m_belowLeft.get()};
    }

private:
    using Row = std::unique_ptr<double[]>;
    enum {
        kAbove,
        kMiddle,
        kBelow
    };

    const std::uint8_t* bytesOf(std::size_t row) const { return m_rgb.data() + 3 * m_width * row; }
    void compute(std::size_t row, Row& out) const {
        HWY_DYNAMIC_DISPATCH(brightnessVectors)(bytesOf(row), m_width, out.get());
    }

    void advance(std::size_t row) {
        std::swap(m_rows[kAbove], m_rows[kMiddle]);
        std::swap(m_rows[kMiddle], m_rows[kBelow]);
        if (row + 1 == m_height) return;
        compute(row + 1, m_rows[kBelow]);
        // Five bytes before each pixel; that of column 1 begins in the row above.
        HWY_DYNAMIC_DISPATCH(brightnessVectors)
        (bytesOf(row + 1) + 3 - 5, m_width - 1, m_belowLeft.get());
    }

    Picture m_rgb;
    std::size_t m_width, m_height;
    std::array<Row, 3> m_rows;
    Row m_belowLeft;
};

}  // namespace

void renderBumpMap(Picture rgb, std::size_t width, std::span<std::uint8_t> out) {
    constexpr std::size_t kBorders = 2;
    if (width < kBorders || width - kBorders < HWY_DYNAMIC_DISPATCH(leastColumns)())
        return plain::renderBumpMap(rgb, width, out);
    if (rgb.size() < 3 * width) return;
    BrightnessRows rows(rgb, width);
    for (std::size_t y = 0; y < rows.height(); ++y) {
        plain::renderBumpMapPixels(rgb, width, y, 0, 1, out);
        HWY_DYNAMIC_DISPATCH(normalVectors)
        (rows.around(y), width - kBorders, out.data() + 3 * (width * y + 1));
        plain::renderBumpMapPixels(rgb, width, y, width - 1, width, out);
    }
}

}  // namespace rb::kernels
#endif
