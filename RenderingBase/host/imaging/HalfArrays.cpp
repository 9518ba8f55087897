#include "RenderingBase/host/imaging/HalfArrays.h"

#include "RenderingBase/host/imaging/HalfBits.h"

#include <algorithm>
#include <bit>
#include <cstddef>

#if defined(__x86_64__)
#include <cpuid.h>
#include <immintrin.h>
// Code for processors with these extensions, in a library for all of them.
#define RB_F16C __attribute__((target("avx2,f16c")))
#endif

namespace rb::imaging {

namespace detail {

void halvesFromFloatsPortable(std::span<const float> source,
                              std::span<std::uint16_t> target) noexcept {
    const std::size_t count = std::min(source.size(), target.size());
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = halfBitsFromFloatBits(std::bit_cast<std::uint32_t>(source[i]));
    }
}

void floatsFromHalvesPortable(std::span<const std::uint16_t> source,
                              std::span<float> target) noexcept {
    const std::size_t count = std::min(source.size(), target.size());
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = std::bit_cast<float>(floatBitsFromHalfBits(source[i]));
    }
}

}  // namespace detail

#if defined(__x86_64__)
namespace {

// Elements that one instruction converts.
constexpr std::size_t kLanes = 8;

// From this target size on, stores go past the caches: a line that is overwritten as a whole need
// not be read first. Smaller targets are left in the caches for whoever reads them next. Measured
// where the caches hold 32 MiB: even at this size, and a quarter faster at 128 and 256 MiB.
constexpr std::size_t kStreamedBytes = std::size_t{16} << 20;

bool hasConversionInstructions() {
    unsigned a = 0, b = 0, c = 0, d = 0;
    // F16C has no name of its own in every compiler's list; the test for AVX2 includes that the
    // system saves the wide registers.
    return __get_cpuid(1, &a, &b, &c, &d) != 0 && (c & bit_F16C) != 0 &&
           __builtin_cpu_supports("avx2") != 0;
}

// Sets the power-on state of the floating-point unit: all exceptions masked, subnormals kept. The
// instructions raise flags that the portable version does not; the destructor takes them back.
class NeutralFloatState {
public:
    NeutralFloatState() : m_saved(_mm_getcsr()) { _mm_setcsr(0x1f80); }
    ~NeutralFloatState() { _mm_setcsr(m_saved); }
    NeutralFloatState(const NeutralFloatState&) = delete;
    NeutralFloatState& operator=(const NeutralFloatState&) = delete;

private:
    unsigned m_saved;
};

// The instructions make signalling NaNs quiet. These two replace the results in the lanes of NaNs
// by what nanHalfBits and floatBitsFromHalfBits give.
RB_F16C __m128i withNansMended(__m128i halves, __m256 floats, __m256 isNan) {
    const __m256i bits = _mm256_castps_si256(floats);
    const __m256i sign = _mm256_and_si256(_mm256_srli_epi32(bits, 16), _mm256_set1_epi32(0x8000));
    const __m256i payload = _mm256_and_si256(_mm256_srli_epi32(bits, 13), _mm256_set1_epi32(0x3ff));
    const __m256i empty = _mm256_cmpeq_epi32(payload, _mm256_setzero_si256());
    const __m256i mantissa = _mm256_or_si256(payload, _mm256_srli_epi32(empty, 31));
    const __m256i nan = _mm256_or_si256(_mm256_or_si256(sign, _mm256_set1_epi32(0x7c00)), mantissa);
    const __m128i nan16 =
        _mm_packus_epi32(_mm256_castsi256_si128(nan), _mm256_extracti128_si256(nan, 1));
    const __m256i mask = _mm256_castps_si256(isNan);
    const __m128i mask16 =
        _mm_packs_epi32(_mm256_castsi256_si128(mask), _mm256_extracti128_si256(mask, 1));
    return _mm_blendv_epi8(halves, nan16, mask16);
}

RB_F16C __m256 withNansMended(__m256 floats, __m128i halves, __m128i isNan) {
    // Moved up as a signed number, the sign of the half fills the bits above the exponent, which is
    // all ones in a NaN.
    const __m256i shifted = _mm256_slli_epi32(_mm256_cvtepi16_epi32(halves), 13);
    const __m256i nan = _mm256_or_si256(_mm256_and_si256(shifted, _mm256_set1_epi32(-0x7f800001)),
                                        _mm256_set1_epi32(0x7f800000));
    const __m256 mask = _mm256_castsi256_ps(_mm256_cvtepi16_epi32(isNan));
    return _mm256_blendv_ps(floats, _mm256_castsi256_ps(nan), mask);
}

RB_F16C inline __m128i converted(const float* source) {
    const __m256 floats = _mm256_loadu_ps(source);
    const __m128i halves = _mm256_cvtps_ph(floats, _MM_FROUND_TO_NEAREST_INT);
    const __m256 isNan = _mm256_cmp_ps(floats, floats, _CMP_UNORD_Q);
    if (_mm256_movemask_ps(isNan) == 0) [[likely]]
        return halves;
    return withNansMended(halves, floats, isNan);
}

RB_F16C inline __m256 converted(const std::uint16_t* source) {
    const __m128i halves = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source));
    const __m256 floats = _mm256_cvtph_ps(halves);
    // Looked for in the integers: clang takes a comparison of converted halves apart, lane by lane.
    const __m128i magnitudes = _mm_and_si128(halves, _mm_set1_epi16(0x7fff));
    const __m128i isNan = _mm_cmpgt_epi16(magnitudes, _mm_set1_epi16(0x7c00));
    if (_mm_movemask_epi8(isNan) == 0) [[likely]]
        return floats;
    return withNansMended(floats, halves, isNan);
}

RB_F16C inline void store(std::uint16_t* target, __m128i halves) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(target), halves);
}
RB_F16C inline void store(float* target, __m256 floats) { _mm256_storeu_ps(target, floats); }

RB_F16C inline void stream(std::uint16_t* target, __m128i halves) {
    _mm_stream_si128(reinterpret_cast<__m128i*>(target), halves);
}
RB_F16C inline void stream(float* target, __m256 floats) { _mm256_stream_ps(target, floats); }

// Converts `count` elements, a multiple of kLanes. A call of its own, so that no conversion moves
// out of the neutral state that its caller sets.
template <class From, class To>
[[gnu::noinline]] RB_F16C void convertLanes(const From* source, To* target, std::size_t count) {
    for (std::size_t i = 0; i < count; i += kLanes) store(target + i, converted(source + i));
}

// The same for a target whose address is a multiple of the bytes that one store writes.
template <class From, class To>
[[gnu::noinline]] RB_F16C void streamLanes(const From* source, To* target, std::size_t count) {
    for (std::size_t i = 0; i < count; i += kLanes) stream(target + i, converted(source + i));
    // Streamed stores may be seen by other threads after later ones, unless fenced.
    _mm_sfence();
}

// Elements before the first address that is a multiple of one store.
template <class To>
std::size_t elementsToAlignment(const To* target) {
    constexpr std::size_t kStoreBytes = kLanes * sizeof(To);
    const auto address = reinterpret_cast<std::uintptr_t>(target);
    return (kStoreBytes - address % kStoreBytes) % kStoreBytes / sizeof(To);
}

template <class From, class To>
void convert(std::span<const From> source, std::span<To> target,
             void (&convertPortably)(std::span<const From>, std::span<To>) noexcept) {
    const std::size_t count = std::min(source.size(), target.size());
    const bool streamed = count >= kStreamedBytes / sizeof(To);
    const std::size_t head = streamed ? elementsToAlignment(target.data()) : 0;
    const std::size_t lanes = (count - head) / kLanes * kLanes;
    convertPortably(source.first(head), target.first(head));
    {
        const NeutralFloatState neutral;
        const auto run = streamed ? streamLanes<From, To> : convertLanes<From, To>;
        run(source.data() + head, target.data() + head, lanes);
    }
    convertPortably(source.subspan(head + lanes), target.subspan(head + lanes));
}

}  // namespace

void halvesFromFloats(std::span<const float> source, std::span<std::uint16_t> target) noexcept {
    static const bool hasInstructions = hasConversionInstructions();
    if (!hasInstructions) return detail::halvesFromFloatsPortable(source, target);
    convert(source, target, detail::halvesFromFloatsPortable);
}

void floatsFromHalves(std::span<const std::uint16_t> source, std::span<float> target) noexcept {
    static const bool hasInstructions = hasConversionInstructions();
    if (!hasInstructions) return detail::floatsFromHalvesPortable(source, target);
    convert(source, target, detail::floatsFromHalvesPortable);
}

#else

void halvesFromFloats(std::span<const float> source, std::span<std::uint16_t> target) noexcept {
    detail::halvesFromFloatsPortable(source, target);
}

void floatsFromHalves(std::span<const std::uint16_t> source, std::span<float> target) noexcept {
    detail::floatsFromHalvesPortable(source, target);
}

#endif

}  // namespace rb::imaging
