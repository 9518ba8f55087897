#pragma once

/// @file  Loading images in tests and looking at their pixels.

#include "RenderingBase/host/imaging/HalfArrays.h"
#include "RenderingBase/host/imaging/KVRLastImageError.h"
#include "RenderingBase/host/imaging/KVRMMRasterAdministrator.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace rb::test {

using Image = KVRVar<KVRPixelImage>;
using Format = KVRPixelImageFormat;

/// Reads a file; a refusal fails the test with its reason.
inline Image loadFile(const std::string& path) {
    Image image = Image::Adopt(KVRPixelImage::CreateFromFile(path, 1, 0));
    EXPECT_TRUE(image) << KVRLastImageError().Message();
    return image;
}

/// Some formats are only recognised by the extension of @p name.
inline Image tryToLoad(const std::string& file, const std::string& name = "test") {
    return Image::Adopt(KVRPixelImage::CreateFromMemory(
        {reinterpret_cast<const std::byte*>(file.data()), file.size()}, name));
}

/// Reads the bytes of a file; a refusal fails the test with its reason.
inline Image loadBytes(const std::string& file, const std::string& name = "test") {
    Image image = tryToLoad(file, name);
    EXPECT_TRUE(image) << KVRLastImageError().Message();
    return image;
}

/// The message with which the last file was refused.
inline std::string lastRefusal() {
    const KVRImageError& error = KVRLastImageError();
    EXPECT_FALSE(error.expected.empty());
    EXPECT_FALSE(error.found.empty());
    return error.where + ": expected " + error.expected + ", found " + error.found;
}

/// The message with which the bytes of a file are refused; empty when they are not.
inline std::string refusalOf(const std::string& file, const std::string& name = "test") {
    return tryToLoad(file, name) ? std::string() : lastRefusal();
}

/// What the header of a file tells, of a format that knows no resolution.
inline void expectInfo(const std::string& path, int width, int height, const char* fileFormat,
                       Format format) {
    KVRMMImageProp prop;
    KVRMMImageSize size;
    ASSERT_EQ(KVRMMRasterAdministrator::GetInstance()->GetImageInfo(path, prop, size, 0), S_OK);
    EXPECT_EQ(size.width, width);
    EXPECT_EQ(size.height, height);
    EXPECT_EQ(size.GetXResolution(), 0);
    EXPECT_EQ(size.GetResolutionUnit(), 1);
    EXPECT_EQ(prop.fileFormat, KVRUnicodeString(fileFormat));
    EXPECT_EQ(prop.format, format);
}

/// All pixels as values of one type; none when the image is not @p width x @p height @p format.
template <typename Value>
std::vector<Value> valuesOf(const Image& image, int width, int height, Format format) {
    if (!image) return {};
    int w = 0, h = 0;
    image->GetSize(w, h);
    EXPECT_EQ(w, width);
    EXPECT_EQ(h, height);
    EXPECT_EQ(image->GetFormat(), format);
    if (w != width || h != height || image->GetFormat() != format) return {};
    std::vector<Value> values(image->GetRawPixels().size() / sizeof(Value));
    if (!values.empty())
        std::memcpy(values.data(), image->GetRawPixels().data(), values.size() * sizeof(Value));
    return values;
}

/// All pixels as they lie in memory; nothing when there is no image.
inline std::string rawPixels(const Image& image) {
    if (!image) return {};
    const auto bytes = image->GetRawPixels();
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// A part of a file from the values of its bytes.
inline std::string bytes(const std::vector<int>& values) {
    std::string text;
    for (const int value : values) text += static_cast<char>(value);
    return text;
}

inline std::vector<int> bytesOf(const Image& image, int width, int height, Format format) {
    const auto values = valuesOf<std::uint8_t>(image, width, height, format);
    return {values.begin(), values.end()};
}

inline std::vector<float> floatsOf(const Image& image, int width, int height, Format format) {
    return valuesOf<float>(image, width, height, format);
}

/// Half pixels as floats.
inline std::vector<float> halvesOf(const Image& image, int width, int height, Format format) {
    const auto halves = valuesOf<std::uint16_t>(image, width, height, format);
    std::vector<float> values(halves.size());
    rb::imaging::floatsFromHalves(halves, values);
    return values;
}

}  // namespace rb::test
