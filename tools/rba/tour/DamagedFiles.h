#pragma once

#include "tools/rba/tour/Tour.h"

#include <filesystem>
#include <span>

namespace rb::cli::tour {

/// Damages copies of some of the samples in several ways and shows what reading them gives.
void writeDamagedFiles(const TourInput& input, std::span<const std::filesystem::path> samples,
                       Html& page);

}  // namespace rb::cli::tour
