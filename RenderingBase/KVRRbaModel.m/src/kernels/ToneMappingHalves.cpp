#include "RenderingBase/KVRRbaModel.m/src/kernels/ToneMapping.h"
#include "RenderingBase/host/imaging/HalfArrays.h"

#include <algorithm>
#include <array>

namespace rb::kernels {

/// In pieces that stay in the cache as floats.
void toneMapHalves(std::span<const std::uint16_t> halves, std::size_t channels,
                   std::span<std::uint8_t> rgba) {
    constexpr std::size_t kPixels = 1024;
    std::array<float, 4 * kPixels> floats;
    while (halves.size() >= channels && rgba.size() >= 4) {
        const std::size_t pixels = std::min({kPixels, halves.size() / channels, rgba.size() / 4});
        const auto values = std::span(floats).first(pixels * channels);
        imaging::floatsFromHalves(halves.first(values.size()), values);
        toneMap(values, channels, AlphaRange::Clamped, rgba.first(4 * pixels));
        halves = halves.subspan(values.size());
        rgba = rgba.subspan(4 * pixels);
    }
}

}  // namespace rb::kernels
