// BC7, one block at a time with all its pixels side by side; see BlockModes.h.
//
// A pixel is a (64 - w) + b w for the ends a and b of its line, for each channel. Ends and weights
// are bytes in pairs, for which there is one instruction. Two rows are in work together, one in
// each half of a register.

#include "RenderingBase/host/imaging/BlockAvx2.h"
#include "RenderingBase/host/imaging/BlockModes.h"
#include "RenderingBase/host/imaging/BlockRuns.h"
#include "RenderingBase/host/imaging/BlockWeightsAvx2.h"

#include <array>
#include <bit>
#include <utility>

#if defined(RB_HAS_AVX2_DECODERS)

namespace rb::imaging {
namespace {

/// One channel of all ends: a byte in each word of 32 bits.
/// @param values  The stored bits of one end after the other; @p ps a bit more for each.
template <unsigned width, unsigned moreBits>
RB_AVX2 inline __m256i channelOfEnds(std::uint32_t values, __m256i ps) {
    constexpr int kWidth = width, kBits = width + moreBits;
    const __m256i shifts = _mm256_setr_epi32(0, kWidth, 2 * kWidth, 3 * kWidth, 4 * kWidth,
                                             5 * kWidth, 6 * kWidth, 7 * kWidth);
    const __m256i stored =
        _mm256_and_si256(_mm256_srlv_epi32(_mm256_set1_epi32(static_cast<int>(values)), shifts),
                         _mm256_set1_epi32((1 << kWidth) - 1));
    const __m256i all = moreBits == 0 ? stored : _mm256_or_si256(_mm256_slli_epi32(stored, 1), ps);
    return _mm256_or_si256(_mm256_slli_epi32(all, 8 - kBits),
                           _mm256_srli_epi32(all, 2 * kBits - 8));
}

/// The ends of all lines as pixels of 32 bits, two for each line.
template <std::size_t number>
RB_AVX2 inline __m256i takeEnds(BlockBits& bits) {
    constexpr BlockMode kMode = kModes[number];
    constexpr unsigned kEnds = 2 * kMode.subsets, kP = kMode.endP + kMode.lineP;
    const std::uint32_t reds = bits.take(kEnds * kMode.color);
    const std::uint32_t greens = bits.take(kEnds * kMode.color);
    const std::uint32_t blues = bits.take(kEnds * kMode.color);
    const std::uint32_t alphas = bits.take(kEnds * kMode.alpha);
    __m256i ps = _mm256_setzero_si256();
    if constexpr (kP > 0) {
        const std::uint32_t stored = bits.take(kEnds * kMode.endP + kMode.subsets * kMode.lineP);
        const __m256i shifts = kMode.lineP ? _mm256_setr_epi32(0, 0, 1, 1, 2, 2, 3, 3)
                                           : _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
        ps =
            _mm256_and_si256(_mm256_srlv_epi32(_mm256_set1_epi32(static_cast<int>(stored)), shifts),
                             _mm256_set1_epi32(1));
    }
    const __m256i red = channelOfEnds<kMode.color, kP>(reds, ps);
    const __m256i green = _mm256_slli_epi32(channelOfEnds<kMode.color, kP>(greens, ps), 8);
    const __m256i blue = _mm256_slli_epi32(channelOfEnds<kMode.color, kP>(blues, ps), 16);
    __m256i alpha = _mm256_set1_epi32(-0x1000000);
    if constexpr (kMode.alpha > 0)
        alpha = _mm256_slli_epi32(channelOfEnds<kMode.alpha, kP>(alphas, ps), 24);
    return _mm256_or_si256(_mm256_or_si256(red, green), _mm256_or_si256(blue, alpha));
}

/// The weights of pixels @p first and the next of the eight in each half, for four channels each.
template <int first>
RB_AVX2 inline __m256i weightsOfTwo(__m256i weights) {
    constexpr short kFirst = (2 * first) | (2 * first + 1) << 8, kNext = kFirst + 0x0202;
    return _mm256_shuffle_epi8(weights, inBothHalves(_mm_setr_epi16(kFirst, kFirst, kFirst, kFirst,
                                                                    kNext, kNext, kNext, kNext)));
}

/// The lines of pixels @p first and the next in the upper two rows, and of those eight later.
template <unsigned subsets, int first>
RB_AVX2 inline __m256i linesOfTwo(__m256i lines, __m256i subsetsOfAll) {
    if constexpr (subsets == 1) return lines;
    // The line of a pixel takes two words: twice the number of its subset, and the next. Pixel 0 is
    // in subset 0.
    constexpr int kFirst = first == 0 ? 32 : 2 * first - 1;
    constexpr int kNext = 2 * first + 1, kLater = 2 * first + 15;
    const __m256i shifts =
        _mm256_setr_epi32(kFirst, kFirst, kNext, kNext, kLater, kLater, kLater + 2, kLater + 2);
    const __m256i words = _mm256_or_si256(
        _mm256_and_si256(_mm256_srlv_epi32(subsetsOfAll, shifts), _mm256_set1_epi32(6)),
        _mm256_setr_epi32(0, 1, 0, 1, 0, 1, 0, 1));
    return _mm256_permutevar8x32_epi32(lines, words);
}

/// Pairs of ends mixed by pairs of weights: (a (64 - w) + b w + 32) / 64, in 16 bits.
RB_AVX2 inline __m256i mixed(__m256i lines, __m256i weights) {
    // The second instruction is (x * 512 + 2^14) / 2^15.
    return _mm256_mulhrs_epi16(_mm256_maddubs_epi16(lines, weights), _mm256_set1_epi16(512));
}

/// Puts the ends of each line side by side, channel by channel.
RB_AVX2 inline __m256i linesOf(__m256i ends, __m128i order) {
    return _mm256_shuffle_epi8(ends, inBothHalves(order));
}

RB_AVX2 inline void storeRows(__m256i rows, std::byte* upper, std::byte* lower) {
    store16(upper, _mm256_castsi256_si128(rows));
    store16(lower, _mm256_extracti128_si256(rows, 1));
}

/// Modes with one set of indices.
template <std::size_t number>
RB_AVX2 inline void decodeLines(BlockBits bits, std::byte* pixels, std::size_t rowBytes) {
    constexpr BlockMode kMode = kModes[number];
    constexpr unsigned kSubsets = kMode.subsets;
    const std::uint32_t partition = bits.take(kMode.partition);
    __m256i lines = linesOf(takeEnds<number>(bits), _mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7,  //
                                                                  8, 12, 9, 13, 10, 14, 11, 15));
    if constexpr (kSubsets == 1) lines = _mm256_broadcastq_epi64(_mm256_castsi256_si128(lines));
    const __m256i w =
        weightsOfPixels<kMode.index>(evenIndices<kSubsets, kMode.index>(bits.next(), partition));
    const __m256i s = _mm256_set1_epi32(static_cast<int>(subsetsOfPixels<kSubsets>(partition)));
    const __m256i a = mixed(linesOfTwo<kSubsets, 0>(lines, s), weightsOfTwo<0>(w));
    const __m256i b = mixed(linesOfTwo<kSubsets, 2>(lines, s), weightsOfTwo<2>(w));
    const __m256i c = mixed(linesOfTwo<kSubsets, 4>(lines, s), weightsOfTwo<4>(w));
    const __m256i d = mixed(linesOfTwo<kSubsets, 6>(lines, s), weightsOfTwo<6>(w));
    storeRows(_mm256_packus_epi16(a, b), pixels, pixels + 2 * rowBytes);
    storeRows(_mm256_packus_epi16(c, d), pixels + rowBytes, pixels + 3 * rowBytes);
}

/// How a rotation orders the ends of the line, and which of the pairs is not a colour.
struct Rotation {
    alignas(16) std::array<std::int8_t, 16> order;
    std::uint64_t apart;
};

constexpr std::array<Rotation, 4> kRotations = [] {
    std::array<Rotation, 4> rotations{};
    for (std::size_t i = 0; i < 4; ++i) {
        std::array<std::int8_t, 4> channels = {0, 1, 2, 3};
        if (i > 0) std::swap(channels[i - 1], channels[3]);
        for (std::size_t c = 0; c < 4; ++c) {
            rotations[i].order[2 * c] = channels[c];
            rotations[i].order[2 * c + 1] = static_cast<std::int8_t>(channels[c] + 4);
        }
        rotations[i].apart = std::uint64_t{0xffff} << 16 * (i > 0 ? i - 1 : 3);
    }
    return rotations;
}();

/// Modes with one line and two sets of indices: one for three of the channels, one for the fourth.
template <std::size_t number>
RB_AVX2 inline void decodeTwoSets(BlockBits bits, std::byte* pixels, std::size_t rowBytes) {
    constexpr BlockMode kMode = kModes[number];
    const Rotation& rotation = kRotations[bits.take(kMode.rotation)];
    const std::uint32_t selection = bits.take(kMode.selection);
    const __m256i ends = takeEnds<number>(bits);
    const __m256i lines = _mm256_broadcastq_epi64(
        _mm_shuffle_epi8(_mm256_castsi256_si128(ends),
                         _mm_load_si128(reinterpret_cast<const __m128i*>(rotation.order.data()))));
    const __m256i first =
        weightsOfPixels<kMode.index>(withZeroAt(bits.take(16 * kMode.index - 1), kMode.index - 1));
    const __m256i second = weightsOfPixels<kMode.second>(withZeroAt(bits.next(), kMode.second - 1));
    // Where the second set counts: the channel apart, or when the sets are exchanged, the others.
    const __m256i ofSecond =
        _mm256_set1_epi64x(static_cast<long long>(rotation.apart ^ (std::uint64_t{0} - selection)));
    const auto both = [=](__m256i firsts, __m256i seconds) RB_AVX2 {
        return mixed(lines, _mm256_blendv_epi8(firsts, seconds, ofSecond));
    };
    const __m256i a = both(weightsOfTwo<0>(first), weightsOfTwo<0>(second));
    const __m256i b = both(weightsOfTwo<2>(first), weightsOfTwo<2>(second));
    const __m256i c = both(weightsOfTwo<4>(first), weightsOfTwo<4>(second));
    const __m256i d = both(weightsOfTwo<6>(first), weightsOfTwo<6>(second));
    storeRows(_mm256_packus_epi16(a, b), pixels, pixels + 2 * rowBytes);
    storeRows(_mm256_packus_epi16(c, d), pixels + rowBytes, pixels + 3 * rowBytes);
}

template <std::size_t number>
RB_AVX2 inline void decodeMode(BlockBits bits, std::byte* pixels, std::size_t rowBytes) {
    bits.take(number + 1);
    if constexpr (kModes[number].second > 0)
        decodeTwoSets<number>(bits, pixels, rowBytes);
    else
        decodeLines<number>(bits, pixels, rowBytes);
}

RB_AVX2 void decodeBlock(const std::byte* block, std::byte* pixels, std::size_t rowBytes) {
    const BlockBits bits(block);
    switch (std::countr_zero(std::to_integer<std::uint8_t>(*block))) {
        case 0:
            return decodeMode<0>(bits, pixels, rowBytes);
        case 1:
            return decodeMode<1>(bits, pixels, rowBytes);
        case 2:
            return decodeMode<2>(bits, pixels, rowBytes);
        case 3:
            return decodeMode<3>(bits, pixels, rowBytes);
        case 4:
            return decodeMode<4>(bits, pixels, rowBytes);
        case 5:
            return decodeMode<5>(bits, pixels, rowBytes);
        case 6:
            return decodeMode<6>(bits, pixels, rowBytes);
        case 7:
            return decodeMode<7>(bits, pixels, rowBytes);
        default:
            return decodeBc7Run(block, 1, pixels, rowBytes);
    }
}

}  // namespace

RB_AVX2 void decodeBc7RunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                              std::size_t rowBytes) {
    for (std::size_t i = 0; i < count; ++i, blocks += 16, pixels += 16)
        decodeBlock(blocks, pixels, rowBytes);
}

}  // namespace rb::imaging
#endif
