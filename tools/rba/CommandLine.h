#pragma once

/// @file  How commands are declared. One file declares one command or a few that belong together:
///
///     struct Arguments { std::vector<std::string> paths; };
///     int run(Context& context, const Arguments& arguments);
///
///     void addImageInfo(CLI::App& group, Context& context) {
///         auto [command, arguments] = addCommand<Arguments>(group, context, run,
///             {"info", "Shows what image files say about themselves.", "rba image info oak.jpg"});
///         addArgument(command, "PATH", arguments.paths, "Image files");
///     }

#include "tools/rba/Context.h"
#include "tools/rba/Precompiled.h"

#include <memory>
#include <string>
#include <vector>

namespace rb::cli {

/// What the help of a command says.
struct CommandText {
    std::string name;
    std::string description;  ///< Sentences; the first stands in the list of commands.
    std::string examples;     ///< Lines, without indentation.
};

/// The program without its commands.
std::unique_ptr<CLI::App> makeProgram(Context& context);

/// A command that only holds others.
CLI::App& addGroup(CLI::App& parent, Context& context, const std::string& name,
                   const std::string& description);

/// Everything of a command but its arguments and its work.
CLI::App& addBareCommand(CLI::App& parent, Context& context, const CommandText& text);

/// Takes off the mark that `protectValues` put on a value.
std::string plainValue(const std::string& value);

/// The arguments of the program in the form in which the parser takes them as they are meant: what
/// follows "--" and whatever is not an option or the name of a command is marked as a value.
/// Throws UsageError for the name of a command that there is not.
std::vector<std::string> protectValues(const CLI::App& program, int count,
                                       const char* const* arguments);

/// Parses the command line. The action of the command is in the context afterwards; it is empty
/// after --help and --version, which are answered here.
/// @return  An exit status; of no meaning when there is an action. Errors have been told.
int parseCommandLine(CLI::App& program, Context& context, int count, const char* const* arguments);

template <class Arguments>
struct Command {
    CLI::App& app;
    Arguments& arguments;
};

/// Declares a command whose work is @p run, which gets the arguments and returns an exit status.
template <class Arguments>
Command<Arguments> addCommand(CLI::App& parent, Context& context,
                              int (*run)(Context&, const Arguments&), const CommandText& text) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App& command = addBareCommand(parent, context, text);
    command.callback([&context, run, arguments] {
        context.action = [&context, run, arguments] { return run(context, *arguments); };
    });
    return {command, *arguments};
}

/// A required argument. A vector takes one or more values.
template <class T>
CLI::Option* addArgument(CLI::App& command, const std::string& name, T& target,
                         const std::string& help) {
    return command.add_option(name, target, help)->required()->transform(plainValue);
}

/// An option with a value. @p valueName stands for it in the help.
template <class T>
CLI::Option* addOption(CLI::App& command, const std::string& name, T& target,
                       const std::string& valueName, const std::string& help) {
    return command.add_option(name, target, help)->type_name(valueName)->transform(plainValue);
}

}  // namespace rb::cli
