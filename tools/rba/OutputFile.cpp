#include "tools/rba/OutputFile.h"

#include "tools/rba/Context.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace rb::cli {

OutputFile::OutputFile(const std::string& path) : m_path(path), m_file(path) {
    if (!m_file.stream()) refuse(m_file.reason());
}

void OutputFile::write(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_file.stream()) != bytes.size())
        refuse(std::generic_category().message(errno));
}

void OutputFile::commit() {
    if (!m_file.commit()) refuse(m_file.reason());
}

void OutputFile::refuse(const std::string& found) const {
    throw Failure(m_path, "expected a file to write to, found " + found);
}

}  // namespace rb::cli
