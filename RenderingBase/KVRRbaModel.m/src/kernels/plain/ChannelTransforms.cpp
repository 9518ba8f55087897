#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ChannelTransforms.h"

#include <algorithm>
#include <cstring>

namespace rb::kernels::plain {
namespace {

constexpr std::size_t kColors = 3;
constexpr std::size_t kRgba = 4;

std::uint8_t inverted(std::uint8_t value) { return static_cast<std::uint8_t>(255 - value); }

void copy(Bytes source, BytesToWrite target) {
    if (!source.empty()) std::memmove(target.data(), source.data(), source.size());
}

/// Copies everything and changes the pixels of the copy.
template <class Change>
void copyAndChange(Bytes source, std::size_t bytesPerPixel, BytesToWrite target, Change change) {
    copy(source, target);
    if (bytesPerPixel == 0) return;
    std::uint8_t* pixel = target.data();
    for (std::size_t left = source.size() / bytesPerPixel; left > 0; --left) {
        change(pixel);
        pixel += bytesPerPixel;
    }
}

}  // namespace

void greyByLightness(Bytes source, std::size_t bytesPerPixel, BytesToWrite target) {
    if (bytesPerPixel < kColors) return copy(source, target);
    copyAndChange(source, bytesPerPixel, target, [](std::uint8_t* pixel) {
        const int highest = std::max({pixel[0], pixel[1], pixel[2]});
        const int lowest = std::min({pixel[0], pixel[1], pixel[2]});
        std::fill_n(pixel, kColors, static_cast<std::uint8_t>((highest + lowest) / 2));
    });
}

void blackAndWhite(Bytes rgba, BytesToWrite target) {
    copyAndChange(rgba, kRgba, target, [](std::uint8_t* pixel) {
        const bool isWhite = pixel[0] + pixel[1] + pixel[2] >= kWhiteSum;
        std::fill_n(pixel, kColors, static_cast<std::uint8_t>(isWhite ? 255 : 0));
    });
}

void invertAlpha(Bytes rgba, BytesToWrite target) {
    copyAndChange(rgba, kRgba, target, [](std::uint8_t* pixel) { pixel[3] = inverted(pixel[3]); });
}

void invertColors(Bytes source, std::size_t bytesPerPixel, BytesToWrite target) {
    const std::size_t colors = bytesPerPixel < kColors ? 1 : kColors;
    copyAndChange(source, bytesPerPixel, target, [colors](std::uint8_t* pixel) {
        std::transform(pixel, pixel + colors, pixel, inverted);
    });
}

void maskFromAlpha(Bytes source, std::size_t bytesPerPixel, BytesToWrite target) {
    switch (bytesPerPixel) {
        case 1:
        case 3:
            copyAndChange(source, bytesPerPixel, target, [bytesPerPixel](std::uint8_t* pixel) {
                std::fill_n(pixel, bytesPerPixel, std::uint8_t{0});
            });
            break;
        case 2:
        case 4:
            copyAndChange(source, bytesPerPixel, target, [bytesPerPixel](std::uint8_t* pixel) {
                std::uint8_t& alpha = pixel[bytesPerPixel - 1];
                std::fill_n(pixel, bytesPerPixel - 1, inverted(alpha));
                alpha = 255;
            });
            break;
        default:
            copy(source, target);
            break;
    }
}

}  // namespace rb::kernels::plain
