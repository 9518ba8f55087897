#pragma once

/// @file  Counts what the program and its libraries allocate with `new`, and lets it fail:
/// CountedMemory.cpp replaces the operators.

#include <cstddef>

namespace rb::test {

std::size_t allocationCount();  ///< Since the program was started.
std::size_t liveBytes();        ///< Allocated and not freed yet.

/// How often @p action allocates.
template <class Action>
std::size_t allocationsOf(Action action) {
    const std::size_t before = allocationCount();
    action();
    return allocationCount() - before;
}

/// While it lives, there is no memory.
class NoMemory {
public:
    NoMemory();
    ~NoMemory();
    NoMemory(const NoMemory&) = delete;
    NoMemory& operator=(const NoMemory&) = delete;
};

}  // namespace rb::test
