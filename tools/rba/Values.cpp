#include "tools/rba/Values.h"

#include "tools/rba/Context.h"
#include "tools/rba/Help.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>

namespace rb::cli {
namespace {

/// Marks a value. CLI11 takes "-inf" for options, "[a]" for a list, the name of any command for
/// that command wherever it stands, and forgets "--" behind the first value.
constexpr char kValueMark = '\x1f';

bool isNegativeNumber(std::string_view text) {
    if (text.size() < 2 || text[0] != '-') return false;
    const auto second = static_cast<unsigned char>(text[1]);
    if (std::isdigit(second) || second == '.') return true;
    std::string word(text.substr(1));
    std::ranges::transform(word, word.begin(), [](unsigned char c) { return std::tolower(c); });
    return word == "inf" || word == "infinity" || word == "nan";
}

bool isOption(std::string_view text) {
    return text.size() > 1 && text[0] == '-' && !isNegativeNumber(text);
}

const CLI::App* findCommand(const CLI::App& app, const std::string& name) {
    for (const CLI::App* command : app.get_subcommands({}))
        if (command->get_name() == name) return command;
    return nullptr;
}

std::string namesOfCommands(const CLI::App& app) {
    std::string names;
    for (const CLI::App* command : app.get_subcommands({})) {
        if (!names.empty()) names += ", ";
        names += command->get_name();
    }
    return names;
}

[[noreturn]] void refuse(const CLI::App& app, const std::string& expected,
                         const std::string& found) {
    throw UsageError(expected + ", found " + found + seeHelpOf(app));
}

/// Appends an option, and its value when that stands in the same word.
/// @return  The option when its value is still to come, else nothing.
std::string appendOption(const CLI::App& app, const std::string& word,
                         std::vector<std::string>& result) {
    const auto sign = word.find('=');
    const bool hasValue = sign != std::string::npos;
    const std::string name = word.substr(0, sign);
    const CLI::Option* const option = app.get_option_no_throw(name);
    if (!option) refuse(app, "expected an option of '" + fullName(app) + "'", "'" + name + "'");
    const bool takesValue = option->get_items_expected_max() > 0;
    if (hasValue && !takesValue)
        refuse(app, name + ": expected no value", "'" + word.substr(sign + 1) + "'");
    result.push_back(name);
    if (hasValue) result.push_back(kValueMark + word.substr(sign + 1));
    return takesValue && !hasValue ? name : std::string();
}

template <class T>
void readNumberValue(const CLI::App& command, const std::string& name, const std::string& text,
                     const std::string& kind, const std::string& range, T& number) {
    const std::errc error = readNumber(text, number);
    if (error == std::errc()) return;
    const bool outOfRange = error == std::errc::result_out_of_range;
    refuse(command, name + ": expected " + kind + (outOfRange ? range : ""), "'" + text + "'");
}

}  // namespace

std::string seeHelpOf(const CLI::App& app) { return "; see '" + fullName(app) + " --help'"; }

std::string plainValue(const std::string& value) {
    return !value.empty() && value[0] == kValueMark ? value.substr(1) : value;
}

std::vector<std::string> protectValues(const CLI::App& program, int count,
                                       const char* const* arguments) {
    std::vector<std::string> result;
    const CLI::App* app = &program;
    std::string open;  // the option whose value comes next
    bool onlyValues = false;
    for (int i = 1; i < count; ++i) {
        const std::string word = arguments[i];
        if (!onlyValues && word == "--") {
            onlyValues = true;
        } else if (!onlyValues && isOption(word)) {
            if (!open.empty()) refuse(*app, open + ": expected a value", "'" + word + "'");
            open = appendOption(*app, word, result);
        } else if (!open.empty() || app->get_subcommands({}).empty()) {
            result.push_back(kValueMark + word);
            open.clear();
        } else if (const CLI::App* command = onlyValues ? nullptr : findCommand(*app, word)) {
            app = command;
            result.push_back(word);
        } else {
            refuse(*app,
                   "expected a command of '" + fullName(*app) + "' (" + namesOfCommands(*app) + ")",
                   "'" + word + "'");
        }
    }
    if (!open.empty()) refuse(*app, open + ": expected a value", "none");
    return result;
}

template <class T>
std::errc readNumber(std::string_view text, T& number) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return stop == end ? error : std::errc::invalid_argument;
}
template std::errc readNumber(std::string_view text, int& number);
template std::errc readNumber(std::string_view text, float& number);
template std::errc readNumber(std::string_view text, double& number);

void readValue(const CLI::App& command, const std::string& name, const std::string& text,
               int& number) {
    using Limits = std::numeric_limits<int>;
    readNumberValue(
        command, name, text, "a whole number",
        " from " + std::to_string(Limits::min()) + " to " + std::to_string(Limits::max()), number);
}

void readValue(const CLI::App& command, const std::string& name, const std::string& text,
               float& number) {
    readNumberValue(command, name, text, "a number", " in the range of float", number);
}

void readValue(const CLI::App& command, const std::string& name, const std::string& text,
               double& number) {
    readNumberValue(command, name, text, "a number", " in the range of double", number);
}

template <class T>
std::array<T, 3> readThreeNumbers(const std::string& name, const std::string& text,
                                  const std::string& example) {
    std::array<T, 3> numbers{};
    std::string_view rest = text;
    bool isRight = true;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::size_t end = std::min(rest.find(i < 2 ? ',' : '\0'), rest.size());
        isRight = isRight && readNumber(rest.substr(0, end), numbers[i]) == std::errc() &&
                  std::isfinite(numbers[i]);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    if (isRight) return numbers;
    throw UsageError(name + ": expected three numbers as in " + example +
                     (sizeof(T) == sizeof(float) ? ", in the range of float" : "") + ", found '" +
                     text + "'");
}
template std::array<float, 3> readThreeNumbers(const std::string&, const std::string&,
                                               const std::string&);
template std::array<double, 3> readThreeNumbers(const std::string&, const std::string&,
                                                const std::string&);

}  // namespace rb::cli
