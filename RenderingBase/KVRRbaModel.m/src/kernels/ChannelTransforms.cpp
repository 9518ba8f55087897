#include "RenderingBase/KVRRbaModel.m/src/kernels/ChannelTransforms.h"

#include <algorithm>

namespace rb::kernels {
namespace {

constexpr std::size_t kColors = 3;
constexpr std::size_t kRgba = 4;

/// Half of the greatest sum, 3 x 255, rounded up.
constexpr int kWhiteSum = 383;

std::uint8_t inverted(std::uint8_t value) { return static_cast<std::uint8_t>(255 - value); }

template <class Change>
void forEachPixel(std::span<std::uint8_t> pixels, std::size_t bytesPerPixel, Change change) {
    if (bytesPerPixel == 0) return;
    std::uint8_t* pixel = pixels.data();
    for (std::size_t left = pixels.size() / bytesPerPixel; left > 0; --left) {
        change(pixel);
        pixel += bytesPerPixel;
    }
}

}  // namespace

void greyByLightness(std::span<std::uint8_t> pixels, std::size_t bytesPerPixel) {
    if (bytesPerPixel < kColors) return;
    forEachPixel(pixels, bytesPerPixel, [](std::uint8_t* pixel) {
        const int highest = std::max({pixel[0], pixel[1], pixel[2]});
        const int lowest = std::min({pixel[0], pixel[1], pixel[2]});
        std::fill_n(pixel, kColors, static_cast<std::uint8_t>((highest + lowest) / 2));
    });
}

void blackAndWhite(std::span<std::uint8_t> rgba) {
    forEachPixel(rgba, kRgba, [](std::uint8_t* pixel) {
        const bool isWhite = pixel[0] + pixel[1] + pixel[2] >= kWhiteSum;
        std::fill_n(pixel, kColors, static_cast<std::uint8_t>(isWhite ? 255 : 0));
    });
}

void invertAlpha(std::span<std::uint8_t> rgba) {
    forEachPixel(rgba, kRgba, [](std::uint8_t* pixel) { pixel[3] = inverted(pixel[3]); });
}

void invertColors(std::span<std::uint8_t> pixels, std::size_t bytesPerPixel) {
    const std::size_t colors = bytesPerPixel < kColors ? 1 : kColors;
    forEachPixel(pixels, bytesPerPixel, [colors](std::uint8_t* pixel) {
        std::transform(pixel, pixel + colors, pixel, inverted);
    });
}

void maskFromAlpha(std::span<std::uint8_t> pixels, std::size_t bytesPerPixel) {
    switch (bytesPerPixel) {
        case 1:
        case 3:
            std::fill(pixels.begin(), pixels.end(), std::uint8_t{0});
            break;
        case 2:
        case 4:
            forEachPixel(pixels, bytesPerPixel, [bytesPerPixel](std::uint8_t* pixel) {
                std::uint8_t& alpha = pixel[bytesPerPixel - 1];
                std::fill_n(pixel, bytesPerPixel - 1, inverted(alpha));
                alpha = 255;
            });
            break;
        default:
            break;
    }
}

}  // namespace rb::kernels
