#pragma once

/// @file  Undoes the row filters of PNG.

#include <cstddef>

namespace rb::imaging {

/// Reconstructs one row (PNG, clause 9.2).
/// @param filter         The row's filter type byte.
/// @param bytesPerPixel  1, 2, 3, 4, 6 or 8, as PNG has them; bytes is a multiple of it.
/// @param above          The reconstructed row above; zeros for the first row.
/// @param out            The reconstructed row, apart from the other two.
/// @return  False for a filter type that does not exist, or that pixels of another size would need;
///          out is untouched.
bool unfilterPngRow(int filter, int bytesPerPixel, const unsigned char* in,
                    const unsigned char* above, unsigned char* out, std::size_t bytes);

}  // namespace rb::imaging
