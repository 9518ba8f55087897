#include "RenderingBase/host/imaging/BlockDecoder.h"

#include "RenderingBase/host/imaging/BlockAvx2.h"
#include "RenderingBase/host/imaging/BlockRuns.h"
#include "RenderingBase/host/imaging/ParallelRows.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>

namespace rb::imaging {
namespace {

struct Kind {
    std::size_t blockBytes;
    std::size_t pixelBytes;
    DecodeRun decodeRun;
};

constexpr Kind kPortable[] = {
    {8, 4, decodeBc1Run},        {16, 4, decodeBc2Run},      {16, 4, decodeBc3Run},
    {8, 1, decodeBc4Run},        {8, 1, decodeBc4SignedRun}, {16, 3, decodeBc5Run},
    {16, 3, decodeBc5SignedRun}, {16, 6, decodeBc6hRun},     {16, 6, decodeBc6hSignedRun},
    {16, 4, decodeBc7Run},
};

const Kind& portable(BlockKind kind) { return kPortable[static_cast<std::size_t>(kind)]; }

#if defined(RB_HAS_AVX2_DECODERS)
constexpr Kind kAvx2[] = {
    {8, 4, decodeBc1RunAvx2},    {16, 4, decodeBc2RunAvx2},  {16, 4, decodeBc3RunAvx2},
    {8, 1, decodeBc4Run},        {8, 1, decodeBc4SignedRun}, {16, 3, decodeBc5Run},
    {16, 3, decodeBc5SignedRun}, {16, 6, decodeBc6hRunAvx2}, {16, 6, decodeBc6hSignedRunAvx2},
    {16, 4, decodeBc7RunAvx2},
};

const Kind& fastest(BlockKind kind) {
    static const bool hasAvx2 = __builtin_cpu_supports("avx2") != 0;
    return hasAvx2 ? kAvx2[static_cast<std::size_t>(kind)] : portable(kind);
}
#else
const Kind& fastest(BlockKind kind) { return portable(kind); }
#endif

/// A picture on the way from blocks to pixels.
struct Picture {
    Kind kind;
    const std::byte* blocks;
    std::size_t width, height;
    std::byte* pixels;

    std::size_t blocksPerRow() const { return width / 4 + (width % 4 != 0); }
    std::size_t blockRows() const { return height / 4 + (height % 4 != 0); }

    void decodeRow(std::size_t blockRow) const;
    void decodeEdge(const std::byte* block, std::size_t x, std::size_t y) const;
};

void Picture::decodeRow(std::size_t blockRow) const {
    const std::byte* const row = blocks + blockRow * blocksPerRow() * kind.blockBytes;
    const std::size_t y = 4 * blockRow;
    const std::size_t whole = height - y >= 4 ? width / 4 : 0;
    const std::size_t rowBytes = width * kind.pixelBytes;
    kind.decodeRun(row, whole, pixels + y * rowBytes, rowBytes);
    for (std::size_t i = whole; i < blocksPerRow(); ++i)
        decodeEdge(row + i * kind.blockBytes, 4 * i, y);
}

/// Decodes a block of which only a part lies in the picture.
void Picture::decodeEdge(const std::byte* block, std::size_t x, std::size_t y) const {
    constexpr std::size_t kMostPixelBytes = 6;
    std::array<std::byte, 16 * kMostPixelBytes> whole;
    kind.decodeRun(block, 1, whole.data(), 4 * kind.pixelBytes);
    const std::size_t columns = std::min<std::size_t>(4, width - x);
    const std::size_t rows = std::min<std::size_t>(4, height - y);
    for (std::size_t i = 0; i < rows; ++i)
        std::memcpy(pixels + ((y + i) * width + x) * kind.pixelBytes,
                    whole.data() + i * 4 * kind.pixelBytes, columns * kind.pixelBytes);
}

void decode(const Kind& kind, std::span<const std::byte> blocks, std::int64_t width,
            std::int64_t height, std::span<std::byte> pixels) {
    if (width <= 0 || height <= 0) return;
    const Picture picture{kind, blocks.data(), static_cast<std::size_t>(width),
                          static_cast<std::size_t>(height), pixels.data()};
    assert(blocks.size() / kind.blockBytes / picture.blocksPerRow() >= picture.blockRows());
    assert(pixels.size() / kind.pixelBytes / picture.width >= picture.height);
    // A row of blocks counts as many pixels as four rows of the picture.
    const auto blockRows = static_cast<std::int64_t>(picture.blockRows());
    forRowSlices(4 * width, blockRows, [&picture](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end; ++i) picture.decodeRow(static_cast<std::size_t>(i));
    });
}

}  // namespace

std::size_t blockBytes(BlockKind kind) noexcept { return portable(kind).blockBytes; }

std::size_t decodedPixelBytes(BlockKind kind) noexcept { return portable(kind).pixelBytes; }

void decodeBlocks(BlockKind kind, std::span<const std::byte> blocks, std::int64_t width,
                  std::int64_t height, std::span<std::byte> pixels) {
    decode(fastest(kind), blocks, width, height, pixels);
}

void detail::decodeBlocksPortable(BlockKind kind, std::span<const std::byte> blocks,
                                  std::int64_t width, std::int64_t height,
                                  std::span<std::byte> pixels) {
    decode(portable(kind), blocks, width, height, pixels);
}

}  // namespace rb::imaging
