#pragma once

/// @file  Texts that people wrote into files, as they are shown.

#include <cstddef>
#include <string>
#include <string_view>

namespace rb::cli {

/// Without white space at both ends.
std::string trimmed(std::string_view text);

/// The text with an ellipsis behind its first characters when it has more than @p most. UTF-8 stays
/// whole.
std::string shortened(std::string_view text, std::size_t most);

/// The text in UTF-8. What is not UTF-8 is taken for Windows-1252, which has the letters of Latin-1
/// and is what most programs write that know of no other; its five unused codes become U+FFFD.
std::string inUtf8(std::string_view text);

}  // namespace rb::cli
