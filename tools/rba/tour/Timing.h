#pragma once

/// @file  How long something takes, and how figures are written in tables.

#include "tools/rba/Output.h"

#include <algorithm>
#include <chrono>
#include <concepts>
#include <string>
#include <utility>

namespace rb::cli::tour {

/// Runs @p work once, and three times more with a clock. @return  What it gave, and the
/// milliseconds of the fastest run.
template <class Work>
auto timed(Work work) {
    using Clock = std::chrono::steady_clock;
    constexpr int kRuns = 3;
    auto result = work();
    double fastest = 1e9;
    for (int i = 0; i < kRuns; ++i) {
        const Clock::time_point start = Clock::now();
        result = work();
        const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
        fastest = std::min(fastest, taken.count());
    }
    return std::pair(std::move(result), fastest);
}

inline std::string millisecondsText(double milliseconds) {
    return numberText(milliseconds, milliseconds < 10 ? 2 : 0) + " ms";
}

inline std::string sizeText(std::integral auto width, std::integral auto height) {
    return std::to_string(width) + " × " + std::to_string(height);
}

}  // namespace rb::cli::tour
