#include "tools/rba/CommandLine.h"

#include "tools/rba/Help.h"
#include "tools/rba/Output.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <string_view>

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

/// The command, or what there is of it, on the command line that was parsed.
const CLI::App& typedCommand(const CLI::App& program) {
    const CLI::App* app = &program;
    while (!app->get_subcommands().empty()) app = app->get_subcommands().front();
    return *app;
}

std::string seeHelpOf(const CLI::App& app) { return "; see '" + fullName(app) + " --help'"; }

void addCommonFlags(CLI::App& app, Context& context) {
    app.set_help_flag("-h,--help", "Print this help and exit")->group(kCommonOptions);
    app.add_flag("--json", context.json, "Print one JSON value in place of text")
        ->group(kCommonOptions);
    app.add_flag("--quiet", context.quiet, "No progress and no confirmations")
        ->group(kCommonOptions);
}

int tellParseError(const CLI::App& program, const CLI::ParseError& error, Context& context) {
    if (error.get_exit_code() != 0) {
        std::string message = error.what();
        std::erase(message, kValueMark);
        printError(message + seeHelpOf(typedCommand(program)));
        return kWrongUsage;
    }
    // --help and --version come as errors with exit code 0.
    if (dynamic_cast<const CLI::CallForVersion*>(&error))
        *context.out << error.what() << '\n';
    else
        *context.out << program.help();
    return kDone;
}

}  // namespace

std::unique_ptr<CLI::App> makeProgram(Context& context) {
    auto program = std::make_unique<CLI::App>(
        "Images, photometry, geometry and scenes of the RenderingBase library.", "rba");
    program->formatter(std::make_shared<HelpFormatter>());
    program->set_version_flag("--version", "rba " RB_VERSION, "Print the version and exit")
        ->group(kCommonOptions);
    addCommonFlags(*program, context);
    program->footer(
        "Exit status: 0 done, 1 the operation failed (one line on standard error says why), 2 "
        "wrong "
        "usage.\n"
        "Results go to standard output, everything else to standard error.\n"
        "Arguments that begin with a dash stand behind \"--\": rba image info -- -oak.png");
    return program;
}

CLI::App& addGroup(CLI::App& parent, Context& context, const std::string& name,
                   const std::string& description) {
    CLI::App& group = *parent.add_subcommand(name, description);
    addCommonFlags(group, context);
    group.footer("Help for one of them: " + fullName(group) + " COMMAND --help");
    return group;
}

CLI::App& addBareCommand(CLI::App& parent, Context& context, const CommandText& text) {
    CLI::App& command = *parent.add_subcommand(text.name, text.description);
    addCommonFlags(command, context);
    std::string footer = "Examples:";
    std::istringstream lines(text.examples);
    for (std::string line; std::getline(lines, line);) footer += "\n  " + line;
    command.footer(footer);
    return command;
}

std::string plainValue(const std::string& value) {
    return !value.empty() && value[0] == kValueMark ? value.substr(1) : value;
}

std::vector<std::string> protectValues(const CLI::App& program, int count,
                                       const char* const* arguments) {
    std::vector<std::string> result;
    const CLI::App* app = &program;
    bool onlyValues = false;
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        if (!onlyValues && argument == "--") {
            onlyValues = true;
        } else if (!onlyValues && isOption(argument)) {
            result.push_back(argument);
        } else if (app->get_subcommands({}).empty()) {
            result.push_back(kValueMark + argument);
        } else if (const CLI::App* command = onlyValues ? nullptr : findCommand(*app, argument)) {
            app = command;
            result.push_back(argument);
        } else {
            throw UsageError("expected a command of '" + fullName(*app) + "' (" +
                             namesOfCommands(*app) + "), found '" + argument + "'" +
                             seeHelpOf(*app));
        }
    }
    return result;
}

int parseCommandLine(CLI::App& program, Context& context, int count, const char* const* arguments) {
    try {
        std::vector<std::string> reversed = protectValues(program, count, arguments);
        std::ranges::reverse(reversed);  // the parser takes them from the end
        program.parse(std::move(reversed));
        if (!context.action)
            throw UsageError("expected a command" + seeHelpOf(typedCommand(program)));
        return kDone;
    } catch (const CLI::ParseError& error) {
        return tellParseError(program, error, context);
    } catch (const UsageError& error) {
        printError(error.what());
        return kWrongUsage;
    }
}

}  // namespace rb::cli
