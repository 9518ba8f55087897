#include "tools/rba/CommandLine.h"

#include "tools/rba/Help.h"
#include "tools/rba/Output.h"

#include <algorithm>
#include <sstream>

namespace rb::cli {
namespace {

/// The command, or what there is of it, on the command line that was parsed.
const CLI::App& typedCommand(const CLI::App& program) {
    const CLI::App* app = &program;
    while (!app->get_subcommands().empty()) app = app->get_subcommands().front();
    return *app;
}

void addCommonFlags(CLI::App& app, Context& context) {
    app.set_help_flag("-h,--help", "Print this help and exit")->group(kCommonOptions);
    app.add_flag("--json", context.json, "Print one JSON value in place of text")
        ->group(kCommonOptions);
    app.add_flag("--profile", context.profile,
                 "Tell how long the calls of the library took, on standard error")
        ->group(kCommonOptions);
    app.add_flag("--quiet", context.quiet, "No progress and no confirmations")
        ->group(kCommonOptions);
}

/// What is wrong with the values on the command line that was parsed.
std::string complaintAbout(const CLI::App& command, const CLI::ParseError& error) {
    for (const CLI::Option* option : command.get_options())
        if (option->get_required() && option->count() == 0)
            return "expected " + option->get_name() + ", found none";
    for (const CLI::Option* option : command.get_options()) {
        const int most = option->get_items_expected_max();
        if (most > 0 && option->count() > static_cast<std::size_t>(most))
            return option->get_name() + ": expected one value, found " +
                   std::to_string(option->count());
    }
    const std::vector<std::string> surplus = command.remaining();
    if (surplus.empty()) return error.what();
    return "expected no more arguments, found '" + plainValue(surplus.front()) + "'";
}

int tellParseError(const CLI::App& program, const CLI::ParseError& error, Context& context) {
    if (error.get_exit_code() != 0) {
        const CLI::App& command = typedCommand(program);
        printError(complaintAbout(command, error) + seeHelpOf(command));
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
        "Exit status: 0 done, 1 the operation failed (one line on standard error says why),\n"
        "2 wrong usage.\n"
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

int parseCommandLine(CLI::App& program, Context& context, int count, const char* const* arguments) {
    try {
        std::vector<std::string> reversed = protectValues(program, count, arguments);
        std::ranges::reverse(reversed);  // the parser takes them from the end
        program.parse(std::move(reversed));
        if (!context.action)
            throw UsageError("expected a command, found none" + seeHelpOf(typedCommand(program)));
        return kDone;
    } catch (const CLI::ParseError& error) {
        return tellParseError(program, error, context);
    } catch (const UsageError& error) {
        printError(error.what());
        return kWrongUsage;
    }
}

}  // namespace rb::cli
