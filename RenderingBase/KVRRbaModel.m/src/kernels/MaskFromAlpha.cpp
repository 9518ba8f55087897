#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ChannelTransforms.h"

#include <algorithm>

// Compiled once for every kind of processor; the order of these lines matters.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RenderingBase/KVRRbaModel.m/src/kernels/MaskFromAlpha.cpp"
#include <hwy/foreach_target.h>
#include "RenderingBase/KVRRbaModel.m/src/kernels/VectorLoop-inl.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {
namespace {

#if RB_IS_PLAIN_TARGET

std::size_t maskVectors(const std::uint8_t*, std::size_t, std::size_t, std::uint8_t*) { return 0; }

#else

/// Alpha in the place of the colours and 0 in its own, then all bits flipped. Returns how many
/// bytes, from the first on, it has changed.
std::size_t maskVectors(const std::uint8_t* in, std::size_t bytes, std::size_t bytesPerPixel,
                        std::uint8_t* out) {
    namespace hn = hwy::HWY_NAMESPACE;
    constexpr std::uint8_t k0 = 0x80;
    const ByteVector fromAlpha =
        bytesPerPixel == 2
            ? repeatedBytes({1, k0, 3, k0, 5, k0, 7, k0, 9, k0, 11, k0, 13, k0, 15, k0})
            : repeatedBytes({3, 3, 3, k0, 7, 7, 7, k0, 11, 11, 11, k0, 15, 15, 15, k0});
    return changeWholeVectors(in, bytes, out, [&](ByteVector pixels) HWY_ATTR {
        return hn::Not(hn::TableLookupBytesOr0(pixels, fromAlpha));
    });
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rb::kernels {

HWY_EXPORT(maskVectors);

void maskFromAlpha(Bytes source, std::size_t bytesPerPixel, BytesToWrite target) {
    std::size_t done = 0;
    if (bytesPerPixel == 1 || bytesPerPixel == 3) {
        done = source.size() - source.size() % bytesPerPixel;
        std::fill_n(target.begin(), done, std::uint8_t{0});
    } else if (bytesPerPixel == 2 || bytesPerPixel == 4) {
        done = HWY_DYNAMIC_DISPATCH(maskVectors)(source.data(), source.size(), bytesPerPixel,
                                                 target.data());
    }
    plain::maskFromAlpha(source.subspan(done), bytesPerPixel, target.subspan(done));
}

}  // namespace rb::kernels
#endif
