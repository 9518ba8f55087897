#pragma once

/// @file  Rows that lie uncompressed in a file.

#include "RenderingBase/host/imaging/formats/ByteSource.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace rb::imaging {

/// Hands out rows of equal length one after the other; reads as many at once as stay in the cache
/// until they are converted.
class StoredRows {
public:
    /// @param begin     Where the first row begins.
    /// @param usedBytes What a row needs, at least 1.
    /// @param rowBytes  From one row to the next: @p usedBytes and what fills them up.
    StoredRows(ByteSource& source, std::uint64_t begin, std::size_t usedBytes, std::size_t rowBytes,
               std::uint64_t rows)
        : m_source(source),
          m_place(begin),
          m_usedBytes(usedBytes),
          m_rowBytes(rowBytes),
          m_rowsLeft(rows),
          m_rowsAtOnce(std::min(rows, std::max<std::uint64_t>(1, kBlockBytes / rowBytes))),
          m_block(new unsigned char[static_cast<std::size_t>(m_rowsAtOnce) * rowBytes]) {}

    /// The next row, valid until the next call; null when the source ends before it does. The last
    /// row may lack what fills it up.
    const unsigned char* next() {
        if (m_next == m_end) refill();
        if (m_usedBytes > m_got - std::min(m_got, m_next)) return nullptr;
        const unsigned char* const row = m_block.get() + m_next;
        m_next += m_rowBytes;
        return row;
    }

private:
    static constexpr std::size_t kBlockBytes = 256 * 1024;

    void refill() {
        const std::uint64_t rows = std::min(m_rowsLeft, m_rowsAtOnce);
        m_rowsLeft -= rows;
        m_next = 0;
        m_end = static_cast<std::size_t>(rows) * m_rowBytes;
        m_got = m_source.read(m_place, m_block.get(), m_end);
        m_place += m_end;
    }

    ByteSource& m_source;
    std::uint64_t m_place;
    std::size_t m_usedBytes, m_rowBytes;
    std::uint64_t m_rowsLeft, m_rowsAtOnce;
    std::unique_ptr<unsigned char[]> m_block;  // undefined beyond m_got
    std::size_t m_next = 0, m_end = 0, m_got = 0;
};

}  // namespace rb::imaging
