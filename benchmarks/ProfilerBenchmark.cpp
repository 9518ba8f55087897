// What it costs to measure a section: Resume and Pause around nothing, by a probe whose names are
// literals (ours), by one whose names come at run time, and by names; beside what cannot be spared,
// two searches in a map for an inactive group and two readings of the clock for an active one. Two
// other groups are active, but where said.

#include "RenderingBase/public/KVRRbaProfiler.h"
#include "benchmarks/RunBenchmarks.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unordered_map>

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kActiveGroups[] = {"Textures", "KVRRbaActiveGroupWithAVeryLongName"};
constexpr const char* kTimer = "Decode";
constexpr const char* kLongTimer = "CreatePixelImageFromFullPath";

void probeOfInactive(benchmark::State& state) {
    for (auto _ : state) const KVRRbaProfiler::Probe probe("Inactive", "Decode");
}

void probeOfActive(benchmark::State& state) {
    for (auto _ : state) const KVRRbaProfiler::Probe probe("Textures", "Decode");
}

void probe(benchmark::State& state, const char* group, const char* timer) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(group);
        benchmark::DoNotOptimize(timer);
        const KVRRbaProfiler::Probe measured(group, timer);
    }
}

void resumeAndPause(benchmark::State& state, const char* group, const char* timer) {
    KVRRbaProfiler& profiler = KVRRbaProfiler::GetInstance();
    for (auto _ : state) {
        profiler.Resume(group, timer);
        profiler.Pause(group, timer);
    }
}

/// As most programs run.
void withoutActiveGroups(benchmark::State& state) {
    KVRRbaProfiler& profiler = KVRRbaProfiler::GetInstance();
    const KVRRbaProfiler active = profiler;
    for (const char* group : kActiveGroups) profiler.SetActive(group, false);
    resumeAndPause(state, "KVRRbaInactiveGroupWithALongName", kLongTimer);
    profiler = active;
}

void mapSearches(benchmark::State& state) {
    const std::unordered_map<std::uint32_t, int> map = {{0x7850e32e, 1}, {0x573e0af4, 2}};
    std::uint32_t id = 0xbf9cf968;
    for (auto _ : state) {
        for (int i = 0; i < 2; ++i) {
            benchmark::DoNotOptimize(id);
            benchmark::DoNotOptimize(map.find(id));
        }
    }
}

void clockReadings(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(Clock::now());
        benchmark::DoNotOptimize(Clock::now());
    }
}

BENCHMARK(probeOfInactive)->Name("profilerInactive/ours");
BENCHMARK_CAPTURE(probe, inactive, "Inactive", kTimer)->Name("profilerInactive/probe_run_time");
BENCHMARK_CAPTURE(resumeAndPause, inactive, "Inactive", kTimer)->Name("profilerInactive/names");
BENCHMARK_CAPTURE(resumeAndPause, inactiveLong, "KVRRbaInactiveGroupWithALongName", kLongTimer)
    ->Name("profilerInactive/names_long");
BENCHMARK(withoutActiveGroups)->Name("profilerInactive/names_long_no_group_active");
BENCHMARK(mapSearches)->Name("profilerInactive/map_searches");

BENCHMARK(probeOfActive)->Name("profilerActive/ours");
BENCHMARK_CAPTURE(probe, active, "Textures", kTimer)->Name("profilerActive/probe_run_time");
BENCHMARK_CAPTURE(resumeAndPause, active, "Textures", kTimer)->Name("profilerActive/names");
BENCHMARK_CAPTURE(resumeAndPause, activeLong, "KVRRbaActiveGroupWithAVeryLongName", kLongTimer)
    ->Name("profilerActive/names_long");
BENCHMARK(clockReadings)->Name("profilerActive/clock_readings");

// A section that waits is measured as no shorter than the wait, and no longer than what is seen
// from outside; every way to measure counts, and inactive groups do not.
bool answersAreRight() {
    KVRRbaProfiler& profiler = KVRRbaProfiler::GetInstance();
    constexpr auto kWait = std::chrono::milliseconds(2);
    const auto before = Clock::now();
    {
        const KVRRbaProfiler::Probe literal("Textures", "Decode");
        const KVRRbaProfiler::Probe inactive("Inactive", "Decode");
        const auto end = Clock::now() + kWait;
        while (Clock::now() < end) {
        }
    }
    const std::chrono::duration<double, std::milli> outside = Clock::now() - before;
    const double measuredMs = profiler.GetAccumulatedMS("Textures", kTimer);
    if (measuredMs < 2 || measuredMs > outside.count()) return false;
    profiler.Resume("Textures", kTimer);
    profiler.Pause("Textures", kTimer);
    profiler.Resume("Inactive", kTimer);
    profiler.Pause("Inactive", kTimer);
    { const KVRRbaProfiler::Probe runTime("Textures", kTimer); }
    return profiler.GetHitCount("Textures", kTimer) == 3 && !profiler.IsActive("Inactive");
}

}  // namespace

int main(int argc, char** argv) {
    // Measures that are kept would fill the memory.
    unsetenv("KVRRbaProfilerKeepAllSamples");
    unsetenv("KVRRbaProfilerActiveGroups");
    for (const char* group : kActiveGroups) KVRRbaProfiler::GetInstance().SetActive(group, true);
    if (!answersAreRight()) {
        std::fputs("profiler_benchmark: a measure is wrong; nothing measured\n", stderr);
        return 1;
    }
    return rb::benchmarks::runBenchmarks(argc, argv);
}
