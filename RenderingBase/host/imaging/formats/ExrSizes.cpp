#include "RenderingBase/host/imaging/formats/ExrSizes.h"

#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"

#include <ImfChannelList.h>
#include <ImfCompression.h>
#include <ImfPartType.h>
#include <algorithm>
#include <string>

namespace rb::imaging {
namespace {

/// How a compression stores pixels: rows that make a chunk, and the most bytes that a stored byte
/// can stand for.
struct Coding {
    std::uint64_t rowsInChunk;
    std::uint64_t bestRatio;
};

Coding codingOf(Imf::Compression compression) {
    // ZIP is DEFLATE with its 1032:1; PXR24 drops a byte of a float before that; RLE stores 128
    // bytes in 2, B44A 32 bytes in 3; PIZ codes 255 equal halves in ten bits; DWA blocks of zeros
    // do still better.
    switch (compression) {
        case Imf::NO_COMPRESSION:
            return {1, 1};
        case Imf::RLE_COMPRESSION:
            return {1, 64};
        case Imf::ZIPS_COMPRESSION:
            return {1, 1032};
        case Imf::ZIP_COMPRESSION:
            return {16, 1032};
        case Imf::PXR24_COMPRESSION:
            return {16, 1376};
        case Imf::PIZ_COMPRESSION:
            return {32, 2048};
        case Imf::B44_COMPRESSION:
        case Imf::B44A_COMPRESSION:
            return {32, 11};
        case Imf::DWAA_COMPRESSION:
            return {32, 1 << 16};
        default:
            return {256, 1 << 16};
    }
}

bool isTiled(const Imf::Header& part) { return part.type() == Imf::TILEDIMAGE; }

std::uint64_t lengthOf(int first, int last) {
    return static_cast<std::uint64_t>(std::int64_t{last} - first + 1);
}
std::uint64_t widthOf(const Imf::Header& part) {
    return lengthOf(part.dataWindow().min.x, part.dataWindow().max.x);
}
std::uint64_t heightOf(const Imf::Header& part) {
    return lengthOf(part.dataWindow().min.y, part.dataWindow().max.y);
}

std::uint64_t chunksOf(const Imf::Header& part) {
    const auto pieces = [](std::uint64_t length, std::uint64_t size) {
        return (length - 1) / size + 1;
    };
    if (isTiled(part))
        return saturatedProduct(pieces(widthOf(part), part.tileDescription().xSize),
                                pieces(heightOf(part), part.tileDescription().ySize));
    return pieces(heightOf(part), codingOf(part.compression()).rowsInChunk);
}

}  // namespace

std::uint64_t exrSampleBytes(Imf::PixelType type) { return type == Imf::HALF ? 2 : 4; }

/// Every chunk has a place in the table of offsets and its own head; the pixels of all channels are
/// in them.
std::uint64_t leastExrBytes(const Imf::Header& part) {
    constexpr std::uint64_t kTableEntry = 8, kLeastHead = 8;
    std::uint64_t pixelBytes = 0;
    for (auto it = part.channels().begin(); it != part.channels().end(); ++it) {
        const auto across = static_cast<std::uint64_t>(std::max(1, it.channel().xSampling));
        const auto down = static_cast<std::uint64_t>(std::max(1, it.channel().ySampling));
        pixelBytes += saturatedProduct(widthOf(part) / across, heightOf(part) / down,
                                       exrSampleBytes(it.channel().type));
    }
    return saturatedProduct(chunksOf(part), kTableEntry + kLeastHead) +
           pixelBytes / codingOf(part.compression()).bestRatio;
}

ReadResult checkExrChunks(const Imf::Header& part, std::uint64_t delivered,
                          std::uint64_t bytesOfAPixel) {
    constexpr std::uint64_t kAlways = 16 << 20;
    std::uint64_t pixelBytes = 0;
    for (auto it = part.channels().begin(); it != part.channels().end(); ++it)
        pixelBytes += exrSampleBytes(it.channel().type);
    const std::uint64_t pixels =
        isTiled(part) ? saturatedProduct(part.tileDescription().xSize, part.tileDescription().ySize)
                      : saturatedProduct(widthOf(part), codingOf(part.compression()).rowsInChunk);
    const std::uint64_t bytes = std::max(saturatedProduct(pixels, pixelBytes),
                                         saturatedProduct(widthOf(part), bytesOfAPixel));
    const std::uint64_t most = std::max(kAlways, saturatedProduct(4, delivered));
    return bytes <= most ? ReadResult{}
                         : refuse("chunks of at most " + bytesText(most), bytesText(bytes));
}

}  // namespace rb::imaging
