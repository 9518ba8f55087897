#include "tests/diagnostics/TestClock.h"

#include <chrono>
#include <ctime>
#include <optional>

namespace {

std::optional<std::int64_t> g_nowNs;
int g_readings = 0;

std::int64_t systemNs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

}  // namespace

// The one of the standard library is called through the table of a shared library's symbols, where
// that of the program comes first.
std::chrono::steady_clock::time_point std::chrono::steady_clock::now() noexcept {
    ++g_readings;
    return time_point(std::chrono::nanoseconds(g_nowNs ? *g_nowNs : systemNs()));
}

namespace rb::test {

TestClock::TestClock(std::int64_t nowNs) {
    g_nowNs = nowNs;
    g_readings = 0;
}

TestClock::~TestClock() { g_nowNs.reset(); }

void TestClock::advance(std::int64_t durationNs) { *g_nowNs += durationNs; }

int TestClock::readings() const { return g_readings; }

}  // namespace rb::test
