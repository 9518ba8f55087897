#pragma once

/// @file  The words of the command line: which of them are values, and which numbers those are.

#include "tools/rba/Precompiled.h"

#include <array>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace rb::cli {

/// Where help is, for the end of an error message.
std::string seeHelpOf(const CLI::App& app);

/// Takes off the mark that `protectValues` put on a value.
std::string plainValue(const std::string& value);

/// The arguments of the program in the form in which the parser takes them as they are meant: what
/// follows "--" and whatever is not an option or the name of a command is marked as a value, also
/// in "--option=value".
/// Throws UsageError for a command or an option that there is not, for an option whose value is
/// missing, and for a value where none belongs.
std::vector<std::string> protectValues(const CLI::App& program, int count,
                                       const char* const* arguments);

/// Reads the number that the whole of @p text is: decimal, in any locale, with a sign where there
/// is one. Defined for int, float and double.
/// @return  invalid_argument for another text, result_out_of_range for a number that T has not.
template <class T>
std::errc readNumber(std::string_view text, T& number);

/// Reads the value of the argument or option @p name. Throws UsageError when it is not a number.
void readValue(const CLI::App& command, const std::string& name, const std::string& text,
               int& number);
void readValue(const CLI::App& command, const std::string& name, const std::string& text,
               float& number);
void readValue(const CLI::App& command, const std::string& name, const std::string& text,
               double& number);

/// Reads three finite numbers with commas between them, the value of the option @p name. Defined
/// for float and double. Throws UsageError, with @p example, for anything else.
template <class T>
std::array<T, 3> readThreeNumbers(const std::string& name, const std::string& text,
                                  const std::string& example);

}  // namespace rb::cli
