#pragma once

/// @file  Decoding of two blocks of one channel at once; see BlockAlpha.h.

#include "RenderingBase/host/imaging/BlockAvx2.h"

#if defined(RB_HAS_AVX2_DECODERS)

namespace rb::imaging {

/// The eight values of a block in the lower eight bytes of each half, there as bytes.
RB_AVX2 inline __m256i eightAlphas(__m256i blocks) {
    // As words: the first end, and the second.
    const __m256i a = _mm256_shuffle_epi8(blocks, _mm256_set1_epi16(-0x8000));
    const __m256i b = _mm256_shuffle_epi8(blocks, _mm256_set1_epi16(-0x7fff));
    const __m256i inSevenths = _mm256_cmpgt_epi16(a, b);
    const auto choose = [inSevenths](__m128i fifths, __m128i sevenths) RB_AVX2 {
        return _mm256_blendv_epi8(inBothHalves(fifths), inBothHalves(sevenths), inSevenths);
    };
    const __m256i aWeights =
        choose(_mm_setr_epi16(5, 0, 4, 3, 2, 1, 0, 0), _mm_setr_epi16(7, 0, 6, 5, 4, 3, 2, 1));
    const __m256i bWeights =
        choose(_mm_setr_epi16(0, 5, 1, 2, 3, 4, 0, 0), _mm_setr_epi16(0, 7, 1, 2, 3, 4, 5, 6));
    // For rounding, and for the last of the fifths to become 255.
    const __m256i more = choose(_mm_setr_epi16(1, 1, 1, 1, 1, 1, 1, 5 * 255), _mm_set1_epi16(1));
    // 2^16 / 5 and 2^16 / 7, rounded up: exact for what is divided here, up to 7 * 255 + 1.
    const __m256i factor = choose(_mm_set1_epi16(13108), _mm_set1_epi16(9363));
    const __m256i sum = _mm256_add_epi16(
        _mm256_add_epi16(_mm256_mullo_epi16(a, aWeights), _mm256_mullo_epi16(b, bWeights)), more);
    const __m256i words = _mm256_mulhi_epu16(sum, factor);
    return _mm256_packus_epi16(words, words);
}

/// @p bits and the same @p shift further up, where @p mask has ones.
RB_AVX2 inline __m256i parted(__m256i bits, int shift, long long mask) {
    return _mm256_and_si256(_mm256_or_si256(bits, _mm256_slli_epi64(bits, shift)),
                            _mm256_set1_epi64x(mask));
}

/// The sixteen choices of a block in the lower eight bytes of each half, there as bytes.
RB_AVX2 inline __m256i sixteenChoices(__m256i blocks) {
    // 24 bits for eight pixels in each word of 64, parted three times in the middle.
    const __m256i eights =
        _mm256_shuffle_epi8(blocks, inBothHalves(_mm_setr_epi8(2, 3, 4, -1, -1, -1, -1, -1,  //
                                                               5, 6, 7, -1, -1, -1, -1, -1)));
    const __m256i fours = parted(eights, 20, 0x00000fff'00000fff);
    const __m256i twos = parted(fours, 10, 0x003f003f'003f003f);
    return parted(twos, 5, 0x07070707'07070707);
}

/// The sixteen pixels of a block in the lower eight bytes of each half, there as bytes.
RB_AVX2 inline __m256i sixteenAlphas(__m256i blocks) {
    return _mm256_shuffle_epi8(eightAlphas(blocks), sixteenChoices(blocks));
}

}  // namespace rb::imaging
#endif
