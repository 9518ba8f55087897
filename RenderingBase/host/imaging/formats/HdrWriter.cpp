// Writing of Radiance pictures:
//
//   #?RADIANCE
//   FORMAT=32-bit_rle_rgbe
//
//   -Y 480 +X 640                480 scanlines of 640 pixels
//   02 02 02 80 ...              the scanlines
//
// A pixel is three mantissas and a common exponent: m * 2^(e - 136), the largest mantissa 128 to
// 255. Scanlines of 8 to 32767 pixels have their four components one after the other, each in runs:
// a count above 128 repeats the byte behind it, up to 128 copies the bytes behind it. Others are
// plain pixels. Source: "The RADIANCE Picture File Format" (G. Ward), and G. Ward, "Real Pixels",
// Graphics Gems II (1991).
//
// Mantissas are rounded to the nearest, as they are read without a half step. Grey goes out as
// three equal colours, and alpha is dropped: the format has neither. Negative numbers and NaN are
// black, too large ones the largest there is.

#include "RenderingBase/host/imaging/formats/ImageWriter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace rb::imaging {
namespace {

using Rgbe = std::array<unsigned char, 4>;

constexpr int kExponentBias = 128;

Rgbe encoded(const std::array<float, 3>& color) {
    constexpr float kLargest = 0x1.FEp126F;  // 255 * 2^(255 - 136)
    std::array<float, 3> values{};
    // NaN compares as false: it becomes 0.
    for (std::size_t i = 0; i < 3; ++i) values[i] = color[i] > 0 ? std::min(color[i], kLargest) : 0;
    const float largest = std::max({values[0], values[1], values[2]});
    int exponent = 0;  // largest is 0.5 to 1 times 2^exponent
    std::frexp(largest, &exponent);
    if (std::nearbyint(std::ldexp(largest, 8 - exponent)) > 255) ++exponent;
    if (largest == 0 || exponent + kExponentBias < 1) return {};
    Rgbe pixel{};
    for (std::size_t i = 0; i < 3; ++i)
        pixel[i] = static_cast<unsigned char>(std::nearbyint(std::ldexp(values[i], 8 - exponent)));
    pixel[3] = static_cast<unsigned char>(exponent + kExponentBias);
    return pixel;
}

/// How many bytes from the beginning on are equal, 127 at most.
std::size_t runLength(std::span<const unsigned char> bytes) {
    constexpr std::size_t kMost = 127;
    std::size_t length = 1;
    while (length < std::min(kMost, bytes.size()) && bytes[length] == bytes[0]) ++length;
    return length;
}

/// A repetition pays from this length on, also between two stretches that are copied.
constexpr std::size_t kShortestRun = 4;

/// How many bytes come before the next repetition, 128 at most.
std::size_t copyLength(std::span<const unsigned char> bytes) {
    constexpr std::size_t kMost = 128;
    std::size_t length = 0;
    while (length < std::min(kMost, bytes.size()) &&
           runLength(bytes.subspan(length)) < kShortestRun)
        ++length;
    return length;
}

void appendRuns(std::span<const unsigned char> bytes, std::vector<unsigned char>& out) {
    while (!bytes.empty()) {
        const std::size_t run = runLength(bytes);
        const std::size_t length = run >= kShortestRun ? run : copyLength(bytes);
        if (run >= kShortestRun) {
            out.push_back(static_cast<unsigned char>(128 + run));
            out.push_back(bytes[0]);
        } else {
            out.push_back(static_cast<unsigned char>(length));
            out.insert(out.end(), bytes.begin(),
                       bytes.begin() + static_cast<std::ptrdiff_t>(length));
        }
        bytes = bytes.subspan(length);
    }
}

/// The pixels of a row, one component after the other.
void encodeRow(const WritablePicture& picture, int y, std::vector<unsigned char>& planes) {
    const auto width = static_cast<std::size_t>(picture.width);
    const float* in = picture.floatRow(y);
    const bool isGrey = picture.channels < 3;
    for (std::size_t x = 0; x < width; ++x, in += picture.channels) {
        const Rgbe pixel = encoded({in[0], in[isGrey ? 0 : 1], in[isGrey ? 0 : 2]});
        for (std::size_t component = 0; component < 4; ++component)
            planes[component * width + x] = pixel[component];
    }
}

void appendScanline(const std::vector<unsigned char>& planes, std::size_t width,
                    std::vector<unsigned char>& out) {
    if (width < 8 || width > 32767) {
        for (std::size_t x = 0; x < width; ++x)
            for (std::size_t component = 0; component < 4; ++component)
                out.push_back(planes[component * width + x]);
        return;
    }
    for (const std::size_t byte : {std::size_t{2}, std::size_t{2}, width >> 8, width & 255})
        out.push_back(static_cast<unsigned char>(byte));
    for (std::size_t component = 0; component < 4; ++component)
        appendRuns(std::span(planes).subspan(component * width, width), out);
}

}  // namespace

ReadResult writeHdr(const WritablePicture& picture, std::FILE* file) {
    const std::string header = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y " +
                               std::to_string(picture.height) + " +X " +
                               std::to_string(picture.width) + "\n";
    std::fwrite(header.data(), 1, header.size(), file);
    const auto width = static_cast<std::size_t>(picture.width);
    std::vector<unsigned char> planes(4 * width), scanline;
    for (int y = 0; y < picture.height; ++y) {
        encodeRow(picture, y, planes);
        scanline.clear();
        appendScanline(planes, width, scanline);
        writeBytes(file, scanline);
    }
    return {};
}

}  // namespace rb::imaging
