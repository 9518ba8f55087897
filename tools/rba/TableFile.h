#pragma once

/// @file  Tables of intensities as files of numbers.

#include <span>
#include <string>

namespace rb::cli {

struct IntensityTable {
    std::span<const float> values;  ///< theta x phi x channels, row by row.
    int theta = 0, phi = 0, channels = 0;
};

/// Writes a file, whole or not at all. Throws Failure.
using TableWriter = void (*)(const std::string& typedPath, const IntensityTable& table);

/// bin: 32-bit floats, little endian. csv: a line a row, the channels of a cell side by side. json:
/// theta, phi, channels and values in one list, null for what is not finite.
/// @param extension  In lower case.
/// @return  Null for another extension.
TableWriter tableWriterOf(const std::string& extension);

}  // namespace rb::cli
