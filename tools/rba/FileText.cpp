#include "tools/rba/FileText.h"

#include "RenderingBase/host/base/KVRUnicodeString.h"

#include <array>

namespace rb::cli {
namespace {

/// 0x80 to 0x9F of Windows-1252; the other codes are those of Unicode.
constexpr std::array<char16_t, 32> kWindowsCodes = {
    0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};

bool isUtf8(const std::string& text) {
    // What is not valid is replaced.
    return KVRUnicodeString(text.c_str()).CastToCharPtr() == text;
}

void appendUtf8(std::string& text, unsigned code) {
    const auto continued = [](unsigned bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += {static_cast<char>(0xC0 | code >> 6), continued(code)};
    } else {
        text += {static_cast<char>(0xE0 | code >> 12), continued(code >> 6), continued(code)};
    }
}

}  // namespace

std::string trimmed(std::string_view text) {
    constexpr std::string_view kWhiteSpace = " \t\r\n\v\f";
    const std::size_t begin = text.find_first_not_of(kWhiteSpace);
    if (begin == std::string_view::npos) return "";
    return std::string(text.substr(begin, text.find_last_not_of(kWhiteSpace) + 1 - begin));
}

std::string shortened(std::string_view text, std::size_t most) {
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isFirstByte = (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80;
        if (isFirstByte && ++characters > most) return std::string(text.substr(0, i)) + "...";
    }
    return std::string(text);
}

std::string inUtf8(std::string_view text) {
    std::string result(text);
    if (isUtf8(result)) return result;
    result.clear();
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        const bool isOwn = code >= 0x80 && code < 0xA0;
        appendUtf8(result, isOwn ? kWindowsCodes[code - 0x80U] : code);
    }
    return result;
}

}  // namespace rb::cli
