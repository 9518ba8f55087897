// Decoding of block-compressed textures, 4096 x 4096 pixels: on one thread ("ours") and as it is
// called
// ("threads"), beside our version for processors without AVX2, a plain decoder of the same blocks,
// and a copy of as many bytes as are read and written together. All targets have been written to
// before they are measured.

#include "RenderingBase/host/imaging/BlockDecoder.h"
#include "benchmarks/RunBenchmarks.h"
#include "tests/image/ReferenceBlocks.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace {

using rb::imaging::BlockKind;
using Bytes = std::vector<std::byte>;

constexpr std::size_t kSide = 4096;
constexpr std::size_t kBlocks = kSide * kSide / 16;

struct Case {
    const char* name;
    BlockKind kind;
    int mode;  ///< Of BC7; -1: all in turn, in random order.
};

constexpr Case kCases[] = {{"bc1", BlockKind::BC1, -1},      {"bc3", BlockKind::BC3, -1},
                           {"bc5", BlockKind::BC5, -1},      {"bc6h", BlockKind::BC6H, -1},
                           {"bc7", BlockKind::BC7, -1},      {"bc7_mode_1", BlockKind::BC7, 1},
                           {"bc7_mode_6", BlockKind::BC7, 6}};

/// Random blocks; no reserved modes.
Bytes blocksOf(const Case& what) {
    std::mt19937 random(1);
    const std::size_t size = rb::imaging::blockBytes(what.kind);
    Bytes blocks(kBlocks * size);
    for (std::byte& byte : blocks) byte = static_cast<std::byte>(random());
    for (std::size_t i = 0; i < blocks.size(); i += size) {
        if (what.kind == BlockKind::BC7) {
            const unsigned mode = what.mode < 0 ? random() % 8 : static_cast<unsigned>(what.mode);
            const auto rest = std::to_integer<unsigned>(blocks[i]) & ~((2u << mode) - 1);
            blocks[i] = static_cast<std::byte>(rest | 1u << mode);
        } else if (what.kind == BlockKind::BC6H) {
            // 19, 23, 27 and 31 are reserved.
            if ((blocks[i] & std::byte{0x13}) == std::byte{0x13}) blocks[i] ^= std::byte{0x10};
        }
    }
    return blocks;
}

void decodeInThreads(BlockKind kind, const Bytes& blocks, Bytes& pixels) {
    rb::imaging::decodeBlocks(kind, blocks, kSide, kSide, pixels);
}

/// Strips below the size from which on other threads take part.
template <auto decode>
void decodeOnOneThread(BlockKind kind, const Bytes& blocks, Bytes& pixels) {
    constexpr std::size_t kStrips = 64;
    const std::size_t in = blocks.size() / kStrips, out = pixels.size() / kStrips;
    for (std::size_t i = 0; i < kStrips; ++i)
        decode(kind, std::span(blocks).subspan(i * in, in), kSide, kSide / kStrips,
               std::span(pixels).subspan(i * out, out));
}

constexpr auto decodeOurs = decodeOnOneThread<rb::imaging::decodeBlocks>;
constexpr auto decodePortably = decodeOnOneThread<rb::imaging::detail::decodeBlocksPortable>;

template <class Pixels>
void place(const Pixels& block, std::size_t index, std::size_t valueBytes, Bytes& pixels) {
    const std::size_t left = index % (kSide / 4) * 4, top = index / (kSide / 4) * 4;
    std::byte* out = nullptr;
    for (std::size_t i = 0; i < 16; ++i) {
        out = &pixels[((top + i / 4) * kSide + left + i % 4) * block[i].size() * valueBytes];
        for (const int value : block[i]) {
            *out++ = static_cast<std::byte>(value);
            if (valueBytes == 2) *out++ = static_cast<std::byte>(value >> 8);
        }
    }
}

bool hasPlainDecoder(BlockKind kind) {
    return kind == BlockKind::BC1 || kind == BlockKind::BC6H || kind == BlockKind::BC7;
}

void decodePlainly(BlockKind kind, const Bytes& blocks, Bytes& pixels) {
    const std::size_t size = rb::imaging::blockBytes(kind);
    for (std::size_t i = 0; i < kBlocks; ++i) {
        const auto block = std::span(blocks).subspan(i * size, size);
        if (kind == BlockKind::BC1)
            place(rb::test::referenceBc1(block.first<8>()), i, 1, pixels);
        else if (kind == BlockKind::BC6H)
            place(rb::test::referenceBc6h(block.first<16>(), false), i, 2, pixels);
        else
            place(rb::test::referenceBc7(block.first<16>()), i, 1, pixels);
    }
}

using Decode = void (*)(BlockKind, const Bytes&, Bytes&);

void BM_decode(benchmark::State& state, const Case& what, Decode decode) {
    const Bytes blocks = blocksOf(what);
    Bytes pixels(kSide * kSide * rb::imaging::decodedPixelBytes(what.kind));
    for (auto _ : state) {
        decode(what.kind, blocks, pixels);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(blocks.size() + pixels.size()) *
                            static_cast<std::int64_t>(state.iterations()));
}

void BM_copy(benchmark::State& state, const Case& what) {
    const std::size_t traffic = kBlocks * (rb::imaging::blockBytes(what.kind) +
                                           16 * rb::imaging::decodedPixelBytes(what.kind));
    const Bytes source(traffic / 2, std::byte{'a'});
    Bytes target(source.size());
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), source.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(traffic) *
                            static_cast<std::int64_t>(state.iterations()));
}

/// All versions of a decoder give the same pixels.
bool answersAreRight(const Case& what) {
    const Bytes blocks = blocksOf(what);
    Bytes expected(kSide * kSide * rb::imaging::decodedPixelBytes(what.kind)), pixels = expected;
    decodeInThreads(what.kind, blocks, expected);
    for (const auto decode : {decodeOurs, decodePortably}) {
        decode(what.kind, blocks, pixels);
        if (pixels != expected) return false;
    }
    if (hasPlainDecoder(what.kind)) decodePlainly(what.kind, blocks, pixels);
    return pixels == expected;
}

auto addCase(const Case& what, const char* variant, auto measure, auto... arguments) {
    const std::string name = std::string("decode_") + what.name + "/" + variant + "/4096";
    return benchmark::RegisterBenchmark(name.c_str(), measure, what, arguments...)
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
    for (const Case& what : kCases) {
        if (!answersAreRight(what)) {
            std::fprintf(stderr, "block_benchmark: %s has wrong pixels\n", what.name);
            return 1;
        }
        addCase(what, "ours", BM_decode, decodeOurs);
        addCase(what, "portable", BM_decode, decodePortably);
        addCase(what, "threads", BM_decode, decodeInThreads)->UseRealTime();
        if (hasPlainDecoder(what.kind)) addCase(what, "plain", BM_decode, decodePlainly);
        addCase(what, "copy", BM_copy);
    }
    return rb::benchmarks::runBenchmarks(argc, argv);
}
