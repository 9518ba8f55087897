#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ChannelTransforms.h"

// Compiled once for every kind of processor; the order of these lines matters.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RenderingBase/KVRRbaModel.m/src/kernels/InvertChannels.cpp"
#include <hwy/foreach_target.h>
#include "RenderingBase/KVRRbaModel.m/src/kernels/VectorLoop-inl.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {
namespace {

#if RB_IS_PLAIN_TARGET

std::size_t flipVectors(const std::uint8_t*, std::size_t, std::uint32_t, std::uint8_t*) {
    return 0;
}

#else

/// Flips the bits of @p mask, the same for every four bytes: 255 minus a byte is all of its bits
/// flipped. Returns how many bytes, from the first on, it has changed.
std::size_t flipVectors(const std::uint8_t* in, std::size_t bytes, std::uint32_t mask,
                        std::uint8_t* out) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::Repartition<std::uint32_t, ByteVectors> words;
    const ByteVector flipped = hn::BitCast(ByteVectors(), hn::Set(words, mask));
    return changeWholeVectors(in, bytes, out,
                              [&](ByteVector vector) HWY_ATTR { return hn::Xor(vector, flipped); });
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rb::kernels {
namespace {

HWY_EXPORT(flipVectors);

/// Bytes of whole words; the first of a pixel lies lowest in a word.
std::size_t flip(Bytes source, std::uint32_t mask, BytesToWrite target) {
    return HWY_DYNAMIC_DISPATCH(flipVectors)(source.data(), source.size(), mask, target.data());
}

}  // namespace

void invertAlpha(Bytes rgba, BytesToWrite target) {
    const std::size_t done = flip(rgba, 0xFF000000U, target);
    plain::invertAlpha(rgba.subspan(done), target.subspan(done));
}

void invertColors(Bytes source, std::size_t bytesPerPixel, BytesToWrite target) {
    std::size_t done = 0;
    if (bytesPerPixel == 3) {
        // All bytes are colours, and where pixels begin does not matter.
        done = source.size() - source.size() % bytesPerPixel;
        invertColors(source.first(done), 1, target);
    } else if (bytesPerPixel != 0 && bytesPerPixel <= 4) {
        constexpr std::uint32_t kColors[] = {0xFFFFFFFFU, 0x00FF00FFU, 0, 0x00FFFFFFU};
        done = flip(source, kColors[bytesPerPixel - 1], target);
    }
    plain::invertColors(source.subspan(done), bytesPerPixel, target.subspan(done));
}

}  // namespace rb::kernels
#endif
