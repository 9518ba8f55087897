// Included once for every kind of processor, so without a guard of the usual kind.

/// @file  What kernels for every kind of processor share. The including source has told Highway its
///        name, and that the functions between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE are
///        compiled for each kind in turn; they are chosen among at run time.

#include <cstddef>
#include <cstdint>
#include <hwy/highway.h>

#if defined(RB_VECTOR_LOOP_INCLUDED) == defined(HWY_TARGET_TOGGLE)
#ifdef RB_VECTOR_LOOP_INCLUDED
#undef RB_VECTOR_LOOP_INCLUDED
#else
#define RB_VECTOR_LOOP_INCLUDED
#endif

/// Whether the kind has no vectors, or only imitated ones: there the plain versions do everything.
#undef RB_IS_PLAIN_TARGET
#define RB_IS_PLAIN_TARGET (HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128)

#if !RB_IS_PLAIN_TARGET
HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {

using ByteVectors = hwy::HWY_NAMESPACE::ScalableTag<std::uint8_t>;
using ByteVector = hwy::HWY_NAMESPACE::Vec<ByteVectors>;

/// Writes what @p change makes of each whole vector; returns how many bytes they are.
template <class Change>
HWY_INLINE std::size_t changeWholeVectors(const std::uint8_t* in, std::size_t bytes,
                                          std::uint8_t* out, Change change) {
    namespace hn = hwy::HWY_NAMESPACE;
    const ByteVectors d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= bytes; i += lanes) hn::StoreU(change(hn::LoadU(d, in + i)), d, out + i);
    return i;
}

/// Sixteen bytes, repeated to fill a vector.
HWY_INLINE ByteVector repeatedBytes(const std::uint8_t (&bytes)[16]) {
    HWY_ALIGN std::uint8_t aligned[16];
    for (int i = 0; i < 16; ++i) aligned[i] = bytes[i];
    return hwy::HWY_NAMESPACE::LoadDup128(ByteVectors(), aligned);
}

}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();
#endif

#endif
