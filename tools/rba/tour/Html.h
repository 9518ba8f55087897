#pragma once

/// @file  Builds HTML. Whatever is text is escaped; only what is said to be mark-up is not.
///
///     Html cell;
///     cell << "<td>"_html << fileName << "</td>"_html;

#include <concepts>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace rb::cli::tour {

/// A literal that is HTML already.
struct Markup {
    std::string_view text;
};

constexpr Markup operator""_html(const char* text, std::size_t length) {
    return {std::string_view(text, length)};
}

/// @p text with the five characters that mean something in HTML written as entities, fit for
/// content and for attributes in quotes. Bytes that are no UTF-8 become U+FFFD.
std::string escapeHtml(std::string_view text);

class Html {
public:
    Html& operator<<(Markup markup) {
        m_text += markup.text;
        return *this;
    }
    Html& operator<<(std::string_view text) {
        m_text += escapeHtml(text);
        return *this;
    }
    Html& operator<<(std::integral auto number) {
        m_text += std::to_string(number);
        return *this;
    }
    Html& operator<<(const Html& part) {
        m_text += part.m_text;
        return *this;
    }

    const std::string& text() const { return m_text; }

private:
    std::string m_text;
};

/// Base64 (RFC 4648, section 4).
std::string base64(std::span<const std::byte> bytes);

}  // namespace rb::cli::tour
