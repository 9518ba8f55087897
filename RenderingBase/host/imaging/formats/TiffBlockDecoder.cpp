#include "RenderingBase/host/imaging/formats/TiffBlockDecoder.h"

#include "RenderingBase/host/imaging/formats/TiffStorage.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace rb::imaging {
namespace {

constexpr const char* kNotOpened = "a file that can no longer be opened";

}  // namespace

TiffBlockDecoder::TiffBlockDecoder(SharedSource& source, const TiffDirectory& directory,
                                   const TiffPixels& pixels, std::byte* out)
    : m_directory(directory),
      m_pixels(pixels),
      m_out(out),
      m_fileBytes(source.size()),
      m_handle(source, decoderAllowance(source.size(), directory)),
      m_pixelBytes(static_cast<std::size_t>(layoutOf(pixels.format()).bytesPerPixel())),
      m_planes(pixels.planes()) {
    if (m_handle.get()) setDecodedForm(m_handle);
}

ReadResult TiffBlockDecoder::checkStored() const {
    if (!m_handle.get()) return fault(0, kNotOpened);
    return checkStoredBlocks(m_handle, m_fileBytes, m_directory, m_planes);
}

ReadResult TiffBlockDecoder::fault(std::uint32_t block, const char* found) const {
    const std::string& complaint = m_handle.complaint();
    return refuse("a block that decodes", complaint.empty() ? found : complaint,
                  nameOfBlock(m_directory, block));
}

/// libdeflate wants room for all that a stream holds: where there is less it stops anywhere before
/// the end of the room, and the codec library does not tell. A last strip may hold the rows that it
/// would have in a higher picture, so that is left to zlib. What any other stream holds too much is
/// damage; the pixels that it costs are 0.
void TiffBlockDecoder::prepareInflating(std::byte* to, std::size_t bytes) {
    const bool mayHoldMore = bytes < m_directory.rowBytes() * m_directory.blockHeight;
    TIFFSetField(m_handle.get(), TIFFTAG_DEFLATE_SUBCODEC,
                 mayHoldMore ? DEFLATE_SUBCODEC_ZLIB : DEFLATE_SUBCODEC_LIBDEFLATE);
    std::memset(to, 0, bytes);
}

ReadResult TiffBlockDecoder::decodeInto(std::uint32_t block, std::byte* to, std::size_t bytes) {
    m_handle.clearComplaint();
    const std::uint16_t code = m_directory.compression->code;
    if (code == COMPRESSION_ADOBE_DEFLATE || code == COMPRESSION_DEFLATE)
        prepareInflating(to, bytes);
    const auto room = static_cast<tmsize_t>(bytes);
    const tmsize_t got = m_directory.tiled ? TIFFReadEncodedTile(m_handle.get(), block, to, room)
                                           : TIFFReadEncodedStrip(m_handle.get(), block, to, room);
    if (got == room && m_handle.complaint().empty()) return {};
    return fault(block, "less than that");
}

/// For strips of which a copy would take much memory: pictures often are one strip.
ReadResult TiffBlockDecoder::decodeByRows(std::uint32_t block, const Area& area) {
    m_decoded.resize(static_cast<std::size_t>(m_directory.rowBytes()));
    m_handle.clearComplaint();
    const std::byte* const row = m_decoded.data();
    for (std::uint32_t y = area.y; y < area.y + area.height; ++y) {
        if (TIFFReadScanline(m_handle.get(), m_decoded.data(), y, 0) != 1 ||
            !m_handle.complaint().empty())
            return fault(block, "fewer rows");
        m_pixels.convert({&row, 1}, area.width, pixelAt(0, y), m_scratch);
    }
    return {};
}

ReadResult TiffBlockDecoder::decodeWhole(std::uint32_t index, const Area& area, std::size_t bytes) {
    m_decoded.resize(std::max(m_decoded.size(), m_planes.size() * bytes));
    std::vector<const std::byte*> rows(m_planes.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::uint32_t block = m_planes[i] * m_directory.across() * m_directory.down() + index;
        std::byte* const to = m_decoded.data() + i * bytes;
        if (ReadResult refusal = decodeInto(block, to, bytes)) return refusal;
        rows[i] = to;
    }
    const auto rowBytes = static_cast<std::size_t>(m_directory.rowBytes());
    for (std::uint32_t y = 0; y < area.height; ++y) {
        std::byte* const to = pixelAt(area.x, area.y + y);
        if (m_pixels.keepsRows())
            std::memcpy(to, rows[0], area.width * m_pixelBytes);
        else
            m_pixels.convert(rows, area.width, to, m_scratch);
        for (const std::byte*& row : rows) row += rowBytes;
    }
    return {};
}

ReadResult TiffBlockDecoder::decode(std::uint32_t index) {
    constexpr std::size_t kMostStripCopy = 16 << 20;
    const TiffDirectory& d = m_directory;
    if (!m_handle.get()) return fault(index, kNotOpened);
    const std::uint32_t row = index / d.across(), column = index % d.across();
    const Area area{column * d.blockWidth, row * d.blockHeight,
                    std::min(d.blockWidth, d.width - column * d.blockWidth),
                    std::min(d.blockHeight, d.height - row * d.blockHeight)};
    const auto bytes = static_cast<std::size_t>(d.rowBytes() * d.rowsInBlock(row));
    const bool inPlace = !d.tiled && m_pixels.keepsRows();
    const bool byRows = !d.tiled && !d.planar && bytes > kMostStripCopy;
    if (!inPlace && !byRows) return decodeWhole(index, area, bytes);
    return inPlace ? decodeInto(index, pixelAt(0, area.y), bytes) : decodeByRows(index, area);
}

}  // namespace rb::imaging
