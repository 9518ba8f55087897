// BC1, BC2 and BC3, eight blocks at a time; see BlockColor.cpp.
//
// The halves of a register hold blocks that are neighbours: 0 2 4 6 below, 1 3 5 7 above. So the
// same row of two blocks is one store.

#include "RenderingBase/host/imaging/BlockAlphaAvx2.h"
#include "RenderingBase/host/imaging/BlockRuns.h"

#if defined(RB_HAS_AVX2_DECODERS)

namespace rb::imaging {
namespace {

constexpr std::size_t kTogether = 8;  // blocks

/// The colour parts of eight blocks: in each half those of four blocks.
struct ColorParts {
    __m256i colors;   ///< Two of 16 bits a block.
    __m256i choices;  ///< 32 bits a block.
};

/// @param first  Parts of blocks 0, 2, 1, 3, eight bytes each; @p second of 4, 6, 5, 7.
RB_AVX2 inline ColorParts partsOf(__m256i first, __m256i second) {
    const __m256 a = _mm256_castsi256_ps(first), b = _mm256_castsi256_ps(second);
    return {_mm256_castps_si256(_mm256_shuffle_ps(a, b, 0x88)),
            _mm256_castps_si256(_mm256_shuffle_ps(a, b, 0xdd))};
}

/// Two colours a block as bytes in words of 16 bits: green over red, and alpha over blue.
struct Colors {
    __m256i redGreen;
    __m256i blueAlpha;
};

/// Both colours of a block: the other one.
RB_AVX2 inline __m256i exchanged(__m256i channel) {
    return _mm256_or_si256(_mm256_slli_epi32(channel, 16), _mm256_srli_epi32(channel, 16));
}

/// (2 a + b + 1) / 3 and (a + 2 b + 1) / 3.
RB_AVX2 inline __m256i thirds(__m256i channel) {
    const __m256i sum =
        _mm256_add_epi16(_mm256_add_epi16(channel, channel),
                         _mm256_add_epi16(exchanged(channel), _mm256_set1_epi16(1)));
    return _mm256_mulhi_epu16(sum, _mm256_set1_epi16(21846));  // 2^16 / 3, rounded up
}

/// The middle in place of the first colour; nothing in place of the second.
RB_AVX2 inline __m256i middle(__m256i channel) {
    return _mm256_and_si256(_mm256_avg_epu16(channel, exchanged(channel)),
                            _mm256_set1_epi32(0xffff));
}

/// The palettes of two blocks with four pixels each: those of blocks 0 and 1 first.
struct Palettes {
    __m256i pairs[4];
};

RB_AVX2 inline Palettes palettesOf(const Colors& ends, const Colors& mixed) {
    const __m256i ends01 = _mm256_unpacklo_epi16(ends.redGreen, ends.blueAlpha);
    const __m256i ends23 = _mm256_unpackhi_epi16(ends.redGreen, ends.blueAlpha);
    const __m256i mixed01 = _mm256_unpacklo_epi16(mixed.redGreen, mixed.blueAlpha);
    const __m256i mixed23 = _mm256_unpackhi_epi16(mixed.redGreen, mixed.blueAlpha);
    return {{_mm256_unpacklo_epi64(ends01, mixed01), _mm256_unpackhi_epi64(ends01, mixed01),
             _mm256_unpacklo_epi64(ends23, mixed23), _mm256_unpackhi_epi64(ends23, mixed23)}};
}

/// (x * factor + more) / 64: a channel of five or six bits as a byte; see BlockColor.cpp.
RB_AVX2 inline __m256i expanded(__m256i channel, short factor, short more) {
    const __m256i product = _mm256_mullo_epi16(channel, _mm256_set1_epi16(factor));
    return _mm256_srli_epi16(_mm256_add_epi16(product, _mm256_set1_epi16(more)), 6);
}

RB_AVX2 inline __m256i joined(__m256i low, __m256i high) {
    return _mm256_or_si256(low, _mm256_slli_epi16(high, 8));
}

/// @tparam hasNothing  BC1: the order of the colours tells whether there is a transparent one.
template <bool hasNothing>
RB_AVX2 inline Palettes palettesOf(__m256i stored) {
    const __m256i red = expanded(_mm256_srli_epi16(stored, 11), 527, 23);
    const __m256i green =
        expanded(_mm256_and_si256(_mm256_srli_epi16(stored, 5), _mm256_set1_epi16(63)), 259, 33);
    const __m256i blue = expanded(_mm256_and_si256(stored, _mm256_set1_epi16(31)), 527, 23);
    const __m256i opaque = hasNothing ? _mm256_set1_epi16(-0x100) : _mm256_setzero_si256();
    const Colors ends{joined(red, green), _mm256_or_si256(blue, opaque)};
    Colors mixed{joined(thirds(red), thirds(green)), _mm256_or_si256(thirds(blue), opaque)};
    if constexpr (hasNothing) {
        const __m256i hasThirds = _mm256_cmpgt_epi32(
            _mm256_and_si256(stored, _mm256_set1_epi32(0xffff)), _mm256_srli_epi32(stored, 16));
        const __m256i blueAlpha = _mm256_or_si256(middle(blue), _mm256_set1_epi32(0xff00));
        mixed.redGreen =
            _mm256_blendv_epi8(joined(middle(red), middle(green)), mixed.redGreen, hasThirds);
        mixed.blueAlpha = _mm256_blendv_epi8(blueAlpha, mixed.blueAlpha, hasThirds);
    }
    return palettesOf(ends, mixed);
}

/// One row of two blocks: what the choices of each half choose from its palette.
template <int row>
RB_AVX2 inline __m256i chosenRow(__m256i palette, __m256i choices) {
    constexpr int kFirst = 8 * row;
    const __m256i shifts = inBothHalves(_mm_setr_epi32(kFirst, kFirst + 2, kFirst + 4, kFirst + 6));
    // Only the lowest two bits of each word count.
    return _mm256_castps_si256(
        _mm256_permutevar_ps(_mm256_castsi256_ps(palette), _mm256_srlv_epi32(choices, shifts)));
}

/// The alpha of BC1 is in its palettes.
struct NoAlpha {
    RB_AVX2 explicit NoAlpha(__m256i) {}
    template <int row>
    RB_AVX2 __m256i with(__m256i colors) const {
        return colors;
    }
};

/// Four bits a pixel, times 17.
struct StoredAlpha {
    __m256i upper, lower;  // two rows each, in every word of 32 bits

    RB_AVX2 explicit StoredAlpha(__m256i blocks)
        : upper(_mm256_shuffle_epi32(blocks, 0x00)), lower(_mm256_shuffle_epi32(blocks, 0x55)) {}

    template <int row>
    RB_AVX2 __m256i with(__m256i colors) const {
        constexpr int kFirst = row % 2 == 0 ? 28 : 12;
        const __m256i shifts =
            inBothHalves(_mm_setr_epi32(kFirst, kFirst - 4, kFirst - 8, kFirst - 12));
        const __m256i nibbles = _mm256_and_si256(_mm256_sllv_epi32(row < 2 ? upper : lower, shifts),
                                                 _mm256_set1_epi32(-0x10000000));
        const __m256i alphas = _mm256_or_si256(nibbles, _mm256_srli_epi32(nibbles, 4));
        return _mm256_or_si256(colors, alphas);
    }
};

/// A block of one channel.
struct MixedAlpha {
    __m256i alphas;

    RB_AVX2 explicit MixedAlpha(__m256i blocks) : alphas(sixteenAlphas(blocks)) {}

    template <int row>
    RB_AVX2 __m256i with(__m256i colors) const {
        constexpr char kFirst = 4 * row;
        const __m256i places =
            inBothHalves(_mm_setr_epi8(-1, -1, -1, kFirst, -1, -1, -1, kFirst + 1,  //
                                       -1, -1, -1, kFirst + 2, -1, -1, -1, kFirst + 3));
        return _mm256_or_si256(colors, _mm256_shuffle_epi8(alphas, places));
    }
};

template <class Alpha>
RB_AVX2 inline void storePair(__m256i palette, __m256i choices, __m256i alphaBlocks,
                              std::byte* pixels, std::size_t rowBytes) {
    const Alpha alpha(alphaBlocks);
    store32(pixels, alpha.template with<0>(chosenRow<0>(palette, choices)));
    store32(pixels + rowBytes, alpha.template with<1>(chosenRow<1>(palette, choices)));
    store32(pixels + 2 * rowBytes, alpha.template with<2>(chosenRow<2>(palette, choices)));
    store32(pixels + 3 * rowBytes, alpha.template with<3>(chosenRow<3>(palette, choices)));
}

/// Eight blocks of sixteen bytes, the last eight of which are as those of BC1.
template <class Alpha>
RB_AVX2 void decodeWithAlpha(const std::byte* blocks, std::byte* pixels, std::size_t rowBytes) {
    const __m256i b01 = load32(blocks), b23 = load32(blocks + 32);
    const __m256i b45 = load32(blocks + 64), b67 = load32(blocks + 96);
    const ColorParts parts =
        partsOf(_mm256_unpackhi_epi64(b01, b23), _mm256_unpackhi_epi64(b45, b67));
    const Palettes palettes = palettesOf<false>(parts.colors);
    storePair<Alpha>(palettes.pairs[0], _mm256_shuffle_epi32(parts.choices, 0x00), b01, pixels,
                     rowBytes);
    storePair<Alpha>(palettes.pairs[1], _mm256_shuffle_epi32(parts.choices, 0x55), b23, pixels + 32,
                     rowBytes);
    storePair<Alpha>(palettes.pairs[2], _mm256_shuffle_epi32(parts.choices, 0xaa), b45, pixels + 64,
                     rowBytes);
    storePair<Alpha>(palettes.pairs[3], _mm256_shuffle_epi32(parts.choices, 0xff), b67, pixels + 96,
                     rowBytes);
}

RB_AVX2 void decodeBc1(const std::byte* blocks, std::byte* pixels, std::size_t rowBytes) {
    // From the order 0 1 2 3 to 0 2 1 3.
    const __m256i first = _mm256_permute4x64_epi64(load32(blocks), 0xd8);
    const __m256i second = _mm256_permute4x64_epi64(load32(blocks + 32), 0xd8);
    const ColorParts parts = partsOf(first, second);
    const Palettes palettes = palettesOf<true>(parts.colors);
    storePair<NoAlpha>(palettes.pairs[0], _mm256_shuffle_epi32(parts.choices, 0x00), first, pixels,
                       rowBytes);
    storePair<NoAlpha>(palettes.pairs[1], _mm256_shuffle_epi32(parts.choices, 0x55), first,
                       pixels + 32, rowBytes);
    storePair<NoAlpha>(palettes.pairs[2], _mm256_shuffle_epi32(parts.choices, 0xaa), first,
                       pixels + 64, rowBytes);
    storePair<NoAlpha>(palettes.pairs[3], _mm256_shuffle_epi32(parts.choices, 0xff), first,
                       pixels + 96, rowBytes);
}

}  // namespace

RB_AVX2 void decodeBc1RunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                              std::size_t rowBytes) {
    for (; count >= kTogether; count -= kTogether, blocks += 64, pixels += 128)
        decodeBc1(blocks, pixels, rowBytes);
    decodeBc1Run(blocks, count, pixels, rowBytes);
}

RB_AVX2 void decodeBc2RunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                              std::size_t rowBytes) {
    for (; count >= kTogether; count -= kTogether, blocks += 128, pixels += 128)
        decodeWithAlpha<StoredAlpha>(blocks, pixels, rowBytes);
    decodeBc2Run(blocks, count, pixels, rowBytes);
}

RB_AVX2 void decodeBc3RunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                              std::size_t rowBytes) {
    for (; count >= kTogether; count -= kTogether, blocks += 128, pixels += 128)
        decodeWithAlpha<MixedAlpha>(blocks, pixels, rowBytes);
    decodeBc3Run(blocks, count, pixels, rowBytes);
}

}  // namespace rb::imaging
#endif
