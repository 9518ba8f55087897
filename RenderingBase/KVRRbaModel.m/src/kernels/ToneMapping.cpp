#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ToneMapping.h"

#include <algorithm>

// Compiled once for every kind of processor; the order of these lines matters.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RenderingBase/KVRRbaModel.m/src/kernels/ToneMapping.cpp"
#include <hwy/foreach_target.h>
#include "RenderingBase/KVRRbaModel.m/src/kernels/ToneMapping-inl.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {
namespace {

#if RB_IS_PLAIN_TARGET

std::size_t toneMapVectors(const float*, std::size_t, AlphaRange, std::size_t, std::uint8_t*) {
    return 0;
}

#else

/// Returns how many pixels, from the first on, it has converted.
std::size_t toneMapVectors(const float* in, std::size_t channels, AlphaRange range,
                           std::size_t pixels, std::uint8_t* out) {
    const auto load = [](const float* place)
                          HWY_ATTR { return hwy::HWY_NAMESPACE::LoadU(tone::Floats(), place); };
    if (range == AlphaRange::Clamped)
        return tone::mapWholeVectors<AlphaRange::Clamped>(in, channels, pixels, out, load);
    return tone::mapWholeVectors<AlphaRange::Wrapped>(in, channels, pixels, out, load);
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rb::kernels {

HWY_EXPORT(toneMapVectors);

void toneMap(std::span<const float> values, std::size_t channels, AlphaRange alphaRange,
             std::span<std::uint8_t> rgba) {
    const std::size_t pixels = std::min(values.size() / channels, rgba.size() / 4);
    const std::size_t done = HWY_DYNAMIC_DISPATCH(toneMapVectors)(values.data(), channels,
                                                                  alphaRange, pixels, rgba.data());
    plain::toneMap(values.subspan(done * channels), channels, alphaRange, rgba.subspan(4 * done));
}

}  // namespace rb::kernels
#endif
