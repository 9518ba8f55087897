#pragma once

/// @file  A contact sheet of a texture: every face and every level, labelled.

#include "tools/rba/Textures.h"

namespace rb::cli {

inline constexpr int kLongestSheetSide = 512;  ///< Pixels; larger levels are made smaller.

/// Draws a row for each face, named when there are six, and a column for each level, with its
/// number and size. A level is shown texel by texel, or made smaller when a side is longer than
/// kLongestSheetSide, which its label then says. Where a texture is transparent a checkerboard
/// shows through. Half and float texels are cut to 0..1, which the title says.
/// @return  An RGB image.
/// Throws Failure when there is no memory.
KVRVar<KVRPixelImage> makeSheet(const Texture& texture);

}  // namespace rb::cli
