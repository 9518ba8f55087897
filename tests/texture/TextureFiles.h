#pragma once

/// @file  What tests of textures share.

#include "RenderingBase/host/visu/VisTextureFactory.h"
#include "tests/image/ImageFiles.h"
#include "tests/image/TextureBuilder.h"

#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace rb::test {

inline std::string sampleFile(const std::string& name) {
    return RB_SOURCE_DIR "/samples/images/" + name;
}

inline IVisTexturePtr textureFrom(const std::string& path, bool mipMaps = true) {
    return VisTextureFactory::CreateTextureFromFile(path.c_str(), mipMaps, true, 0);
}

/// RGBA texels of a DDS file, row after row.
inline DdsBuilder rgbaDds(std::uint32_t width, std::uint32_t height, std::string texels) {
    DdsBuilder dds =
        masked(kMaskedRgba, 32, {0xFF, 0xFF00, 0xFF0000, 0xFF000000}, width, std::move(texels));
    dds.height = height;
    return dds;
}

/// The texels of a surface with 8-bit channels; empty when there are none to be read.
inline std::string texelsOf(const IVisTexturePtr& texture, std::size_t bytes, unsigned face = 0,
                            unsigned level = 0) {
    const std::unique_ptr<unsigned char[]> texels(texture->ReadPixels(face, level));
    return texels ? std::string(reinterpret_cast<const char*>(texels.get()), bytes) : std::string();
}

/// The same for channels of floats.
inline std::vector<float> floatTexelsOf(const IVisTexturePtr& texture, std::size_t count) {
    const std::unique_ptr<float[]> texels(texture->ReadFloatPixels(0, 0));
    return texels ? std::vector<float>(texels.get(), texels.get() + count) : std::vector<float>();
}

/// Runs @p work on a thread of its own and waits for it.
template <class Work>
void onAnotherThread(Work&& work) {
    std::thread(std::forward<Work>(work)).join();
}

}  // namespace rb::test
