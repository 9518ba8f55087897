#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace rb::test {

/// Sets an environment variable (null removes it) and puts the old value back when it dies.
class EnvironmentVariable {
public:
    EnvironmentVariable(std::string name, const char* value) : m_name(std::move(name)) {
        if (const char* old = std::getenv(m_name.c_str())) m_old = old;
        set(value);
    }
    ~EnvironmentVariable() { set(m_old ? m_old->c_str() : nullptr); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    void set(const char* value) {
        if (value) {
            setenv(m_name.c_str(), value, 1);
        } else {
            unsetenv(m_name.c_str());
        }
    }

    std::string m_name;
    std::optional<std::string> m_old;
};

}  // namespace rb::test
