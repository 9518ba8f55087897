#pragma once

/// @file  Lets a test say what time it is: TestClock.cpp puts a steady clock of its own in the
/// place of the standard library's, for the whole program and the libraries it is linked to.

#include <cstdint>

namespace rb::test {

/// While it lives, the steady clock stands still unless it is told to go on.
class TestClock {
public:
    explicit TestClock(std::int64_t nowNs);
    ~TestClock();
    TestClock(const TestClock&) = delete;
    TestClock& operator=(const TestClock&) = delete;

    void advance(std::int64_t durationNs);
    int readings() const;  ///< How often the clock was read since this object was made.
};

}  // namespace rb::test
