#include "RenderingBase/KVRRbaModel.m/src/kernels/BumpMap.h"

#include <algorithm>
#include <cmath>

namespace rb::kernels {
namespace {

constexpr std::size_t kBytes = 3;  // of a pixel
constexpr double kLargestSum = 765.0;
constexpr double kNormalZ = 0.5;

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

void renderBumpMap(std::span<const std::uint8_t> rgb, std::size_t width,
                   std::span<std::uint8_t> out) {
    const std::size_t rowBytes = kBytes * width;
    if (rowBytes == 0) return;
    const std::size_t height = rgb.size() / rowBytes;
    std::uint8_t* target = out.data();
    for (std::size_t y = 0; y < height; ++y) {
        const std::uint8_t* const row = rgb.data() + y * rowBytes;
        const Rows rows{y > 0 ? row - rowBytes : row, row, y + 1 < height ? row + rowBytes : row};
        for (std::size_t x = 0; x < width; ++x, target += kBytes) putPixel(rows, x, width, target);
    }
}

}  // namespace rb::kernels
