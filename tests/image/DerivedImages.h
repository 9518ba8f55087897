#pragma once

/// @file  What tests of derived images share.

#include "tests/image/ImageFiles.h"

#include <cstring>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace rb::test {

/// Every format that an image can have.
inline std::vector<Format> allFormats() {
    std::vector<Format> formats;
    for (int code = 0; code <= 20; ++code)
        if (code != static_cast<int>(Format::None)) formats.push_back(static_cast<Format>(code));
    return formats;
}

/// An image whose bytes count upwards; bilevel ones have 0 and 1.
inline Image numbered(int width, int height, Format format) {
    const Image image = Image::Adopt(new KVRPixelImage(width, height, format));
    int number = 0;
    for (std::byte& byte : image->GetRawPixels())
        byte = static_cast<std::byte>(format == Format::Bilevel ? number++ % 2 : number++ % 64);
    return image;
}

/// An image with these values in memory.
template <class Value>
Image imageOf(int width, int height, Format format, const std::vector<Value>& values) {
    const Image image = Image::Adopt(new KVRPixelImage(width, height, format));
    const auto raw = image->GetRawPixels();
    EXPECT_EQ(raw.size(), values.size() * sizeof(Value));
    if (raw.size() == values.size() * sizeof(Value) && !raw.empty())
        std::memcpy(raw.data(), values.data(), raw.size());
    return image;
}

/// An image larger than any address space, of pixels that nobody may touch.
inline Image hugeImage(Format format, unsigned char* pixels) {
    return Image::Adopt(
        new KVRPixelImage(1 << 30, 1 << 30, format, pixels, KVRPixelDealloc::Viewed));
}

inline unsigned referencesOf(const Image& image) {
    image->AddRef();
    return image->Release();
}

/// What @p work writes to the standard output stream.
template <class Work>
std::string written(Work&& work) {
    std::ostringstream text;
    std::streambuf* const before = std::cout.rdbuf(text.rdbuf());
    work();
    std::cout.rdbuf(before);
    return text.str();
}

}  // namespace rb::test
