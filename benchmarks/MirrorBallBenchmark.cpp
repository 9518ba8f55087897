// The mirror ball of a cube with faces of 1024 x 1024 random texels, on one thread: ours, beside
// the loop that computes every pixel as the definition reads, and beside a memory copy of the
// ball's bytes. All targets have been written to before they are measured.

#include "RenderingBase/KVRRbaModel.m/src/kernels/MirrorBall.h"
#include "benchmarks/RunBenchmarks.h"
#include "tests/image/PlainMirrorBall.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kSide = 1024;
constexpr std::size_t kBallBytes = kSide * kSide * 4;

const rb::kernels::CubePictures& randomCube() {
    static std::array<Bytes, 6> faces;
    static const rb::kernels::CubePictures cube = [] {
        rb::kernels::CubePictures made{{}, kSide, kSide};
        std::mt19937 random(1);
        for (std::size_t i = 0; i < faces.size(); ++i) {
            faces[i].resize(kBallBytes);
            for (std::uint8_t& byte : faces[i]) byte = static_cast<std::uint8_t>(random());
            made.faces[i] = faces[i].data();
        }
        return made;
    }();
    return cube;
}

void renderPlainly(const rb::kernels::CubePictures& cube, std::span<std::uint8_t> ball) {
    for (std::size_t row = 0; row < cube.width; ++row)
        for (std::size_t column = 0; column < cube.width; ++column)
            rb::test::plainMirrorBallPixel(cube, column, row,
                                           &ball[4 * (row * cube.width + column)]);
}

void mirrorBall(benchmark::State& state,
                void (*render)(const rb::kernels::CubePictures&, std::span<std::uint8_t>)) {
    Bytes ball(kBallBytes);
    for (auto _ : state) {
        render(randomCube(), ball);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kSide * kSide));
}

void copy(benchmark::State& state) {
    const Bytes source(kBallBytes, 'a');
    Bytes target(kBallBytes);
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), kBallBytes);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kSide * kSide));
}

bool answersAreRight() {
    Bytes ours(kBallBytes);
    rb::kernels::renderMirrorBall(randomCube(), ours);
    return ours == rb::test::plainMirrorBall(randomCube());
}

BENCHMARK_CAPTURE(mirrorBall, ours, rb::kernels::renderMirrorBall)
    ->Name("mirrorBall/ours/1024")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(mirrorBall, portable, rb::kernels::detail::renderMirrorBallPortable)
    ->Name("mirrorBall/portable/1024")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(mirrorBall, plain, renderPlainly)
    ->Name("mirrorBall/plain/1024")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(copy)->Name("mirrorBall/copy/1024")->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    if (!answersAreRight()) {
        std::fputs("mirror_ball_benchmark: ours differs from the plain loop; nothing measured\n",
                   stderr);
        return 1;
    }
    return rb::benchmarks::runBenchmarks(argc, argv);
}
