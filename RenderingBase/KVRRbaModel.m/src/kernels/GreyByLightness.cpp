#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ChannelTransforms.h"

// Compiled once for every kind of processor; the order of these lines matters.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RenderingBase/KVRRbaModel.m/src/kernels/GreyByLightness.cpp"
#include <hwy/foreach_target.h>
#include "RenderingBase/KVRRbaModel.m/src/kernels/VectorLoop-inl.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {
namespace {

#if RB_IS_PLAIN_TARGET

std::size_t greyVectors(const std::uint8_t*, std::size_t, std::size_t, std::uint8_t*) { return 0; }

#else

namespace hn = hwy::HWY_NAMESPACE;

HWY_INLINE ByteVector lightness(ByteVector a, ByteVector b, ByteVector c) {
    const ByteVector highest = hn::Max(hn::Max(a, b), c);
    const ByteVector lowest = hn::Min(hn::Min(a, b), c);
    // The instruction rounds upwards where the sum is odd.
    const ByteVector isOdd = hn::And(hn::Xor(highest, lowest), hn::Set(ByteVectors(), 1));
    return hn::Sub(hn::AverageRound(highest, lowest), isOdd);
}

std::size_t greyRgb(const std::uint8_t* in, std::size_t bytes, std::uint8_t* out) {
    const ByteVectors d;
    const std::size_t vectorBytes = 3 * hn::Lanes(d);
    std::size_t i = 0;
    for (; i + vectorBytes <= bytes; i += vectorBytes) {
        ByteVector red, green, blue;
        hn::LoadInterleaved3(d, in + i, red, green, blue);
        const ByteVector grey = lightness(red, green, blue);
        hn::StoreInterleaved3(grey, grey, grey, d, out + i);
    }
    return i;
}

/// The colours of each pixel in all three orders; alpha is in its place each time, and so its own
/// mean.
std::size_t greyRgba(const std::uint8_t* in, std::size_t bytes, std::uint8_t* out) {
    const ByteVector once = repeatedBytes({1, 2, 0, 3, 5, 6, 4, 7, 9, 10, 8, 11, 13, 14, 12, 15});
    const ByteVector twice = repeatedBytes({2, 0, 1, 3, 6, 4, 5, 7, 10, 8, 9, 11, 14, 12, 13, 15});
    return changeWholeVectors(in, bytes, out, [&](ByteVector pixels) HWY_ATTR {
        return lightness(pixels, hn::TableLookupBytes(pixels, once),
                         hn::TableLookupBytes(pixels, twice));
    });
}

/// Returns how many bytes, whole pixels from the first on, it has changed.
std::size_t greyVectors(const std::uint8_t* in, std::size_t bytes, std::size_t bytesPerPixel,
                        std::uint8_t* out) {
    if (bytesPerPixel == 3) return greyRgb(in, bytes, out);
    return bytesPerPixel == 4 ? greyRgba(in, bytes, out) : 0;
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rb::kernels {

HWY_EXPORT(greyVectors);

void greyByLightness(Bytes source, std::size_t bytesPerPixel, BytesToWrite target) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(greyVectors)(source.data(), source.size(),
                                                               bytesPerPixel, target.data());
    plain::greyByLightness(source.subspan(done), bytesPerPixel, target.subspan(done));
}

}  // namespace rb::kernels
#endif
