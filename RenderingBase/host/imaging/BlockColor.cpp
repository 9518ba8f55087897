// BC1, BC2 and BC3: a line of four colours between two stored ones, and two bits a pixel that
// choose among them. BC2 and BC3 put eight bytes of alpha before it.
//
//   bytes 0-3   two colours, each five bits of red, six of green, five of blue from the top
//   bytes 4-7   the choices, from the lowest bits, row by row
//
// Sources: Microsoft, "Texture Block Compression in Direct3D 11"; Khronos Data Format
// Standard, "S3TC Compressed Texture Image Formats". Both leave the rounding open. Here stored
// channels grow to the nearest of 255 steps and mixed ones are rounded up from their half: the
// choice of other readers.

#include "RenderingBase/host/imaging/BlockAlpha.h"
#include "RenderingBase/host/imaging/BlockBits.h"
#include "RenderingBase/host/imaging/BlockRuns.h"

#include <array>

namespace rb::imaging {
namespace {

// Three channels lie in one word of 64 bits, in lanes of 21: wide enough for all products below, so
// that one multiplication works on all of them.
constexpr unsigned kLane = 21;
constexpr std::uint64_t kOnes = 1 | std::uint64_t{1} << kLane | std::uint64_t{1} << 2 * kLane;
constexpr std::uint64_t kBytes = 255 * kOnes;

template <std::size_t levels>
constexpr std::array<std::uint64_t, levels> expanded(unsigned factor, unsigned add, unsigned lane) {
    std::array<std::uint64_t, levels> table{};
    for (std::size_t i = 0; i < levels; ++i)
        table[i] = std::uint64_t{(i * factor + add) >> 6} << lane * kLane;
    return table;
}

// (x * 527 + 23) >> 6 is round(x * 255 / 31), (x * 259 + 33) >> 6 is round(x * 255 / 63).
constexpr auto kRed = expanded<32>(527, 23, 0);
constexpr auto kGreen = expanded<64>(259, 33, 1);
constexpr auto kBlue = expanded<32>(527, 23, 2);

std::uint64_t lanesOf(std::uint32_t stored) {
    return kRed[stored >> 11 & 31] | kGreen[stored >> 5 & 63] | kBlue[stored & 31];
}

/// R, G, B and no alpha, as four bytes in the order of memory.
std::uint32_t pixelOf(std::uint64_t lanes) {
    return static_cast<std::uint32_t>((lanes & 255) | (lanes >> (kLane - 8) & 0xff00) |
                                      (lanes >> (2 * kLane - 16) & 0xff0000));
}

/// (2 a + b + 1) / 3; a third of x up to 766 is x * 683 / 2048.
std::uint64_t third(std::uint64_t a, std::uint64_t b) {
    return (2 * a + b + kOnes) * 683 >> 11 & kBytes;
}

std::uint64_t half(std::uint64_t a, std::uint64_t b) { return (a + b + kOnes) >> 1 & kBytes; }

struct Palette {
    std::array<std::uint32_t, 4> pixels;
};

/// The four colours of a block with @p alpha (in the uppermost byte).
Palette fourColors(std::uint32_t stored, std::uint32_t alpha) {
    const std::uint64_t a = lanesOf(stored & 0xffff), b = lanesOf(stored >> 16);
    return {{pixelOf(a) | alpha, pixelOf(b) | alpha, pixelOf(third(a, b)) | alpha,
             pixelOf(third(b, a)) | alpha}};
}

/// BC1 only: when the first colour is not the larger number, the fourth is transparent black.
Palette opaqueOrNot(std::uint32_t stored) {
    constexpr std::uint32_t kOpaque = 0xff000000;
    if ((stored & 0xffff) > stored >> 16) return fourColors(stored, kOpaque);
    const std::uint64_t a = lanesOf(stored & 0xffff), b = lanesOf(stored >> 16);
    return {{pixelOf(a) | kOpaque, pixelOf(b) | kOpaque, pixelOf(half(a, b)) | kOpaque, 0}};
}

/// Two pixels at once, by the four lowest bits of @p choices.
std::uint64_t twoPixels(const Palette& palette, std::uint32_t choices) {
    return palette.pixels[choices & 3] | std::uint64_t{palette.pixels[choices >> 2 & 3]} << 32;
}

}  // namespace

void decodeBc1Run(const std::byte* blocks, std::size_t count, std::byte* pixels,
                  std::size_t rowBytes) {
    for (std::size_t i = 0; i < count; ++i, blocks += 8, pixels += 16) {
        const Palette palette = opaqueOrNot(loadWord<std::uint32_t>(blocks));
        const auto choices = loadWord<std::uint32_t>(blocks + 4);
        for (unsigned row = 0; row < 4; ++row) {
            storeWord(pixels + row * rowBytes, twoPixels(palette, choices >> 8 * row));
            storeWord(pixels + row * rowBytes + 8, twoPixels(palette, choices >> (8 * row + 4)));
        }
    }
}

void decodeBc2Run(const std::byte* blocks, std::size_t count, std::byte* pixels,
                  std::size_t rowBytes) {
    for (std::size_t i = 0; i < count; ++i, blocks += 16, pixels += 16) {
        const Palette palette = fourColors(loadWord<std::uint32_t>(blocks + 8), 0);
        const auto choices = loadWord<std::uint32_t>(blocks + 12);
        const auto alphas = loadWord<std::uint64_t>(blocks);
        for (unsigned pixel = 0; pixel < 16; pixel += 2) {
            // Four bits of alpha, each in the uppermost byte of its pixel, become eight.
            const std::uint64_t two = alphas >> 4 * pixel & 0xff;
            const std::uint64_t nibbles = (two & 15) << 24 | (two >> 4) << 56;
            storeWord(pixels + pixel / 4 * rowBytes + 4 * (pixel % 4),
                      twoPixels(palette, choices >> 2 * pixel) | nibbles * 17);
        }
    }
}

void decodeBc3Run(const std::byte* blocks, std::size_t count, std::byte* pixels,
                  std::size_t rowBytes) {
    for (std::size_t i = 0; i < count; ++i, blocks += 16, pixels += 16) {
        const Palette palette = fourColors(loadWord<std::uint32_t>(blocks + 8), 0);
        const auto choices = loadWord<std::uint32_t>(blocks + 12);
        const std::uint64_t alphas = eightAlphas(blocks);
        const std::uint64_t alphaChoices = loadWord<std::uint64_t>(blocks) >> 16;
        for (unsigned pixel = 0; pixel < 16; pixel += 2) {
            const std::uint64_t first = chosenAlpha(alphas, alphaChoices >> 3 * pixel);
            const std::uint64_t second = chosenAlpha(alphas, alphaChoices >> (3 * pixel + 3));
            storeWord(pixels + pixel / 4 * rowBytes + 4 * (pixel % 4),
                      twoPixels(palette, choices >> 2 * pixel) | first << 24 | second << 56);
        }
    }
}

}  // namespace rb::imaging
