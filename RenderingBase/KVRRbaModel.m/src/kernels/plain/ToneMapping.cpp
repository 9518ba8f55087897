#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ToneMapping.h"

#include <algorithm>

namespace rb::kernels::plain {
namespace {

constexpr std::size_t kRgba = 4;

/// No number compares false and becomes 0.
float clamped(float value) { return value > 0 ? (value < 1 ? value : 1) : 0; }

float toneFactor(float s) { return 0.85F * s * s - 0.1083333F * s * s * s - 2.2416666F * s + 3.0F; }

/// The factor of white is a little above 1.
std::uint8_t colorByte(float factor, float color) {
    return static_cast<std::uint8_t>(std::min(factor * color, 1.0F) * 255.0F);
}

std::uint8_t wrappedByte(float alpha) {
    constexpr float kTwoTo31 = 2147483648.0F;
    const float scaled = alpha * 255.0F;
    if (!(scaled >= -kTwoTo31 && scaled < kTwoTo31)) return 0;
    return static_cast<std::uint8_t>(static_cast<std::int32_t>(scaled));
}

std::uint8_t alphaByte(float alpha, AlphaRange range) {
    return range == AlphaRange::Clamped ? static_cast<std::uint8_t>(clamped(alpha) * 255.0F)
                                        : wrappedByte(alpha);
}

void mapColors(float red, float green, float blue, std::uint8_t* rgb) {
    const float r = clamped(red), g = clamped(green), b = clamped(blue);
    const float factor = toneFactor(r + g + b);
    rgb[0] = colorByte(factor, r);
    rgb[1] = colorByte(factor, g);
    rgb[2] = colorByte(factor, b);
}

}  // namespace

void toneMap(std::span<const float> values, std::size_t channels, AlphaRange alphaRange,
             std::span<std::uint8_t> rgba) {
    const std::size_t pixels = std::min(values.size() / channels, rgba.size() / kRgba);
    const std::size_t green = channels == 1 ? 0 : 1, blue = channels == 1 ? 0 : 2;
    const float* in = values.data();
    std::uint8_t* out = rgba.data();
    for (std::size_t i = 0; i < pixels; ++i, in += channels, out += kRgba) {
        mapColors(in[0], in[green], in[blue], out);
        out[3] = channels == kRgba ? alphaByte(in[3], alphaRange) : 255;
    }
}

void repeatForColors(std::span<const float> values, std::span<float> rgb) {
    const std::size_t pixels = std::min(values.size(), rgb.size() / 3);
    float* out = rgb.data();
    for (std::size_t i = 0; i < pixels; ++i, out += 3) std::fill_n(out, 3, values[i]);
}

}  // namespace rb::kernels::plain
