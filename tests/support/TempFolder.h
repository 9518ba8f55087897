#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace rb::test {

/// A new empty folder, removed with its content when the object dies.
class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "rb-test-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("cannot create " + pattern);
        m_path = pattern;
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

    /// The path of @p name in the folder, in the form of the system.
    std::string file(std::string_view name) const { return (m_path / name).string(); }

    /// Writes @p content to the file @p name (missing folders are made) and returns its path.
    std::string write(std::string_view name, std::string_view content = {}) const {
        const std::filesystem::path path = m_path / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream stream(path, std::ios::binary);
        stream.write(content.data(), static_cast<std::streamsize>(content.size()));
        if (!stream) throw std::runtime_error("cannot write " + path.string());
        return path.string();
    }

private:
    std::filesystem::path m_path;
};

}  // namespace rb::test
