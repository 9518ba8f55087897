#include "RenderingBase/host/imaging/formats/TiffStorage.h"

#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"

#include <algorithm>

namespace rb::imaging {
namespace {

constexpr std::uint64_t kMiB = 1 << 20;

/// The fewest bytes in which a block of @p rows rows can be stored.
std::uint64_t leastStored(const TiffDirectory& d, std::uint32_t rows) {
    // The library also finds old-style JPEG that is not listed as blocks, by the fields of TIFF
    // 6.0, section 22.
    if (d.compression->code == COMPRESSION_OJPEG) return 0;
    // Subsampled colour takes little more room than grey.
    const std::uint64_t rowBytes =
        d.throughRgba ? std::uint64_t{d.blockWidth} * static_cast<std::uint64_t>(d.type.bits) / 8
                      : d.rowBytes();
    return std::max<std::uint64_t>(
        1, d.compression->leastBytes(saturatedProduct(rowBytes, rows), rows));
}

/// Compares what the file says about one block with the bytes that are there.
/// @param count  Set to the bytes that it takes.
ReadResult checkStoredBlock(const TiffHandle& handle, std::uint64_t fileBytes,
                            const TiffDirectory& d, std::uint32_t block, std::uint64_t& count) {
    const std::uint64_t offset = TIFFGetStrileOffset(handle.get(), block);
    count = TIFFGetStrileByteCount(handle.get(), block);
    if (offset > fileBytes || count > fileBytes - offset)
        return refuse(bytesText(count) + " at " + placeText(offset),
                      "a file of " + bytesText(fileBytes), nameOfBlock(d, block));
    const std::uint32_t row = block % (d.across() * d.down()) / d.across();
    const std::uint64_t least = leastStored(d, d.rowsInBlock(row));
    if (count < least)
        return refuse("at least " + bytesText(least), bytesText(count), nameOfBlock(d, block));
    return {};
}

/// The most bytes that blocks may claim together. Writers put each block in a place of its own, so
/// that they claim the file's size at most. A few store alike blocks once, such as empty tiles:
/// twice that passes, and whatever is less than the pixels that come of it, because reading it is
/// no more work than delivering those.
std::uint64_t mostStored(std::uint64_t fileBytes, const TiffDirectory& d, std::uint64_t planes) {
    const std::uint64_t decoded = saturatedProduct(d.rowBytes(), d.across());
    return std::max(saturatedProduct(2, fileBytes), saturatedProduct(decoded, d.height, planes));
}

}  // namespace

std::uint64_t decoderAllowance(std::uint64_t fileBytes, const TiffDirectory& directory) {
    // Stored bytes, and a few times what they decode to: the log codecs keep intermediate values.
    constexpr std::uint64_t kMost = std::uint64_t{1} << 62;
    const std::uint64_t decoded = saturatedProduct(directory.rowBytes(), directory.blockHeight);
    return std::min(
        kMost, 16 * kMiB + std::min(kMost / 4, fileBytes) * 2 + std::min(kMost / 16, decoded) * 4);
}

ReadResult checkTileSize(const TiffDirectory& d, std::uint64_t planes) {
    const std::uint64_t tile = saturatedProduct(d.rowBytes(), d.blockHeight, planes);
    const std::uint64_t pixelBits =
        static_cast<std::uint64_t>(d.samplesInBlock()) * static_cast<std::uint64_t>(d.type.bits);
    const std::uint64_t picture =
        saturatedProduct(saturatedProduct(d.width, d.height), planes * pixelBits) / 8;
    const std::uint64_t most = std::max(16 * kMiB, saturatedProduct(4, picture));
    return !d.tiled || tile <= most
               ? ReadResult{}
               : refuse("tiles of at most " + bytesText(most), bytesText(tile));
}

ReadResult checkStoredBlocks(const TiffHandle& handle, std::uint64_t fileBytes,
                             const TiffDirectory& d, std::span<const std::uint32_t> planes) {
    const std::uint64_t most = mostStored(fileBytes, d, planes.size());
    const std::uint32_t each = d.across() * d.down();
    std::uint64_t sum = 0;  // does not overflow: no block adds more than the file's size
    for (const std::uint32_t plane : planes)
        for (std::uint32_t block = plane * each; block < (plane + 1) * each; ++block) {
            std::uint64_t count = 0;
            if (ReadResult refusal = checkStoredBlock(handle, fileBytes, d, block, count))
                return refusal;
            sum += count;
            if (sum > most)
                return refuse("blocks of together at most " + bytesText(most),
                              "at least " + bytesText(sum), nameOfBlock(d, block));
        }
    return {};
}

std::string nameOfBlock(const TiffDirectory& directory, std::uint32_t block) {
    return (directory.tiled ? "tile " : "strip ") + std::to_string(block);
}

}  // namespace rb::imaging
