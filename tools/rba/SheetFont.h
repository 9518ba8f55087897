#pragma once

/// @file  Small letters for sheets of pictures: those that their labels need.

#include <string_view>

namespace rb::cli {

inline constexpr int kGlyphWidth = 5, kGlyphHeight = 8;  ///< Dots; the last row is for descenders.

/// Whether the letter has a dot at this place. A letter that there is not is a box.
bool hasGlyphDot(char letter, int column, int row);

}  // namespace rb::cli
