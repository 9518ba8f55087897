#include "RenderingBase/KVRRbaModel.m/src/IesScanner.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <locale.h>
#include <system_error>

namespace rb::photometry {
namespace {

/// Of the classic locale.
bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// For the numbers that the fast conversion leaves open: too large ones, and those next to 0.
float convertSlowly(const std::string& text) {
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtof_l(text.c_str(), nullptr, classic);
}

}  // namespace

std::string_view Scanner::line() {
    if (m_at >= m_text.size()) fail("a line", m_at);
    const std::size_t end = std::min(m_text.find('\n', m_at), m_text.size());
    const std::string_view line = m_text.substr(m_at, end - m_at);
    m_at = std::min(end + 1, m_text.size());
    return line;
}

void Scanner::skipSeparators() {
    while (isNext(',') || isNext(' ')) ++m_at;
}

void Scanner::skipSpace() {
    while (m_at < m_text.size() && isSpace(m_text[m_at])) ++m_at;
}

std::string_view Scanner::digits() {
    const std::size_t begin = m_at;
    while (isDigit(next())) ++m_at;
    return m_text.substr(begin, m_at - begin);
}

std::int32_t Scanner::integer() {
    skipSpace();
    const std::size_t begin = m_at;
    const bool isNegative = next() == '-';
    if (isNegative || next() == '+') ++m_at;
    const std::string_view magnitude = digits();
    std::int64_t value = 0;
    const auto [end, error] =
        std::from_chars(magnitude.data(), magnitude.data() + magnitude.size(), value);
    if (isNegative) value = -value;
    if (error != std::errc() || value != static_cast<std::int32_t>(value))
        fail("an integer", begin);
    return static_cast<std::int32_t>(value);
}

float Scanner::number() {
    skipSpace();
    const std::size_t begin = m_at;
    if (next() == '-' || next() == '+') ++m_at;
    bool hasDigits = !digits().empty();
    if (next() == '.') {
        ++m_at;
        hasDigits |= !digits().empty();
    }
    // Taken as soon as it is seen, so that "1e" and "1e+" are no numbers.
    if (hasDigits && (next() == 'e' || next() == 'E')) {
        ++m_at;
        if (next() == '-' || next() == '+') ++m_at;
        hasDigits = !digits().empty();
    }
    if (!hasDigits) fail("a number", begin);

    const std::string_view all = m_text.substr(begin, m_at - begin);
    const std::string_view text = all.front() == '+' ? all.substr(1) : all;
    float value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) value = convertSlowly(std::string(text));
    if (std::isinf(value)) fail("a number within the range of single precision", begin);
    return value;
}

std::size_t Scanner::leftWithoutSpace() const {
    const auto rest = m_text.substr(m_at);
    const auto first = std::find_if_not(rest.begin(), rest.end(), isSpace);
    const auto last = std::find_if_not(rest.rbegin(), rest.rend(), isSpace).base();
    return first < last ? static_cast<std::size_t>(last - first) : 0;
}

int Scanner::lineNumber() const {
    const auto read = m_text.substr(0, m_at);
    return 1 + static_cast<int>(std::count(read.begin(), read.end(), '\n'));
}

void Scanner::fail(const char* expected, std::size_t at) {
    m_at = std::min(at, m_text.size());
    std::string found = "the end of the file";
    if (m_at < m_text.size()) {
        constexpr std::size_t kMost = 20;
        std::size_t end = m_at;
        while (end < m_text.size() && end - m_at < kMost && !isSpace(m_text[end])) ++end;
        found = "'" + std::string(m_text.substr(m_at, end - m_at)) + "'";
    }
    throw ReadFailure("line " + std::to_string(lineNumber()) + ": expected " + expected +
                      ", found " + found);
}

}  // namespace rb::photometry
