// Writing of Windows bitmaps:
//
//   42 4D              "BM"
//   36 00 0C 00        bytes of the file
//   00 00 00 00
//   36 00 00 00        where the pixels begin
//   28 00 00 00 ...    the header of the picture, its length first: 40, 108 (V4) or 124 (V5) bytes
//
// Then the palette, the pixels from the bottom row upwards, each row filled up to four bytes, and
// the colour profile. Everything is little endian. Source: Microsoft, "Bitmap Storage" and the
// pages on BITMAPFILEHEADER, BITMAPINFOHEADER, BITMAPV4HEADER and BITMAPV5HEADER (Windows GDI).
//
// Grey goes out as 8 bits with a grey palette, RGB as 24 bits, pictures with alpha as 32 bits with
// a mask for alpha, which takes a V4 header. A profile, for RGB even when the palette is grey,
// takes a V5 header.

#include "RenderingBase/host/imaging/formats/ImageWriter.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace rb::imaging {
namespace {

constexpr std::uint32_t kFileHeaderBytes = 14;

/// Numbers one after the other, little endian.
class LittleEndian {
public:
    LittleEndian& put16(unsigned value) { return put(value, 2); }
    LittleEndian& put32(std::uint32_t value) { return put(value, 4); }
    LittleEndian& zeros(std::size_t count) {
        m_bytes.resize(m_bytes.size() + count);
        return *this;
    }
    const std::vector<unsigned char>& bytes() const { return m_bytes; }

private:
    LittleEndian& put(std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i)
            m_bytes.push_back(static_cast<unsigned char>(value >> 8 * i));
        return *this;
    }
    std::vector<unsigned char> m_bytes;
};

/// Where everything goes.
struct Layout {
    std::uint32_t headerBytes = 40;
    std::uint32_t paletteEntries = 0;
    std::uint32_t bitsPerPixel = 24;
    std::uint64_t rowBytes = 0;
    std::uint64_t pixelBytes = 0;
    std::span<const std::byte> profile;

    std::uint64_t pixelsBegin() const {
        return kFileHeaderBytes + headerBytes + 4 * std::uint64_t{paletteEntries};
    }
    std::uint64_t profileBegin() const { return pixelsBegin() + pixelBytes; }
    std::uint64_t fileBytes() const { return profileBegin() + profile.size(); }
};

Layout layoutFor(const WritablePicture& picture) {
    Layout layout;
    const bool alpha = picture.channels == 2 || picture.channels == 4;
    layout.bitsPerPixel = alpha ? 32 : picture.channels == 1 ? 8 : 24;
    layout.paletteEntries = layout.bitsPerPixel == 8 ? 256 : 0;
    layout.profile = picture.profile;
    layout.headerBytes = !layout.profile.empty() ? 124 : alpha ? 108 : 40;
    layout.rowBytes =
        (static_cast<std::uint64_t>(picture.width) * layout.bitsPerPixel + 31) / 32 * 4;
    layout.pixelBytes = layout.rowBytes * static_cast<std::uint64_t>(picture.height);
    return layout;
}

std::vector<unsigned char> headers(const WritablePicture& picture, const Layout& layout) {
    constexpr std::uint32_t kMasks = 3;                                  // BI_BITFIELDS
    constexpr std::uint32_t kSrgb = 0x73524742, kEmbedded = 0x4D424544;  // "sRGB", "MBED"
    constexpr std::uint32_t kRelativeColorimetric = 2;                   // LCS_GM_GRAPHICS
    LittleEndian out;
    out.put16(0x4D42).put32(static_cast<std::uint32_t>(layout.fileBytes())).put32(0);
    out.put32(static_cast<std::uint32_t>(layout.pixelsBegin()));
    out.put32(layout.headerBytes).put32(static_cast<std::uint32_t>(picture.width));
    out.put32(static_cast<std::uint32_t>(picture.height));
    out.put16(1).put16(layout.bitsPerPixel).put32(layout.bitsPerPixel == 32 ? kMasks : 0);
    out.put32(static_cast<std::uint32_t>(layout.pixelBytes));
    out.put32(pixelsPerMetre(picture.resolution.x, picture.resolution.unit));
    out.put32(pixelsPerMetre(picture.resolution.y, picture.resolution.unit));
    out.put32(layout.paletteEntries).put32(0);
    if (layout.headerBytes > 40) {
        const bool masks = layout.bitsPerPixel == 32;
        for (std::uint32_t mask : {0xFF0000U, 0xFF00U, 0xFFU, 0xFF000000U})
            out.put32(masks ? mask : 0);
        out.put32(layout.profile.empty() ? kSrgb : kEmbedded).zeros(36 + 12);  // no primaries
    }
    if (layout.headerBytes > 108) {
        out.put32(kRelativeColorimetric);
        // Counted from the beginning of this header.
        out.put32(static_cast<std::uint32_t>(layout.profileBegin() - kFileHeaderBytes));
        out.put32(static_cast<std::uint32_t>(layout.profile.size())).put32(0);
    }
    for (std::uint32_t grey = 0; grey < layout.paletteEntries; ++grey) out.put32(grey * 0x010101U);
    return out.bytes();
}

/// A row in the order of the file: grey; blue, green, red; and alpha.
void arrangeRow(const unsigned char* in, int width, int channels, unsigned char* out) {
    const bool grey = channels < 3;
    for (int x = 0; x < width; ++x, in += channels) {
        *out++ = in[grey ? 0 : 2];
        if (channels == 1) continue;
        *out++ = in[grey ? 0 : 1];
        *out++ = in[0];
        if (channels != 3) *out++ = in[channels - 1];
    }
}

}  // namespace

ReadResult writeBmp(const WritablePicture& picture, std::FILE* file) {
    const Layout layout = layoutFor(picture);
    if (layout.fileBytes() > 0xFFFFFFFFU)
        return refuse("a picture whose bitmap has less than 4 GiB", bytesText(layout.fileBytes()));
    writeBytes(file, headers(picture, layout));
    // Several rows in one go: a narrow picture would be a call of the system a row.
    const std::uint64_t rowsAtOnce = std::max<std::uint64_t>(1, (1 << 18) / layout.rowBytes);
    std::vector<unsigned char> rows(static_cast<std::size_t>(layout.rowBytes * rowsAtOnce));
    std::size_t filled = 0;
    for (int y = picture.height - 1; y >= 0; --y) {
        arrangeRow(picture.row(y), picture.width, picture.channels, rows.data() + filled);
        filled += static_cast<std::size_t>(layout.rowBytes);
        if (filled < rows.size() && y > 0) continue;
        writeBytes(file, std::span(rows).first(filled));
        filled = 0;
    }
    const auto* const profile = reinterpret_cast<const unsigned char*>(layout.profile.data());
    writeBytes(file, {profile, layout.profile.size()});
    return {};
}

}  // namespace rb::imaging
