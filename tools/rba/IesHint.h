#pragma once

#include <string>
#include <string_view>

namespace rb::cli {

/// What may have made it impossible to read a photometric file, as in " (the text is UTF-16)":
/// errors are often told of a place behind the cause. Empty when nothing is known.
std::string hintOn(std::string_view text);

}  // namespace rb::cli
