#include "tools/rba/tour/Html.h"

#include "RenderingBase/host/base/KVRUnicodeString.h"

#include <cstdint>

namespace rb::cli::tour {

std::string escapeHtml(std::string_view text) {
    KVRUnicodeString valid(text);
    // XML has neither U+FFFE nor U+FFFF (Extensible Markup Language 1.0, 2.2).
    for (const char* character : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"})
        valid.Replace(character, "\xEF\xBF\xBD");
    std::string result;
    for (const char c : valid.View()) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            case '\'':
                result += "&#39;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

std::string base64(std::span<const std::byte> bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    result.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i)
            group = group << 8 |
                    (at + i < bytes.size() ? std::to_integer<unsigned>(bytes[at + i]) : 0u);
        for (std::size_t i = 0; i < 4; ++i)
            result += at + i <= bytes.size() ? kDigits[group >> (18 - 6 * i) & 63] : '=';
    }
    return result;
}

}  // namespace rb::cli::tour
