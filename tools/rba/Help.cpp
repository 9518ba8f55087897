#include "tools/rba/Help.h"

#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace rb::cli {
namespace {

constexpr std::size_t kLineWidth = 88;
constexpr std::size_t kLeftColumn = 18;

using Rows = std::vector<std::pair<std::string, std::string>>;

/// @p text in lines of at most kLineWidth characters, all but the first one indented.
std::string wrapped(const std::string& text, std::size_t indent) {
    std::istringstream words(text);
    std::string result;
    std::size_t column = indent;
    for (std::string word; words >> word;) {
        if (column + 1 + word.size() > kLineWidth) {
            result += "\n" + std::string(indent, ' ');
            column = indent;
        } else if (!result.empty()) {
            result += ' ';
            ++column;
        }
        result += word;
        column += word.size();
    }
    return result;
}

std::string table(const std::string& title, const Rows& rows) {
    if (rows.empty()) return "";
    std::string text = "\n" + title + ":\n";
    for (const auto& [left, right] : rows) {
        text += "  " + left;
        text += left.size() < kLeftColumn ? std::string(kLeftColumn - left.size(), ' ')
                                          : "\n" + std::string(kLeftColumn + 2, ' ');
        text += wrapped(right, kLeftColumn + 2) + "\n";
    }
    return text;
}

bool takesSeveral(const CLI::Option& option) { return option.get_items_expected_max() > 1; }

std::string usageOf(const CLI::App& app) {
    std::string usage = "Usage: " + fullName(app);
    if (!app.get_subcommands({}).empty())
        return usage + (app.get_parent() ? " COMMAND" : " GROUP COMMAND") +
               " [options] [arguments]\n";
    for (const CLI::Option* option : app.get_options())
        if (!option->get_positional() && option->get_required())
            usage += " " + option->get_name() + " " + option->get_type_name();
    usage += " [options]";
    for (const CLI::Option* option : app.get_options())
        if (option->get_positional())
            usage += " " + option->get_name(true) + (takesSeveral(*option) ? "..." : "");
    return usage + "\n";
}

std::string labelOf(const CLI::Option& option) {
    if (option.get_positional()) return option.get_name(true) + (takesSeveral(option) ? "..." : "");
    std::string label = option.get_name(false, true);
    if (option.get_type_size() != 0) label += " " + option.get_type_name();
    return label;
}

/// The rows of all options that @p wanted says yes to.
template <class Wanted>
Rows rowsOf(const CLI::App& app, Wanted wanted) {
    Rows rows;
    for (const CLI::Option* option : app.get_options())
        if (wanted(*option)) rows.emplace_back(labelOf(*option), option->get_description());
    return rows;
}

Rows commandsOf(const CLI::App& app) {
    Rows rows;
    for (const CLI::App* command : app.get_subcommands({})) {
        const std::string description = command->get_description();
        rows.emplace_back(command->get_name(), description.substr(0, description.find(". ")));
        if (rows.back().second.ends_with('.')) rows.back().second.pop_back();
    }
    return rows;
}

}  // namespace

std::string fullName(const CLI::App& app) {
    const CLI::App* parent = app.get_parent();
    return parent ? fullName(*parent) + " " + app.get_name() : app.get_name();
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string, CLI::AppFormatMode) const {
    const auto isCommon = [](const CLI::Option& option) {
        return option.get_group() == kCommonOptions;
    };
    return usageOf(*app) + "\n" + wrapped(app->get_description(), 0) + "\n" +
           table("Commands", commandsOf(*app)) +
           table("Arguments",
                 rowsOf(*app, [](const CLI::Option& option) { return option.get_positional(); })) +
           table("Options", rowsOf(*app,
                                   [&](const CLI::Option& option) {
                                       return !option.get_positional() && !isCommon(option);
                                   })) +
           table(kCommonOptions, rowsOf(*app, isCommon)) + "\n" + app->get_footer() + "\n";
}

}  // namespace rb::cli
