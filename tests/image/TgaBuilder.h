#pragma once

/// @file  TGA files made by hand, and loading of files that are recognised by their extension only.
/// Example: one red pixel.
///
///     TgaFile file;
///     file.pixels = bytes({0, 0, 255});  // blue, green, red
///     bytesOf(loadTga(file), 1, 1, Format::RGB);  // {255, 0, 0}

#include "tests/image/ImageFiles.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <vector>

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
        std::string file = bytes({static_cast<int>(text.size()), mapType, type});
        file += word(mapFirst) + word(mapEntries) + bytes({mapBits, 9, 0, 9, 0});
        file += word(width) + word(height) + bytes({bits, descriptor}) + text + map + pixels;
        if (alphaType < 0) return file;
        const std::size_t area = file.size();
        file += word(495) + std::string(492, '\0') + static_cast<char>(alphaType);
        return file + word(static_cast<int>(area)) + std::string(6, '\0') + "TRUEVISION-XFILE." +
               '\0';
    }

private:
    static std::string word(int value) { return bytes({value & 255, value >> 8}); }
};

inline Image tryToLoadTga(const std::string& file) {
    return Image::Adopt(KVRPixelImage::CreateFromMemory(
        {reinterpret_cast<const std::byte*>(file.data()), file.size()}, "test.tga"));
}

/// A refusal fails the test with its reason.
inline Image loadTga(const TgaFile& file) {
    Image image = tryToLoadTga(file.build());
    EXPECT_TRUE(image) << KVRLastImageError().Message();
    return image;
}

/// The message with which the bytes of a file are refused; empty when they are not.
inline std::string tgaRefusal(const std::string& file) {
    if (tryToLoadTga(file)) return {};
    const KVRImageError& error = KVRLastImageError();
    EXPECT_FALSE(error.expected.empty());
    EXPECT_FALSE(error.found.empty());
    return error.where + ": expected " + error.expected + ", found " + error.found;
}

}  // namespace rb::test
