#pragma once

/// @file  The two sections of a PSD file that tell things about its merged picture. Both are read
/// as far as they make sense: what is damaged there counts as missing, for the picture stands
/// behind them all the same.

#include "RenderingBase/host/imaging/formats/PsdHeader.h"
#include "RenderingBase/host/imaging/formats/PsdInput.h"

#include <cstdint>

namespace rb::imaging {

/// Takes resolution, profile and the like from the resources between here and @p end.
void readPsdResources(PsdInput& input, std::uint64_t end, PsdHeader& header);

/// Finds out from the section of layers, between here and @p end, whether there are any and
/// whether the merged picture has transparency.
void readPsdLayers(PsdInput& input, std::uint64_t end, PsdHeader& header);

}  // namespace rb::imaging
