// The header of TGA files, all numbers little endian:
//
//   00           bytes of text behind the header
//   01           1: there is a colour map
//   09           1 indexed, 2 colour, 3 grey; 9, 10, 11 the same in run lengths
//   00 00 04 00  the first index of the colour map, its entries
//   18           bits of an entry
//   00 00 00 00  where on the screen the picture was
//   40 00 20 00  columns, rows
//   08           bits of a pixel
//   20           bits of it that are no colour (0 to 3), from the right (4), from the top (5)
//
// Then the text, the map, the pixels. Version 2 ends with 26 bytes: places of an extension area and
// of a directory, "TRUEVISION-XFILE", a point and a zero. The last byte of the extension area says
// what the bits that are no colour are: 3 alpha, 4 alpha multiplied into the colours, 1 and 2
// nothing; 0 should mean that there are none.
//
// Source: Truevision, "TGA File Format", version 2.0 (1991).
//
// Pixels of 32 bits, and of 16 grey ones, have alpha even when the header counts no bits for it and
// the extension area has a 0: there are programs that leave both at 0 beside a good alpha, and
// other readers deliver it. Only the explicit 1 and 2 are believed. The spare bit of 16 colour bits
// is alpha when it is counted.

#include "RenderingBase/host/imaging/formats/TgaHeader.h"

#include "RenderingBase/host/imaging/formats/Endian.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <string_view>

namespace rb::imaging {
namespace {

constexpr std::size_t kHeaderBytes = 18;
constexpr unsigned kInterleaved = 0xC0, kFromTop = 0x20, kFromRight = 0x10, kOtherBits = 0x0F;
using RawHeader = std::array<unsigned char, kHeaderBytes>;

bool isColorDepth(unsigned bits) { return bits == 15 || bits == 16 || bits == 24 || bits == 32; }

ReadResult checkPixelBits(const TgaHeader& header) {
    const auto check = [&](bool fits, const char* expected) -> ReadResult {
        if (fits) return {};
        return refuse(std::string(expected) + " bits a pixel", std::to_string(header.bits),
                      "byte 16");
    };
    if (header.kind == TgaHeader::Kind::Color)
        return check(isColorDepth(header.bits), "15, 16, 24 or 32");
    return check(header.bits == 8 || header.bits == 16, "8 or 16");
}

ReadResult readMap(const RawHeader& raw, TgaHeader& header) {
    const bool indexed = header.kind == TgaHeader::Kind::Indexed;
    if (indexed && raw[1] != 1) return refuse("a colour map (1)", std::to_string(raw[1]), "byte 1");
    header.mapBegin = header.pixelsBegin = kHeaderBytes + raw[0];
    if (raw[1] == 0) return {};
    header.mapFirst = little16(&raw[3]);
    header.mapEntries = little16(&raw[5]);
    header.mapBits = raw[7];
    header.pixelsBegin += header.mapEntries * header.mapEntryBytes();
    if (indexed && !isColorDepth(header.mapBits))
        return refuse("15, 16, 24 or 32 bits an entry of the colour map",
                      std::to_string(header.mapBits), "byte 7");
    return {};
}

/// What the extension area says of alpha; -1 without one.
int readAlphaType(ByteSource& source) {
    constexpr std::string_view kSignature("TRUEVISION-XFILE.\0", 18);
    constexpr std::size_t kFooterBytes = 26, kAreaBytes = 495;
    std::array<unsigned char, kFooterBytes> footer;
    if (source.size() < kHeaderBytes + kFooterBytes ||
        source.read(source.size() - kFooterBytes, footer.data(), kFooterBytes) < kFooterBytes ||
        std::memcmp(footer.data() + 8, kSignature.data(), kSignature.size()) != 0)
        return -1;
    const std::uint64_t area = little32(footer.data());
    std::array<unsigned char, 2> length;
    unsigned char type = 0;
    if (area < kHeaderBytes || source.read(area, length.data(), 2) < 2 ||
        little16(length.data()) < kAreaBytes || source.read(area + kAreaBytes - 1, &type, 1) < 1)
        return -1;
    return type;
}

bool hasAlpha(const TgaHeader& header, unsigned otherBits, int alphaType) {
    if (alphaType == 1 || alphaType == 2) return false;
    if (header.kind == TgaHeader::Kind::Grey) return header.bits == 16;
    return header.colorBits() == 32 || (header.colorBits() == 16 && otherBits == 1);
}

}  // namespace

bool isPlausibleTga(std::span<const std::byte> head) {
    if (head.size() < kHeaderBytes) return false;
    RawHeader raw;
    std::memcpy(raw.data(), head.data(), raw.size());
    constexpr std::array kKnownTypes{0, 1, 2, 3, 9, 10, 11, 32, 33};
    const unsigned bits = raw[16];
    return raw[1] <= 1 &&
           std::find(kKnownTypes.begin(), kKnownTypes.end(), raw[2]) != kKnownTypes.end() &&
           little16(&raw[12]) != 0 && little16(&raw[14]) != 0 && (bits == 8 || isColorDepth(bits));
}

ReadResult readTgaHeader(ByteSource& source, TgaHeader& header) {
    RawHeader raw{};
    if (source.read(0, raw.data(), raw.size()) < raw.size())
        return refuse("a header of 18 bytes", "the end of the file");
    const unsigned type = raw[2] & ~8U;
    if (type < 1 || type > 3)
        return refuse("a picture of type 1, 2, 3, 9, 10 or 11", std::to_string(raw[2]), "byte 2");
    header.kind = type == 1   ? TgaHeader::Kind::Indexed
                  : type == 2 ? TgaHeader::Kind::Color
                              : TgaHeader::Kind::Grey;
    header.runLengths = (raw[2] & 8) != 0;
    header.width = little16(&raw[12]);
    header.height = little16(&raw[14]);
    header.bits = raw[16];
    const unsigned descriptor = raw[17];
    if (descriptor & kInterleaved)
        return refuse("rows that are not interleaved", std::to_string(descriptor), "byte 17");
    header.rightToLeft = (descriptor & kFromRight) != 0;
    header.topDown = (descriptor & kFromTop) != 0;
    if (ReadResult refusal = checkPixelBits(header)) return refusal;
    if (ReadResult refusal = readMap(raw, header)) return refusal;
    header.alpha = hasAlpha(header, descriptor & kOtherBits, readAlphaType(source));
    return {};
}

}  // namespace rb::imaging
