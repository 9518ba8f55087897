// The half codec on whole arrays: ours, beside our version without conversion instructions, beside
// the loop over Imath's functions that a user would write, and beside a memory copy that reads and
// writes as many bytes together. All targets have been written to before they are measured.

#include "RenderingBase/host/imaging/HalfArrays.h"
#include "benchmarks/RunBenchmarks.h"

#include <Imath/half.h>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <span>
#include <vector>

namespace {

using Floats = std::vector<float>;
using Halves = std::vector<std::uint16_t>;

constexpr std::size_t kInCacheValues = 8192;  // 48 KiB with their results
constexpr std::size_t kImageValues = std::size_t{4096} * 4096 * 4;
constexpr std::size_t kBytesPerValue = sizeof(float) + sizeof(std::uint16_t);

void halvesByImath(std::span<const float> source, std::span<std::uint16_t> target) noexcept {
    for (std::size_t i = 0; i < source.size(); ++i) target[i] = imath_float_to_half(source[i]);
}

void floatsByImath(std::span<const std::uint16_t> source, std::span<float> target) noexcept {
    for (std::size_t i = 0; i < source.size(); ++i) {
        target[i] = imath_half_to_float_table[source[i]].f;
    }
}

// Colours as in a rendered picture: from 0 to 4, most of them dark.
const Floats& pictureValues() {
    static const Floats values = [] {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> uniform(0.0f, 2.0f);
        Floats made(kImageValues);
        for (float& value : made) {
            const float root = uniform(random);
            value = root * root;
        }
        return made;
    }();
    return values;
}

const Halves& pictureHalves() {
    static const Halves halves = [] {
        Halves made(kImageValues);
        halvesByImath(pictureValues(), made);
        return made;
    }();
    return halves;
}

void reportBytes(benchmark::State& state, std::size_t bytesPerIteration) {
    state.SetBytesProcessed(static_cast<std::int64_t>(bytesPerIteration) *
                            static_cast<std::int64_t>(state.iterations()));
}

template <class From, class To>
void measure(benchmark::State& state, std::span<const From> picture,
             void (*convert)(std::span<const From>, std::span<To>) noexcept) {
    const auto count = static_cast<std::size_t>(state.range(0));
    std::vector<To> target(count);
    for (auto _ : state) {
        convert(picture.first(count), target);
        benchmark::ClobberMemory();
    }
    reportBytes(state, count * kBytesPerValue);
}

void halfFromFloat(benchmark::State& state,
                   void (*convert)(std::span<const float>, std::span<std::uint16_t>) noexcept) {
    measure(state, std::span(pictureValues()), convert);
}

void floatFromHalf(benchmark::State& state,
                   void (*convert)(std::span<const std::uint16_t>, std::span<float>) noexcept) {
    measure(state, std::span(pictureHalves()), convert);
}

void copy(benchmark::State& state) {
    const std::size_t traffic = static_cast<std::size_t>(state.range(0)) * kBytesPerValue;
    const std::vector<char> source(traffic / 2, 'a');
    std::vector<char> target(source.size());
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), source.size());
        benchmark::ClobberMemory();
    }
    reportBytes(state, traffic);
}

void bothSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(std::int64_t{kInCacheValues})->Arg(std::int64_t{kImageValues});
}

BENCHMARK_CAPTURE(halfFromFloat, ours, rb::imaging::halvesFromFloats)->Apply(bothSizes);
BENCHMARK_CAPTURE(halfFromFloat, portable, rb::imaging::detail::halvesFromFloatsPortable)
    ->Apply(bothSizes);
BENCHMARK_CAPTURE(halfFromFloat, imath, halvesByImath)->Apply(bothSizes);
BENCHMARK(copy)->Name("halfFromFloat/copy")->Apply(bothSizes);

BENCHMARK_CAPTURE(floatFromHalf, ours, rb::imaging::floatsFromHalves)->Apply(bothSizes);
BENCHMARK_CAPTURE(floatFromHalf, portable, rb::imaging::detail::floatsFromHalvesPortable)
    ->Apply(bothSizes);
BENCHMARK_CAPTURE(floatFromHalf, imath, floatsByImath)->Apply(bothSizes);
BENCHMARK(copy)->Name("floatFromHalf/copy")->Apply(bothSizes);

// Every measured version gives Imath's answers.
bool answersAreRight() {
    for (const auto convert :
         {rb::imaging::halvesFromFloats, rb::imaging::detail::halvesFromFloatsPortable}) {
        Halves halves(kImageValues);
        convert(pictureValues(), halves);
        if (halves != pictureHalves()) return false;
    }
    Floats expected(kImageValues);
    floatsByImath(pictureHalves(), expected);
    for (const auto convert :
         {rb::imaging::floatsFromHalves, rb::imaging::detail::floatsFromHalvesPortable}) {
        Floats floats(kImageValues);
        convert(pictureHalves(), floats);
        if (floats != expected) return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (!answersAreRight()) {
        std::fputs("half_benchmark: a conversion gives wrong values; nothing measured\n", stderr);
        return 1;
    }
    return rb::benchmarks::runBenchmarks(argc, argv);
}
