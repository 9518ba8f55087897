#pragma once

/// @file  What the decoders of blocks that use AVX2 have in common.
///
/// They handle as many whole blocks at a time as fill the registers, and leave the rest of a run to
/// the portable ones, whose bytes they reproduce.

#if defined(__x86_64__)
#define RB_HAS_AVX2_DECODERS

#include <cstddef>
#include <immintrin.h>

// Code for processors with these instructions, in a library for all of them.
#define RB_AVX2 __attribute__((target("avx2")))

namespace rb::imaging {

RB_AVX2 inline __m256i load32(const std::byte* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

RB_AVX2 inline void store32(std::byte* to, __m256i bytes) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes);
}

RB_AVX2 inline void store16(std::byte* to, __m128i bytes) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
}

/// The same bytes in both halves.
RB_AVX2 inline __m256i inBothHalves(__m128i bytes) { return _mm256_broadcastsi128_si256(bytes); }

}  // namespace rb::imaging
#endif
