#pragma once

#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace rb::test {

/// A program that runs beside the test.
class ChildProcess {
public:
    /// @param environment  variables to set, name and value, on top of this process's.
    explicit ChildProcess(
        std::vector<std::string> command,
        const std::vector<std::pair<std::string, std::string>>& environment = {}) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
        m_process = fork();
        if (m_process < 0) throw std::runtime_error("cannot start " + command.front());
        if (m_process == 0) {
            dup2(ends[1], STDOUT_FILENO);
            dup2(ends[1], STDERR_FILENO);
            for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
            std::vector<char*> arguments;
            for (auto& argument : command) arguments.push_back(argument.data());
            arguments.push_back(nullptr);
            execv(arguments[0], arguments.data());
            _exit(127);
        }
        close(ends[1]);
        m_output = ends[0];
    }
    ~ChildProcess() {
        if (m_output >= 0) wait();
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Waits for the end. Returns the exit status, or minus the signal that ended it.
    int wait() {
        char block[4096];
        for (ssize_t got; (got = read(m_output, block, sizeof block)) > 0;) {
            m_text.append(block, static_cast<std::size_t>(got));
        }
        close(std::exchange(m_output, -1));
        int status = 0;
        waitpid(m_process, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    /// What it wrote to standard output and standard error, after wait().
    const std::string& output() const { return m_text; }

private:
    pid_t m_process = -1;
    int m_output = -1;
    std::string m_text;
};

/// Runs a check in a process without the rights of an administrator, and returns its result (0 to
/// 255).
template <class Check>
int asOrdinaryUser(Check&& check) {
    constexpr unsigned kNobody = 65534;
    const pid_t process = fork();
    if (process < 0) throw std::runtime_error("cannot fork");
    if (process == 0) {
        if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) _exit(254);
        _exit(static_cast<int>(check()));
    }
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 255;
}

}  // namespace rb::test
