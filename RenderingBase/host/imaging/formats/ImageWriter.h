#pragma once

/// @file  What a writer of one image format looks like. Private to this folder and its caller.

#include "RenderingBase/host/imaging/ImageResolution.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string_view>

namespace rb::imaging {

/// A picture to be written: grey, grey and alpha, RGB or RGBA, rows top first, no padding. Samples
/// are bytes, or floats for the formats that store such.
struct WritablePicture {
    int width = 0;
    int height = 0;
    int channels = 0;     ///< 1 to 4.
    int sampleBytes = 1;  ///< 4 for floats.
    const std::byte* pixels = nullptr;
    Resolution resolution;
    std::span<const std::byte> profile;  ///< ICC, for what is written; empty without one.

    std::size_t rowBytes() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels * sampleBytes);
    }
    const unsigned char* row(int y) const {
        return reinterpret_cast<const unsigned char*>(pixels) +
               static_cast<std::size_t>(y) * rowBytes();
    }
    const float* floatRow(int y) const { return reinterpret_cast<const float*>(row(y)); }
};

/// Writes @p picture to @p file, which is open, empty and can be searched. Refuses what the format
/// cannot hold. A file that takes no more bytes is not a writer's business: the caller finds that
/// in the error indicator of the stream, whatever the writer says. Throws std::bad_alloc.
using WriteFunction = ReadResult (*)(const WritablePicture& picture, std::FILE* file);

/// Writes all @p bytes; what becomes of them is for the caller of the writer to see.
inline void writeBytes(std::FILE* file, std::span<const unsigned char> bytes) {
    if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), file);
}

/// @p resolution in whole pixels a metre, for formats that count in 31 bits; 0 when it is unknown.
inline std::uint32_t pixelsPerMetre(double resolution, int unit) {
    const double units = unit == kPerInch ? 1 / 0.0254 : unit == kPerCentimetre ? 100 : 0;
    const double pixels = std::round(resolution * units);
    return pixels >= 1 && pixels <= 0x7FFFFFFF ? static_cast<std::uint32_t>(pixels) : 0;
}

ReadResult writePng(const WritablePicture& picture, std::FILE* file);
ReadResult writeTiff(const WritablePicture& picture, std::FILE* file);
ReadResult writeBmp(const WritablePicture& picture, std::FILE* file);
// These take 1 or 3 channels: the format has no alpha.
ReadResult writeJpegFair(const WritablePicture& picture, std::FILE* file);  ///< Quality 50.
ReadResult writeJpeg(const WritablePicture& picture, std::FILE* file);      ///< Quality 75.
ReadResult writeJpegHigh(const WritablePicture& picture, std::FILE* file);  ///< Quality 95.
// These take floats.
ReadResult writeExr(const WritablePicture& picture, std::FILE* file);
ReadResult writeHdr(const WritablePicture& picture, std::FILE* file);

}  // namespace rb::imaging
