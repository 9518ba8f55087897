#pragma once

/// @file  DDS and KTX files put together byte by byte, and what they become.

#include "RenderingBase/host/imaging/KVRTexturePixelImage.h"
#include "tests/image/FileParts.h"
#include "tests/image/ImageFiles.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace rb::test {

using Texture = KVRVar<KVRTexturePixelImage>;

inline constexpr std::uint32_t kFourCC = 0x4, kMaskedRgb = 0x40, kMaskedRgba = 0x41,
                               kMaskedGrey = 0x20000, kMaskedGreyAlpha = 0x20001,
                               kMaskedAlpha = 0x2, kMaskedSigned = 0x80000;

/// The parts of a DDS file. A test changes what it is about.
struct DdsBuilder {
    std::uint32_t width = 1, height = 1, levels = 1;
    std::uint32_t flags = kFourCC;
    std::string fourCC = "DX10";
    std::uint32_t bits = 0;
    std::array<std::uint32_t, 4> masks{};
    std::uint32_t caps2 = 0;
    std::uint32_t dxgi = 0, dimension = 3, misc = 0, arraySize = 1;
    std::string data{};
    std::uint32_t headerSize = 124, formatSize = 32, pitch = 0;

    std::string build() const {
        std::string file = "DDS " + littleEndian(headerSize, 4) + littleEndian(0x1007, 4) +
                           littleEndian(height, 4) + littleEndian(width, 4) +
                           littleEndian(pitch, 4) + littleEndian(0, 4) + littleEndian(levels, 4) +
                           std::string(44, '\0') + littleEndian(formatSize, 4) +
                           littleEndian(flags, 4) + (fourCC + std::string(4, '\0')).substr(0, 4) +
                           littleEndian(bits, 4);
        for (const std::uint32_t mask : masks) file += littleEndian(mask, 4);
        file += littleEndian(0x1000, 4) + littleEndian(caps2, 4) + std::string(12, '\0');
        if (flags & kFourCC && fourCC == "DX10")
            for (const std::uint32_t value : {dxgi, dimension, misc, arraySize, 0U})
                file += littleEndian(value, 4);
        return file + data;
    }
};

/// One row of texels of a DXGI format.
inline DdsBuilder dx10(std::uint32_t number, std::uint32_t width, std::string data) {
    DdsBuilder dds;
    dds.dxgi = number;
    dds.width = width;
    dds.data = std::move(data);
    return dds;
}

/// One row of texels with masks.
inline DdsBuilder masked(std::uint32_t flags, std::uint32_t bits,
                         const std::array<std::uint32_t, 4>& masks, std::uint32_t width,
                         std::string data) {
    DdsBuilder dds;
    dds.flags = flags;
    dds.fourCC = {};
    dds.bits = bits;
    dds.masks = masks;
    dds.width = width;
    dds.data = std::move(data);
    return dds;
}

inline Texture tryToLoadTexture(const std::string& file) {
    return Texture::Adopt(CreateTextureFromMemory(
        {reinterpret_cast<const std::byte*>(file.data()), file.size()}, "test"));
}

/// Reads the bytes of a file; a refusal fails the test with its reason.
inline Texture loadTexture(const std::string& file) {
    Texture texture = tryToLoadTexture(file);
    EXPECT_TRUE(texture) << KVRLastImageError().Message();
    return texture;
}

/// The message with which the bytes of a file are refused; empty when they are not.
inline std::string textureRefusalOf(const std::string& file) {
    return tryToLoadTexture(file) ? std::string() : lastRefusal();
}

inline Image asImage(const Texture& texture) { return Image(texture.Get()); }

/// A level of a picture or of a face; a missing one is an empty handle.
inline Image levelOf(const Texture& texture, int level) {
    auto* const levels = dynamic_cast<KVRVizTextureWithMipMap*>(texture.Get());
    return Image::Adopt(levels ? levels->GetMipMap(level) : nullptr);
}

/// A face of a cube of either kind; a missing one is an empty handle.
inline Texture faceOf(const Texture& texture, int face) {
    if (auto* const cube = dynamic_cast<KVRVizCubicEnvMap*>(texture.Get()))
        return Texture::Adopt(cube->GetFace(face));
    if (auto* const cube = dynamic_cast<KVRVizCubicEnvMapWithMipMap*>(texture.Get()))
        return Texture::Adopt(cube->GetFace(face));
    return {};
}

}  // namespace rb::test
