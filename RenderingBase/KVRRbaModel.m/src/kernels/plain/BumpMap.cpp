#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/BumpMap.h"

#include <algorithm>
#include <cmath>

namespace rb::kernels::plain {
namespace {

constexpr std::size_t kBytes = 3;  // of a pixel

std::uint8_t byteOf(double component) {
    return static_cast<std::uint8_t>((component + 1) * 255 * 0.5);
}

void putNormal(double x, double y, std::uint8_t* out) {
    const double norm = std::sqrt(x * x + y * y + kNormalZ * kNormalZ);
    out[0] = byteOf(x / norm);
    out[1] = byteOf(y / norm);
    out[2] = byteOf(kNormalZ / norm);
}

/// The rows around a pixel; the outer ones are the middle one at the borders.
struct Rows {
    const std::uint8_t *above, *middle, *below;
};

double brightness(const std::uint8_t* row, std::size_t column) {
    const std::uint8_t* const pixel = row + kBytes * column;
    return (pixel[0] + pixel[1] + pixel[2]) / kLargestSum;
}

/// Red of the pixel before @p column, green and blue of the one before that, which may end the row
/// above.
double lowerLeft(const std::uint8_t* row, std::size_t column) {
    const std::uint8_t* const pixel = row + kBytes * column;
    return (pixel[-3] + pixel[-4] + pixel[-5]) / kLargestSum;
}

void putPixel(const Rows& rows, std::size_t column, std::size_t width, std::uint8_t* out) {
    const std::size_t left = column > 0 ? column - 1 : 0;
    const std::size_t right = std::min(column + 1, width - 1);
    const bool isRepeated = column == 0 || rows.below == rows.middle;
    const double aboveLeft = brightness(rows.above, left);
    const double aboveRight = brightness(rows.above, right);
    const double belowLeft =
        isRepeated ? brightness(rows.below, left) : lowerLeft(rows.below, column);
    const double belowRight = brightness(rows.below, right);
    const double x = -((2 * brightness(rows.middle, right) + aboveRight + belowRight) -
                       (2 * brightness(rows.middle, left) + aboveLeft + belowLeft));
    const double y = -((2 * brightness(rows.below, column) + belowLeft + belowRight) -
                       (2 * brightness(rows.above, column) + aboveLeft + aboveRight));
    putNormal(x, y, out);
}

}  // namespace

void renderBumpMapPixels(std::span<const std::uint8_t> rgb, std::size_t width, std::size_t row,
                         std::size_t begin, std::size_t end, std::span<std::uint8_t> out) {
    const std::size_t rowBytes = kBytes * width;
    const std::size_t height = rgb.size() / rowBytes;
    const std::uint8_t* const middle = rgb.data() + row * rowBytes;
    const Rows rows{row > 0 ? middle - rowBytes : middle, middle,
                    row + 1 < height ? middle + rowBytes : middle};
    std::uint8_t* target = out.data() + row * rowBytes + kBytes * begin;
    for (std::size_t x = begin; x < end; ++x, target += kBytes) putPixel(rows, x, width, target);
}

void renderBumpMap(std::span<const std::uint8_t> rgb, std::size_t width,
                   std::span<std::uint8_t> out) {
    if (width == 0) return;
    const std::size_t height = rgb.size() / (kBytes * width);
    for (std::size_t row = 0; row < height; ++row)
        renderBumpMapPixels(rgb, width, row, 0, width, out);
}

}  // namespace rb::kernels::plain
