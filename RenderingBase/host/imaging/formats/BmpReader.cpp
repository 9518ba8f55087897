// Reading of Windows bitmaps: headers (BmpHeader.cpp), the palette, the profile, the pixels.
//
//   42 4D 3E 00 00 00 00 00 00 00 36 00 00 00        the file; its pixels begin at byte 54
//   28 00 00 00 02 00 00 00 01 00 00 00 01 00 18 00  2 x 1 pixels of 24 bits
//   00 00 00 00 08 00 00 00 23 2E 00 00 23 2E 00 00  plain, 8 bytes, 11811 pixels a metre
//   00 00 00 00 00 00 00 00                          no palette
//   00 00 FF  00 FF 00  00 00                        red, green, filled up to four bytes
//
// Source: Microsoft, "Bitmap Storage" (Windows GDI).
//
// Palettes come out as RGB whatever their colours, as those of other formats do; an index that the
// palette in the file does not reach is black. Alpha is what a mask says is alpha, nothing else.

#include "RenderingBase/host/imaging/formats/BmpHeader.h"
#include "RenderingBase/host/imaging/formats/BmpRunLengths.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"
#include "RenderingBase/host/imaging/formats/StoredRows.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace rb::imaging {
namespace {

/// RGB of every index, and a byte that means nothing.
using Palette = std::array<std::array<unsigned char, 4>, 256>;

/// Indices of 1, 2 or 4 bits, the first one in the highest bits of a byte.
void unpackIndices(const unsigned char* in, unsigned bits, std::span<unsigned char> out) {
    const unsigned perByte = 8 / bits, mask = (1U << bits) - 1;
    const auto shift = static_cast<unsigned>(std::countr_zero(perByte));
    for (std::size_t x = 0; x < out.size(); ++x) {
        const auto place = static_cast<unsigned>(x) & (perByte - 1);
        out[x] = static_cast<unsigned char>(unsigned{in[x >> shift]} >> (8 - bits - place * bits) &
                                            mask);
    }
}

void applyPalette(const Palette& palette, const unsigned char* in, std::size_t pixels,
                  unsigned char* out) {
    // Four bytes are one store; the fourth is the next pixel's, but for the last one.
    for (std::size_t x = 0; x + 1 < pixels; ++x, out += 3) std::memcpy(out, &palette[in[x]], 4);
    std::memcpy(out, &palette[in[pixels - 1]], 3);
}

class BmpReader final : public ImageReader {
public:
    explicit BmpReader(ByteSource& source) : m_source(source) {}
    ReadResult readHeader(ImageHeader& header) override;
    ReadResult readPixels(std::span<std::byte> pixels) override;

private:
    std::uint64_t leastFileBytes() const;
    void describeChannels(ImageHeader& header) const;
    std::vector<std::byte> readProfile();
    Palette readPalette();
    ReadResult readRunLengths();
    ReadResult readPlainRows();
    unsigned char* outputRow(std::int64_t stored) const;

    ByteSource& m_source;
    BmpHeader m_header;
    PackedPixels m_packed;  // of pixels that are no indices
    unsigned char* m_pixels = nullptr;
    std::size_t m_channels = 3;
};

std::uint64_t BmpReader::leastFileBytes() const {
    // A run-length-coded bitmap may end at once, with two bytes, and is of one colour then.
    if (m_header.runLengths) return m_header.pixelsBegin + 2;
    const auto height = static_cast<std::uint64_t>(m_header.height);
    // What fills up the last row is missing now and then.
    const std::uint64_t filling = m_header.rowBytes() - m_header.usedRowBytes();
    const std::uint64_t pixels = saturatedProduct(m_header.rowBytes(), height) - filling;
    return std::max(pixels, m_header.pixelsBegin + pixels);
}

void BmpReader::describeChannels(ImageHeader& header) const {
    header.format = m_channels == 4 ? KVRPixelImageFormat::RGBA : KVRPixelImageFormat::RGB;
    if (m_header.indexed()) {
        header.storedChannels = 1;
        header.storedBits = static_cast<int>(m_header.bits);
        return;
    }
    const ChannelMasks& masks = m_header.masks;
    for (const std::uint32_t mask : {masks.red, masks.green, masks.blue, masks.alpha}) {
        header.storedChannels += mask ? 1 : 0;
        header.storedBits = std::max(header.storedBits, std::popcount(mask));
    }
}

/// A profile that is not whole counts as none: the picture is there all the same.
std::vector<std::byte> BmpReader::readProfile() {
    constexpr std::uint64_t kLargestProfile = 8 << 20;
    const std::uint64_t bytes = m_header.profileBytes, size = m_source.size();
    if (bytes == 0 || bytes > kLargestProfile || bytes > size ||
        m_header.profileBegin > size - bytes)
        return {};
    std::vector<std::byte> profile(static_cast<std::size_t>(bytes));
    if (m_source.read(m_header.profileBegin, profile.data(), profile.size()) < profile.size())
        return {};
    return profile;
}

ReadResult BmpReader::readHeader(ImageHeader& header) {
    if (ReadResult refusal = readBmpHeader(m_source, m_header)) return refusal;
    if (!m_header.indexed()) {
        m_packed = PackedPixels(m_header.bits / 8, m_header.masks);
        m_channels = m_packed.channels();
    }
    header.width = m_header.width;
    header.height = m_header.height;
    describeChannels(header);
    header.resolution = m_header.resolution;
    header.profile = readProfile();
    header.leastFileBytes = leastFileBytes();
    return {};
}

Palette BmpReader::readPalette() {
    Palette palette{};
    std::array<unsigned char, 4 * 256> stored{};
    const std::size_t entryBytes = m_header.paletteEntryBytes;
    const std::size_t got =
        m_source.read(m_header.paletteBegin, stored.data(), m_header.paletteEntries * entryBytes);
    for (std::size_t i = 0; i < got / entryBytes; ++i) {
        const unsigned char* const entry = stored.data() + i * entryBytes;
        palette[i] = {entry[2], entry[1], entry[0], 0};
    }
    return palette;
}

/// Where the @p stored-th row of the file goes to.
unsigned char* BmpReader::outputRow(std::int64_t stored) const {
    const std::int64_t row = m_header.topDown ? stored : m_header.height - 1 - stored;
    return m_pixels +
           static_cast<std::size_t>(row) * static_cast<std::size_t>(m_header.width) * m_channels;
}

ReadResult BmpReader::readRunLengths() {
    const Palette palette = readPalette();
    std::vector<unsigned char> indices(static_cast<std::size_t>(m_header.width));
    BmpRunLengths input(m_source, m_header);
    for (std::int64_t stored = 0; stored < m_header.height; ++stored) {
        if (ReadResult refusal = input.nextRow(indices)) return refusal;
        applyPalette(palette, indices.data(), indices.size(), outputRow(stored));
    }
    return {};
}

ReadResult BmpReader::readPlainRows() {
    const auto width = static_cast<std::size_t>(m_header.width);
    const Palette palette = m_header.indexed() ? readPalette() : Palette{};
    std::vector<unsigned char> indices(m_header.bits < 8 ? width : 0);
    StoredRows rows(
        m_source, m_header.pixelsBegin, static_cast<std::size_t>(m_header.usedRowBytes()),
        static_cast<std::size_t>(m_header.rowBytes()), static_cast<std::uint64_t>(m_header.height));
    for (std::int64_t stored = 0; stored < m_header.height; ++stored) {
        const unsigned char* row = rows.next();
        if (!row)
            return refuse("a row of " + bytesText(m_header.usedRowBytes()), "the end of the file",
                          "row " + std::to_string(stored));
        if (!m_header.indexed()) {
            m_packed.unpack(row, width, outputRow(stored));
            continue;
        }
        if (m_header.bits < 8) {
            unpackIndices(row, m_header.bits, indices);
            row = indices.data();
        }
        applyPalette(palette, row, width, outputRow(stored));
    }
    return {};
}

ReadResult BmpReader::readPixels(std::span<std::byte> pixels) {
    m_pixels = reinterpret_cast<unsigned char*>(pixels.data());
    return m_header.runLengths ? readRunLengths() : readPlainRows();
}

/// Two letters are few, so the length of the header must be plausible too.
bool recognises(std::span<const std::byte> head) {
    constexpr std::size_t kLengthEnd = 18;
    return startsWith(head, "BM") &&
           (head.size() < kLengthEnd || (head[16] == std::byte{0} && head[17] == std::byte{0}));
}

std::unique_ptr<ImageReader> open(ByteSource& source) {
    return std::make_unique<BmpReader>(source);
}

}  // namespace

const ImageFormat kBmpFormat{"bmp", recognises, open};

}  // namespace rb::imaging
