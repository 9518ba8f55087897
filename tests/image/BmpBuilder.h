#pragma once

/// @file  Windows bitmaps made by hand. Example: one red pixel.
///
///     BmpFile file;
///     file.pixels = bytes({0, 0, 255, 0});  // blue, green, red, filled up to four bytes
///     bytesOf(loadBytes(file.build()), 1, 1, Format::RGB);  // {255, 0, 0}

#include "tests/image/FileParts.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace rb::test {

struct BmpFile {
    int headerBytes = 40;
    int width = 1;
    int height = 1;
    int bits = 24;
    std::uint32_t storage = 0;
    int xPerMetre = 0, yPerMetre = 0;
    std::uint32_t colors = 0;                  ///< Declared.
    std::vector<std::uint32_t> masks;          ///< Red, green, blue, alpha.
    std::vector<std::uint32_t> palette;        ///< 0xRRGGBB; with three bytes in the oldest files.
    std::string behindPalette;                 ///< Bytes before the pixels.
    std::optional<std::uint32_t> pixelsBegin;  ///< Where they are said to begin, if not the truth.
    std::string colorSpace;                    ///< Four letters as they stand in the file.
    std::string profile;                       ///< Goes behind the pixels.
    std::string pixels;

    std::string build() const {
        std::string header(static_cast<std::size_t>(headerBytes), '\0');
        put(header, 0, 4, static_cast<std::uint32_t>(headerBytes));
        if (headerBytes == 12) {
            put(header, 4, 2, static_cast<std::uint32_t>(width));
            put(header, 6, 2, static_cast<std::uint32_t>(height));
            put(header, 8, 2, 1);
            put(header, 10, 2, static_cast<std::uint32_t>(bits));
        } else {
            fill(header);
        }
        if (headerBytes == 40)
            for (const std::uint32_t mask : masks) header += littleEndian(mask, 4);
        for (const std::uint32_t color : palette)
            header += littleEndian(color, headerBytes == 12 ? 3 : 4);
        header += behindPalette;
        const std::size_t begin = 14 + header.size();
        if (!profile.empty()) {
            put(header, 112, 4, static_cast<std::uint32_t>(header.size() + pixels.size()));
            put(header, 116, 4, static_cast<std::uint32_t>(profile.size()));
        }
        return "BM" + littleEndian(begin + pixels.size() + profile.size(), 4) + littleEndian(0, 4) +
               littleEndian(pixelsBegin.value_or(begin), 4) + header + pixels + profile;
    }

private:
    /// Little endian; what the header is too short for is left out.
    static void put(std::string& to, std::size_t at, int count, std::uint32_t value) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(count) && at + i < to.size(); ++i)
            to[at + i] = static_cast<char>(value >> 8 * i);
    }
    void fill(std::string& header) const {
        put(header, 4, 4, static_cast<std::uint32_t>(width));
        put(header, 8, 4, static_cast<std::uint32_t>(height));
        put(header, 12, 2, 1);
        put(header, 14, 2, static_cast<std::uint32_t>(bits));
        put(header, 16, 4, storage);
        put(header, 24, 4, static_cast<std::uint32_t>(xPerMetre));
        put(header, 28, 4, static_cast<std::uint32_t>(yPerMetre));
        put(header, 32, 4, colors);
        for (std::size_t i = 0; i < masks.size(); ++i) put(header, 40 + 4 * i, 4, masks[i]);
        for (std::size_t i = 0; i < colorSpace.size(); ++i) header.at(56 + i) = colorSpace[i];
    }
};

}  // namespace rb::test
