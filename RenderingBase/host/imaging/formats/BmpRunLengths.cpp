// Run lengths of bitmaps, in pairs of bytes:
//
//   05 2A              pixel 2A five times; with 4 bits a pixel 2, A, 2, A, 2
//   00 03 11 22 33 00  three pixels as they are, from 3 up to 255, filled up to two bytes
//   00 00              end of the row
//   00 02 04 01        go on 4 pixels to the right and 1 row further
//   00 01              end of the bitmap
//
// Source: Microsoft, "Bitmap Compression" (Windows GDI).
//
// Pixels that are passed over, or missing when the bitmap ends, have index 0: the format leaves
// them to whatever stood there before, and here nothing did. What lies right of a row or behind
// the last one is dropped, because some programs write runs that are too long. A file that ends
// before the bitmap does has lost something and is refused.

#include "RenderingBase/host/imaging/formats/BmpRunLengths.h"

#include "RenderingBase/host/imaging/formats/RefusalTexts.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace rb::imaging {

BmpRunLengths::BmpRunLengths(ByteSource& source, const BmpHeader& header)
    : m_input(source), m_header(header) {
    m_input.seek(header.pixelsBegin);
}

ReadResult BmpRunLengths::endOfFile() const {
    return refuse("run lengths up to the end of the bitmap", "the end of the file",
                  placeText(m_input.position()) + ", row " + std::to_string(m_row));
}

ReadResult BmpRunLengths::nextRow(std::span<unsigned char> row) {
    std::memset(row.data(), 0, row.size());
    ++m_row;
    if (m_ended) return {};
    if (m_emptyRows > 0) {
        --m_emptyRows;
        return {};
    }
    return readCommands(row);
}

ReadResult BmpRunLengths::readCommands(std::span<unsigned char> row) {
    const bool isLast = m_row + 1 == m_header.height;
    for (bool rowEnds = false; !rowEnds;) {
        // The last row needs no end.
        if (isLast && m_column >= row.size()) return {};
        const int count = m_input.get(), value = m_input.get();
        if (value < 0) return endOfFile();
        if (count > 0)
            repeat(static_cast<std::size_t>(count), static_cast<unsigned>(value), row);
        else if (ReadResult refusal = readEscape(value, row, rowEnds))
            return refusal;
    }
    return {};
}

ReadResult BmpRunLengths::readEscape(int command, std::span<unsigned char> row, bool& rowEnds) {
    switch (command) {
        case 0:
            m_column = 0;
            rowEnds = true;
            return {};
        case 1:
            m_ended = rowEnds = true;
            return {};
        case 2:
            return readDelta(rowEnds);
        default:
            return readPixels(static_cast<std::size_t>(command), row);
    }
}

ReadResult BmpRunLengths::readDelta(bool& rowEnds) {
    const int right = m_input.get(), rows = m_input.get();
    if (rows < 0) return endOfFile();
    m_column += static_cast<std::size_t>(right);
    if (rows > 0) {
        m_emptyRows = rows - 1;
        rowEnds = true;
    }
    return {};
}

ReadResult BmpRunLengths::readPixels(std::size_t count, std::span<unsigned char> row) {
    std::array<unsigned char, 256> stored;
    const std::size_t bytes = m_header.bits == 8 ? count : (count + 1) / 2;
    if (m_input.read(stored.data(), bytes) < bytes) return endOfFile();
    if (bytes % 2) m_input.skip(1);
    const std::size_t begin = std::min(m_column, row.size());
    const std::size_t shown = std::min(count, row.size() - begin);
    unsigned char* const out = row.data() + begin;
    if (m_header.bits == 8)
        std::memcpy(out, stored.data(), shown);
    else
        for (std::size_t i = 0; i < shown; ++i)
            out[i] = i % 2 ? stored[i / 2] & 15 : stored[i / 2] >> 4;
    m_column += count;
    return {};
}

void BmpRunLengths::repeat(std::size_t count, unsigned value, std::span<unsigned char> row) {
    const std::size_t begin = std::min(m_column, row.size());
    const std::size_t shown = std::min(count, row.size() - begin);
    unsigned char* const out = row.data() + begin;
    if (m_header.bits == 8)
        std::memset(out, static_cast<int>(value), shown);
    else
        for (std::size_t i = 0; i < shown; ++i)
            out[i] = static_cast<unsigned char>(i % 2 ? value & 15 : value >> 4);
    m_column += count;
}

}  // namespace rb::imaging
