#pragma once

/// @file  Photometric text, read as an input stream of the standard library would read it.

#include <cstddef>
#include <cstdint>
#include <ios>
#include <string>
#include <string_view>

namespace rb::photometry {

/// What is thrown for text that ends early or has something else where a number is expected.
class ReadFailure : public std::ios_base::failure {
public:
    explicit ReadFailure(std::string message)
        : failure(message, std::io_errc::stream), m_message(std::move(message)) {}
    /// The message alone; that of the base adds the name of an error category.
    const char* what() const noexcept override { return m_message.c_str(); }

private:
    std::string m_message;
};

/// A place in a text. Numbers have the syntax of the classic locale, and what stands behind one is
/// left: "1.5.3" is 1.5 and then .3, "12abc" is 12.
class Scanner {
public:
    explicit Scanner(std::string_view text) : m_text(text) {}

    /// The rest of the line, without its end. Throws ReadFailure at the end of the text.
    std::string_view line();

    bool isNext(char c) const { return m_at < m_text.size() && m_text[m_at] == c; }
    void skipOne() { m_at += m_at < m_text.size(); }
    void skipLineEnd() { m_at += isNext('\n'); }
    void skipSeparators();  ///< Commas and blanks; other white space is skipped by the numbers.

    /// Decimal, without fraction. Throws ReadFailure, also beyond 32 bits.
    std::int32_t integer();
    /// Nearest to what is written. Throws ReadFailure, also beyond the range, for "inf" and "nan".
    float number();

    std::size_t left() const { return m_text.size() - m_at; }  ///< Bytes.
    std::size_t leftWithoutSpace() const;  ///< White space at both ends left out.
    int lineNumber() const;                ///< From 1.

private:
    void skipSpace();
    char next() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
    std::string_view digits();
    [[noreturn]] void fail(const char* expected, std::size_t at);

    std::string_view m_text;
    std::size_t m_at = 0;
};

}  // namespace rb::photometry
