#pragma once

/// @file  Texture files as commands see them: surfaces by face and level.

#include "RenderingBase/host/imaging/KVRTexturePixelImage.h"

#include <array>
#include <string>
#include <utility>

namespace rb::cli {

/// The faces of a cube in the order of the file.
inline constexpr std::array<const char*, 6> kFaceNames{"+X", "-X", "+Y", "-Y", "+Z", "-Z"};

/// A texture of any class. Copies share its pixels.
class Texture {
public:
    /// Reads a dds or ktx2 file. Its first bytes tell which of the two it is, not its name.
    /// Throws Failure when it cannot be read.
    static Texture load(const std::string& typedPath);

    const std::string& container() const { return m_container; }  ///< "dds" or "ktx2".
    const char* className() const { return m_image->IsA(); }
    const char* description() const;  ///< As in "cube map with mip-maps".
    bool isCube() const { return faces() > 1; }
    int faces() const { return m_image->GetFaceCount(); }    ///< 1 or 6.
    int levels() const { return m_image->GetLevelCount(); }  ///< Of each face, level 0 included.
    /// Level 0 of the only or the first face.
    const KVRPixelImage& image() const { return *m_image.Get(); }
    /// Null beyond the faces and levels that there are.
    KVRVar<KVRPixelImage> surface(int face, int level) const {
        return KVRVar<KVRPixelImage>::Adopt(m_image->GetSurface(face, level));
    }

private:
    Texture(std::string container, KVRVar<KVRTexturePixelImage> image)
        : m_container(std::move(container)), m_image(std::move(image)) {}

    std::string m_container;
    KVRVar<KVRTexturePixelImage> m_image;
};

}  // namespace rb::cli
