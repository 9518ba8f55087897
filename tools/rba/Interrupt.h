#pragma once

/// @file  Ctrl-C for commands that have something to clean up.

#include <exception>

namespace rb::cli {

/// Thrown by `InterruptGuard::check`.
class Interrupted : public std::exception {
public:
    const char* what() const noexcept override { return "interrupted"; }
};

/// While it lives, the first Ctrl-C (or request to end) only leaves a note; the second one ends the
/// program at once. A signal that is ignored stays so. One at a time.
class InterruptGuard {
public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

    /// To be called between two steps of long work. Throws Interrupted when there is a note.
    static void check();
    /// Ends the program as the signal would have, so that whoever called it sees that.
    [[noreturn]] static void endProgram();
};

}  // namespace rb::cli
