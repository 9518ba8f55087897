#pragma once

#include <benchmark/benchmark.h>

namespace rb::benchmarks {

/// Runs what is registered and named on the command line. @return  The exit status of the program.
inline int runBenchmarks(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

}  // namespace rb::benchmarks
