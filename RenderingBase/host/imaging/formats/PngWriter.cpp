// Writing of PNG files: IHDR, pHYs, iCCP, IDAT, IEND (a sample stands in PngReader.cpp), 8 bits a
// sample, not interlaced.
//
// Every row is filtered with Sub, the difference to the pixel on the left: choosing among the
// filters saves little on pictures and takes many times as long.
//
// Source: W3C, Portable Network Graphics, 2nd edition (ISO/IEC 15948), clauses 5.3, 9.2, 10.1
// and 11.

#include "RenderingBase/host/imaging/PixelStorage.h"
#include "RenderingBase/host/imaging/formats/DeflatedRows.h"
#include "RenderingBase/host/imaging/formats/ImageWriter.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <libdeflate.h>
#include <vector>

namespace rb::imaging {
namespace {

using Byte = unsigned char;
using Bytes = std::span<const Byte>;

void append32(std::vector<Byte>& to, std::uint64_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) to.push_back(static_cast<Byte>(value >> shift));
}

void writeChunk(std::FILE* file, const char* type, Bytes content) {
    std::vector<Byte> frame;
    append32(frame, content.size());
    for (int i = 0; i < 4; ++i) frame.push_back(static_cast<Byte>(type[i]));
    std::uint32_t crc = libdeflate_crc32(0, frame.data() + 4, 4);
    if (!content.empty()) crc = libdeflate_crc32(crc, content.data(), content.size());
    std::vector<Byte> end;
    append32(end, crc);
    writeBytes(file, frame);
    writeBytes(file, content);
    writeBytes(file, end);
}

/// A zlib stream in storage of its largest possible size. Throws std::bad_alloc.
struct Compressed {
    PixelStorage storage;
    std::size_t size = 0;

    Compressed(const Deflater& deflater, std::span<const std::byte> content)
        : storage(deflater.bound(content.size()), PixelStorage::Fill::None),
          size(deflater.compress(content.data(), content.size(), storage.data(), storage.size())) {}
    Bytes bytes() const { return {reinterpret_cast<const Byte*>(storage.data()), size}; }
};

std::vector<Byte> headerOf(const WritablePicture& picture) {
    static constexpr std::array<Byte, 5> kColorTypes{0, 0, 4, 2, 6};  // by the number of channels
    std::vector<Byte> content;
    append32(content, static_cast<std::uint64_t>(picture.width));
    append32(content, static_cast<std::uint64_t>(picture.height));
    content.push_back(8);
    content.push_back(kColorTypes[static_cast<std::size_t>(picture.channels)]);
    content.insert(content.end(), 3, 0);  // the only compression and filter methods; not interlaced
    return content;
}

/// The content of pHYs, which knows no other unit than the metre; empty without a resolution.
std::vector<Byte> physicalSizeOf(const Resolution& resolution) {
    std::vector<Byte> content;
    for (const double value : {resolution.x, resolution.y}) {
        const std::uint32_t perMetre = pixelsPerMetre(value, resolution.unit);
        if (perMetre == 0) return {};
        append32(content, perMetre);
    }
    content.push_back(1);
    return content;
}

std::vector<Byte> profileChunk(const Deflater& deflater, std::span<const std::byte> profile) {
    static constexpr char kName[] = "ICC profile";
    std::vector<Byte> content(kName, kName + sizeof kName);  // with the zero that ends a name
    content.push_back(0);                                    // the only compression method
    const Compressed compressed(deflater, profile);
    content.insert(content.end(), compressed.bytes().begin(), compressed.bytes().end());
    return content;
}

PixelStorage filteredRows(const WritablePicture& picture) {
    constexpr Byte kSub = 1;
    const std::size_t stored = 1 + picture.rowBytes();
    PixelStorage rows(stored * static_cast<std::size_t>(picture.height), PixelStorage::Fill::None);
    auto* to = reinterpret_cast<Byte*>(rows.data());
    for (int y = 0; y < picture.height; ++y, to += stored) {
        *to = kSub;
        differentiate(picture.row(y), picture.rowBytes(),
                      static_cast<std::size_t>(picture.channels), to + 1);
    }
    return rows;
}

void writePixels(std::FILE* file, const Deflater& deflater, const WritablePicture& picture) {
    constexpr std::size_t kLargestChunk = 1 << 20;  // readers may hold a chunk in memory
    const Compressed data(deflater, filteredRows(picture).bytes());
    for (Bytes rest = data.bytes(); !rest.empty();) {
        const std::size_t length = std::min(rest.size(), kLargestChunk);
        writeChunk(file, "IDAT", rest.first(length));
        rest = rest.subspan(length);
    }
}

}  // namespace

ReadResult writePng(const WritablePicture& picture, std::FILE* file) {
    static constexpr std::array<Byte, 8> kSignature{0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    const Deflater deflater;
    writeBytes(file, kSignature);
    writeChunk(file, "IHDR", headerOf(picture));
    if (const auto size = physicalSizeOf(picture.resolution); !size.empty())
        writeChunk(file, "pHYs", size);
    if (!picture.profile.empty()) writeChunk(file, "iCCP", profileChunk(deflater, picture.profile));
    writePixels(file, deflater, picture);
    writeChunk(file, "IEND", {});
    return {};
}

}  // namespace rb::imaging
