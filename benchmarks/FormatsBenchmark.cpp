// Reading of images and textures in the formats that we read ourselves, beside a memory copy with
// the same traffic: the bytes of the stored picture and those of the decoded one. Ours reads a
// file into fresh memory, the copy stays between two places that have been written to. Times are
// the processor's, of all threads together.

#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/imaging/KVRTexturePixelImage.h"
#include "benchmarks/FormatFiles.h"
#include "benchmarks/RunBenchmarks.h"
#include "tests/image/ReferenceBlocks.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace rb::benchmarks;
using Image = KVRVar<KVRPixelImage>;
using Bytes = std::span<const std::byte>;

struct Case {
    const char* name;
    const char* file;
    std::size_t copies = 1;  ///< How often the file holds the picture; one of them is read.
};

// ImageMagick stores the picture of a psd once more as a layer, which is skipped.
constexpr Case kCases[] = {
    {"bmp_24", "drawing.24.bmp"},       {"bmp_rle8", "drawing.rle8.bmp"},
    {"tga_raw", "drawing.raw.tga"},     {"tga_rle", "drawing.rle.tga"},
    {"psd_raw", "drawing.raw.psd", 2},  {"psd_rle", "drawing.rle.psd", 2},
    {"sgi_raw", "drawing.raw.sgi"},     {"sgi_rle", "drawing.rle.sgi"},
    {"pic_mixed", "drawing.mixed.pic"}, {"dds_bgra", "drawing.bgra.dds"},
    {"ktx2_zstd", "drawing.zstd.ktx2"}, {"dds_bc1", "blocks-bc1.dds"},
    {"dds_bc7", "blocks-bc7.dds"},
};

Image read(const std::string& path) {
    if (path.ends_with(".dds")) return Image::Adopt(CreateTextureFromDDSFile(path, 1));
    if (path.ends_with(".ktx2")) return Image::Adopt(CreateTextureFromKTX2File(path, 1));
    return Image::Adopt(KVRPixelImage::CreateFromFile(path, 1, 0));
}

bool isDrawing(const KVRPixelImage& image) {
    const Bytes pixels = image.GetRawPixels();
    const auto channels = static_cast<std::size_t>(image.GetBytesPerPixel());
    const auto format = image.GetFormat();
    const bool isBlueFirst =
        format == KVRPixelImageFormat::BGR || format == KVRPixelImageFormat::BGRA;
    if (channels < 3 || pixels.size() != channels * kSide * kSide) return false;
    for (std::size_t i = 0; i < kSide * kSide; ++i) {
        const std::byte* const pixel = &pixels[i * channels];
        for (std::size_t c = 0; c < 3; ++c)
            if (std::to_integer<std::uint8_t>(pixel[isBlueFirst ? 2 - c : c]) !=
                drawing()[3 * i + c])
                return false;
        if (channels == 4 && pixel[3] != std::byte{255}) return false;
    }
    return true;
}

/// Whether the pixels are those that @p decode gives for each block.
template <std::size_t kBlockBytes>
bool isDecoded(const KVRPixelImage& image, const std::string& path, auto decode) {
    const std::vector<std::byte> blocks = blocksOf(path);
    const Bytes pixels = image.GetRawPixels();
    if (pixels.size() != 4 * kSide * kSide || blocks.size() != kSide * kSide / 16 * kBlockBytes)
        return false;
    for (std::size_t block = 0; block < kSide * kSide / 16; ++block) {
        const auto expected =
            decode(Bytes(blocks).subspan(block * kBlockBytes).first<kBlockBytes>());
        const std::size_t left = block % (kSide / 4) * 4, top = block / (kSide / 4) * 4;
        for (std::size_t i = 0; i < 16; ++i)
            for (std::size_t c = 0; c < 4; ++c)
                if (std::to_integer<int>(pixels[((top + i / 4) * kSide + left + i % 4) * 4 + c]) !=
                    expected[i][c])
                    return false;
    }
    return true;
}

bool answerIsRight(const Case& what) {
    const std::string path = formatFile(what.file);
    const Image image = read(path);
    if (!image) return false;
    if (path.ends_with("bc1.dds")) return isDecoded<8>(*image.Get(), path, rb::test::referenceBc1);
    if (path.ends_with("bc7.dds")) return isDecoded<16>(*image.Get(), path, rb::test::referenceBc7);
    return isDrawing(*image.Get());
}

std::size_t trafficOf(const Case& what, const std::string& path) {
    return std::filesystem::file_size(path) / what.copies + read(path)->GetRawPixels().size();
}

void report(benchmark::State& state, std::size_t traffic) {
    state.SetBytesProcessed(static_cast<std::int64_t>(traffic) *
                            static_cast<std::int64_t>(state.iterations()));
}

void BM_read(benchmark::State& state, const Case& what) {
    const std::string path = formatFile(what.file);
    for (auto _ : state) benchmark::DoNotOptimize(read(path));
    report(state, trafficOf(what, path));
}

void BM_copy(benchmark::State& state, const Case& what) {
    const std::size_t traffic = trafficOf(what, formatFile(what.file));
    const std::vector<char> source(traffic / 2, 'a');
    std::vector<char> target(source.size());
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), source.size());
        benchmark::ClobberMemory();
    }
    report(state, traffic);
}

}  // namespace

int main(int argc, char** argv) {
    for (const Case& what : kCases) {
        if (!answerIsRight(what)) {
            std::fprintf(stderr, "formats_benchmark: %s has wrong pixels; nothing measured\n",
                         what.name);
            return 1;
        }
        const auto add = [&](const char* variant, auto measure) {
            const std::string name = std::string("read_") + what.name + "/" + variant + "/4096";
            benchmark::RegisterBenchmark(name.c_str(), measure, what)
                ->Unit(benchmark::kMillisecond)
                ->MeasureProcessCPUTime();
        };
        add("ours", BM_read);
        add("copy", BM_copy);
    }
    return rb::benchmarks::runBenchmarks(argc, argv);
}
