#pragma once

#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>

namespace rb::cli {

/// The exit statuses of the tool.
inline constexpr int kDone = 0, kFailed = 1, kWrongUsage = 2;

/// What every command gets: the options that all share, and where results go.
struct Context {
    bool json = false;            ///< Print one JSON value in place of text.
    bool quiet = false;           ///< No progress and no confirmations.
    std::ostream* out = nullptr;  ///< Results; `std::cout` is not the place for them.
    std::function<int()> action;  ///< The command that was typed; empty without one.
};

/// The operation failed: one line for standard error, exit status 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The command was used wrongly: one line for standard error, exit status 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace rb::cli
