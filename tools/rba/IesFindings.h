#pragma once

/// @file  What is unusual in a photometric file, and what becomes of it in tables.

#include "tools/rba/Photometry.h"

#include <string>
#include <vector>

namespace rb::cli {

struct Finding {
    std::string code;     ///< For scripts; stays the same over versions.
    std::string message;  ///< For people: one sentence without its full stop.
};

/// Everything that is unusual. Whatever is said about intensities was computed from those that
/// tables get. Nothing for a file of a known dialect whose values all appear where they belong.
std::vector<Finding> findingsOf(const Photometry& photometry);

/// Those about its text: dialect, keywords, tilt, header.
void findInText(const Photometry& photometry, std::vector<Finding>& findings);
/// Those about its angles. There are intensities.
void findInAngles(const Photometry& photometry, std::vector<Finding>& findings);
/// Those about its intensities. There are intensities.
void findInIntensities(const Photometry& photometry, std::vector<Finding>& findings);

}  // namespace rb::cli
