#pragma once

/// @file  Small texture files, and pixels of pictures that the tool wrote.

#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "tests/image/TextureBuilder.h"
#include "tests/support/TempFolder.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace rb::test {

inline std::string sampleImage(const std::string& name) {
    return RB_SOURCE_DIR "/samples/images/" + name;
}

/// How a dds file says what its texels are: DDS_PIXELFORMAT from its flags on.
struct DdsTexels {
    std::uint32_t flags, code, bits;
    std::array<std::uint32_t, 4> masks;
};
inline constexpr DdsTexels kGreyTexels{kMaskedGrey, 0, 8, {0xFF, 0, 0, 0}};
inline constexpr DdsTexels kFloatTexels{kFourCC, 116, 0, {}};  // D3DFMT_A32B32G32R32F

/// A picture without mip-maps. @p stored is what stands behind the header.
inline std::string ddsFile(std::uint32_t width, std::uint32_t height, const DdsTexels& texels,
                           const std::string& stored) {
    DdsBuilder dds = masked(texels.flags, texels.bits, texels.masks, width, stored);
    dds.height = height;
    dds.fourCC = littleEndian(texels.code, 4);
    return dds.build();
}

/// Red, green, blue and alpha of the pixels of a picture file.
class PictureFile {
public:
    using Pixel = std::array<int, 4>;

    explicit PictureFile(const std::string& path)
        : m_image(KVRVar<KVRPixelImage>::Adopt(KVRPixelImage::CreateFromFile(path, 1, 0))) {
        if (!m_image) return;
        m_image->ChangeFormat(KVRPixelImageFormat::RGBA);
        m_image->GetSize(m_width, m_height);
    }
    int width() const { return m_width; }  ///< 0 when the file cannot be read.
    int height() const { return m_height; }
    /// All -1 outside the picture.
    Pixel at(int column, int row) const {
        if (column < 0 || row < 0 || column >= m_width || row >= m_height) return {-1, -1, -1, -1};
        const auto index = static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width) +
                           static_cast<std::size_t>(column);
        const unsigned char* const pixel = m_image->GetPixelsToRead() + 4 * index;
        return {pixel[0], pixel[1], pixel[2], pixel[3]};
    }

private:
    KVRVar<KVRPixelImage> m_image;
    int m_width = 0, m_height = 0;
};

/// Writes a picture of one colour to "in.png".
inline std::string writeColor(const TempFolder& folder, int width, int height,
                              PictureFile::Pixel color) {
    const auto image =
        KVRVar<KVRPixelImage>::Adopt(new KVRPixelImage(width, height, KVRPixelImageFormat::RGBA));
    const auto bytes = image->GetRawPixels();
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::byte>(color[i % color.size()]);
    const std::string path = folder.file("in.png");
    EXPECT_EQ(image->WriteToFile(path, "PNG"), S_OK);
    return path;
}

}  // namespace rb::test
