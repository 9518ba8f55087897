#pragma once

/// @file  Files that commands write themselves.

#include "RenderingBase/host/files/AtomicFile.h"

#include <string>
#include <string_view>

namespace rb::cli {

/// A file that appears under its name when it is complete, or not at all.
class OutputFile {
public:
    /// Throws Failure when there is no place for it.
    explicit OutputFile(const std::string& path);

    /// Throws Failure when the system takes no more.
    void write(std::string_view bytes);
    /// Puts it in its place. Throws Failure when it is not complete. To be called once.
    void commit();

private:
    [[noreturn]] void refuse(const std::string& found) const;

    std::string m_path;
    rb::files::AtomicFile m_file;
};

}  // namespace rb::cli
