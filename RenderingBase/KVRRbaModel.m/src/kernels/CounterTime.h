#pragma once

/// @file  Time from a counter that runs with a steady frequency. Pure computation.

#include <cstdint>

namespace rb::kernels {

inline constexpr std::int64_t kNanosecondsToTheSecond = 1'000'000'000;

/// Nanoseconds since the counter was 0, rounded down. Seconds and the rest are converted on their
/// own, so that the product does not overflow.
/// @param counter    0 or more; for less than 292 years.
/// @param frequency  Counts to the second, from 1 to 9 * 10^9.
constexpr std::int64_t nanosecondsOfCounter(std::int64_t counter, std::int64_t frequency) {
    constexpr std::int64_t kCommonFrequency = 10'000'000;  // spares the divisions
    if (frequency == kCommonFrequency) return counter * 100;
    return counter / frequency * kNanosecondsToTheSecond +
           counter % frequency * kNanosecondsToTheSecond / frequency;
}

/// Whole microseconds from @p startNs to @p endNs, rounded toward 0.
constexpr std::int64_t microsecondsBetween(std::int64_t startNs, std::int64_t endNs) {
    return (endNs - startNs) / 1000;
}

}  // namespace rb::kernels
