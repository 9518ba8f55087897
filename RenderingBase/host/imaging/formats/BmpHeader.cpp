// The headers of Windows bitmaps, all numbers little endian:
//
//   42 4D              "BM"
//   36 00 0C 00        bytes of the file; not used here
//   00 00 00 00
//   36 00 00 00        byte 10: where the pixels begin
//   28 00 00 00        byte 14: bytes of the header that begins here
//   00 02 00 00        byte 18: columns
//   00 02 00 00        byte 22: rows; below 0: as many, the top row first
//   01 00 18 00        byte 26: planes (not used here); bits of a pixel
//   00 00 00 00        byte 30: how pixels are stored: 0 plain, 1 and 2 run lengths, 3 and 6 masks
//   00 00 0C 00        byte 34: bytes of the pixels; not used here
//   23 2E 00 00  ...   byte 38: columns a metre, then rows a metre
//   00 00 00 00  ...   byte 46: colours of the palette, then how many of them matter
//   00 00 FF 00  ...   byte 54: masks of red, green, blue, alpha, in or behind the header
//
// The oldest header (12 bytes, OS/2 1) has numbers of 16 bits for the sides, ends with the bits of
// a pixel, and its palette has entries of three bytes. That of OS/2 2 (16 to 64 bytes) may end
// anywhere behind the bits; what is missing is 0. Windows has 40 bytes, 52 with masks for colours,
// 56 with one for alpha, 108 (V4) and 124 (V5). The palette stands behind header and masks.
//
// Source: Microsoft, "Bitmap Storage" and the pages on BITMAPCOREHEADER, BITMAPINFOHEADER,
// BITMAPV4HEADER and BITMAPV5HEADER (Windows GDI); for OS/2 the article "BMP file format" of the
// English Wikipedia.
//
// Of the colour spaces only an embedded ICC profile (V5) counts. A profile in a file of its own is
// not looked for, and primaries with a gamma (V4, LCS_CALIBRATED_RGB) are ignored: a profile would
// have to be made up from them.

#include "RenderingBase/host/imaging/formats/BmpHeader.h"

#include "RenderingBase/host/imaging/formats/Endian.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string>

namespace rb::imaging {
namespace {

constexpr std::uint32_t kFileHeaderBytes = 14;
constexpr std::uint32_t kOs2v1 = 12, kWindows = 40, kColorMasks = 52, kAlphaMask = 56, kV4 = 108,
                        kV5 = 124;
constexpr std::size_t kMasksBegin = 54;  // in the header, or behind one of 40 bytes
constexpr std::uint32_t kPlain = 0, kRuns8 = 1, kRuns4 = 2, kMasks = 3, kMasksWithAlpha = 6;

/// The beginning of a file; zeros where it or its header ends.
class Fields {
public:
    explicit Fields(ByteSource& source) { m_read = source.read(0, m_bytes.data(), kMost); }
    std::size_t bytesRead() const { return m_read; }
    std::uint32_t get16(std::size_t at) const { return little16(m_bytes.data() + at); }
    std::uint32_t get32(std::size_t at) const { return little32(m_bytes.data() + at); }
    void clearFrom(std::size_t at) {
        std::fill(m_bytes.begin() + static_cast<std::ptrdiff_t>(std::min(at, kMost)), m_bytes.end(),
                  static_cast<unsigned char>(0));
    }

private:
    static constexpr std::size_t kMost = kFileHeaderBytes + kV5;
    std::array<unsigned char, kMost> m_bytes{};
    std::size_t m_read;
};

class HeaderParser {
public:
    HeaderParser(ByteSource& source, BmpHeader& header) : m_fields(source), m_header(header) {}
    ReadResult parse();

private:
    ReadResult readLength();
    void readSides();
    ReadResult readStorage();
    ReadResult checkBits() const;
    ReadResult readMasks();
    void readPalette();
    void readResolution();
    void readProfile();

    bool isOs2() const {
        return m_length == kOs2v1 || (m_length <= 64 && m_length != kWindows &&
                                      m_length != kColorMasks && m_length != kAlphaMask);
    }
    std::uint32_t storage() const { return m_fields.get32(30); }
    bool hasMasks() const { return storage() == kMasks || storage() == kMasksWithAlpha; }

    Fields m_fields;
    BmpHeader& m_header;
    std::uint32_t m_length = 0;
};

ReadResult HeaderParser::parse() {
    if (ReadResult refusal = readLength()) return refusal;
    readSides();
    if (ReadResult refusal = readStorage()) return refusal;
    readPalette();
    readResolution();
    readProfile();
    return {};
}

ReadResult HeaderParser::readLength() {
    if (m_fields.bytesRead() < kFileHeaderBytes + 4)
        return refuse("the length of a header", "the end of the file", "byte 14");
    m_length = m_fields.get32(kFileHeaderBytes);
    if (m_length != kOs2v1 && (m_length < 16 || m_length > 64) && m_length != kV4 &&
        m_length != kV5)
        return refuse("a header of 12, 16 to 64, 108 or 124 bytes", std::to_string(m_length),
                      "byte 14");
    const std::size_t masks = m_length != kWindows           ? 0
                              : storage() == kMasks          ? 12
                              : storage() == kMasksWithAlpha ? 16
                                                             : 0;
    m_header.paletteBegin = kFileHeaderBytes + m_length + masks;
    if (m_fields.bytesRead() < m_header.paletteBegin)
        return refuse("a header of " + bytesText(m_length + masks), "the end of the file",
                      placeText(m_fields.bytesRead()));
    m_fields.clearFrom(static_cast<std::size_t>(m_header.paletteBegin));
    return {};
}

void HeaderParser::readSides() {
    if (m_length == kOs2v1) {
        m_header.width = m_fields.get16(18);
        m_header.height = m_fields.get16(20);
        m_header.bits = m_fields.get16(24);
        m_fields.clearFrom(26);
        return;
    }
    m_header.width = static_cast<std::int32_t>(m_fields.get32(18));
    m_header.height = static_cast<std::int32_t>(m_fields.get32(22));
    m_header.topDown = m_header.height < 0;
    if (m_header.topDown) m_header.height = -m_header.height;
    m_header.bits = m_fields.get16(28);
}

ReadResult HeaderParser::readStorage() {
    const auto other = [](const std::string& found) {
        return refuse("plain pixels, run lengths of 4 or 8 bits, or masks", found, "byte 30");
    };
    switch (storage()) {
        case kPlain:
        case kRuns8:
        case kRuns4:
            break;
        case kMasks:
            if (isOs2()) return other("Huffman codes (1-D)");
            break;
        case 4:
            return other(isOs2() ? "run lengths of 24 bits" : "an embedded JPEG picture");
        case 5:
            return other("an embedded PNG picture");
        case kMasksWithAlpha:
            if (isOs2()) return other("compression 6");
            break;
        case 11:
        case 12:
        case 13:
            return other("CMYK pixels");
        default:
            return other("compression " + std::to_string(storage()));
    }
    m_header.runLengths = storage() == kRuns8 || storage() == kRuns4;
    if (ReadResult refusal = checkBits()) return refusal;
    if (hasMasks()) return readMasks();
    // The fourth byte of plain pixels of 32 bits means nothing; many a program fills it with 0.
    m_header.masks = m_header.bits == 16 ? kFiveBits : kBlueGreenRed;
    return {};
}

ReadResult HeaderParser::checkBits() const {
    const unsigned bits = m_header.bits;
    const auto check = [bits](bool fits, const char* expected) -> ReadResult {
        if (fits) return {};
        return refuse(std::string(expected) + " bits a pixel", std::to_string(bits), "byte 28");
    };
    if (storage() == kRuns8) return check(bits == 8, "8");
    if (storage() == kRuns4) return check(bits == 4, "4");
    if (hasMasks()) return check(bits == 16 || bits == 32, "16 or 32");
    return check(
        bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32,
        "1, 2, 4, 8, 16, 24 or 32");
}

ReadResult HeaderParser::readMasks() {
    std::array<std::uint32_t, 4> masks{};
    for (std::size_t i = 0; i < 4; ++i) masks[i] = m_fields.get32(kMasksBegin + 4 * i);
    std::uint32_t seen = m_header.bits == 16 ? 0xFFFF0000U : 0;
    bool good = (masks[0] | masks[1] | masks[2]) != 0;
    for (const std::uint32_t mask : masks) {
        const std::uint32_t ones = mask ? mask >> std::countr_zero(mask) : 0;
        good = good && (ones & (ones + 1)) == 0 && (mask & seen) == 0;
        seen |= mask;
    }
    if (!good)
        return refuse("a mask of adjacent bits of its own for each channel",
                      hexText(masks[0], 8) + ' ' + hexText(masks[1], 8) + ' ' +
                          hexText(masks[2], 8) + ' ' + hexText(masks[3], 8),
                      placeText(kMasksBegin));
    m_header.masks = {masks[0], masks[1], masks[2], masks[3]};
    return {};
}

/// Also where the pixels begin: a place within the headers is none, then they follow the palette.
void HeaderParser::readPalette() {
    const std::uint64_t begin = m_header.paletteBegin, declared = m_fields.get32(46);
    m_header.paletteEntryBytes = m_length == kOs2v1 ? 3 : 4;
    std::uint64_t entries = declared;
    if (m_header.indexed()) {
        const std::uint64_t most = std::uint64_t{1} << m_header.bits;
        entries = declared == 0 ? most : std::min(declared, most);
    }
    m_header.pixelsBegin = m_fields.get32(10);
    if (m_header.pixelsBegin < begin)
        m_header.pixelsBegin = begin + entries * m_header.paletteEntryBytes;
    else
        entries = std::min(entries, (m_header.pixelsBegin - begin) / m_header.paletteEntryBytes);
    if (m_header.indexed()) m_header.paletteEntries = static_cast<std::uint32_t>(entries);
}

void HeaderParser::readResolution() {
    const auto x = static_cast<std::int32_t>(m_fields.get32(38));
    const auto y = static_cast<std::int32_t>(m_fields.get32(42));
    if (x > 0 && y > 0) m_header.resolution = {x / 100.0, y / 100.0, kPerCentimetre};
}

void HeaderParser::readProfile() {
    constexpr std::uint32_t kEmbedded = 0x4D424544;  // "MBED"
    if (m_length != kV5 || m_fields.get32(70) != kEmbedded) return;
    m_header.profileBegin = kFileHeaderBytes + std::uint64_t{m_fields.get32(126)};
    m_header.profileBytes = m_fields.get32(130);
}

}  // namespace

ReadResult readBmpHeader(ByteSource& source, BmpHeader& header) {
    return HeaderParser(source, header).parse();
}

}  // namespace rb::imaging
