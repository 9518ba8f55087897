// Photometric files: a table of 1024 x 2048 directions, beside the loop that computes every cell as
// the definition reads, and beside a memory copy of the table's bytes; and reading a file of a
// megabyte, beside strtod over the same text. All targets have been written to before they are
// measured.

#include "RenderingBase/public/KVRRbaIESLoader.h"
#include "benchmarks/RunBenchmarks.h"
#include "tests/photometry/PlainResampler.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <omp.h>
#include <random>
#include <string>
#include <vector>

namespace {

namespace kernels = rb::kernels;
using Floats = std::vector<float>;

constexpr kernels::TableShape kShape{1024, 2048, 1};
constexpr std::size_t kCells = kShape.rows * kShape.columns;
constexpr kernels::Rotation kIdentity{};
/// About (1, 2, 3), by 1.2 radians.
const kernels::Rotation kTilted{0.1509, 0.3018, 0.4527, 0.8253};

/// A luminaire of type C with smooth random intensities.
struct Luminaire {
    Floats vertical, horizontal, candela;

    Luminaire(std::size_t verticals, std::size_t horizontals, float lastHorizontal) {
        const auto angles = [](std::size_t count, float last) {
            Floats list;
            for (std::size_t i = 0; i < count; ++i)
                list.push_back(last * static_cast<float>(i) / static_cast<float>(count - 1));
            return list;
        };
        vertical = angles(verticals, 180);
        horizontal = angles(horizontals, lastHorizontal);
        std::mt19937 random(1);
        for (std::size_t i = 0; i < verticals * horizontals; ++i)
            candela.push_back(500 + static_cast<float>(random() % 1000));
    }
    kernels::CandelaGrid grid() const { return {1, vertical, horizontal, candela, 1}; }
};

/// Steps of 1 degree and of 5 degrees: a full circle, 13,000 values.
const Luminaire& fullCircle() {
    static const Luminaire luminaire(181, 73, 360);
    return luminaire;
}

void ours(const kernels::Rotation& rotation, Floats& table) {
    kernels::resample(fullCircle().grid(), kShape, rotation, table);
}

void plain(const kernels::Rotation& rotation, Floats& table) {
    rb::test::plainlyResample(fullCircle().grid(), kShape, rotation, table);
}

void fillTable(benchmark::State& state, void (*fill)(const kernels::Rotation&, Floats&),
               const kernels::Rotation& rotation, int threads) {
    Floats table(kCells);
    const int before = omp_get_max_threads();
    omp_set_num_threads(threads);
    for (auto _ : state) {
        fill(rotation, table);
        benchmark::ClobberMemory();
    }
    omp_set_num_threads(before);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sizeof(float) * kCells));
}

void copyTable(benchmark::State& state) {
    const Floats source(kCells, 1.0F);
    Floats target(kCells);
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), sizeof(float) * kCells);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sizeof(float) * kCells));
}

/// A file of a megabyte.
const std::string& bigFile() {
    static const std::string text = [] {
        constexpr int kVerticals = 361, kHorizontals = 430;
        std::string made = "IESNA:LM-63-1995\n[MANUFAC] Lamps and Sons\nTILT=NONE\n1 1000 1 " +
                           std::to_string(kVerticals) + " " + std::to_string(kHorizontals) +
                           " 1 2 0.1 0.2 0.3\n1 1 40\n";
        for (int i = 0; i < kVerticals; ++i) made += std::to_string(0.5 * i).substr(0, 5) + " ";
        made += "\n";
        for (int i = 0; i < kHorizontals; ++i) made += std::to_string(i) + " ";
        std::mt19937 random(1);
        for (int i = 0; i < kVerticals * kHorizontals; ++i) {
            char number[16];
            std::snprintf(number, sizeof number, "%.2f",
                          static_cast<double>(random() % 100000) / 97);
            made += std::string(i % 20 ? " " : "\n") + number;
        }
        return made + "\n";
    }();
    return text;
}

const char* numbersOfBigFile() { return bigFile().c_str() + bigFile().find("1 1000 1"); }

void parseBigFile(benchmark::State& state) {
    for (auto _ : state) {
        KVRRbaIESLoader::IESPhotometry photometry;
        benchmark::DoNotOptimize(KVRRbaIESLoader::parseIESText(bigFile(), photometry));
        benchmark::DoNotOptimize(photometry.candelaValues.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bigFile().size()));
}

Floats allNumbers() {
    Floats values;
    const char* place = numbersOfBigFile();
    for (char* end = nullptr;; place = end) {
        const double value = std::strtod(place, &end);
        if (end == place) return values;
        values.push_back(static_cast<float>(value));
    }
}

void strtodBigFile(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(allNumbers());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bigFile().size()));
}

/// Whether few cells differ: the inverse functions differ in the last bits, and angles next to one
/// of the file may come out on its other side.
bool areClose(const kernels::Rotation& rotation) {
    constexpr float kMostDifference = 0.1F;  // of intensities from 500 to 1500, degree by degree
    Floats one(kCells), other;
    ours(rotation, one);
    plain(rotation, other);
    for (std::size_t i = 0; i < kCells; ++i)
        if (!(std::abs(one[i] - other[i]) <= kMostDifference)) return false;
    return true;
}

bool isParsed() {
    KVRRbaIESLoader::IESPhotometry photometry;
    if (Failed(KVRRbaIESLoader::parseIESText(bigFile(), photometry))) return false;
    const Floats expected = allNumbers(), &candela = photometry.candelaValues;
    return expected.size() > candela.size() && !candela.empty() &&
           std::equal(candela.rbegin(), candela.rend(), expected.rbegin());
}

void add(const char* name, void (*fill)(const kernels::Rotation&, Floats&),
         const kernels::Rotation& rotation, int threads) {
    auto* const made = benchmark::RegisterBenchmark(name, fillTable, fill, rotation, threads);
    made->Unit(benchmark::kMicrosecond);
    if (threads > 1 || std::strstr(name, "Threads")) made->UseRealTime();
}

void addAll() {
    add("tableIdentity/ours/1024", ours, kIdentity, 1);
    add("tableIdentity/plain/1024", plain, kIdentity, 1);
    benchmark::RegisterBenchmark("tableIdentity/copy/1024", copyTable)
        ->Unit(benchmark::kMicrosecond);
    add("tableRotated/ours/1024", ours, kTilted, 1);
    add("tableRotated/plain/1024", plain, kTilted, 1);
    benchmark::RegisterBenchmark("tableRotated/copy/1024", copyTable)
        ->Unit(benchmark::kMicrosecond);
    add("tableTwoThreads/ours/1024", ours, kTilted, 2);
    add("tableTwoThreads/oneThread/1024", ours, kTilted, 1);
    benchmark::RegisterBenchmark("parse/ours/1024", parseBigFile)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("parse/strtod/1024", strtodBigFile)->Unit(benchmark::kMicrosecond);
}

}  // namespace

int main(int argc, char** argv) {
    if (!areClose(kIdentity) || !areClose(kTilted) || !isParsed()) {
        std::fputs("photometry_benchmark: ours differs from the definition; nothing measured\n",
                   stderr);
        return 1;
    }
    addAll();
    return rb::benchmarks::runBenchmarks(argc, argv);
}
