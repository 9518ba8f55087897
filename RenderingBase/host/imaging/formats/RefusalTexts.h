#pragma once

/// @file  Parts of the texts with which files are refused.

#include <cstdint>
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

/// "16 bytes".
inline std::string bytesText(std::uint64_t count) { return std::to_string(count) + " bytes"; }

/// "byte 16": a place in a file.
inline std::string placeText(std::uint64_t offset) { return "byte " + std::to_string(offset); }

/// In hexadecimal digits, @p digits of them at least.
inline std::string hexText(std::uint32_t value, std::size_t digits = 1) {
    std::string text;
    for (; value != 0 || text.size() < digits; value >>= 4)
        text.insert(text.begin(), "0123456789abcdef"[value & 15]);
    return text;
}

}  // namespace rb::imaging
