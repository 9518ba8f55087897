// The merged picture of PSD files: all rows of the first channel, all of the second, and so on.
//
//   00 00   raw: nothing but the rows
//   00 01   run lengths: 00 03 00 0D ..., how many bytes each row has (four bytes each in a PSB
//           file), for all channels; then the rows:
//             FC 80        257 - FC = 5 times 80
//             02 01 02 03  the next 2 + 1 bytes
//             80           nothing
//
// Sources: Adobe Photoshop File Formats, "Image Data Section"; TIFF Revision 6.0,
// section 9 (PackBits).

#include "RenderingBase/host/imaging/formats/PsdPlanes.h"

#include "RenderingBase/host/imaging/formats/Endian.h"
#include "RenderingBase/host/imaging/formats/PsdInflate.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace rb::imaging {
namespace {

constexpr std::size_t kLongestRun = 128;

// Most runs are short: a few steps of known size are quicker than a call. Both may write up to
// kLongestRun bytes.
constexpr std::size_t kStep = 16;

void repeat(unsigned char value, unsigned char* out, std::size_t run) {
    for (std::size_t i = 0; i < run; i += kStep) std::memset(out + i, value, kStep);
}

void copy(const unsigned char* in, unsigned char* out, std::size_t run) {
    for (std::size_t i = 0; i < run; i += kStep) std::memcpy(out + i, in + i, kStep);
}

}  // namespace

PsdPlanes::PsdPlanes(ByteSource& source, const PsdHeader& header)
    : m_file(source),
      m_source(std::in_place, source),
      m_header(header),
      m_place(header.dataPlace) {}

ReadResult PsdPlanes::open() {
    if (inRunLengths()) return readCounts();
    return m_header.compression == PsdCompression::Raw ? ReadResult() : inflate();
}

ReadResult PsdPlanes::readCounts() {
    const std::size_t rows = std::size_t{m_header.height} * m_header.wantedChannels();
    const auto countBytes = static_cast<std::size_t>(m_header.countBytes());
    std::vector<unsigned char> stored(rows * countBytes);
    if (m_source->read(m_place, stored.data(), stored.size()) < stored.size())
        return refuse("the lengths of " + std::to_string(rows) + " rows", "the end of the file",
                      placeText(m_place));
    m_counts.resize(rows);
    const unsigned char* in = stored.data();
    for (std::uint32_t& count : m_counts) {
        count = countBytes == 4 ? big32(in) : big16(in);
        in += countBytes;
    }
    for (std::size_t row = 0; row < rows; row += m_header.height) {
        std::uint64_t bytes = 0;
        for (std::size_t i = row; i < row + m_header.height; ++i) bytes += m_counts[i];
        m_planeBytes.push_back(bytes);
    }
    m_place += std::uint64_t{m_header.channels} * m_header.height * countBytes;
    return {};
}

ReadResult PsdPlanes::inflate() {
    if (ReadResult refusal = inflatePsdPlanes(m_file, m_header, m_inflated)) return refusal;
    m_source.emplace(m_inflatedSource.emplace(m_inflated.bytes()));
    m_place = 0;
    return {};
}

std::uint64_t PsdPlanes::storedBytes(std::uint32_t channel, std::uint32_t row) const {
    return inRunLengths() ? m_counts[std::size_t{channel} * m_header.height + row]
                          : m_header.rowBytes();
}

std::uint64_t PsdPlanes::placeOf(std::uint32_t channel, std::uint32_t row) const {
    if (!inRunLengths())
        return m_place + (std::uint64_t{channel} * m_header.height + row) * m_header.rowBytes();
    std::uint64_t place = m_place;
    for (std::uint32_t c = 0; c < channel; ++c) place += m_planeBytes[c];
    for (std::uint32_t r = 0; r < row; ++r) place += storedBytes(channel, r);
    return place;
}

PsdRows::PsdRows(PsdPlanes& planes, std::uint32_t channel, std::uint32_t firstRow)
    : m_planes(planes),
      m_channel(channel),
      m_row(firstRow),
      m_place(planes.placeOf(channel, firstRow)) {
    if (planes.inRunLengths()) m_unpacked.resize(planes.header().rowBytes() + kLongestRun);
}

/// Tries to have the next @p count bytes in the buffer; tells whether they exist.
bool PsdRows::fetch(std::size_t count) {
    constexpr std::size_t kAhead = 128 * 1024;
    if (there() < count) {
        std::copy_n(m_buffer.data() + m_begin, there(), m_buffer.data());
        m_end -= m_begin;
        m_begin = 0;
        const std::uint32_t rowsLeft = m_planes.header().height - m_row;
        const std::uint64_t mayNeed = m_planes.storedBytes(m_channel, m_row) * rowsLeft;
        const auto room =
            std::max(count, static_cast<std::size_t>(std::min<std::uint64_t>(mayNeed, kAhead)));
        if (m_buffer.size() < room) m_buffer.resize(room);
        m_end += m_planes.read(m_place + m_end, m_buffer.data() + m_end, m_buffer.size() - m_end);
    }
    return there() >= count;
}

void PsdRows::pass(std::uint64_t count) {
    m_place += count;
    if (count <= there())
        m_begin += static_cast<std::size_t>(count);
    else
        m_begin = m_end = 0;
}

std::string PsdRows::where() const {
    return "channel " + std::to_string(m_channel) + ", row " + std::to_string(m_row);
}

ReadResult PsdRows::next(const unsigned char*& row) {
    const std::size_t rowBytes = m_planes.header().rowBytes();
    const std::uint64_t stored = m_planes.storedBytes(m_channel, m_row);
    // The most that run lengths make of a row is one pair a byte; a file that has more puts things
    // without meaning between or behind them, and of those there may be as many again.
    const auto used = static_cast<std::size_t>(std::min<std::uint64_t>(stored, 4 * rowBytes + 64));
    if (!fetch(used))
        return refuse(bytesText(used), bytesText(there()) + " more",
                      where() + ", byte " + std::to_string(m_place));
    const unsigned char* const in = m_buffer.data() + m_begin;
    row = in;
    if (m_planes.inRunLengths()) {
        if (ReadResult refusal = unpack(in, used)) return refusal;
        row = m_unpacked.data();
    }
    pass(stored);
    ++m_row;
    return {};
}

ReadResult PsdRows::unpack(const unsigned char* in, std::size_t count) {
    const unsigned char* const end = in + count;
    unsigned char* out = m_unpacked.data();
    for (std::size_t left = m_planes.header().rowBytes(); left > 0;) {
        if (in == end)
            return refuse(bytesText(left) + " more of the row", "the end of its runs", where());
        const unsigned code = *in++;
        if (code == 128) continue;
        const bool repeats = code > 128;
        const std::size_t run = repeats ? 257 - code : code + 1;
        const std::size_t bytes = repeats ? 1 : run;
        if (run > left || bytes > static_cast<std::size_t>(end - in))
            return refuse("a run within the row and its bytes", "one of " + bytesText(run),
                          where());
        if (repeats)
            repeat(*in, out, run);
        else if (static_cast<std::size_t>(end - in) >= kLongestRun)
            copy(in, out, run);
        else
            std::memcpy(out, in, run);
        in += bytes;
        out += run;
        left -= run;
    }
    return {};
}

}  // namespace rb::imaging
