#pragma once

/// @file  Pictures with known samples as images, and images as files that the library wrote.

#include "tests/image/ImageFiles.h"
#include "tests/support/ForeignPrograms.h"
#include "tests/support/TempFolder.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace rb::test {

inline constexpr Format kFormatOfChannels[] = {Format::None, Format::L, Format::LA, Format::RGB,
                                               Format::RGBA};

/// An image of the samples of a picture of 8 bits.
inline Image imageOf(const RawPicture& picture) {
    const Format format = kFormatOfChannels[picture.channels];
    Image image = Image::Adopt(new KVRPixelImage(picture.width, picture.height, format));
    std::memcpy(image->GetPixelsToModify(), picture.samples.data(), picture.samples.size());
    return image;
}

/// Writes an image and returns the path; a refusal fails the test with its reason.
/// @param format  One of those that `WriteToFile` knows.
inline std::string written(const TempFolder& folder, const Image& image, const char* format) {
    const std::string path = folder.file("written");
    EXPECT_EQ(image->WriteToFile(path, format), S_OK) << KVRLastImageError().Message();
    return path;
}

}  // namespace rb::test
