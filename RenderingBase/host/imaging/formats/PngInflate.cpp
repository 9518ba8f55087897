// Pixels of PNG files at once instead of piece by piece. The chunks
//
//   00 00 20 00 "IDAT" 8192 bytes, CRC    ...    00 00 00 00 "IEND" AE 42 60 82
//
// hold one zlib stream, which inflates to all rows, a byte with the filter type before each. With
// the whole stream and room for the whole result at hand, that takes about two thirds of the time.
//
// Source: W3C, Portable Network Graphics, 2nd edition (ISO/IEC 15948), clauses 5.3, 7.2, 9, 10 and
// 13.12.

#include "RenderingBase/host/imaging/formats/PngInflate.h"

#include "RenderingBase/host/imaging/PixelStorage.h"
#include "RenderingBase/host/imaging/formats/Endian.h"
#include "RenderingBase/host/imaging/formats/InflatedStream.h"
#include "RenderingBase/host/imaging/formats/PngUnfilter.h"
#include "RenderingBase/host/imaging/formats/SampleRows.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"

#include <algorithm>
#include <cstring>
#include <libdeflate.h>
#include <optional>
#include <vector>

namespace rb::imaging {
namespace {

using Byte = unsigned char;

constexpr std::size_t kChunkFrame = 12;  // length, type, CRC

/// Whether a chunk whose type begins with @p letter is needed to show the picture (clause 5.4).
bool isCritical(Byte letter) { return (letter & 0x20) == 0; }

/// Moves the contents of the IDAT chunks at the start of @p chunks together, over the chunks
/// themselves. Returns their length; nothing unless all chunks up to IEND are there and sound, all
/// data chunks stand together, and the others are ancillary.
std::optional<std::size_t> gatherData(std::span<Byte> chunks) {
    std::size_t gathered = 0;
    bool inData = true;
    for (std::size_t at = 0; chunks.size() - at >= kChunkFrame;) {
        Byte* const chunk = chunks.data() + at;
        const std::size_t length = big32(chunk);
        if (length > chunks.size() - at - kChunkFrame) return {};
        if (libdeflate_crc32(0, chunk + 4, length + 4) != big32(chunk + 8 + length)) return {};
        if (std::memcmp(chunk + 4, "IEND", 4) == 0) return gathered;
        if (std::memcmp(chunk + 4, "IDAT", 4) == 0) {
            if (!inData) return {};
            std::memmove(chunks.data() + gathered, chunk + 8, length);
            gathered += length;
        } else if (isCritical(chunk[4])) {
            return {};
        } else {
            inData = false;
        }
        at += kChunkFrame + length;
    }
    return {};
}

bool unfilterRows(const PngRows& rows, const Byte* stored, Byte* out) {
    const std::vector<Byte> zeros(rows.rowBytes);
    const Byte* above = zeros.data();
    for (std::size_t y = 0; y < rows.height; ++y) {
        if (!unfilterPngRow(stored[0], rows.bytesPerPixel, stored + 1, above, out, rows.rowBytes))
            return false;
        above = out;
        stored += 1 + rows.rowBytes;
        out += rows.rowBytes;
    }
    return true;
}

bool unfilterWideRows(const PngRows& rows, const Byte* stored, Byte* out) {
    std::vector<Byte> above(rows.rowBytes), row(rows.rowBytes);
    for (std::size_t y = 0; y < rows.height; ++y) {
        if (!unfilterPngRow(stored[0], rows.bytesPerPixel, stored + 1, above.data(), row.data(),
                            rows.rowBytes))
            return false;
        narrowSamples(row.data(), out, rows.rowBytes / 2);
        row.swap(above);
        stored += 1 + rows.rowBytes;
        out += rows.rowBytes / 2;
    }
    return true;
}

}  // namespace

bool decodePngRows(ByteSource& source, const PngRows& rows, std::span<std::byte> pixels) {
    const std::uint64_t storedBytes = saturatedProduct(rows.height, rows.rowBytes + 1);
    const std::size_t deliveredRow = rows.wide ? rows.rowBytes / 2 : rows.rowBytes;
    if (saturatedProduct(rows.height, deliveredRow) != pixels.size()) return false;

    // Deflate adds five bytes to 64 KiB that it cannot compress; the rest is for the frames of
    // chunks. A file with more behind its header is an unusual one.
    constexpr std::uint64_t kSlack = 64 * 1024;
    const std::uint64_t there = source.size() - std::min(source.size(), rows.firstDataChunk);
    const std::uint64_t most = std::min(there, storedBytes + storedBytes / 4 + kSlack);
    PixelStorage chunks(static_cast<std::size_t>(most), PixelStorage::Fill::None);
    const std::size_t got = source.read(rows.firstDataChunk, chunks.data(), chunks.size());
    auto* const bytes = reinterpret_cast<Byte*>(chunks.data());
    const auto gathered = gatherData({bytes, got});
    if (!gathered) return false;

    PixelStorage stored(static_cast<std::size_t>(storedBytes), PixelStorage::Fill::None);
    if (!inflateStream(chunks.bytes().first(*gathered), stored.bytes())) return false;
    chunks = PixelStorage();
    const auto* const from = reinterpret_cast<const Byte*>(stored.data());
    auto* const to = reinterpret_cast<Byte*>(pixels.data());
    return rows.wide ? unfilterWideRows(rows, from, to) : unfilterRows(rows, from, to);
}

}  // namespace rb::imaging
