#pragma once

/// @file  The edge between paths as people type them and paths as the framework has them.

#include "RenderingBase/host/base/KVRUnicodeString.h"

#include <string>
#include <string_view>

namespace rb::cli {

/// The framework's form of a typed path: backslashes between directories.
/// Throws Failure when @p typed is not UTF-8: no file could be found by what would be left of it.
KVRUnicodeString frameworkPath(const std::string& typed);

/// The form in which people read and type a path of the framework.
std::string typedPath(const KVRUnicodeString& path);

/// The extension of a typed path in lower case, as `KVRRbaImageServices::ReadExtension` has it.
std::string lowerExtension(const std::string& typed);

}  // namespace rb::cli
