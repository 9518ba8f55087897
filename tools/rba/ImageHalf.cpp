#include "RenderingBase/public/openexr_half.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/Profile.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <optional>
#include <string_view>

namespace rb::cli {
namespace {

struct HalfArguments {
    std::vector<std::string> values;
};

struct HalfRow {
    float value = 0;
    openexr_half half;
    float back = 0;
};

/// The bits of a text such as "0x7bff".
std::optional<std::uint16_t> readPattern(std::string_view text) {
    if (!text.starts_with("0x") && !text.starts_with("0X")) return {};
    text.remove_prefix(2);
    std::uint16_t bits = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, bits, 16);
    if (error != std::errc() || stop != end) return {};
    return bits;
}

openexr_half toHalf(float value) {
    return measured("openexr_half", "float_to_half", [&] { return float_to_half(value); });
}

float toFloat(openexr_half half) {
    return measured("openexr_half", "half_to_float", [&] { return half_to_float(half); });
}

HalfRow convert(const std::string& text) {
    HalfRow row;
    if (const auto bits = readPattern(text)) {
        row.half = openexr_half(*bits);
        row.value = toFloat(row.half);
        row.back = toFloat(toHalf(row.value));
    } else if (readNumber(text, row.value) == std::errc()) {
        row.half = toHalf(row.value);
        row.back = toFloat(row.half);
    } else {
        throw UsageError(
            "VALUE: expected a number in the range of float (such as 0.1, -inf or nan) or 16 bits "
            "such as 0x7bff, found '" +
            text + "'");
    }
    return row;
}

std::string bitsText(openexr_half half) {
    std::array<char, 8> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), half.bits(), 16).ptr;
    const std::string text(digits.data(), end);
    return "0x" + std::string(4 - text.size(), '0') + text;
}

const char* noteOn(const HalfRow& row) {
    if (std::isnan(row.value)) return "not a number";
    if (std::isinf(row.value)) return "infinite";
    if (std::isinf(row.back)) return "overflow: the largest half is 65504";
    if (row.value != 0 && row.back == 0) return "underflow: the smallest half is 2^-24";
    return row.value == row.back ? "exact" : "rounded";
}

Json toJson(const HalfRow& row) {
    return {{"float", jsonNumber(row.value)},
            {"half", row.half.bits()},
            {"back", jsonNumber(row.back)}};
}

void printText(std::ostream& out, const std::vector<HalfRow>& rows) {
    const auto line = [&out](const std::string& value, const std::string& bits,
                             const std::string& decimal, const std::string& back,
                             const char* note) {
        out << std::left << std::setw(15) << value << ' ' << std::setw(6) << bits << "  "
            << std::right << std::setw(5) << decimal << "  " << std::left << std::setw(15) << back
            << ' ' << note << '\n';
    };
    line("float", "half", "", "back", "note");
    for (const HalfRow& row : rows)
        line(numberText(row.value), bitsText(row.half), std::to_string(row.half.bits()),
             numberText(row.back), noteOn(row));
}

int runHalf(Context& context, const HalfArguments& arguments) {
    std::vector<HalfRow> rows;
    for (const std::string& text : arguments.values) rows.push_back(convert(text));
    if (context.json) {
        Json results = Json::array();
        for (const HalfRow& row : rows) results.push_back(toJson(row));
        printJson(*context.out, results);
    } else {
        printText(*context.out, rows);
    }
    return kDone;
}

}  // namespace

void addImageHalf(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<HalfArguments>(
        group, context, runHalf,
        {"half",
         "Convert numbers to 16-bit floating point (half) and back. Shows the bits as hexadecimal "
         "and decimal number, what comes back, and what was lost.",
         "rba image half 0.1 65504 65520 -0 nan -inf\nrba image half 0x7bff"});
    addArgument(command, "VALUE", arguments.values,
                "Numbers, or the 16 bits of a half such as 0x7bff");
}

}  // namespace rb::cli
