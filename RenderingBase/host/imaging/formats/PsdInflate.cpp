// Zipped merged pictures of PSD files: one zlib stream of all rows of all channels.
//
//   00 02  78 9C ...    the rows
//   00 03  78 9C ...    their differences. 8 and 16 bits: samples minus the sample to the left.
//                       32 bits: the first bytes of all samples of a row, all second, all third and
//                       all fourth ones, and of this line of bytes each minus the one to the left
//
// Sources: Adobe Photoshop File Formats, "Image Data Section"; Adobe Photoshop TIFF
// Technical Note 3 (2005) for the differences of floating-point numbers.

#include "RenderingBase/host/imaging/formats/PsdInflate.h"

#include "RenderingBase/host/imaging/formats/BufferedSource.h"
#include "RenderingBase/host/imaging/formats/Endian.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"

#include <cstring>
#include <new>
#include <string>
#include <vector>
#include <zlib.h>

namespace rb::imaging {
namespace {

/// Inflates a stream piece by piece, for there may be more channels than are wanted.
class Inflater {
public:
    Inflater(ByteSource& source, std::uint64_t place) : m_source(source), m_begin(place) {
        m_source.seek(place);
        if (inflateInit(&m_stream) != Z_OK) throw std::bad_alloc();
    }
    ~Inflater() { inflateEnd(&m_stream); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// Fills @p out entirely.
    ReadResult fill(std::span<unsigned char> out) {
        m_stream.next_out = out.data();
        m_stream.avail_out = static_cast<uInt>(out.size());
        while (m_stream.avail_out > 0) {
            if (m_ended) return fault("the end of the zlib stream");
            if (ReadResult refusal = step()) return refusal;
        }
        return {};
    }

    /// Holds the checksum against what has been inflated.
    ReadResult finish() {
        m_stream.next_out = &m_beyond;
        m_stream.avail_out = 1;
        while (!m_ended && m_stream.avail_out > 0)
            if (ReadResult refusal = step()) return refusal;
        if (m_stream.avail_out == 0) return fault("bytes behind the last row");
        return {};
    }

private:
    ReadResult step() {
        if (m_stream.avail_in == 0) {
            const auto block = m_source.nextBlock();
            if (block.empty()) return fault("the end of the file");
            // The codec does not write there, but its interface is older than const.
            m_stream.next_in =
                const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(block.data()));
            m_stream.avail_in = static_cast<uInt>(block.size());
        }
        const int code = ::inflate(&m_stream, Z_NO_FLUSH);
        m_ended = code == Z_STREAM_END;
        if (code == Z_MEM_ERROR) throw std::bad_alloc();
        if (code == Z_OK || m_ended) return {};
        return fault(m_stream.msg ? m_stream.msg : "another one");
    }

    ReadResult fault(std::string found) const {
        return refuse("a zlib stream of all rows", std::move(found),
                      placeText(m_begin + m_stream.total_in));
    }

    BufferedSource m_source;
    std::uint64_t m_begin;
    z_stream m_stream{};
    bool m_ended = false;
    unsigned char m_beyond = 0;  // a byte behind the last row, which should not be there
};

void addUp8(unsigned char* row, std::size_t bytes) {
    for (std::size_t i = 1; i < bytes; ++i)
        row[i] = static_cast<unsigned char>(row[i] + row[i - 1]);
}

void addUp16(unsigned char* row, std::size_t bytes) {
    unsigned sum = 0;
    for (std::size_t i = 0; i < bytes; i += 2) {
        sum += big16(row + i);
        row[i] = static_cast<unsigned char>(sum >> 8);
        row[i + 1] = static_cast<unsigned char>(sum);
    }
}

void addUp32(unsigned char* row, std::size_t bytes, std::vector<unsigned char>& scratch) {
    addUp8(row, bytes);
    scratch.assign(row, row + bytes);
    const std::size_t samples = bytes / 4;
    for (std::size_t i = 0; i < samples; ++i)
        for (std::size_t byte = 0; byte < 4; ++byte)
            row[4 * i + byte] = scratch[byte * samples + i];
}

void addUp(unsigned char* row, std::size_t bytes, std::uint32_t depth,
           std::vector<unsigned char>& scratch) {
    if (depth == 32)
        addUp32(row, bytes, scratch);
    else if (depth == 16)
        addUp16(row, bytes);
    else
        addUp8(row, bytes);
}

}  // namespace

ReadResult inflatePsdPlanes(ByteSource& source, const PsdHeader& header, PixelStorage& planes) {
    const std::size_t rowBytes = header.rowBytes();
    const std::size_t rows = std::size_t{header.wantedChannels()} * header.height;
    planes = PixelStorage(rows * rowBytes, PixelStorage::Fill::None);
    Inflater inflater(source, header.dataPlace);
    std::vector<unsigned char> scratch;
    auto* row = reinterpret_cast<unsigned char*>(planes.data());
    for (std::size_t i = 0; i < rows; ++i, row += rowBytes) {
        if (ReadResult refusal = inflater.fill({row, rowBytes})) {
            refusal->where += ", channel " + std::to_string(i / header.height) + ", row " +
                              std::to_string(i % header.height);
            return refusal;
        }
        if (header.compression == PsdCompression::ZipOfDifferences)
            addUp(row, rowBytes, header.depth, scratch);
    }
    return header.wantedChannels() == header.channels ? inflater.finish() : ReadResult();
}

}  // namespace rb::imaging
