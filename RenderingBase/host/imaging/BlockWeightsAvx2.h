#pragma once

/// @file  The weights of all sixteen pixels of a BC6H or BC7 block at once; see BlockWeights.h.

#include "RenderingBase/host/imaging/BlockAvx2.h"
#include "RenderingBase/host/imaging/BlockWeights.h"

#include <algorithm>
#include <cstddef>

#if defined(RB_HAS_AVX2_DECODERS)

namespace rb::imaging {

/// The weights of all pixels, 16 bits each: 64 - w in the lower byte, w in the upper.
template <int indexBits>
RB_AVX2 inline __m256i weightsOfPixels(std::uint64_t indices) {
    static constexpr auto kWeights = [] {
        std::array<std::uint8_t, 16> table{};
        std::copy_n(indexWeights<indexBits>().begin(), std::size_t{1} << indexBits, table.begin());
        return table;
    }();
    // The two bytes in which the index of a pixel lies, and the factor that moves it to the top.
    struct Places {
        alignas(32) std::array<std::uint8_t, 32> bytes;
        alignas(32) std::array<std::uint16_t, 16> factors;
    };
    static constexpr Places kPlaces = [] {
        Places places{};
        for (unsigned i = 0; i < 16; ++i) {
            const unsigned bit = i * indexBits;
            places.bytes[2 * i] = static_cast<std::uint8_t>(bit / 8);
            places.bytes[2 * i + 1] = static_cast<std::uint8_t>(bit / 8 + 1);
            places.factors[i] = static_cast<std::uint16_t>(1u << (16 - indexBits - bit % 8));
        }
        return places;
    }();
    const __m256i all = _mm256_set1_epi64x(static_cast<long long>(indices));
    const __m256i bytes = _mm256_shuffle_epi8(
        all, _mm256_load_si256(reinterpret_cast<const __m256i*>(kPlaces.bytes.data())));
    const __m256i factors =
        _mm256_load_si256(reinterpret_cast<const __m256i*>(kPlaces.factors.data()));
    const __m256i index = _mm256_srli_epi16(_mm256_mullo_epi16(bytes, factors), 16 - indexBits);
    const __m256i table =
        inBothHalves(_mm_loadu_si128(reinterpret_cast<const __m128i*>(kWeights.data())));
    // The upper byte of each index is 0, and so is the first weight.
    const __m256i w = _mm256_shuffle_epi8(table, index);
    return _mm256_add_epi16(_mm256_mullo_epi16(w, _mm256_set1_epi16(255)), _mm256_set1_epi16(64));
}

}  // namespace rb::imaging
#endif
