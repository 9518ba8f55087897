#include "RenderingBase/KVRRbaModel.m/src/kernels/ToneMapping.h"
#include "RenderingBase/host/imaging/HalfArrays.h"

#include <algorithm>
#include <array>

// Compiled once for every kind of processor; the order of these lines matters.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RenderingBase/KVRRbaModel.m/src/kernels/ToneMappingHalves.cpp"
#include <hwy/foreach_target.h>
#include "RenderingBase/KVRRbaModel.m/src/kernels/ToneMapping-inl.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3

/// By the instructions of these processors. They make NaNs quiet, which is no difference here: none
/// of them becomes a colour. Returns how many pixels, from the first on, it has converted.
std::size_t toneMapHalfVectors(const std::uint16_t* in, std::size_t channels, std::size_t pixels,
                               std::uint8_t* out) {
    const auto load = [](const std::uint16_t* place) HWY_ATTR {
        namespace hn = hwy::HWY_NAMESPACE;
        const hn::Rebind<hwy::float16_t, tone::Floats> halves;
        const hn::Rebind<std::uint16_t, tone::Floats> bits;
        return hn::PromoteTo(tone::Floats(), hn::BitCast(halves, hn::LoadU(bits, place)));
    };
    return tone::mapWholeVectors<AlphaRange::Clamped>(in, channels, pixels, out, load);
}

#else

std::size_t toneMapHalfVectors(const std::uint16_t*, std::size_t, std::size_t, std::uint8_t*) {
    return 0;
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rb::kernels {

HWY_EXPORT(toneMapHalfVectors);

void toneMapHalves(std::span<const std::uint16_t> halves, std::size_t channels,
                   std::span<std::uint8_t> rgba) {
    const std::size_t all = std::min(halves.size() / channels, rgba.size() / 4);
    std::size_t done =
        HWY_DYNAMIC_DISPATCH(toneMapHalfVectors)(halves.data(), channels, all, rgba.data());
    // The others as floats, in pieces that stay in the cache.
    constexpr std::size_t kPixels = 1024;
    std::array<float, 4 * kPixels> floats;
    while (done < all) {
        const std::size_t pixels = std::min(kPixels, all - done);
        const auto values = std::span(floats).first(pixels * channels);
        imaging::floatsFromHalves(halves.subspan(done * channels, values.size()), values);
        toneMap(values, channels, AlphaRange::Clamped, rgba.subspan(4 * done, 4 * pixels));
        done += pixels;
    }
}

}  // namespace rb::kernels
#endif
