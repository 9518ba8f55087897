// BC4 and BC5: one and two channels, each in a block as the alpha of BC3. The signed kinds have
// ends of -127 to 127 for -1 to 1; -128 counts as -127.
//
// Source: Khronos Data Format Standard, "RGTC Compressed Texture Image Formats".

#include "RenderingBase/host/imaging/BlockAlpha.h"
#include "RenderingBase/host/imaging/BlockRuns.h"

namespace rb::imaging {
namespace {

using EightValues = std::uint64_t (*)(const std::byte* block);

/// Decodes one channel of a block into pixels of @p pixelBytes.
template <EightValues eightValues, std::size_t pixelBytes>
void decodeChannel(const std::byte* block, std::byte* pixels, std::size_t rowBytes) {
    const std::uint64_t values = eightValues(block);
    std::uint64_t choices = loadWord<std::uint64_t>(block) >> 16;
    for (std::size_t row = 0; row < 4; ++row, pixels += rowBytes)
        for (std::size_t column = 0; column < 4; ++column, choices >>= 3)
            pixels[column * pixelBytes] = static_cast<std::byte>(chosenAlpha(values, choices));
}

template <EightValues eightValues>
void decodeOne(const std::byte* blocks, std::size_t count, std::byte* pixels,
               std::size_t rowBytes) {
    for (std::size_t i = 0; i < count; ++i, blocks += 8, pixels += 4)
        decodeChannel<eightValues, 1>(blocks, pixels, rowBytes);
}

template <EightValues eightValues>
void decodeTwo(const std::byte* blocks, std::size_t count, std::byte* pixels,
               std::size_t rowBytes) {
    for (std::size_t i = 0; i < count; ++i, blocks += 16, pixels += 12) {
        decodeChannel<eightValues, 3>(blocks, pixels, rowBytes);
        decodeChannel<eightValues, 3>(blocks + 8, pixels + 1, rowBytes);
        for (std::size_t row = 0; row < 4; ++row)
            for (std::size_t column = 0; column < 4; ++column)
                pixels[row * rowBytes + 3 * column + 2] = std::byte{0};
    }
}

}  // namespace

void decodeBc4Run(const std::byte* blocks, std::size_t count, std::byte* pixels,
                  std::size_t rowBytes) {
    decodeOne<eightAlphas>(blocks, count, pixels, rowBytes);
}

void decodeBc4SignedRun(const std::byte* blocks, std::size_t count, std::byte* pixels,
                        std::size_t rowBytes) {
    decodeOne<eightSigned>(blocks, count, pixels, rowBytes);
}

void decodeBc5Run(const std::byte* blocks, std::size_t count, std::byte* pixels,
                  std::size_t rowBytes) {
    decodeTwo<eightAlphas>(blocks, count, pixels, rowBytes);
}

void decodeBc5SignedRun(const std::byte* blocks, std::size_t count, std::byte* pixels,
                        std::size_t rowBytes) {
    decodeTwo<eightSigned>(blocks, count, pixels, rowBytes);
}

}  // namespace rb::imaging
