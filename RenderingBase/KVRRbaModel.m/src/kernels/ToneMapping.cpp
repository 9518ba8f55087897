#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ToneMapping.h"

#include <algorithm>
#include <bit>

// Compiled once for every kind of processor; the order of these lines matters.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RenderingBase/KVRRbaModel.m/src/kernels/ToneMapping.cpp"
#include <hwy/foreach_target.h>
#include "RenderingBase/KVRRbaModel.m/src/kernels/VectorLoop-inl.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {
namespace {

#if RB_IS_PLAIN_TARGET

std::size_t toneMapVectors(const float*, std::size_t, AlphaRange, std::size_t, std::uint8_t*) {
    return 0;
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::ScalableTag<float>;
using Words = hn::RebindToUnsigned<Floats>;
using Float = hn::Vec<Floats>;
using Word = hn::Vec<Words>;

/// The bytes of a pixel are one word, red lowest.
static_assert(std::endian::native == std::endian::little);
constexpr int kGreen = 8, kBlue = 16, kAlpha = 24;

/// Comparisons, because minima and maxima of no number differ between processors.
HWY_INLINE Float clamped(Float value) {
    const Float one = hn::Set(Floats(), 1.0F);
    const Float limited = hn::IfThenElse(hn::Lt(value, one), value, one);
    return hn::IfThenElseZero(hn::Gt(value, hn::Zero(Floats())), limited);
}

HWY_INLINE Word truncated(Float value) {
    return hn::BitCast(Words(), hn::ConvertTo(hn::RebindToSigned<Floats>(), value));
}

/// In the order of the plain version, each step rounded.
HWY_INLINE Float toneFactor(Float s) {
    const Floats d;
    const Float square = hn::Mul(hn::Mul(hn::Set(d, 0.85F), s), s);
    const Float cube = hn::Mul(hn::Mul(hn::Mul(hn::Set(d, 0.1083333F), s), s), s);
    const Float linear = hn::Mul(hn::Set(d, 2.2416666F), s);
    return hn::Add(hn::Sub(hn::Sub(square, cube), linear), hn::Set(d, 3.0F));
}

HWY_INLINE Word colorByte(Float factor, Float color) {
    const Floats d;
    const Float limited = hn::Min(hn::Mul(factor, color), hn::Set(d, 1.0F));
    return truncated(hn::Mul(limited, hn::Set(d, 255.0F)));
}

/// In the highest byte; what wraps is shifted out.
template <AlphaRange kRange>
HWY_INLINE Word alphaByte(Float alpha) {
    const Floats d;
    const Float scale = hn::Set(d, 255.0F);
    if constexpr (kRange == AlphaRange::Clamped)
        return hn::ShiftLeft<kAlpha>(truncated(hn::Mul(clamped(alpha), scale)));
    const Float scaled = hn::Mul(alpha, scale);
    const Float bound = hn::Set(d, 2147483648.0F);
    const auto isWithin = hn::And(hn::Ge(scaled, hn::Neg(bound)), hn::Lt(scaled, bound));
    return hn::ShiftLeft<kAlpha>(truncated(hn::IfThenElseZero(isWithin, scaled)));
}

HWY_INLINE Word greyPixels(Float grey) {
    const Float color = clamped(grey);
    const Float sum = hn::Add(hn::Add(color, color), color);
    const Word byte = colorByte(toneFactor(sum), color);
    return hn::Or(hn::Or(byte, hn::ShiftLeft<kGreen>(byte)), hn::ShiftLeft<kBlue>(byte));
}

HWY_INLINE Word colorPixels(Float red, Float green, Float blue) {
    const Float r = clamped(red), g = clamped(green), b = clamped(blue);
    const Float factor = toneFactor(hn::Add(hn::Add(r, g), b));
    return hn::Or(hn::Or(colorByte(factor, r), hn::ShiftLeft<kGreen>(colorByte(factor, g))),
                  hn::ShiftLeft<kBlue>(colorByte(factor, b)));
}

template <std::size_t kChannels, AlphaRange kRange>
HWY_INLINE Word pixelsAt(const float* in) {
    const Floats d;
    const Word opaque = hn::Set(Words(), 0xFF000000U);
    if constexpr (kChannels == 1) return hn::Or(greyPixels(hn::LoadU(d, in)), opaque);
    Float red, green, blue, alpha;
    if constexpr (kChannels == 3) {
        hn::LoadInterleaved3(d, in, red, green, blue);
        return hn::Or(colorPixels(red, green, blue), opaque);
    } else {
        hn::LoadInterleaved4(d, in, red, green, blue, alpha);
        return hn::Or(colorPixels(red, green, blue), alphaByte<kRange>(alpha));
    }
}

template <std::size_t kChannels, AlphaRange kRange>
std::size_t toneMapWholeVectors(const float* in, std::size_t pixels, std::uint8_t* out) {
    const hn::Repartition<std::uint8_t, Words> bytes;
    const std::size_t lanes = hn::Lanes(Floats());
    std::size_t i = 0;
    for (; i + lanes <= pixels; i += lanes)
        hn::StoreU(hn::BitCast(bytes, pixelsAt<kChannels, kRange>(in + kChannels * i)), bytes,
                   out + 4 * i);
    return i;
}

/// Returns how many pixels, from the first on, it has converted.
std::size_t toneMapVectors(const float* in, std::size_t channels, AlphaRange range,
                           std::size_t pixels, std::uint8_t* out) {
    switch (channels) {
        case 1:
            return toneMapWholeVectors<1, AlphaRange::Clamped>(in, pixels, out);
        case 3:
            return toneMapWholeVectors<3, AlphaRange::Clamped>(in, pixels, out);
        default:
            return range == AlphaRange::Clamped
                       ? toneMapWholeVectors<4, AlphaRange::Clamped>(in, pixels, out)
                       : toneMapWholeVectors<4, AlphaRange::Wrapped>(in, pixels, out);
    }
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rb::kernels {

HWY_EXPORT(toneMapVectors);

void toneMap(std::span<const float> values, std::size_t channels, AlphaRange alphaRange,
             std::span<std::uint8_t> rgba) {
    const std::size_t pixels = std::min(values.size() / channels, rgba.size() / 4);
    const std::size_t done = HWY_DYNAMIC_DISPATCH(toneMapVectors)(values.data(), channels,
                                                                  alphaRange, pixels, rgba.data());
    plain::toneMap(values.subspan(done * channels), channels, alphaRange, rgba.subspan(4 * done));
}

}  // namespace rb::kernels
#endif
