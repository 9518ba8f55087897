// Writing of PNG files: IHDR, pHYs, iCCP, IDAT, IEND (a sample stands in PngReader.cpp), 8 bits a
// sample, not interlaced.
//
// Every row is filtered with Sub, the difference to the pixel on the left, and compressed at the
// lowest level: other filters and levels save little on pictures and take many times as long.
//
// Source: W3C PNG Specification, second edition (ISO/IEC 15948), clauses 5.3, 9.2, 10.1, 11.2 and
// 11.3.

#include "RenderingBase/host/imaging/PixelStorage.h"
#include "RenderingBase/host/imaging/formats/ImageWriter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <libdeflate.h>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace rb::imaging {
namespace {

using Byte = unsigned char;
using Bytes = std::span<const Byte>;

struct FreeCompressor {
    void operator()(libdeflate_compressor* c) const { libdeflate_free_compressor(c); }
};
using Compressor = std::unique_ptr<libdeflate_compressor, FreeCompressor>;

void append32(std::vector<Byte>& to, std::uint64_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) to.push_back(static_cast<Byte>(value >> shift));
}

bool writeBytes(std::FILE* file, Bytes bytes) {
    return bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
}

bool writeChunk(std::FILE* file, const char* type, Bytes content) {
    std::vector<Byte> frame;
    append32(frame, content.size());
    for (int i = 0; i < 4; ++i) frame.push_back(static_cast<Byte>(type[i]));
    std::uint32_t crc = libdeflate_crc32(0, frame.data() + 4, 4);
    if (!content.empty()) crc = libdeflate_crc32(crc, content.data(), content.size());
    std::vector<Byte> end;
    append32(end, crc);
    return writeBytes(file, frame) && writeBytes(file, content) && writeBytes(file, end);
}

/// A zlib stream in storage of its largest possible size. Throws std::bad_alloc.
struct Compressed {
    PixelStorage storage;
    std::size_t size = 0;

    Compressed(libdeflate_compressor* compressor, std::span<const std::byte> content)
        : storage(libdeflate_zlib_compress_bound(compressor, content.size()),
                  PixelStorage::Fill::None),
          size(libdeflate_zlib_compress(compressor, content.data(), content.size(), storage.data(),
                                        storage.size())) {}
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

/// The content of pHYs, which knows no other unit than the metre; nothing without a resolution.
std::optional<std::vector<Byte>> physicalSizeOf(const Resolution& resolution) {
    if (resolution.unit != kPerInch && resolution.unit != kPerCentimetre) return {};
    const double unitsPerMetre = resolution.unit == kPerInch ? 1 / 0.0254 : 100;
    std::vector<Byte> content;
    for (const double value : {resolution.x, resolution.y}) {
        const double perMetre = std::round(value * unitsPerMetre);
        if (!(perMetre >= 1 && perMetre <= 0x7FFFFFFF)) return {};
        append32(content, static_cast<std::uint64_t>(perMetre));
    }
    content.push_back(1);
    return content;
}

std::vector<Byte> profileChunk(libdeflate_compressor* compressor,
                               std::span<const std::byte> profile) {
    static constexpr char kName[] = "ICC profile";
    std::vector<Byte> content(kName, kName + sizeof kName);  // with the zero that ends a name
    content.push_back(0);                                    // the only compression method
    const Compressed compressed(compressor, profile);
    content.insert(content.end(), compressed.bytes().begin(), compressed.bytes().end());
    return content;
}

template <std::size_t kChannels>
void filterRow(const Byte* row, std::size_t bytes, Byte* to) {
    *to++ = 1;  // Sub
    std::memcpy(to, row, kChannels);
    for (std::size_t i = kChannels; i < bytes; ++i)
        to[i] = static_cast<Byte>(row[i] - row[i - kChannels]);
}

PixelStorage filteredRows(const WritablePicture& picture) {
    static constexpr std::array kFilters{filterRow<1>, filterRow<2>, filterRow<3>, filterRow<4>};
    const auto filter = kFilters[static_cast<std::size_t>(picture.channels - 1)];
    const std::size_t stored = 1 + picture.rowBytes();
    PixelStorage rows(stored * static_cast<std::size_t>(picture.height), PixelStorage::Fill::None);
    auto* to = reinterpret_cast<Byte*>(rows.data());
    for (int y = 0; y < picture.height; ++y, to += stored)
        filter(picture.row(y), picture.rowBytes(), to);
    return rows;
}

bool writePixels(std::FILE* file, libdeflate_compressor* compressor,
                 const WritablePicture& picture) {
    constexpr std::size_t kLargestChunk = 1 << 20;  // readers may hold a chunk in memory
    const Compressed data(compressor, filteredRows(picture).bytes());
    for (Bytes rest = data.bytes(); !rest.empty();) {
        const std::size_t length = std::min(rest.size(), kLargestChunk);
        if (!writeChunk(file, "IDAT", rest.first(length))) return false;
        rest = rest.subspan(length);
    }
    return true;
}

}  // namespace

ReadResult writePng(const WritablePicture& picture, std::FILE* file) {
    static constexpr std::array<Byte, 8> kSignature{0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    const Compressor compressor(libdeflate_alloc_compressor(1));
    if (!compressor) return refuse("enough memory to write the file", "none left");
    const auto resolution = physicalSizeOf(picture.resolution);
    const bool done = writeBytes(file, kSignature) && writeChunk(file, "IHDR", headerOf(picture)) &&
                      (!resolution || writeChunk(file, "pHYs", *resolution)) &&
                      (picture.profile.empty() ||
                       writeChunk(file, "iCCP", profileChunk(compressor.get(), picture.profile))) &&
                      writePixels(file, compressor.get(), picture) && writeChunk(file, "IEND", {});
    if (!done)
        return refuse("the whole file to be written", std::generic_category().message(errno));
    return {};
}

}  // namespace rb::imaging
