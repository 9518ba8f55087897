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
    bool profile = false;         ///< Tell how long the calls of the library took.
    bool quiet = false;           ///< No progress and no confirmations.
    std::ostream* out = nullptr;  ///< Results; `std::cout` is not the place for them.
    std::function<int()> action;  ///< The command that was typed; empty without one.
};

/// How a line about @p name begins. @p kind says what there is none of when it is empty.
inline std::string named(const std::string& name, const char* kind = "path") {
    return name.empty() ? std::string("an empty ") + kind : name;
}

/// The operation failed: one line for standard error, exit status 1.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& reason) : runtime_error(reason), m_reason(reason) {}
    Failure(const std::string& path, const std::string& reason)
        : runtime_error(named(path) + ": " + reason), m_reason(reason) {}

    /// As in "expected ..., found ...", without the path.
    const std::string& reason() const { return m_reason; }

private:
    std::string m_reason;
};

/// The command was used wrongly: one line for standard error, exit status 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace rb::cli
