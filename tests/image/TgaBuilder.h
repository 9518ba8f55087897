#pragma once

/// @file  TGA files made by hand, and loading of files that are recognised by their extension only.
/// Example: one red pixel.
///
///     TgaFile file;
///     file.pixels = bytes({0, 0, 255});  // blue, green, red
///     bytesOf(loadTga(file), 1, 1, Format::RGB);  // {255, 0, 0}

#include "tests/image/FileParts.h"
#include "tests/image/ImageFiles.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace rb::test {

struct TgaFile {
    int type = 2;
    int width = 1, height = 1;
    int bits = 24;
    int descriptor = 0x20;  ///< The top row first, from the left.
    std::string text;
    int mapType = 0;
    int mapFirst = 0, mapEntries = 0, mapBits = 0;
    std::string map;
    std::string pixels;
    int alphaType = -1;  ///< Of an extension area; none below 0.

    std::string build() const {
        const auto word = [](int value) {
            return littleEndian(static_cast<std::uint64_t>(value), 2);
        };
        std::string file = bytes({static_cast<int>(text.size()), mapType, type});
        file += word(mapFirst) + word(mapEntries) + bytes({mapBits, 9, 0, 9, 0});
        file += word(width) + word(height) + bytes({bits, descriptor}) + text + map + pixels;
        if (alphaType < 0) return file;
        const std::size_t area = file.size();
        file += word(495) + std::string(492, '\0') + static_cast<char>(alphaType);
        return file + littleEndian(area, 2) + std::string(6, '\0') + "TRUEVISION-XFILE." + '\0';
    }
};

inline constexpr const char* kTgaName = "test.tga";

/// A refusal fails the test with its reason.
inline Image loadTga(const TgaFile& file) { return loadBytes(file.build(), kTgaName); }

/// The message with which the bytes of a file are refused; empty when they are not.
inline std::string tgaRefusal(const std::string& file) { return refusalOf(file, kTgaName); }

}  // namespace rb::test
