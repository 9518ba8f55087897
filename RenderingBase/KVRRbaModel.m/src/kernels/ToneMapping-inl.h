// Included once for every kind of processor, so without a guard of the usual kind.

/// @file  The tone of pixels in vectors, whatever their channels are stored as. See
/// VectorLoop-inl.h.

#include "RenderingBase/KVRRbaModel.m/src/kernels/ToneMapping.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/VectorLoop-inl.h"

#include <bit>

#if defined(RB_TONE_MAPPING_INCLUDED) == defined(HWY_TARGET_TOGGLE)
#ifdef RB_TONE_MAPPING_INCLUDED
#undef RB_TONE_MAPPING_INCLUDED
#else
#define RB_TONE_MAPPING_INCLUDED
#endif

#if !RB_IS_PLAIN_TARGET
HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {
namespace tone {

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::ScalableTag<float>;
using Words = hn::RebindToUnsigned<Floats>;
using Float = hn::Vec<Floats>;
using Word = hn::Vec<Words>;

struct Colors {
    Float red, green, blue;
};

/// The bytes of a pixel are one word, red lowest.
static_assert(std::endian::native == std::endian::little);

/// No number compares false; only numbers come before the minimum, which differs between
/// processors for others.
HWY_INLINE Float clamped(Float value) {
    const Floats d;
    const Float positive = hn::IfThenElseZero(hn::Gt(value, hn::Zero(d)), value);
    return hn::Min(positive, hn::Set(d, 1.0F));
}

/// In the order of the plain version, each step rounded.
HWY_INLINE Float toneFactor(Float s) {
    const Floats d;
    const Float square = hn::Mul(hn::Mul(hn::Set(d, 0.85F), s), s);
    const Float cube = hn::Mul(hn::Mul(hn::Mul(hn::Set(d, 0.1083333F), s), s), s);
    const Float linear = hn::Mul(hn::Set(d, 2.2416666F), s);
    return hn::Add(hn::Sub(hn::Sub(square, cube), linear), hn::Set(d, 3.0F));
}

/// From 0 to 255, whole.
HWY_INLINE Float byteOf(Float unit) { return hn::Trunc(hn::Mul(unit, hn::Set(Floats(), 255.0F))); }
HWY_INLINE Float colorByte(Float factor, Float color) {
    return byteOf(hn::Min(hn::Mul(factor, color), hn::Set(Floats(), 1.0F)));
}

/// Two bytes in the low half of each word; the high half is not 0. All sums are exact: from 2^23 to
/// 2^24 the last bit of a float is worth 1.
HWY_INLINE Word pair(Float low, Float high) {
    const Floats d;
    const Float shifted = hn::Mul(high, hn::Set(d, 256.0F));
    return hn::BitCast(Words(), hn::Add(hn::Add(low, hn::Set(d, 8388608.0F)), shifted));
}

HWY_INLINE Word joined(Word redGreen, Word blueAlpha) {
    return hn::Or(hn::And(redGreen, hn::Set(Words(), 0xFFFF)), hn::ShiftLeft<16>(blueAlpha));
}

/// In the highest byte; what wraps is shifted out.
HWY_INLINE Word wrappedAlpha(Float alpha) {
    const Floats d;
    const Float scaled = hn::Mul(alpha, hn::Set(d, 255.0F));
    const Float bound = hn::Set(d, 2147483648.0F);
    const auto isWithin = hn::And(hn::Ge(scaled, hn::Neg(bound)), hn::Lt(scaled, bound));
    const auto whole =
        hn::ConvertTo(hn::RebindToSigned<Floats>(), hn::IfThenElseZero(isWithin, scaled));
    return hn::ShiftLeft<24>(hn::BitCast(Words(), whole));
}

HWY_INLINE Word greyPixels(Float grey) {
    const Float color = clamped(grey);
    const Float byte = colorByte(toneFactor(hn::Add(hn::Add(color, color), color)), color);
    return joined(pair(byte, byte), pair(byte, hn::Set(Floats(), 255.0F)));
}

/// Of clamped colours; @p alphaByte from 0 to 255, whole.
HWY_INLINE Word colorPixels(const Colors& colors, Float alphaByte) {
    const Float factor = toneFactor(hn::Add(hn::Add(colors.red, colors.green), colors.blue));
    return joined(pair(colorByte(factor, colors.red), colorByte(factor, colors.green)),
                  pair(colorByte(factor, colors.blue), alphaByte));
}

/// Colours side by side to colours apart.
///
/// A lane is red in one of three vectors, green in another, blue in the third, because the number
/// of lanes is no multiple of 3. So each colour is chosen lane by lane, and then brought into
/// order.
class ColorSorter {
public:
    HWY_INLINE ColorSorter()
        : m_is0(laneIs(0)),
          m_is1(laneIs(1)),
          m_is2(laneIs(2)),
          m_redPlaces(places(0)),
          m_greenPlaces(places(1)),
          m_bluePlaces(places(2)) {}

    HWY_INLINE Colors operator()(Float first, Float second, Float third) const {
        const bool isOneMore = hn::Lanes(Floats()) % 3 == 1;
        const Float a = isOneMore ? second : third, b = isOneMore ? third : second;
        const Float red = hn::IfThenElse(m_is0, first, hn::IfThenElse(m_is1, b, a));
        const Float green = hn::IfThenElse(m_is1, first, hn::IfThenElse(m_is2, b, a));
        const Float blue = hn::IfThenElse(m_is2, first, hn::IfThenElse(m_is0, b, a));
        return {hn::TableLookupLanes(red, m_redPlaces), hn::TableLookupLanes(green, m_greenPlaces),
                hn::TableLookupLanes(blue, m_bluePlaces)};
    }

private:
    using Signed = hn::RebindToSigned<Floats>;
    using Mask = hn::Mask<Floats>;
    using Places = decltype(hn::IndicesFromVec(Floats(), hn::Zero(Signed())));

    /// Lanes whose number leaves @p rest when divided by 3.
    static HWY_INLINE Mask laneIs(std::int32_t rest) {
        HWY_ALIGN std::int32_t rests[hn::MaxLanes(Floats())];
        for (std::size_t i = 0; i < hn::Lanes(Floats()); ++i)
            rests[i] = static_cast<std::int32_t>(i % 3);
        const auto isRest = hn::Eq(hn::Load(Signed(), rests), hn::Set(Signed(), rest));
        return hn::RebindMask(Floats(), isRest);
    }
    static HWY_INLINE Places places(std::size_t channel) {
        const std::size_t lanes = hn::Lanes(Floats());
        HWY_ALIGN std::int32_t lane[hn::MaxLanes(Floats())];
        for (std::size_t pixel = 0; pixel < lanes; ++pixel)
            lane[pixel] = static_cast<std::int32_t>((3 * pixel + channel) % lanes);
        return hn::SetTableIndices(Floats(), lane);
    }

    Mask m_is0, m_is1, m_is2;
    Places m_redPlaces, m_greenPlaces, m_bluePlaces;
};

/// Where the words of RGBA pixels belong whose channels were taken apart within sixteen bytes.
class WordSorter {
public:
    HWY_INLINE WordSorter() : m_places(places()) {}
    HWY_INLINE Word operator()(Word words) const { return hn::TableLookupLanes(words, m_places); }

private:
    using Places = decltype(hn::IndicesFromVec(Words(), hn::Zero(Words())));

    static HWY_INLINE Places places() {
        const std::size_t lanes = hn::Lanes(Words()), blocks = lanes / 4;
        HWY_ALIGN std::int32_t lane[hn::MaxLanes(Words())];
        for (std::size_t pixel = 0; pixel < lanes; ++pixel)
            lane[pixel] = static_cast<std::int32_t>(pixel % blocks * 4 + pixel / blocks);
        return hn::SetTableIndices(Words(), lane);
    }

    Places m_places;
};

template <AlphaRange kRange>
HWY_INLINE Word rgbaPixels(const Colors& colors, Float alpha) {
    if constexpr (kRange == AlphaRange::Clamped)
        return colorPixels(colors, byteOf(clamped(alpha)));
    else
        return hn::Or(colorPixels(colors, hn::Zero(Floats())), wrappedAlpha(alpha));
}

/// Pixels of four vectors of RGBA; a lane of the result is one of every fourth pixels.
template <AlphaRange kRange>
HWY_INLINE Word unsortedPixels(Float first, Float second, Float third, Float fourth) {
    const Floats d;
    // Within sixteen bytes: red of the first and of the third, green of the first and of the third.
    const Float evenLow = hn::InterleaveLower(d, first, third);
    const Float evenHigh = hn::InterleaveUpper(d, first, third);
    const Float oddLow = hn::InterleaveLower(d, second, fourth);
    const Float oddHigh = hn::InterleaveUpper(d, second, fourth);
    const Colors colors{clamped(hn::InterleaveLower(d, evenLow, oddLow)),
                        clamped(hn::InterleaveUpper(d, evenLow, oddLow)),
                        clamped(hn::InterleaveLower(d, evenHigh, oddHigh))};
    return rgbaPixels<kRange>(colors, hn::InterleaveUpper(d, evenHigh, oddHigh));
}

/// What @p load gives for a place is a vector of channels as floats. Returns how many pixels, from
/// the first on, it has converted.
template <std::size_t kChannels, AlphaRange kRange, class Value, class Load>
HWY_INLINE std::size_t mapWholeVectors(const Value* in, std::size_t pixels, std::uint8_t* out,
                                       Load load) {
    const Floats d;
    const std::size_t lanes = hn::Lanes(d);
    const ColorSorter sortedColors;
    const WordSorter sortedWords;
    std::size_t i = 0;
    for (; i + lanes <= pixels; i += lanes, in += kChannels * lanes) {
        Word words;
        if constexpr (kChannels == 1)
            words = greyPixels(load(in));
        else if constexpr (kChannels == 3)
            // Clamped before they are sorted: what comes straight from memory the compiler would
            // load under masks, lane by lane, which takes some processors ten times as long.
            words = colorPixels(sortedColors(clamped(load(in)), clamped(load(in + lanes)),
                                             clamped(load(in + 2 * lanes))),
                                hn::Set(d, 255.0F));
        else
            words = sortedWords(unsortedPixels<kRange>(load(in), load(in + lanes),
                                                       load(in + 2 * lanes), load(in + 3 * lanes)));
        hn::StoreU(hn::BitCast(ByteVectors(), words), ByteVectors(), out + 4 * i);
    }
    return i;
}

template <AlphaRange kRange, class Value, class Load>
HWY_INLINE std::size_t mapWholeVectors(const Value* in, std::size_t channels, std::size_t pixels,
                                       std::uint8_t* out, Load load) {
    if (channels == 1) return mapWholeVectors<1, kRange>(in, pixels, out, load);
    if (channels == 3) return mapWholeVectors<3, kRange>(in, pixels, out, load);
    return mapWholeVectors<4, kRange>(in, pixels, out, load);
}

}  // namespace tone
}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();
#endif

#endif
