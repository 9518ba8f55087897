#pragma once

/// @file  Decoding single strips and tiles of a TIFF file.

#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/TiffDirectory.h"
#include "RenderingBase/host/imaging/formats/TiffHandle.h"
#include "RenderingBase/host/imaging/formats/TiffPixels.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace rb::imaging {

/// Decodes blocks with a handle of its own. Threads: one at a time; several decoders may share what
/// they are made with, which outlives them.
class TiffBlockDecoder {
public:
    /// @param out  Where width x height delivered pixels go.
    TiffBlockDecoder(SharedSource& source, const TiffDirectory& directory, const TiffPixels& pixels,
                     std::byte* out);

    /// Compares what the file says about all wanted blocks with the bytes that are there. One
    /// decoder of a file does so before any decodes.
    [[nodiscard]] ReadResult checkStored() const;
    /// Decodes the block at place @p index of every wanted plane.
    [[nodiscard]] ReadResult decode(std::uint32_t index);

private:
    struct Area {
        std::uint32_t x, y, width, height;
    };

    ReadResult fault(std::uint32_t block, const char* found) const;
    std::byte* pixelAt(std::uint32_t x, std::uint32_t y) const {
        return m_out + (std::size_t{y} * m_directory.width + x) * m_pixelBytes;
    }
    void prepareInflating(std::byte* to, std::size_t bytes);
    ReadResult decodeInto(std::uint32_t block, std::byte* to, std::size_t bytes);
    ReadResult decodeByRows(std::uint32_t block, const Area& area);
    ReadResult decodeWhole(std::uint32_t index, const Area& area, std::size_t bytes);

    const TiffDirectory& m_directory;
    const TiffPixels& m_pixels;
    std::byte* const m_out;
    const std::uint64_t m_fileBytes;
    TiffHandle m_handle;
    const std::size_t m_pixelBytes;
    std::vector<std::uint32_t> m_planes;  // wanted ones; 0 for a file that is not planar
    std::vector<std::byte> m_decoded;
    TiffPixels::Scratch m_scratch;
};

}  // namespace rb::imaging
