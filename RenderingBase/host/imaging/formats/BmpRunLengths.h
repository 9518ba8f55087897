#pragma once

/// @file  Run-length-coded pixels of bitmaps. The commands are in BmpRunLengths.cpp.

#include "RenderingBase/host/imaging/formats/BmpHeader.h"
#include "RenderingBase/host/imaging/formats/BufferedSource.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace rb::imaging {

/// Hands out the rows of a run-length-coded bitmap in the order of the file, as palette indices.
class BmpRunLengths {
public:
    /// @param header  Of 4 or 8 bits and sides of at least 1; must outlive this.
    BmpRunLengths(ByteSource& source, const BmpHeader& header);
    /// Fills @p row, as long as the bitmap is wide, with the next row.
    ReadResult nextRow(std::span<unsigned char> row);

private:
    ReadResult endOfFile() const;
    ReadResult readCommands(std::span<unsigned char> row);
    ReadResult readEscape(int command, std::span<unsigned char> row, bool& rowEnds);
    ReadResult readPixels(std::size_t count, std::span<unsigned char> row);
    ReadResult readDelta(bool& rowEnds);
    void repeat(std::size_t count, unsigned value, std::span<unsigned char> row);

    BufferedSource m_input;
    const BmpHeader& m_header;
    std::int64_t m_row = -1;       // being filled
    std::int64_t m_emptyRows = 0;  // to come before the next one with pixels
    std::size_t m_column = 0;      // of the next pixel; may lie beyond the row
    bool m_ended = false;
};

}  // namespace rb::imaging
