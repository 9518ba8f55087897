#include "tools/rba/Textures.h"

#include "RenderingBase/host/imaging/KVRLastImageError.h"
#include "tools/rba/Context.h"
#include "tools/rba/Images.h"
#include "tools/rba/Paths.h"

#include <string>
#include <utility>

namespace rb::cli {
namespace {

constexpr int kDecodeOnProcessor = 1;

using Image = KVRVar<KVRPixelImage>;

struct Container {
    const char* name;
    KVRTexturePixelImage* (*read)(const KVRUnicodeString& path, int flag);
};

constexpr Container kContainers[] = {{"dds", CreateTextureFromDDSFile},
                                     {"ktx2", CreateTextureFromKTX2File}};

/// Whether the last file was refused because its first bytes are those of another format.
bool wasAnotherFormat(const Container& container) {
    return KVRLastImageError().expected == "a " + std::string(container.name) + " file";
}

Image levelOf(KVRPixelImage* picture, int level) {
    auto* const chain = dynamic_cast<KVRVizTextureWithMipMap*>(picture);
    if (chain) return Image::Adopt(chain->GetMipMap(level));
    if (!picture || level != 0) return {};
    picture->AddRef();
    return Image::Adopt(picture);
}

}  // namespace

Texture Texture::load(const std::string& typedPath) {
    for (const Container& container : kContainers) {
        auto image = KVRVar<KVRTexturePixelImage>::Adopt(
            container.read(frameworkPath(typedPath), kDecodeOnProcessor));
        if (image) return {container.name, std::move(image)};
        if (!wasAnotherFormat(container)) throw Failure(typedPath, imageErrorReason());
    }
    throw Failure(typedPath, "expected a dds or ktx2 file, found " + KVRLastImageError().found);
}

Texture::Texture(const char* container, KVRVar<KVRTexturePixelImage> image)
    : m_container(container), m_image(std::move(image)) {
    while (surface(m_faces, 0)) ++m_faces;
    while (surface(0, m_levels)) ++m_levels;
}

const char* Texture::description() const {
    if (isCube()) return m_levels > 1 ? "cube map with mip-maps" : "cube map";
    return m_levels > 1 ? "picture with mip-maps" : "single picture";
}

KVRVar<KVRPixelImage> Texture::surface(int face, int level) const {
    if (const auto* cube = dynamic_cast<const KVRVizCubicEnvMap*>(m_image.Get()))
        return levelOf(KVRVar<KVRPixelImage>::Adopt(cube->GetFace(face)).Get(), level);
    if (const auto* cube = dynamic_cast<const KVRVizCubicEnvMapWithMipMap*>(m_image.Get()))
        return levelOf(KVRVar<KVRPixelImage>::Adopt(cube->GetFace(face)).Get(), level);
    return face == 0 ? levelOf(m_image.Get(), level) : Image();
}

}  // namespace rb::cli
