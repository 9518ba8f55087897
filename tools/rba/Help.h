#pragma once

#include "tools/rba/Precompiled.h"

#include <string>

namespace rb::cli {

/// The group of the options that every command has.
inline constexpr const char* kCommonOptions = "Common options";

/// The name of a command with those of its groups, as in "rba image info".
std::string fullName(const CLI::App& app);

/// Lays out the help: usage, description, arguments, options, commands, examples.
class HelpFormatter : public CLI::FormatterBase {
public:
    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;
};

}  // namespace rb::cli
