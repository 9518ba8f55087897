#pragma once

/// @file  Texts of a file in messages.

#include <string>
#include <string_view>

namespace rb::imaging {

/// The first 64 bytes of @p text in quotation marks, with a question mark for what is not printable
/// ASCII: a file must not steer the terminal on which its refusal is shown.
inline std::string inQuotes(std::string_view text) {
    constexpr std::size_t kShown = 64;
    std::string result = "\"";
    for (const char c : text.substr(0, kShown)) result += c >= ' ' && c <= '~' ? c : '?';
    return result + (text.size() > kShown ? "...\"" : "\"");
}

}  // namespace rb::imaging
