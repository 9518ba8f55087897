// Source: Microsoft, "DDS_PIXELFORMAT structure", "Programming Guide for DDS", "D3DFORMAT".

#include "RenderingBase/host/imaging/formats/DdsPixelFormat.h"

#include "RenderingBase/host/imaging/formats/DxgiFormats.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"

#include <bit>
#include <string>
#include <utility>

namespace rb::imaging {
namespace {

using Format = KVRPixelImageFormat;

constexpr std::uint32_t kHasAlpha = 0x1, kAlphaOnly = 0x2, kHasFourCC = 0x4, kPalette = 0x20,
                        kRgb = 0x40, kYuv = 0x200, kLuminance = 0x20000, kSigned = 0x80000;

constexpr std::uint32_t fourCC(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

/// Codes, and numbers of D3DFORMAT that stand in their place, with the DXGI number of the same.
/// DXT2 and DXT4 have their colours multiplied by alpha; they are delivered as stored.
constexpr std::pair<std::uint32_t, std::uint32_t> kDxgiOfCode[] = {
    {fourCC("DXT1"), 71},
    {fourCC("DXT2"), 74},
    {fourCC("DXT3"), 74},
    {fourCC("DXT4"), 77},
    {fourCC("DXT5"), 77},
    {fourCC("ATI1"), 80},
    {fourCC("BC4U"), 80},
    {fourCC("BC4S"), 81},
    {fourCC("ATI2"), 83},
    {fourCC("BC5U"), 83},
    {fourCC("BC5S"), 84},
    {fourCC("RGBG"), 68},
    {fourCC("GRGB"), 69},
    {fourCC("YUY2"), 107},
    {36, 11},
    {110, 13},
    {111, 54},
    {112, 34},
    {113, 10},
    {114, 41},
    {115, 16},
    {116, 2},
};

/// The four letters, or the number when they are none.
std::string nameOfCode(std::uint32_t code) {
    std::string letters;
    for (int i = 0; i < 4; ++i) letters += static_cast<char>(code >> 8 * i);
    for (const char c : letters)
        if (c < ' ' || c > '~') return "number " + std::to_string(code);
    return inQuotes(letters);
}

ReadResult texelsOfCode(std::uint32_t code, TexelFormat& texels) {
    if (code == fourCC("RXGB")) {
        texels = texelFormat("RXGB", {BlockKind::BC3, BlockTexels::Colors::RedInAlpha});
        return {};
    }
    for (const auto& [known, number] : kDxgiOfCode)
        if (known == code) return dxgiTexels(number, "byte 84", texels);
    return refuse("a known texel format", "the code " + nameOfCode(code), "byte 84");
}

bool isContiguous(std::uint32_t mask) {
    return mask == 0 || std::popcount(mask) + std::countl_zero(mask) + std::countr_zero(mask) == 32;
}

/// The order of four whole bytes, or of three before a byte of padding; `None` for other masks.
Format orderOfBytes(const std::array<std::uint32_t, 4>& masks, std::uint32_t bits) {
    using Masks = std::array<std::uint32_t, 4>;
    constexpr std::uint32_t b0 = 0xFF, b1 = 0xFF00, b2 = 0xFF0000, b3 = 0xFF000000;
    if (bits >= 24 && masks == Masks{b0, b1, b2, 0}) return Format::RGB;
    if (bits >= 24 && masks == Masks{b2, b1, b0, 0}) return Format::BGR;
    if (bits == 32 && masks == Masks{b0, b1, b2, b3}) return Format::RGBA;
    if (bits == 32 && masks == Masks{b2, b1, b0, b3}) return Format::BGRA;
    if (bits == 32 && masks == Masks{b1, b2, b3, b0}) return Format::ARGB;
    if (bits == 32 && masks == Masks{b3, b2, b1, b0}) return Format::ABGR;
    return Format::None;
}

/// The masks that count for the kind of texels that the flags tell.
std::array<std::uint32_t, 4> usedMasks(const DdsPixelFormat& format) {
    const std::uint32_t whole = format.bits == 32 ? ~0U : (1U << format.bits) - 1;
    std::array<std::uint32_t, 4> masks = format.masks;
    if (format.flags & kAlphaOnly) return {0, 0, 0, masks[3] ? masks[3] : whole};
    if (!(format.flags & kHasAlpha)) masks[3] = 0;
    if (format.flags & kLuminance) {
        // Some writers put the mask of grey where no bit of a texel is.
        if ((masks[0] & whole) == 0) masks[0] = whole & ~masks[3];
        masks[1] = masks[2] = 0;
    }
    return masks;
}

ReadResult texelsOfMasks(const DdsPixelFormat& format, TexelFormat& texels) {
    if (format.bits != 8 && format.bits != 16 && format.bits != 24 && format.bits != 32)
        return refuse("texels of 8, 16, 24 or 32 bits", std::to_string(format.bits), "byte 88");
    const auto masks = usedMasks(format);
    std::uint32_t all = 0;
    for (const std::uint32_t mask : masks) {
        if (!isContiguous(mask))
            return refuse("masks of neighbouring bits", "0x" + hexText(mask), "byte 92");
        all |= mask;
    }
    if (all == 0) return refuse("masks of channels", "none", "byte 92");
    const bool isSigned = (format.flags & kSigned) != 0;
    const std::string name = std::to_string(format.bits) + " bits with masks";
    const Format order = isSigned ? Format::None : orderOfBytes(masks, format.bits);
    if (order == Format::None)
        texels = texelFormat(name, MaskedTexels{masks, isSigned}, format.bits / 8);
    else
        texels = inOrder(
            texelFormat(name, PlainTexels{TexelSample::Unorm8, static_cast<int>(format.bits / 8)}),
            order);
    return {};
}

}  // namespace

bool DdsPixelFormat::isDx10() const {
    return flags & kHasFourCC && fourCC == imaging::fourCC("DX10");
}

ReadResult ddsTexels(const DdsPixelFormat& format, TexelFormat& texels) {
    if (format.flags & kHasFourCC) return texelsOfCode(format.fourCC, texels);
    if (format.flags & kPalette) return refuse("colours", "a palette of colours", "byte 80");
    if (format.flags & kYuv) return refuse("colours", "video (YUV) texels", "byte 80");
    if (format.flags & (kRgb | kLuminance | kAlphaOnly | kSigned))
        return texelsOfMasks(format, texels);
    return refuse("a known kind of texels", "the flags 0x" + hexText(format.flags), "byte 80");
}

}  // namespace rb::imaging
