#pragma once

/// @file  The narrow string of the framework: bytes without a declared encoding. For text use
/// KVRUnicodeString.

#include <string>
#include <string_view>
#include <utility>

/// A `std::string` with the framework's accessor.
class KVRString : public std::string {
public:
    KVRString() = default;
    KVRString(const char* bytes) : std::string(bytes ? bytes : "") {}  ///< Null makes it empty.
    KVRString(std::string_view bytes) : std::string(bytes) {}
    KVRString(std::string bytes) : std::string(std::move(bytes)) {}

    /// The bytes with a zero at the end; valid until the string changes or dies.
    const char* CastToCharPtr() const { return c_str(); }
};
