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
    DecodeRun portable;
    DecodeRun avx2;
};

#if defined(RB_HAS_AVX2_DECODERS)
#define RB_BOTH(name) name, name##Avx2
#else
#define RB_BOTH(name) name, name
#endif

constexpr Kind kKinds[] = {
    {8, 4, RB_BOTH(decodeBc1Run)},         {16, 4, RB_BOTH(decodeBc2Run)},
    {16, 4, RB_BOTH(decodeBc3Run)},        {8, 1, RB_BOTH(decodeBc4Run)},
    {8, 1, RB_BOTH(decodeBc4SignedRun)},   {16, 3, RB_BOTH(decodeBc5Run)},
    {16, 3, RB_BOTH(decodeBc5SignedRun)},  {16, 6, RB_BOTH(decodeBc6hRun)},
    {16, 6, RB_BOTH(decodeBc6hSignedRun)}, {16, 4, RB_BOTH(decodeBc7Run)},
};

#undef RB_BOTH

const Kind& kindOf(BlockKind kind) { return kKinds[static_cast<std::size_t>(kind)]; }

bool hasAvx2() {
#if defined(RB_HAS_AVX2_DECODERS)
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

/// A picture on the way from blocks to pixels.
struct Picture {
    const Kind& kind;
    DecodeRun decodeRun;
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
    decodeRun(row, whole, pixels + y * rowBytes, rowBytes);
    for (std::size_t i = whole; i < blocksPerRow(); ++i)
        decodeEdge(row + i * kind.blockBytes, 4 * i, y);
}

/// Decodes a block of which only a part lies in the picture.
void Picture::decodeEdge(const std::byte* block, std::size_t x, std::size_t y) const {
    constexpr std::size_t kMostPixelBytes = 6;
    std::array<std::byte, 16 * kMostPixelBytes> whole;
    decodeRun(block, 1, whole.data(), 4 * kind.pixelBytes);
    const std::size_t columns = std::min<std::size_t>(4, width - x);
    const std::size_t rows = std::min<std::size_t>(4, height - y);
    for (std::size_t i = 0; i < rows; ++i)
        std::memcpy(pixels + ((y + i) * width + x) * kind.pixelBytes,
                    whole.data() + i * 4 * kind.pixelBytes, columns * kind.pixelBytes);
}

void decode(const Kind& kind, DecodeRun decodeRun, std::span<const std::byte> blocks,
            std::int64_t width, std::int64_t height, std::span<std::byte> pixels) {
    if (width <= 0 || height <= 0) return;
    const Picture picture{kind,
                          decodeRun,
                          blocks.data(),
                          static_cast<std::size_t>(width),
                          static_cast<std::size_t>(height),
                          pixels.data()};
    assert(blocks.size() / kind.blockBytes / picture.blocksPerRow() >= picture.blockRows());
    assert(pixels.size() / kind.pixelBytes / picture.width >= picture.height);
    // A row of blocks counts as many pixels as four rows of the picture.
    const auto blockRows = static_cast<std::int64_t>(picture.blockRows());
    forRowSlices(4 * width, blockRows, [&picture](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end; ++i) picture.decodeRow(static_cast<std::size_t>(i));
    });
}

}  // namespace

std::size_t blockBytes(BlockKind kind) noexcept { return kindOf(kind).blockBytes; }

std::size_t decodedPixelBytes(BlockKind kind) noexcept { return kindOf(kind).pixelBytes; }

void decodeBlocks(BlockKind kind, std::span<const std::byte> blocks, std::int64_t width,
                  std::int64_t height, std::span<std::byte> pixels) {
    static const bool kHasAvx2 = hasAvx2();
    const Kind& what = kindOf(kind);
    decode(what, kHasAvx2 ? what.avx2 : what.portable, blocks, width, height, pixels);
}

void detail::decodeBlocksPortable(BlockKind kind, std::span<const std::byte> blocks,
                                  std::int64_t width, std::int64_t height,
                                  std::span<std::byte> pixels) {
    decode(kindOf(kind), kindOf(kind).portable, blocks, width, height, pixels);
}

}  // namespace rb::imaging
