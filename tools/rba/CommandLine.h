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
#include "tools/rba/Values.h"

#include <concepts>
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

template <class T>
concept Number = std::same_as<T, int> || std::same_as<T, float> || std::same_as<T, double>;

/// An argument or an option whose value is a text, or a vector of them.
template <class T>
CLI::Option* addValue(CLI::App& command, const std::string& name, T& target,
                      const std::string& help) {
    return command.add_option(name, target, help)->transform(plainValue);
}

/// The parser's own numbers are octal behind a 0, and nothing at all is 0.
template <Number T>
CLI::Option* addValue(CLI::App& command, const std::string& name, T& target,
                      const std::string& help) {
    const CLI::callback_t read = [&command, name, &target](const CLI::results_t& texts) {
        readValue(command, name, plainValue(texts.front()), target);
        return true;
    };
    return command.add_option(name, read, help);
}

/// A required argument. A vector takes one or more values.
template <class T>
CLI::Option* addArgument(CLI::App& command, const std::string& name, T& target,
                         const std::string& help) {
    return addValue(command, name, target, help)->required();
}

/// An option with a value. @p valueName stands for it in the help.
template <class T>
CLI::Option* addOption(CLI::App& command, const std::string& name, T& target,
                       const std::string& valueName, const std::string& help) {
    return addValue(command, name, target, help)->type_name(valueName);
}

}  // namespace rb::cli
