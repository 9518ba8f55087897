#pragma once

/// @file  PNG files put together byte by byte, for what no encoder writes.

#include "tests/image/FileParts.h"

#include <cstdint>
#include <string>

namespace rb::test {

/// The check sum of chunks (PNG, annex D), a bit at a time.
inline std::uint32_t crcOf(const std::string& bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) crc = crc & 1 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
    }
    return ~crc;
}

inline std::string chunk(const std::string& type, const std::string& content) {
    return bigEndian(content.size(), 4) + type + content + bigEndian(crcOf(type + content), 4);
}

/// The parts of a PNG file. A test changes what it is about.
struct PngBuilder {
    std::uint32_t width = 1, height = 1;
    int bits = 8, colorType = 0, interlace = 0;
    std::string before{};  ///< Chunks between IHDR and IDAT.
    std::string rows{};    ///< Filter types and stored bytes.
    std::string data{};    ///< In place of the stream of the rows, when not empty.
    std::string after{};   ///< Chunks between IDAT and IEND.

    std::string header() const {
        return chunk("IHDR", bigEndian(width, 4) + bigEndian(height, 4) + static_cast<char>(bits) +
                                 static_cast<char>(colorType) + std::string(2, '\0') +
                                 static_cast<char>(interlace));
    }
    std::string build() const {
        return "\x89PNG\r\n\x1a\n" + header() + before +
               chunk("IDAT", data.empty() ? zlibStream(rows) : data) + after + chunk("IEND", "");
    }
};

}  // namespace rb::test
