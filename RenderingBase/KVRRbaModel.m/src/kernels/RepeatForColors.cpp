#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ToneMapping.h"

#include <algorithm>

// Compiled once for every kind of processor; the order of these lines matters.
// clang-format off
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "RenderingBase/KVRRbaModel.m/src/kernels/RepeatForColors.cpp"
#include <hwy/foreach_target.h>
#include "RenderingBase/KVRRbaModel.m/src/kernels/VectorLoop-inl.h"
// clang-format on

HWY_BEFORE_NAMESPACE();
namespace rb::kernels {
namespace HWY_NAMESPACE {
namespace {

#if RB_IS_PLAIN_TARGET

std::size_t repeatVectors(const float*, std::size_t, float*) { return 0; }

#else

namespace hn = hwy::HWY_NAMESPACE;

/// Returns how many values, from the first on, it has repeated.
std::size_t repeatVectors(const float* in, std::size_t count, float* out) {
    const hn::ScalableTag<float> d;
    const hn::RebindToSigned<decltype(d)> signedLanes;
    const std::size_t lanes = hn::Lanes(d);
    HWY_ALIGN std::int32_t indices[3 * hn::MaxLanes(d)];
    for (std::size_t i = 0; i < 3 * lanes; ++i) indices[i] = static_cast<std::int32_t>(i / 3);
    const auto first = hn::SetTableIndices(d, indices);
    const auto second = hn::SetTableIndices(d, indices + lanes);
    const auto third = hn::SetTableIndices(d, indices + 2 * lanes);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes, out += 3 * lanes) {
        const auto values = hn::LoadU(d, in + i);
        hn::StoreU(hn::TableLookupLanes(values, first), d, out);
        hn::StoreU(hn::TableLookupLanes(values, second), d, out + lanes);
        hn::StoreU(hn::TableLookupLanes(values, third), d, out + 2 * lanes);
    }
    return i;
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace rb::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace rb::kernels {

HWY_EXPORT(repeatVectors);

void repeatForColors(std::span<const float> values, std::span<float> rgb) {
    const std::size_t count = std::min(values.size(), rgb.size() / 3);
    const std::size_t done = HWY_DYNAMIC_DISPATCH(repeatVectors)(values.data(), count, rgb.data());
    plain::repeatForColors(values.subspan(done), rgb.subspan(3 * done));
}

}  // namespace rb::kernels
#endif
