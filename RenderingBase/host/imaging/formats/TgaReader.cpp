// Reading of TGA files: the header (TgaHeader.cpp), the colour map, the pixels.
//
//   00 00 0A 00 00 00 00 00 00 00 00 00  no text, no map, colour in run lengths
//   05 00 01 00 18 00                    5 x 1 pixels of 24 bits, from the bottom left
//   83 FF 00 00                          a pixel four times: blue
//   00 00 00 FF                          one pixel as it is: red
//
// Source: Truevision, "TGA File Format", version 2.0 (1991).
//
// A packet has up to 128 pixels; that one ends with a row at the latest is often ignored, and so it
// is here. Pictures are delivered with the top row first and rows from the left: in which corner
// the file begins is only how it stores them. Pixels of 16 bits have five for each colour; an index
// outside of the map is black and opaque.

#include "RenderingBase/host/imaging/formats/BufferedSource.h"
#include "RenderingBase/host/imaging/formats/Endian.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/PackedPixels.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"
#include "RenderingBase/host/imaging/formats/StoredRows.h"
#include "RenderingBase/host/imaging/formats/TgaHeader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace rb::imaging {
namespace {

constexpr std::size_t kLongestPacket = 128;

/// How the colours of @p bits bits are packed.
PackedPixels packedColors(unsigned bits, bool alpha) {
    ChannelMasks masks = bits < 24 ? kFiveBits : kBlueGreenRed;
    if (alpha) masks.alpha = bits < 24 ? 0x8000 : 0xFF000000;
    return PackedPixels((bits + 7) / 8, masks);
}

/// Puts pixels into rows that are stored as packets.
class Packets {
public:
    Packets(ByteSource& source, std::uint64_t begin, std::size_t pixelBytes)
        : m_input(source), m_pixelBytes(pixelBytes) {
        m_input.seek(begin);
    }
    std::uint64_t position() const { return m_input.position(); }

    /// Fills @p row with whole pixels; false when the file ends before.
    bool read(std::span<unsigned char> row) {
        while (!row.empty()) {
            if (m_left == 0 && !begin()) return false;
            const std::size_t bytes = std::min(row.size(), m_left * m_pixelBytes);
            if (m_repeats)
                std::memcpy(row.data(), m_run.data(), bytes);
            else if (m_input.read(row.data(), bytes) < bytes)
                return false;
            m_left -= bytes / m_pixelBytes;
            row = row.subspan(bytes);
        }
        return true;
    }

private:
    bool begin() {
        const int head = m_input.get();
        if (head < 0) return false;
        m_left = static_cast<std::size_t>(head & 127) + 1;
        m_repeats = head > 127;
        if (!m_repeats) return true;
        if (m_input.read(m_run.data(), m_pixelBytes) < m_pixelBytes) return false;
        const std::size_t bytes = m_left * m_pixelBytes;
        for (std::size_t done = m_pixelBytes; done < bytes; done *= 2)
            std::memcpy(m_run.data() + done, m_run.data(), std::min(done, bytes - done));
        return true;
    }

    BufferedSource m_input;
    std::size_t m_pixelBytes;
    std::size_t m_left = 0;  // pixels of the packet
    bool m_repeats = false;
    std::array<unsigned char, 4 * kLongestPacket> m_run;  // all of a packet that repeats
};

class TgaReader final : public ImageReader {
public:
    explicit TgaReader(ByteSource& source) : m_source(source) {}
    ReadResult readHeader(ImageHeader& header) override;
    ReadResult readPixels(std::span<std::byte> pixels) override;

private:
    std::uint64_t leastFileBytes() const;
    std::size_t rowBytes() const {
        return static_cast<std::size_t>(m_header.width) * m_header.pixelBytes();
    }
    ReadResult readMap();
    ReadResult readPackets();
    ReadResult readPlainRows();
    void emit(const unsigned char* in, std::int64_t stored);
    void emitIndexed(const unsigned char* in, unsigned char* out) const;
    void emitGrey(const unsigned char* in, unsigned char* out) const;

    ByteSource& m_source;
    TgaHeader m_header;
    PackedPixels m_packed;             // pixels, or entries of the map
    std::size_t m_channels = 3;        // delivered, a byte each
    std::vector<unsigned char> m_map;  // delivered pixels of all indices, and a byte
    unsigned char* m_pixels = nullptr;
};

std::uint64_t TgaReader::leastFileBytes() const {
    const auto pixels = static_cast<std::uint64_t>(m_header.width * m_header.height);
    if (!m_header.runLengths) return m_header.pixelsBegin + pixels * m_header.pixelBytes();
    const std::uint64_t packets = (pixels + kLongestPacket - 1) / kLongestPacket;
    return m_header.pixelsBegin + packets * (1 + m_header.pixelBytes());
}

ReadResult TgaReader::readHeader(ImageHeader& header) {
    if (ReadResult refusal = readTgaHeader(m_source, m_header)) return refusal;
    const bool grey = m_header.kind == TgaHeader::Kind::Grey;
    header.width = m_header.width;
    header.height = m_header.height;
    if (grey) {
        m_channels = m_header.alpha ? 2 : 1;
        header.format = m_header.alpha ? KVRPixelImageFormat::LA : KVRPixelImageFormat::L;
    } else {
        m_packed = packedColors(m_header.colorBits(), m_header.alpha);
        m_channels = m_packed.channels();
        header.format = m_header.alpha ? KVRPixelImageFormat::RGBA : KVRPixelImageFormat::RGB;
    }
    const bool indexed = m_header.kind == TgaHeader::Kind::Indexed;
    header.storedChannels = indexed ? 1 : static_cast<int>(m_channels);
    header.storedBits = indexed                       ? static_cast<int>(m_header.bits)
                        : !grey && m_header.bits < 24 ? 5
                                                      : 8;
    header.leastFileBytes = leastFileBytes();
    return {};
}

ReadResult TgaReader::readMap() {
    std::vector<unsigned char> stored(m_header.mapEntries * m_header.mapEntryBytes());
    if (!stored.empty() &&
        m_source.read(m_header.mapBegin, stored.data(), stored.size()) < stored.size())
        return refuse("a colour map of " + bytesText(stored.size()), "the end of the file",
                      placeText(m_header.mapBegin));
    const std::size_t indices = std::size_t{1} << m_header.bits;
    m_map.assign(m_channels * indices + 1, 0);
    if (m_channels == 4)
        for (std::size_t i = 3; i < m_map.size(); i += 4) m_map[i] = 255;
    const std::size_t first = std::min<std::size_t>(m_header.mapFirst, indices);
    m_packed.unpack(stored.data(), std::min<std::size_t>(m_header.mapEntries, indices - first),
                    m_map.data() + first * m_channels);
    return {};
}

void TgaReader::emitIndexed(const unsigned char* in, unsigned char* out) const {
    const auto width = static_cast<std::size_t>(m_header.width);
    const auto entryOf = [&](std::size_t x) {
        return m_map.data() +
               m_channels * (m_header.bits == 8 ? in[x] : std::size_t{little16(in + 2 * x)});
    };
    // Four bytes are one store; the fourth may be the next pixel's, but for the last one.
    for (std::size_t x = 0; x + 1 < width; ++x, out += m_channels) std::memcpy(out, entryOf(x), 4);
    std::memcpy(out, entryOf(width - 1), m_channels);
}

/// Grey as it is stored: a byte, and one for alpha.
void TgaReader::emitGrey(const unsigned char* in, unsigned char* out) const {
    if (m_channels == m_header.pixelBytes()) {
        std::memcpy(out, in, rowBytes());
        return;
    }
    for (std::int64_t x = 0; x < m_header.width; ++x) out[x] = in[2 * x];
}

/// Delivers the @p stored-th row of the file.
void TgaReader::emit(const unsigned char* in, std::int64_t stored) {
    const auto width = static_cast<std::size_t>(m_header.width);
    const auto row =
        static_cast<std::size_t>(m_header.topDown ? stored : m_header.height - 1 - stored);
    unsigned char* const out = m_pixels + row * width * m_channels;
    switch (m_header.kind) {
        case TgaHeader::Kind::Indexed:
            emitIndexed(in, out);
            break;
        case TgaHeader::Kind::Color:
            m_packed.unpack(in, width, out);
            break;
        case TgaHeader::Kind::Grey:
            emitGrey(in, out);
            break;
    }
    if (!m_header.rightToLeft) return;
    for (std::size_t left = 0, right = width - 1; left < right; ++left, --right)
        std::swap_ranges(out + left * m_channels, out + (left + 1) * m_channels,
                         out + right * m_channels);
}

ReadResult TgaReader::readPackets() {
    Packets packets(m_source, m_header.pixelsBegin, m_header.pixelBytes());
    std::vector<unsigned char> row(rowBytes());
    for (std::int64_t stored = 0; stored < m_header.height; ++stored) {
        if (!packets.read(row))
            return refuse("packets up to the last pixel", "the end of the file",
                          placeText(packets.position()) + ", row " + std::to_string(stored));
        emit(row.data(), stored);
    }
    return {};
}

ReadResult TgaReader::readPlainRows() {
    StoredRows rows(m_source, m_header.pixelsBegin, rowBytes(), rowBytes(),
                    static_cast<std::uint64_t>(m_header.height));
    for (std::int64_t stored = 0; stored < m_header.height; ++stored) {
        const unsigned char* const row = rows.next();
        if (!row)
            return refuse("a row of " + bytesText(rowBytes()), "the end of the file",
                          "row " + std::to_string(stored));
        emit(row, stored);
    }
    return {};
}

ReadResult TgaReader::readPixels(std::span<std::byte> pixels) {
    m_pixels = reinterpret_cast<unsigned char*>(pixels.data());
    if (m_header.kind == TgaHeader::Kind::Indexed)
        if (ReadResult refusal = readMap()) return refusal;
    return m_header.runLengths ? readPackets() : readPlainRows();
}

std::unique_ptr<ImageReader> open(ByteSource& source) {
    return std::make_unique<TgaReader>(source);
}

}  // namespace

const ImageFormat kTgaFormat{"tga", isPlausibleTga, open, "tga"};

}  // namespace rb::imaging
