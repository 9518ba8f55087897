#pragma once

#include <string>
#include <string_view>

namespace rb::app {

/// Writes a text as one line of a key file that begins with no blank, using the escapes of desktop
/// entry files (version 1.5, "Possible value types": \s \n \t \r \\) and \f, which is a blank to
/// key files too.
std::string escapedSetting(std::string_view text);

/// The text of such a line. A backslash before any other character stands for itself.
std::string unescapedSetting(std::string_view line);

}  // namespace rb::app
