#include "tools/rba/Textures.h"

#include "tools/rba/Context.h"
#include "tools/rba/Images.h"
#include "tools/rba/Paths.h"

#include <cstddef>
#include <fstream>
#include <span>
#include <utility>

namespace rb::cli {
namespace {

constexpr int kDecodeOnProcessor = 1;
constexpr const char* kDds = "dds";
constexpr const char* kKtx2 = "ktx2";

using Image = KVRVar<KVRPixelImage>;

/// The first bytes of a file; none when it cannot be read.
std::string headOf(const std::string& path) {
    std::string head(16, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(file.gcount()));
    return head;
}

/// Null when neither the first bytes nor the name say which container it is.
const char* containerOf(const std::string& path, const std::string& head) {
    if (head.starts_with("DDS ")) return kDds;
    if (head.starts_with("\xABKTX 20\xBB")) return kKtx2;
    const std::string extension = lowerExtension(path);
    return extension == kDds ? kDds : extension == kKtx2 ? kKtx2 : nullptr;
}

KVRTexturePixelImage* read(const std::string& path, const std::string& head,
                           const char* container) {
    const KVRUnicodeString file = frameworkPath(path);
    if (container == kKtx2) return CreateTextureFromKTX2File(file, kDecodeOnProcessor);
    // A file that cannot even be opened is refused with the reason of the system.
    if (container == kDds || head.empty())
        return CreateTextureFromDDSFile(file, kDecodeOnProcessor);
    return CreateTextureFromMemory(std::as_bytes(std::span(head)), file);
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
    const std::string head = headOf(typedPath);
    const char* const container = containerOf(typedPath, head);
    auto image = KVRVar<KVRTexturePixelImage>::Adopt(read(typedPath, head, container));
    if (!image) throw Failure(typedPath, imageErrorReason());
    return {container, std::move(image)};
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
