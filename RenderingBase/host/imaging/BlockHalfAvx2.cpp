// BC6H, one block at a time with all its pixels side by side; see BlockHalf.cpp for the layout.
//
// Ends are 32-bit words until they are complete, then 16-bit ones in pairs of the same channel,
// which one instruction mixes by a pair of weights. Unsigned ones are moved down by 2^15 for that.

#include "RenderingBase/host/imaging/BlockBits.h"
#include "RenderingBase/host/imaging/BlockHalfLayouts.h"
#include "RenderingBase/host/imaging/BlockModes.h"
#include "RenderingBase/host/imaging/BlockRuns.h"
#include "RenderingBase/host/imaging/BlockWeightsAvx2.h"

#include <array>
#include <iterator>
#include <utility>

#if defined(RB_HAS_AVX2_DECODERS)

namespace rb::imaging {
namespace {

/// The 128 bits of a block, all of them at hand.
struct Words {
    std::uint64_t low, high;

    template <unsigned place, unsigned count>
    int at() const {
        constexpr std::uint64_t kMask = (std::uint64_t{1} << count) - 1;
        if constexpr (place + count <= 64)
            return static_cast<int>(low >> place & kMask);
        else if constexpr (place >= 64)
            return static_cast<int>(high >> (place - 64) & kMask);
        else
            return static_cast<int>((low >> place | high << (64 - place)) & kMask);
    }
};

/// Four words an end: red, green, blue, nothing.
struct Ends {
    __m256i first;   ///< Both ends of the first line.
    __m256i second;  ///< Of the second.
};

/// The bit of the block at which a run of a layout begins.
constexpr unsigned placeOfRun(const HalfLayout& layout, std::size_t run) {
    unsigned place = layout.number < 2 ? 2 : 5;
    for (std::size_t i = 0; i < run; ++i) place += layout.runs[i].count;
    return place;
}

template <std::size_t layout, std::size_t... runs>
RB_AVX2 inline Ends takeRuns(const Words& block, std::index_sequence<runs...>) {
    constexpr const HalfLayout& kLayout = kHalfLayouts[layout];
    int v[16] = {};
    ((v[kLayout.runs[runs].value] |= block.at<placeOfRun(kLayout, runs), kLayout.runs[runs].count>()
                                     << kLayout.runs[runs].lowest),
     ...);
    return {_mm256_setr_epi32(v[R0], v[G0], v[B0], 0, v[R1], v[G1], v[B1], 0),
            _mm256_setr_epi32(v[R2], v[G2], v[B2], 0, v[R3], v[G3], v[B3], 0)};
}

template <std::size_t layout>
RB_AVX2 void takeEnds(const Words& block, Ends& ends) {
    ends =
        takeRuns<layout>(block, std::make_index_sequence<std::size(kHalfLayouts[layout].runs)>());
}

template <std::size_t... layouts>
constexpr auto takersOf(std::index_sequence<layouts...>) {
    using Take = void (*)(const Words&, Ends&);
    return std::array<Take, sizeof...(layouts)>{takeEnds<layouts>...};
}

/// Moves the lowest 32 - @p above bits of each word up and back: with copies of the sign, or zeros.
RB_AVX2 inline __m256i withSign(__m256i words, __m256i above) {
    return _mm256_srav_epi32(_mm256_sllv_epi32(words, above), above);
}

RB_AVX2 inline __m256i withoutSign(__m256i words, __m256i above) {
    return _mm256_srlv_epi32(_mm256_sllv_epi32(words, above), above);
}

/// Spreads values of @p bits bits over the range of the format; the last steps reach its ends.
template <bool isSigned>
RB_AVX2 inline __m256i unquantized(__m256i values, int bits) {
    if (bits >= (isSigned ? 16 : 15)) return values;
    const __m256i magnitude = isSigned ? _mm256_abs_epi32(values) : values;
    const __m256i last = _mm256_set1_epi32((1 << (isSigned ? bits - 1 : bits)) - 1);
    const __m256i isZero = _mm256_cmpeq_epi32(magnitude, _mm256_setzero_si256());
    const __m256i isNotLast = _mm256_cmpgt_epi32(last, magnitude);
    const __m256i moved = _mm256_srl_epi32(
        _mm256_add_epi32(_mm256_slli_epi32(magnitude, 15), _mm256_set1_epi32(0x4000)),
        _mm_cvtsi32_si128(bits - 1));
    const __m256i most = _mm256_set1_epi32(isSigned ? 0x7fff : 0xffff);
    const __m256i wide = _mm256_andnot_si256(isZero, _mm256_blendv_epi8(most, moved, isNotLast));
    return isSigned ? _mm256_sign_epi32(wide, values) : wide;
}

/// Without a branch for each property of the mode: what a mode does not need changes nothing.
template <bool isSigned>
RB_AVX2 inline void completeEnds(const HalfLayout& layout, Ends& ends) {
    const __m256i above = _mm256_set1_epi32(32 - layout.bits);
    const __m256i aboveOthers = inBothHalves(
        _mm_setr_epi32(32 - layout.others[0], 32 - layout.others[1], 32 - layout.others[2], 0));
    const __m128i base = _mm256_castsi256_si128(ends.first);
    const __m128i added = _mm_and_si128(base, _mm_set1_epi32(layout.differences ? -1 : 0));
    const __m256i second =
        _mm256_add_epi32(withSign(ends.second, aboveOthers), inBothHalves(added));
    // Only the upper half of the first line: end 0 is no difference.
    const __m256i first = _mm256_inserti128_si256(
        _mm256_add_epi32(withSign(ends.first, aboveOthers), inBothHalves(added)), base, 0);
    const auto wrapped = [above](__m256i words) RB_AVX2 {
        return isSigned ? withSign(words, above) : withoutSign(words, above);
    };
    ends.first = unquantized<isSigned>(wrapped(first), layout.bits);
    ends.second = unquantized<isSigned>(wrapped(second), layout.bits);
}

/// A line in both halves: the pairs of ends, 16 bits each, of red, green and blue.
template <bool isSigned>
RB_AVX2 inline __m256i lineOf(__m256i ends) {
    const __m128i a = _mm256_castsi256_si128(ends), b = _mm256_extracti128_si256(ends, 1);
    const __m128i pairs = _mm_blend_epi16(a, _mm_slli_epi32(b, 16), 0xaa);
    return inBothHalves(isSigned ? pairs : _mm_xor_si128(pairs, _mm_set1_epi16(-0x8000)));
}

/// What is the same for all pixels of a block.
struct Mixture {
    __m256i firstLine, secondLine;
    __m256i weights;   ///< See weightsOfPixels.
    __m256i isSecond;  ///< All ones in the 16 bits of a pixel on the second line.
};

/// Red, green, blue and nothing, 32 bits each: of pixel @p pixel in the lower half, and of the one
/// eight later in the upper.
template <bool isSigned, bool twoLines, int pixel>
RB_AVX2 inline __m256i mixedPixels(const Mixture& mixture) {
    constexpr char kLow = 2 * pixel, kHigh = kLow + 1;
    const __m256i weights = _mm256_shuffle_epi8(
        mixture.weights, inBothHalves(_mm_setr_epi8(kLow, -1, kHigh, -1, kLow, -1, kHigh, -1, kLow,
                                                    -1, kHigh, -1, kLow, -1, kHigh, -1)));
    __m256i line = mixture.firstLine;
    if constexpr (twoLines) {
        const __m256i isSecond =
            _mm256_shuffle_epi8(mixture.isSecond, _mm256_set1_epi16(kLow | kHigh << 8));
        line = _mm256_blendv_epi8(line, mixture.secondLine, isSecond);
    }
    constexpr int kHalf = 32;
    const __m256i sum = _mm256_add_epi32(_mm256_madd_epi16(line, weights),
                                         _mm256_set1_epi32(isSigned ? kHalf : kHalf + (64 << 15)));
    const __m256i mixed = _mm256_srai_epi32(sum, 6);
    const __m256i magnitude = isSigned ? _mm256_abs_epi32(mixed) : mixed;
    // Times 31 / 32, or 31 / 64: below infinity.
    const __m256i scaled = _mm256_srli_epi32(
        _mm256_sub_epi32(_mm256_slli_epi32(magnitude, 5), magnitude), isSigned ? 5 : 6);
    if constexpr (!isSigned) return scaled;
    return _mm256_or_si256(
        scaled, _mm256_and_si256(_mm256_srai_epi32(mixed, 31), _mm256_set1_epi32(0x8000)));
}

/// Writes the lower half of both as one row of four pixels, 24 bytes; their upper half as another.
RB_AVX2 inline void storeTwoRows(__m256i left, __m256i right, std::byte* upper, std::byte* lower) {
    const auto rest = [](std::byte* to, __m128i twelve) RB_AVX2 {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), twelve);
        storeWord(to + 8, _mm_extract_epi32(twelve, 2));
    };
    store16(upper, _mm256_castsi256_si128(left));
    rest(upper + 12, _mm256_castsi256_si128(right));
    store16(lower, _mm256_extracti128_si256(left, 1));
    rest(lower + 12, _mm256_extracti128_si256(right, 1));
}

template <bool isSigned, bool twoLines>
RB_AVX2 inline void storePixels(const Mixture& mixture, std::byte* pixels, std::size_t rowBytes) {
    const __m256i dense =
        inBothHalves(_mm_setr_epi8(0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1));
    const __m256i a = _mm256_packus_epi32(mixedPixels<isSigned, twoLines, 0>(mixture),
                                          mixedPixels<isSigned, twoLines, 1>(mixture));
    const __m256i b = _mm256_packus_epi32(mixedPixels<isSigned, twoLines, 2>(mixture),
                                          mixedPixels<isSigned, twoLines, 3>(mixture));
    const __m256i c = _mm256_packus_epi32(mixedPixels<isSigned, twoLines, 4>(mixture),
                                          mixedPixels<isSigned, twoLines, 5>(mixture));
    const __m256i d = _mm256_packus_epi32(mixedPixels<isSigned, twoLines, 6>(mixture),
                                          mixedPixels<isSigned, twoLines, 7>(mixture));
    storeTwoRows(_mm256_shuffle_epi8(a, dense), _mm256_shuffle_epi8(b, dense), pixels,
                 pixels + 2 * rowBytes);
    storeTwoRows(_mm256_shuffle_epi8(c, dense), _mm256_shuffle_epi8(d, dense), pixels + rowBytes,
                 pixels + 3 * rowBytes);
}

/// All ones for each pixel that is in the second subset.
RB_AVX2 inline __m256i secondSubset(std::uint32_t partition) {
    // Eight pixels are half of a word: the lower one for the lower half of the register.
    const __m256i halves =
        _mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int>(subsetsOfPixels<2>(partition))),
                            _mm256_setr_m128i(_mm_set1_epi16(0x0100), _mm_set1_epi16(0x0302)));
    const __m256i bits =
        inBothHalves(_mm_setr_epi16(1, 1 << 2, 1 << 4, 1 << 6, 1 << 8, 1 << 10, 1 << 12, 1 << 14));
    return _mm256_cmpeq_epi16(_mm256_and_si256(halves, bits), bits);
}

template <bool isSigned>
RB_AVX2 inline void decodeBlock(const HalfLayout& layout, const Words& block, Ends ends,
                                std::byte* pixels, std::size_t rowBytes) {
    completeEnds<isSigned>(layout, ends);
    Mixture mixture{};
    mixture.firstLine = lineOf<isSigned>(ends.first);
    if (layout.twoLines) {
        const auto partition = static_cast<std::uint32_t>(block.at<77, 5>());
        mixture.secondLine = lineOf<isSigned>(ends.second);
        mixture.weights = weightsOfPixels<3>(evenIndices<2, 3>(block.high >> 18, partition));
        mixture.isSecond = secondSubset(partition);
        storePixels<isSigned, true>(mixture, pixels, rowBytes);
    } else {
        mixture.weights = weightsOfPixels<4>(evenIndices<1, 4>(block.high >> 1, 0));
        storePixels<isSigned, false>(mixture, pixels, rowBytes);
    }
}

template <bool isSigned>
RB_AVX2 void decodeRun(const std::byte* blocks, std::size_t count, std::byte* pixels,
                       std::size_t rowBytes) {
    static constexpr auto kTakers = takersOf(std::make_index_sequence<kHalfLayouts.size()>());
    for (std::size_t i = 0; i < count; ++i, blocks += 16, pixels += 24) {
        const Words block{loadWord<std::uint64_t>(blocks), loadWord<std::uint64_t>(blocks + 8)};
        const std::size_t place = kHalfLayoutPlaces[block.low & 31];
        if (place == kNoHalfLayout) {
            // Black, signed or not.
            decodeBc6hRun(blocks, 1, pixels, rowBytes);
            continue;
        }
        Ends ends;
        kTakers[place](block, ends);
        decodeBlock<isSigned>(kHalfLayouts[place], block, ends, pixels, rowBytes);
    }
}

}  // namespace

RB_AVX2 void decodeBc6hRunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                               std::size_t rowBytes) {
    decodeRun<false>(blocks, count, pixels, rowBytes);
}

RB_AVX2 void decodeBc6hSignedRunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                                     std::size_t rowBytes) {
    decodeRun<true>(blocks, count, pixels, rowBytes);
}

}  // namespace rb::imaging
#endif
