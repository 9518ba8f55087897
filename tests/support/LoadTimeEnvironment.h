#pragma once

#include <cstdlib>
#include <initializer_list>
#include <stdexcept>
#include <string_view>
#include <unistd.h>

namespace rb::test {

/// An environment variable and its value; null for one that must not be defined.
struct Variable {
    const char* name;
    const char* value;
};

/// Starts the program again with these variables, unless it has them already.
///
/// For variables that libraries read when they are loaded, before `main`. To be called first in
/// `main`: nothing that was done before survives.
inline void ensureLoadTimeEnvironment(char** argv, std::initializer_list<Variable> variables) {
    bool hasAll = true;
    for (const auto& [name, value] : variables) {
        const char* present = std::getenv(name);
        const bool same = value && present ? std::string_view(value) == present : value == present;
        if (same) continue;
        hasAll = false;
        value ? setenv(name, value, 1) : unsetenv(name);
    }
    if (hasAll) return;
    execv("/proc/self/exe", argv);
    throw std::runtime_error("cannot start the program again");
}

}  // namespace rb::test
