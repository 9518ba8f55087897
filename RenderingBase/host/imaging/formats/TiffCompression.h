#pragma once

/// @file  The compression schemes of TIFF files that are read.

#include <cstdint>

namespace rb::imaging {

struct TiffCompression {
    std::uint16_t code;
    const char* name;
    /// The most bytes that one stored byte can stand for; 0 for the fax codes, where a row takes a
    /// bit or more however long it is.
    std::uint64_t bestRatio;

    /// The fewest bytes in which @p rows rows of together @p bytes bytes can be stored.
    std::uint64_t leastBytes(std::uint64_t bytes, std::uint64_t rows) const {
        return bestRatio ? bytes / bestRatio : rows / 8;
    }
};

/// Null for a scheme that is not read.
const TiffCompression* findTiffCompression(std::uint16_t code);

}  // namespace rb::imaging
