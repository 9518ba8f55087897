#include "tools/rba/StrokeFont.h"

#include <algorithm>
#include <array>

namespace rb::cli {
namespace {

// A glyph is a list of strokes with blanks between them, a stroke a list of places, a place a digit
// and a letter: half units to the right, and half units upwards from "e" on, where the base line
// is; "m" is the height of small letters, "q" that of capitals (6 units), "a" the lowest descender.
// A stroke behind "~" is bent: it begins and ends as it says, and keeps away from the corners.

// clang-format off
constexpr std::array<std::string_view, 95> kGlyphs{
    "", "0q0i 0e0e", "0q0o 2q2o", "2q1e 6q5e 0m7m 0i7i", "~7o7q0q0k8k8e0e0g 4r4d",
    "0e7q ~1q0q0m3m3q1q ~6i4i4e7e7i6i", "~7e1n1q5q5m0j0e5e7i", "0q0o",
    "~3q0p0d3c", "~0q3p3d0c", "3p3l 1o5m 5o1m", "0j6j 3m3g", "1e0c", "0j4j", "0e0e", "0d5q",
    "~3q0q0e6e6q3q", "1o3q3e", "~0o0q6q6l5j 5j0e6e", "~0p0q6q6k3k ~3k6k6e0e0f",
    "5e5q0i6i", "5q1q0l ~0l6n6e0e0f", "~5q0o0e6e6k0k0i", "0q6q2e",
    "~3q0q0k6k6q3q ~3k0k0e6e6k3k", "~1e6g6q0q0k6k6m",
    "0e0e 0k0k", "1e0c 1k1k", "6m0j6g", "0k5k 0h5h", "0m6j0g", "~0o0q6q6l3k3i 3e3e",
    "~6h3h3m6m6h8h8q0q0e8e",
    "0e4q8e 1h7h", "0e0q4q ~4q7q7k4k 0k4k ~4k8k8e4e 4e0e", "~8o7q0q0e7e8g",
    "0e0q3q ~3q8q8e3e 3e0e", "7q0q0e7e 0k5k", "7q0q0e 0k5k", "~8o7q0q0e8e8j 8j5j",
    "0q0e 8q8e 0k8k", "0q0e", "~5q5h5e0e0g", "0q0e 7q0i 2k7e", "0q0e6e", "0e0q4h8q8e",
    "0e0q8e8q", "~4q0q0e8e8q4q", "0e0q4q ~4q8q8j4j 4j0j", "~4q0q0e8e8q4q 5g8d",
    "0e0q4q ~4q8q8j4j 4j0j 4j8e", "~7o7q0q0k8k8e0e0g", "0q8q 4q4e", "0q0i ~0i0e8e8i 8i8q",
    "0q4e8q", "0q2e4o6e8q", "0q8e 8q0e", "0q4k8q 4k4e", "0q8q0e8e",
    "3q0q0c3c", "0q5d", "0q3q3c0c", "0n3q6n", "0d6d", "0q2o",
    "6m6e ~6k6m0m0e6e6h", "0q0e ~0k0m6m6e0e0h", "~6l6m0m0e6e6f", "6q6e ~6k6m0m0e6e6h",
    "0i6i ~6i6m0m0e6e6f", "~5q2q2n 2n2e 0m4m", "6m6d ~6d6a0a0b ~6k6m0m0e6e6h",
    "0q0e ~0k0m6m6k 6k6e", "0m0e 0p0p", "2m2c ~2c2a0a 2p2p", "0q0e 5m0h 2j5e", "0q0e",
    "0m0e ~0k0m4m4k 4k4e ~4k4m8m8k 8k8e", "0m0e ~0k0m6m6k 6k6e", "~3m0m0e6e6m3m",
    "0m0a ~0k0m6m6e0e0h", "6m6a ~6k6m0m0e6e6h", "0m0e ~0j0m4m", "~5l5m0m0i5i5e0e0f",
    "2p2h ~2h2e5e 0m4m", "0m0h ~0h0e6e6h 6m6e", "0m3e6m", "0m2e4l6e8m", "0m5e 5m0e",
    "0m3e 6m1a", "0m5m0e5e", "~3q1q1l0k ~0k1j1c3c", "0r0b", "~0q2q2l3k ~3k2j2c0c", "~0i1l5h6k",
};
// clang-format on
constexpr std::string_view kDegree = "~1q0q0n2n2q1q", kBox = "0e0q6q6e0e";

/// What is drawn for U+00C0 to U+00FF.
constexpr std::string_view kWithoutAccents =
    "AAAAAAACEEEEIIIIDNOOOOOxOUUUUYTsaaaaaaaceeeeiiiidnooooo/ouuuuyty";

constexpr double kCapital = 6;              // units
constexpr double kBlank = 2.4, kGap = 1.5;  // a blank, and the room behind a letter

/// Cuts the corners (G. Chaikin, "An algorithm for high-speed curve generation", 1974).
Stroke cut(const Stroke& stroke) {
    Stroke result{stroke.front()};
    for (std::size_t i = 0; i + 1 < stroke.size(); ++i) {
        const StrokePoint &a = stroke[i], &b = stroke[i + 1];
        if (i > 0) result.push_back({0.75 * a.x + 0.25 * b.x, 0.75 * a.y + 0.25 * b.y});
        if (i + 2 < stroke.size())
            result.push_back({0.25 * a.x + 0.75 * b.x, 0.25 * a.y + 0.75 * b.y});
    }
    result.push_back(stroke.back());
    return result;
}

/// In capital heights, y downwards.
Stroke strokeOf(std::string_view text) {
    constexpr double kHalfUnit = 0.5 / kCapital;
    const bool isBent = text.starts_with('~');
    if (isBent) text.remove_prefix(1);
    Stroke stroke;
    for (; text.size() >= 2; text.remove_prefix(2))
        stroke.push_back({(text[0] - '0') * kHalfUnit, ('e' - text[1]) * kHalfUnit});
    for (int round = 0; isBent && round < 3; ++round) stroke = cut(stroke);
    return stroke;
}

/// The code of the first character, which is taken off.
unsigned takeCode(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text[0]);
    unsigned code = first < 0x80 ? first : first < 0xE0 ? first & 0x1FU : first & 0x0FU;
    std::size_t length = 1;
    for (; length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80;
         ++length)
        code = code << 6 | (static_cast<unsigned char>(text[length]) & 0x3FU);
    text.remove_prefix(length);
    return code;
}

/// The ASCII character that comes closest, if there is one.
unsigned inAscii(unsigned code) {
    constexpr unsigned kNoBreakSpace = 0xA0, kFirstAccent = 0xC0, kLastAccent = 0xFF;
    constexpr unsigned kFirstDash = 0x2010, kFirstQuote = 0x2018, kFirstDouble = 0x201C,
                       kLastDouble = 0x201F;
    if (code >= kFirstAccent && code <= kLastAccent)
        return static_cast<unsigned char>(kWithoutAccents[code - kFirstAccent]);
    if (code == kNoBreakSpace) return ' ';
    if (code < kFirstDash || code > kLastDouble) return code;
    return code < kFirstQuote ? '-' : code < kFirstDouble ? '\'' : '"';
}

std::string_view glyphOf(unsigned code) {
    constexpr unsigned kDegreeSign = 0xB0;
    if (code == kDegreeSign) return kDegree;
    code = inAscii(code);
    return code >= ' ' && code <= '~' ? kGlyphs[code - std::size_t{' '}] : kBox;
}

}  // namespace

StrokeText::StrokeText(std::string_view text) {
    double x = 0;
    while (!text.empty()) {
        std::string_view glyph = glyphOf(takeCode(text));
        double right = glyph.empty() ? kBlank / kCapital - kGap / kCapital : 0;
        while (!glyph.empty()) {
            const std::size_t end = std::min(glyph.find(' '), glyph.size());
            Stroke stroke = strokeOf(glyph.substr(0, end));
            glyph.remove_prefix(std::min(end + 1, glyph.size()));
            for (StrokePoint& point : stroke) {
                right = std::max(right, point.x);
                point.x += x;
            }
            strokes.push_back(std::move(stroke));
        }
        x += right + kGap / kCapital;
        width = x - kGap / kCapital;
    }
}

}  // namespace rb::cli
