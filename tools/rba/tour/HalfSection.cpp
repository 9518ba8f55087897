#include "RenderingBase/host/imaging/HalfArrays.h"
#include "RenderingBase/public/openexr_half.h"
#include "tools/rba/tour/Plot.h"
#include "tools/rba/tour/Tour.h"

#include <algorithm>
#include <array>
#include <bit>
#include <bitset>
#include <chrono>
#include <cmath>
#include <limits>

namespace rb::cli::tour {
namespace {

constexpr unsigned kPatterns = 65536;
constexpr std::uint16_t kLargestHalf = 0x7bff;
// Exponents of 2 of the magnitudes in the plots, and of the first that overflows.
constexpr int kLeastExponent = -27, kMostExponent = 17, kBeyondExponent = 16;

float halved(float value) { return half_to_float(float_to_half(value)); }

/// The largest relative error of rounding between each power of two and the next.
Curve errorCurve() {
    constexpr int kProbes = 8192;
    Curve curve;
    for (int exponent = kLeastExponent; exponent < kBeyondExponent; ++exponent) {
        float most = 0;
        for (int probe = 0; probe < kProbes; ++probe) {
            const float value =
                std::ldexp(1 + static_cast<float>(probe) / static_cast<float>(kProbes), exponent);
            const float back = halved(value);
            if (std::isfinite(back)) most = std::max(most, std::abs(back - value) / value);
        }
        curve.push_back({exponent + 0.5, std::log2(static_cast<double>(most))});
    }
    return curve;
}

/// The distance from each half to the next larger one, where that changes.
Curve spacingCurve() {
    Curve curve;
    double last = 0;
    for (std::uint16_t bits = 1; bits < kLargestHalf; ++bits) {
        const float value = half_to_float(openexr_half(bits));
        const float next = half_to_float(openexr_half(static_cast<std::uint16_t>(bits + 1)));
        const double spacing = std::log2(static_cast<double>(next - value));
        const double position = std::log2(static_cast<double>(value));
        if (spacing != last && !curve.empty()) curve.push_back({position, last});
        if (spacing != last) curve.push_back({position, spacing});
        last = spacing;
    }
    curve.push_back({std::log2(65504.0), last});
    return curve;
}

void writePlots(Html& page) {
    const Axis magnitude{kLeastExponent, kMostExponent, 6, "magnitude of the number"};
    const std::array<Band, 2> bands{{{-25, -14, "subnormal"}, {-14, 16, "normal"}}};
    page << R"(<div class="plots">)"_html;
    writePlot(page, {"Largest relative error of rounding",
                     "The worst case in each power of two: 2⁻¹¹ from 2⁻¹⁴ on, less precise below.",
                     magnitude,
                     {-12, 0, 2, "relative error"},
                     bands,
                     errorCurve()});
    writePlot(page, {"Distance to the next half",
                     "Even among the subnormal numbers, then doubling with every power of two.",
                     magnitude,
                     {-26, 6, 4, "distance"},
                     bands,
                     spacingCurve()});
    page << "</div>\n"_html;
}

struct Remarkable {
    float value;
    const char* why;
};

void writeBits(Html& page, openexr_half half) {
    const std::string bits = std::bitset<16>(half.bits()).to_string();
    page << R"(<code class="bits"><i>)"_html << bits.substr(0, 1) << "</i><b>"_html
         << bits.substr(1, 5) << "</b><span>"_html << bits.substr(6) << "</span></code>"_html;
}

void writeTable(Html& page) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const std::array<Remarkable, 17> kValues{{
        {0.0F, "zero"},
        {-0.0F, "negative zero keeps its sign"},
        {1.0F, "one"},
        {0.1F, "not exact in binary, nor as a float"},
        {1.0F / 3.0F, "one third"},
        {1.00048828125F, "half way between two halves: to the even one"},
        {2049.0F, "whole numbers are exact up to 2048"},
        {65504.0F, "the largest half"},
        {65519.0F, "still nearer to it than to the next power of two"},
        {65520.0F, "overflow"},
        {6.103515625e-5F, "2⁻¹⁴, the smallest normal half"},
        {6.0975551605224609e-5F, "the largest subnormal half"},
        {5.9604644775390625e-8F, "2⁻²⁴, the smallest half"},
        {2.98023223876953125e-8F, "2⁻²⁵ underflows to the even neighbour, zero"},
        {kInfinity, "infinity"},
        {-kInfinity, "negative infinity"},
        {std::numeric_limits<float>::quiet_NaN(), "not a number"},
    }};
    page << R"(<h3 class="sub">Remarkable values</h3>
<div class="scroll"><table><thead><tr><th scope="col">Float</th><th scope="col">Sign, exponent, mantissa</th>
<th scope="col" class="number">Bits</th><th scope="col">Back</th><th scope="col">What it shows</th></tr></thead><tbody>
)"_html;
    for (const auto& [value, why] : kValues) {
        const openexr_half half = float_to_half(value);
        page << "<tr><th scope=\"row\"><code>"_html << numberText(value) << "</code></th><td>"_html;
        writeBits(page, half);
        page << "</td><td class=\"number\">"_html << half.bits() << "</td><td><code>"_html
             << numberText(half_to_float(half)) << "</code></td><td>"_html << why
             << "</td></tr>\n"_html;
    }
    page << "</tbody></table></div>\n"_html;
}

unsigned countReturning() {
    unsigned count = 0;
    for (unsigned bits = 0; bits < kPatterns; ++bits) {
        const openexr_half half(static_cast<std::uint16_t>(bits));
        const float value = half_to_float(half);
        if (!std::isnan(value) && float_to_half(value).bits() == bits) ++count;
    }
    return count;
}

/// Millions of numbers a second, of the fastest of a few runs.
double arraySpeed() {
    using Clock = std::chrono::steady_clock;
    constexpr std::size_t kCount = 1 << 22;  // more than fits into a processor
    std::vector<float> floats(kCount);
    std::vector<std::uint16_t> halves(kCount);
    for (std::size_t i = 0; i < kCount; ++i) floats[i] = static_cast<float>(i) * 0.01F;
    double fastest = 0;
    for (int run = 0; run < 5; ++run) {
        const Clock::time_point start = Clock::now();
        rb::imaging::halvesFromFloats(floats, halves);
        const std::chrono::duration<double> taken = Clock::now() - start;
        fastest = std::max(fastest, 1e-6 * kCount / taken.count());
    }
    return fastest;
}

void writeFigures(Html& page) {
    constexpr unsigned kNans = 2 * 1023;
    const auto figure = [&page](const std::string& number, std::string_view what) {
        page << "<div><b>"_html << number << "</b> "_html << what << "</div>"_html;
    };
    page << R"(<div class="figures">)"_html;
    figure(std::to_string(countReturning()),
           "of " + std::to_string(kPatterns - kNans) + " numbers come back bit for bit");
    figure(numberText(half_to_float(openexr_half(kLargestHalf))), "is the largest half");
    figure(numberText(arraySpeed(), 0), "million floats to halves a second, as an array");
    page << "</div>\n"_html;
}

}  // namespace

void writeHalfSection(const TourInput&, Html& page) {
    page << R"(<p class="lead">Pixels with a high dynamic range are often stored as 16-bit floating
point. <code>float_to_half</code> rounds to the nearest half, ties to even;
<code>half_to_float</code> is exact. Both plots are measured with them.</p>
)"_html;
    writeFigures(page);
    writePlots(page);
    writeTable(page);
}

}  // namespace rb::cli::tour
