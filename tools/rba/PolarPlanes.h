#pragma once

/// @file  The planes of polar diagrams, out of the intensities of a file.

#include "tools/rba/PolarDiagram.h"

namespace rb::cli {

/// One plane when the light is the same all around, otherwise two. There are intensities, and the
/// type is known.
std::vector<PolarCurve> planesOf(const KVRRbaIESLoader::IESPhotometry& record);

}  // namespace rb::cli
