#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ChannelTransforms.h"

// Compiled once for every kind of processor; the order of these lines matters.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RenderingBase/KVRRbaModel.m/src/kernels/BlackAndWhite.cpp"
#include <hwy/foreach_target.h>
#include "RenderingBase/KVRRbaModel.m/src/kernels/VectorLoop-inl.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {
namespace {

#if RB_IS_PLAIN_TARGET

std::size_t blackAndWhiteVectors(const std::uint8_t*, std::size_t, std::uint8_t*) { return 0; }

#else

namespace hn = hwy::HWY_NAMESPACE;

/// A pixel is a word, red lowest. Returns how many bytes, from the first on, it has changed.
std::size_t blackAndWhiteVectors(const std::uint8_t* in, std::size_t bytes, std::uint8_t* out) {
    const hn::Repartition<std::int32_t, ByteVectors> words;
    const auto byte = hn::Set(words, 0xFF), colors = hn::Set(words, 0xFFFFFF);
    const auto largestBlackSum = hn::Set(words, plain::kWhiteSum - 1);
    return changeWholeVectors(in, bytes, out, [&](ByteVector vector) HWY_ATTR {
        const auto pixels = hn::BitCast(words, vector);
        const auto red = hn::And(pixels, byte);
        const auto green = hn::And(hn::ShiftRight<8>(pixels), byte);
        const auto blue = hn::And(hn::ShiftRight<16>(pixels), byte);
        const auto isWhite = hn::Gt(hn::Add(hn::Add(red, green), blue), largestBlackSum);
        const auto white = hn::And(hn::VecFromMask(words, isWhite), colors);
        return hn::BitCast(ByteVectors(), hn::Or(hn::AndNot(colors, pixels), white));
    });
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rb::kernels {

HWY_EXPORT(blackAndWhiteVectors);

void blackAndWhite(Bytes rgba, BytesToWrite target) {
    const std::size_t done =
        HWY_DYNAMIC_DISPATCH(blackAndWhiteVectors)(rgba.data(), rgba.size(), target.data());
    plain::blackAndWhite(rgba.subspan(done), target.subspan(done));
}

}  // namespace rb::kernels
#endif
