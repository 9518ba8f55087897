#pragma once

#include "tools/rba/Output.h"

#include <filesystem>
#include <string>
#include <vector>

namespace rb::cli::tour {

/// Runs @p program with @p arguments in the environment of this process changed by @p environment
/// ("NAME=value"), and returns what it wrote to standard output. Its errors go nowhere.
/// Throws Failure when it cannot be started.
std::string outputOf(const std::filesystem::path& program, std::vector<std::string> arguments,
                     const std::vector<std::string>& environment);

/// What @p program, a tool like this, answers to `--json` and @p arguments: an array or an object.
/// Throws Failure when it cannot be started, or answers with something else.
Json answerOf(const std::filesystem::path& program, std::vector<std::string> arguments,
              const std::vector<std::string>& environment);

}  // namespace rb::cli::tour
