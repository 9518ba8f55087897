#pragma once

/// @file  The rows of the merged picture of a PSD file, channel by channel, as they are stored but
/// without their compression.

#include "RenderingBase/host/imaging/PixelStorage.h"
#include "RenderingBase/host/imaging/formats/ByteSource.h"
#include "RenderingBase/host/imaging/formats/PsdHeader.h"
#include "RenderingBase/host/imaging/formats/SharedSource.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace rb::imaging {

/// Where the planes of all wanted channels stand. Threads: after `open`, any number may read rows.
class PsdPlanes {
public:
    /// Both must outlive the object.
    PsdPlanes(ByteSource& source, const PsdHeader& header);

    /// Reads the lengths of compressed rows, or inflates everything. Call once, first.
    [[nodiscard]] ReadResult open();

    const PsdHeader& header() const { return m_header; }
    bool inRunLengths() const { return m_header.compression == PsdCompression::RunLengths; }
    /// Where a row begins in the source.
    std::uint64_t placeOf(std::uint32_t channel, std::uint32_t row) const;
    /// How many bytes a row takes there.
    std::uint64_t storedBytes(std::uint32_t channel, std::uint32_t row) const;
    std::size_t read(std::uint64_t place, void* to, std::size_t count) {
        return m_source->read(place, to, count);
    }

private:
    ReadResult readCounts();
    ReadResult inflate();

    ByteSource& m_file;
    std::optional<SharedSource> m_source;  // the file, or what was inflated
    const PsdHeader& m_header;
    std::uint64_t m_place;                    // of the first row
    std::vector<std::uint32_t> m_counts;      // of bytes of all rows of all wanted channels
    std::vector<std::uint64_t> m_planeBytes;  // of each wanted channel, compressed
    PixelStorage m_inflated;
    std::optional<MemorySource> m_inflatedSource;
};

/// The rows of one channel, in their order. Threads: one at a time.
class PsdRows {
public:
    PsdRows(PsdPlanes& planes, std::uint32_t channel, std::uint32_t firstRow);
    /// Makes @p row point to the next row, until the next call.
    [[nodiscard]] ReadResult next(const unsigned char*& row);

private:
    bool fetch(std::size_t count);
    std::size_t there() const { return m_end - m_begin; }
    void pass(std::uint64_t count);
    ReadResult unpack(const unsigned char* in, std::size_t count);
    std::string where() const;

    PsdPlanes& m_planes;
    std::uint32_t m_channel;
    std::uint32_t m_row;
    std::vector<unsigned char> m_buffer;
    std::size_t m_begin = 0, m_end = 0;  // of what is left of the buffer
    std::uint64_t m_place;               // in the source, of the buffer's first byte that is left
    std::vector<unsigned char> m_unpacked;  // a row, and room for what a run overshoots
};

}  // namespace rb::imaging
