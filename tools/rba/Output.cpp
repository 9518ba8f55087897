#include "tools/rba/Output.h"

#include <array>
#include <charconv>
#include <cmath>
#include <iostream>
#include <unistd.h>

namespace rb::cli {
namespace {

/// Fewer things than this are done before anybody could read about them.
constexpr std::size_t kLeastForProgress = 4;

template <class T>
std::string shortestText(T value) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

}  // namespace

ResultStream::ResultStream()
    : m_standardOutput(std::cout.rdbuf(std::cerr.rdbuf())), m_stream(m_standardOutput) {}

ResultStream::~ResultStream() { std::cout.rdbuf(m_standardOutput); }

void printJson(std::ostream& out, const Json& value) {
    out << value.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

Json jsonNumber(float value) {
    if (!std::isfinite(value)) return nullptr;
    const std::string text = numberText(value);
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

Json jsonNumber(double value) { return std::isfinite(value) ? Json(value) : Json(); }

std::string numberText(float value) { return shortestText(value); }

std::string numberText(double value) { return shortestText(value); }

std::string numberText(double value, int decimals) {
    std::array<char, 400> text{};  // the longest double has 309 digits before the point
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::fixed, decimals)
                         .ptr;
    return {text.data(), end};
}

std::string onOneLine(std::string_view text) {
    std::string line;
    const auto escape = [&line](unsigned char byte) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        line.append({'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]});
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        if (byte < 0x20 || byte == 0x7f) {
            escape(byte);
        } else if (byte == 0xc2 && next >= 0x80 && next < 0xa0) {  // U+0080 to U+009F in UTF-8
            escape(byte);
            escape(next);
            ++i;
        } else {
            line += text[i];
        }
    }
    return line;
}

void printError(std::string_view message) { std::cerr << "rba: " << onOneLine(message) << '\n'; }

Progress::Progress(bool quiet, std::size_t total)
    : m_visible(!quiet && total >= kLeastForProgress && isatty(STDERR_FILENO) != 0),
      m_total(total) {}

void Progress::step(std::string_view what) {
    ++m_done;
    if (!m_visible) return;
    clear();
    std::cerr << '[' << m_done << '/' << m_total << "] " << onOneLine(what.substr(0, 60))
              << std::flush;
}

void Progress::clear() {
    // Back to the first column, then erase to the end of the line (ECMA-48, 8.3.41 EL).
    if (m_visible) std::cerr << "\r\x1b[K" << std::flush;
}

}  // namespace rb::cli
