#pragma once

/// @file  What a writer of one image format looks like. Private to this folder and its caller.

#include "RenderingBase/host/imaging/ImageResolution.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"

#include <cstddef>
#include <cstdio>
#include <span>
#include <string_view>

namespace rb::imaging {

/// A picture to be written: 8-bit grey, grey and alpha, RGB or RGBA, rows top first, no padding.
struct WritablePicture {
    int width = 0;
    int height = 0;
    int channels = 0;  ///< 1 to 4.
    const std::byte* pixels = nullptr;
    Resolution resolution;
    std::span<const std::byte> profile;  ///< ICC; empty without one.

    std::size_t rowBytes() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(channels);
    }
    const unsigned char* row(int y) const {
        return reinterpret_cast<const unsigned char*>(pixels) +
               static_cast<std::size_t>(y) * rowBytes();
    }
};

/// Writes @p picture to @p file, which is open, empty and can be searched. The caller closes the
/// file and looks for write errors there, too.
using WriteFunction = ReadResult (*)(const WritablePicture& picture, std::FILE* file);

ReadResult writePng(const WritablePicture& picture, std::FILE* file);
ReadResult writeTiff(const WritablePicture& picture, std::FILE* file);
ReadResult writeBmp(const WritablePicture& picture, std::FILE* file);
ReadResult writeJpegFair(const WritablePicture& picture, std::FILE* file);  ///< Quality 50.
ReadResult writeJpeg(const WritablePicture& picture, std::FILE* file);      ///< Quality 75.
ReadResult writeJpegHigh(const WritablePicture& picture, std::FILE* file);  ///< Quality 95.

}  // namespace rb::imaging
