// What becomes of the pixels of 4096 x 4096 pictures, on one thread: ours, beside the plain
// versions that go from pixel to pixel, and beside a memory copy that reads and writes as many
// bytes together. All targets have been written to before they are measured, except in the
// services' groups, where each image is new: there ours is beside a copy of the image that is then
// changed in its place.

#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/BumpMap.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ChannelTransforms.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/ToneMapping.h"
#include "RenderingBase/host/imaging/HalfArrays.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "benchmarks/RunBenchmarks.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace {

namespace kernels = rb::kernels;
using Image = KVRVar<KVRPixelImage>;

constexpr std::size_t kSide = 4096;
constexpr std::size_t kPixels = kSide * kSide;
constexpr auto kWrapped = kernels::AlphaRange::Wrapped;
constexpr auto kClamped = kernels::AlphaRange::Clamped;

/// What all cases read, and where they write.
struct Memory {
    std::vector<float> floats = std::vector<float>(4 * kPixels);
    std::vector<std::uint16_t> halves = std::vector<std::uint16_t>(4 * kPixels);
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(4 * kPixels);
    std::vector<float> target = std::vector<float>(3 * kPixels);

    Memory() {
        std::mt19937 random(1);
        // From 0 to 1.2, most of them dark, as in a rendered picture.
        std::uniform_real_distribution<float> uniform(0, 1.095F);
        for (float& value : floats) {
            const float root = uniform(random);
            value = root * root;
        }
        rb::imaging::halvesFromFloats(floats, halves);
        for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    }
};

Memory& memory() {
    static Memory made;
    return made;
}

using Target = std::span<std::uint8_t>;

/// As many bytes of the target as @p count.
Target targetOf(std::size_t count) {
    return {reinterpret_cast<std::uint8_t*>(memory().target.data()), count};
}
std::span<const float> floatsOf(std::size_t count) {
    return std::span<const float>(memory().floats).first(count);
}
kernels::Bytes bytesOf(std::size_t count) { return kernels::Bytes(memory().bytes).first(count); }

template <std::size_t kChannels>
void toneOurs(Target target) {
    kernels::toneMap(floatsOf(kChannels * kPixels), kChannels, kWrapped, target);
}
template <std::size_t kChannels>
void tonePlain(Target target) {
    kernels::plain::toneMap(floatsOf(kChannels * kPixels), kChannels, kWrapped, target);
}

template <std::size_t kChannels>
void halfOurs(Target target) {
    kernels::toneMapHalves(std::span(memory().halves).first(kChannels * kPixels), kChannels,
                           target);
}
/// The halves become floats as fast as ours do.
template <std::size_t kChannels>
void halfPlain(Target target) {
    constexpr std::size_t kPiece = 1024;
    std::array<float, kPiece * kChannels> floats;
    for (std::size_t i = 0; i < kPixels; i += kPiece) {
        rb::imaging::floatsFromHalves(
            std::span(memory().halves).subspan(kChannels * i, floats.size()), floats);
        kernels::plain::toneMap(floats, kChannels, kClamped, target.subspan(4 * i, 4 * kPiece));
    }
}

void repeatOurs(Target) { kernels::repeatForColors(floatsOf(kPixels), memory().target); }
void repeatPlain(Target) { kernels::plain::repeatForColors(floatsOf(kPixels), memory().target); }

template <std::size_t kBytes, auto kTransform>
void sized(Target target) {
    kTransform(bytesOf(kBytes * kPixels), kBytes, target);
}
template <auto kTransform>
void rgba(Target target) {
    kTransform(bytesOf(4 * kPixels), target);
}
template <auto kRender>
void bump(Target target) {
    kRender(bytesOf(3 * kPixels), kSide, target);
}

struct Case {
    const char* name;
    std::size_t bytesRead, bytesWritten;  ///< For a pixel.
    void (*ours)(Target);
    void (*plain)(Target);
};

const Case kCases[] = {
    {"floatToRgba1", 4, 4, toneOurs<1>, tonePlain<1>},
    {"floatToRgba3", 12, 4, toneOurs<3>, tonePlain<3>},
    {"floatToRgba4", 16, 4, toneOurs<4>, tonePlain<4>},
    {"halfToRgba1", 2, 4, halfOurs<1>, halfPlain<1>},
    {"halfToRgba3", 6, 4, halfOurs<3>, halfPlain<3>},
    {"halfToRgba4", 8, 4, halfOurs<4>, halfPlain<4>},
    {"rToRgb", 4, 12, repeatOurs, repeatPlain},
    {"greyRgb", 3, 3, sized<3, kernels::greyByLightness>,
     sized<3, kernels::plain::greyByLightness>},
    {"greyRgba", 4, 4, sized<4, kernels::greyByLightness>,
     sized<4, kernels::plain::greyByLightness>},
    {"monoRgba", 4, 4, rgba<kernels::blackAndWhite>, rgba<kernels::plain::blackAndWhite>},
    {"negativeRgb", 3, 3, sized<3, kernels::invertColors>, sized<3, kernels::plain::invertColors>},
    {"negativeRgba", 4, 4, sized<4, kernels::invertColors>, sized<4, kernels::plain::invertColors>},
    {"maskRgba", 4, 4, sized<4, kernels::maskFromAlpha>, sized<4, kernels::plain::maskFromAlpha>},
    {"alphaInvertRgba", 4, 4, rgba<kernels::invertAlpha>, rgba<kernels::plain::invertAlpha>},
    {"bumpRgb", 3, 3, bump<kernels::renderBumpMap>, bump<kernels::plain::renderBumpMap>},
};

void measure(benchmark::State& state, const Case& one, void (*work)(Target)) {
    const Target target = targetOf(one.bytesWritten * kPixels);
    for (auto _ : state) {
        work(target);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(
        static_cast<std::int64_t>((one.bytesRead + one.bytesWritten) * kPixels) *
        state.iterations());
}

void copy(benchmark::State& state, const Case& one) {
    const std::size_t traffic = (one.bytesRead + one.bytesWritten) * kPixels;
    const Target target = targetOf(traffic / 2);
    for (auto _ : state) {
        std::memcpy(target.data(), memory().floats.data(), target.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(traffic) * state.iterations());
}

/// An image with the bytes of the other cases.
Image imageOf(KVRPixelImageFormat format) {
    constexpr int kWidth = static_cast<int>(kSide);
    Image image = Image::Adopt(KVRPixelImage::CreateUnfilled(kWidth, kWidth, format));
    const auto raw = image->GetRawPixels();
    std::memcpy(raw.data(), memory().bytes.data(), raw.size());
    return image;
}

using Service = KVRPixelImage* (*)(const KVRPixelImage*);

void service(benchmark::State& state, KVRPixelImageFormat format, Service derive) {
    const Image image = imageOf(format);
    for (auto _ : state) {
        const Image made = Image::Adopt(derive(image.Get()));
        benchmark::DoNotOptimize(made->GetPixelsToRead());
    }
}

KVRPixelImage* greyAfterCopy(const KVRPixelImage* source) {
    Image image = Image::Adopt(new KVRPixelImage(*source));
    const auto size = image->GetRawPixels().size();
    kernels::greyByLightness({image->GetPixelsToRead(), size},
                             static_cast<std::size_t>(image->GetBytesPerPixel()),
                             {image->GetPixelsToModify(), size});
    return image.Detach();
}

void registerAll() {
    const auto add = [](std::string name, auto&& work) {
        name += "/4096";
        benchmark::RegisterBenchmark(name.c_str(), work)->Unit(benchmark::kMicrosecond);
    };
    for (const Case& one : kCases) {
        const std::string name = one.name;
        add(name + "/ours", [&one](benchmark::State& state) { measure(state, one, one.ours); });
        add(name + "/plain", [&one](benchmark::State& state) { measure(state, one, one.plain); });
        add(name + "/copy", [&one](benchmark::State& state) { copy(state, one); });
    }
    for (const auto format : {KVRPixelImageFormat::RGB, KVRPixelImageFormat::RGBA}) {
        const std::string name =
            format == KVRPixelImageFormat::RGB ? "greyServiceRgb" : "greyServiceRgba";
        add(name + "/ours", [format](benchmark::State& state) {
            service(state, format, KVRRbaImageServices::ComputeGreyScaleImage);
        });
        add(name + "/afterCopy",
            [format](benchmark::State& state) { service(state, format, greyAfterCopy); });
    }
}

bool isRight(const Case& one) {
    const Target target = targetOf(one.bytesWritten * kPixels);
    std::fill(target.begin(), target.end(), std::uint8_t{1});
    one.plain(target);
    const std::vector<std::uint8_t> expected(target.begin(), target.end());
    std::fill(target.begin(), target.end(), std::uint8_t{2});
    one.ours(target);
    return std::equal(expected.begin(), expected.end(), target.begin());
}

}  // namespace

int main(int argc, char** argv) {
    for (const Case& one : kCases)
        if (!isRight(one)) {
            std::fprintf(stderr, "transform_benchmark: %s differs from plain; nothing measured\n",
                         one.name);
            return 1;
        }
    registerAll();
    return rb::benchmarks::runBenchmarks(argc, argv);
}
