#pragma once

/// @file  Opening files to be read. For sources of the host.

#include <cstdint>
#include <string>

namespace rb::files {

/// Opens a regular file for reading; never waits, as a named pipe would have it.
/// @param nativePath  A path of the system.
/// @param size        Bytes; set on success.
/// @param reason      Set on failure: the system's own words, or what is there instead, "a folder".
/// @return  A descriptor, to be closed by the caller; -1 on failure.
int openRegularFile(const std::string& nativePath, std::uint64_t& size, std::string& reason);

}  // namespace rb::files
