#include "tools/rba/tour/ChildProcess.h"

#include "tools/rba/Context.h"

#include <array>
#include <fcntl.h>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace rb::cli::tour {
namespace {

std::vector<std::string> changedEnvironment(const std::vector<std::string>& changes) {
    std::vector<std::string> result = changes;
    const auto isChanged = [&changes](std::string_view variable) {
        for (const std::string& change : changes)
            if (variable.starts_with(change.substr(0, change.find('=') + 1))) return true;
        return false;
    };
    for (char** variable = environ; *variable; ++variable)
        if (!isChanged(*variable)) result.emplace_back(*variable);
    return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::string readToEnd(int descriptor) {
    std::string text;
    std::array<char, 4096> block;
    for (ssize_t count; (count = read(descriptor, block.data(), block.size())) > 0;)
        text.append(block.data(), static_cast<std::size_t>(count));
    return text;
}

}  // namespace

std::string outputOf(const std::filesystem::path& program, std::vector<std::string> arguments,
                     const std::vector<std::string>& environment) {
    arguments.insert(arguments.begin(), program.string());
    std::vector<std::string> variables = changedEnvironment(environment);
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw Failure("expected a pipe to another program, found none left");

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int error = posix_spawn(&child, program.c_str(), &actions, nullptr,
                                  pointersTo(arguments).data(), pointersTo(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    std::string text = error == 0 ? readToEnd(ends[0]) : std::string();
    close(ends[0]);
    if (error != 0) throw Failure(program.string(), "expected a program, found none");
    waitpid(child, nullptr, 0);
    return text;
}

Json answerOf(const std::filesystem::path& program, std::vector<std::string> arguments,
              const std::vector<std::string>& environment) {
    const std::string command = arguments.front();
    arguments.insert(arguments.begin(), "--json");
    Json answer = Json::parse(outputOf(program, std::move(arguments), environment), nullptr, false);
    if (!answer.is_structured())
        throw Failure("rba " + command, "expected its answer as JSON, found something else");
    return answer;
}

}  // namespace rb::cli::tour
