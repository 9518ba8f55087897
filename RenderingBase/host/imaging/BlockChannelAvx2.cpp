// BC4 and BC5, two blocks of a channel at a time; see BlockChannel.cpp.

#include "RenderingBase/host/imaging/BlockAlpha.h"
#include "RenderingBase/host/imaging/BlockAlphaAvx2.h"
#include "RenderingBase/host/imaging/BlockRuns.h"

#if defined(RB_HAS_AVX2_DECODERS)

namespace rb::imaging {
namespace {

/// The sixteen pixels of one block in each half.
template <bool isSigned>
RB_AVX2 inline __m256i sixteenPixels(const std::byte* twoBlocks) {
    const __m128i both = _mm_loadu_si128(reinterpret_cast<const __m128i*>(twoBlocks));
    const __m256i apart = _mm256_permute4x64_epi64(_mm256_castsi128_si256(both), 0x50);
    if constexpr (!isSigned) return sixteenAlphas(apart);
    const auto values = [](const std::byte* block) {
        return static_cast<long long>(eightSigned(block));
    };
    const __m256i eights = _mm256_setr_epi64x(values(twoBlocks), 0, values(twoBlocks + 8), 0);
    return _mm256_shuffle_epi8(eights, sixteenChoices(apart));
}

RB_AVX2 inline void storeLower(std::byte* to, __m128i eight) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), eight);
}

template <bool isSigned>
RB_AVX2 inline void decodeTwoBlocks(const std::byte* blocks, std::byte* pixels,
                                    std::size_t rowBytes) {
    const __m256i all = sixteenPixels<isSigned>(blocks);
    // Rows of four bytes side by side.
    const __m128i first = _mm256_castsi256_si128(all), second = _mm256_extracti128_si256(all, 1);
    const __m128i upper = _mm_unpacklo_epi32(first, second);
    const __m128i lower = _mm_unpackhi_epi32(first, second);
    storeLower(pixels, upper);
    storeLower(pixels + rowBytes, _mm_unpackhi_epi64(upper, upper));
    storeLower(pixels + 2 * rowBytes, lower);
    storeLower(pixels + 3 * rowBytes, _mm_unpackhi_epi64(lower, lower));
}

template <bool isSigned>
RB_AVX2 inline void decodeRedGreen(const std::byte* block, std::byte* pixels,
                                   std::size_t rowBytes) {
    const __m256i all = sixteenPixels<isSigned>(block);
    const __m128i red = _mm256_castsi256_si128(all), green = _mm256_extracti128_si256(all, 1);
    const __m128i halves[] = {_mm_unpacklo_epi8(red, green), _mm_unpackhi_epi8(red, green)};
    // Pairs of bytes become pixels of three.
    const __m128i upper = _mm_setr_epi8(0, 1, -1, 2, 3, -1, 4, 5, -1, 6, 7, -1, -1, -1, -1, -1);
    const __m128i lower =
        _mm_setr_epi8(8, 9, -1, 10, 11, -1, 12, 13, -1, 14, 15, -1, -1, -1, -1, -1);
    for (const __m128i twoRows : halves) {
        for (const __m128i places : {upper, lower}) {
            const __m128i row = _mm_shuffle_epi8(twoRows, places);
            storeLower(pixels, row);
            storeWord(pixels + 8, _mm_extract_epi32(row, 2));
            pixels += rowBytes;
        }
    }
}

template <bool isSigned>
RB_AVX2 void decodeOne(const std::byte* blocks, std::size_t count, std::byte* pixels,
                       std::size_t rowBytes) {
    for (; count >= 2; count -= 2, blocks += 16, pixels += 8)
        decodeTwoBlocks<isSigned>(blocks, pixels, rowBytes);
    (isSigned ? decodeBc4SignedRun : decodeBc4Run)(blocks, count, pixels, rowBytes);
}

template <bool isSigned>
RB_AVX2 void decodeTwo(const std::byte* blocks, std::size_t count, std::byte* pixels,
                       std::size_t rowBytes) {
    for (std::size_t i = 0; i < count; ++i, blocks += 16, pixels += 12)
        decodeRedGreen<isSigned>(blocks, pixels, rowBytes);
}

}  // namespace

RB_AVX2 void decodeBc4RunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                              std::size_t rowBytes) {
    decodeOne<false>(blocks, count, pixels, rowBytes);
}

RB_AVX2 void decodeBc4SignedRunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                                    std::size_t rowBytes) {
    decodeOne<true>(blocks, count, pixels, rowBytes);
}

RB_AVX2 void decodeBc5RunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                              std::size_t rowBytes) {
    decodeTwo<false>(blocks, count, pixels, rowBytes);
}

RB_AVX2 void decodeBc5SignedRunAvx2(const std::byte* blocks, std::size_t count, std::byte* pixels,
                                    std::size_t rowBytes) {
    decodeTwo<true>(blocks, count, pixels, rowBytes);
}

}  // namespace rb::imaging
#endif
