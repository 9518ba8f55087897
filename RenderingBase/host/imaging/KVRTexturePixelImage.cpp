#include "RenderingBase/host/imaging/KVRTexturePixelImage.h"

#include "RenderingBase/host/imaging/LastImageError.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <span>
#include <utility>

namespace {

/// A copy, because the face may change its format and size apart from the cube.
rb::imaging::PixelStorage copyOf(const KVRPixelImage& image) {
    const std::span<const std::byte> pixels = image.GetRawPixels();
    rb::imaging::PixelStorage copy(pixels.size(), rb::imaging::PixelStorage::Fill::None);
    std::copy(pixels.begin(), pixels.end(), copy.data());
    return copy;
}

int widthOf(const KVRPixelImage& image) {
    int width = 0, height = 0;
    image.GetSize(width, height);
    return width;
}

int heightOf(const KVRPixelImage& image) {
    int width = 0, height = 0;
    image.GetSize(width, height);
    return height;
}

/// One more reference on the member at @p index; null when there is none.
template <class Members>
auto* shared(Members& members, int index) {
    auto* const member = index >= 0 && static_cast<std::size_t>(index) < members.size()
                             ? members[static_cast<std::size_t>(index)].Get()
                             : nullptr;
    if (member) member->AddRef();
    return member;
}

template <class Faces>
KVRPixelImage* surfaceOf(const Faces& faces, int face, int level) {
    if (face < 0 || static_cast<std::size_t>(face) >= faces.size()) return nullptr;
    return faces[static_cast<std::size_t>(face)]->GetSurface(0, level);
}

}  // namespace

KVRTexturePixelImage::KVRTexturePixelImage(int width, int height, KVRPixelImageFormat format,
                                           rb::imaging::PixelStorage pixels)
    : KVRClass(width, height, format, std::move(pixels)) {}

KVRPixelImage* KVRTexturePixelImage::GetSurface(int face, int level) {
    if (face != 0 || level != 0) return nullptr;
    AddRef();
    return this;
}

KVRTexturePixelImage* KVRTexturePixelImage::GetImage(const KVRUnicodeString& path,
                                                     int writable) try {
    const auto image = KVRVar<KVRPixelImage>::Adopt(CreateFromFileEx(path, writable, 0));
    if (!image) return nullptr;
    auto texture = KVRVar<KVRTexturePixelImage>::Adopt(
        new KVRTexturePixelImage(0, 0, image->GetFormat(), rb::imaging::PixelStorage()));
    texture->TakeOver(*image.Get());
    texture->SetPath(path);
    return texture.Detach();
} catch (const std::bad_alloc&) {
    rb::imaging::noteLackOfMemory();
    return nullptr;
}

KVRVizTextureWithMipMap::KVRVizTextureWithMipMap(int width, int height, KVRPixelImageFormat format,
                                                 rb::imaging::PixelStorage pixels,
                                                 std::vector<Level> smaller)
    : KVRClass(width, height, format, std::move(pixels)), m_smaller(std::move(smaller)) {}

KVRPixelImage* KVRVizTextureWithMipMap::GetMipMap(int level) {
    if (level != 0) return shared(m_smaller, level - 1);
    AddRef();
    return this;
}

KVRPixelImage* KVRVizTextureWithMipMap::GetSurface(int face, int level) {
    return face == 0 ? GetMipMap(level) : nullptr;
}

KVRVizCubicEnvMap::KVRVizCubicEnvMap(const std::array<Face, 6>& faces)
    : KVRClass(widthOf(*faces[0].Get()), heightOf(*faces[0].Get()), faces[0]->GetFormat(),
               copyOf(*faces[0].Get())),
      m_faces(faces) {}

KVRTexturePixelImage* KVRVizCubicEnvMap::GetFace(int face) const { return shared(m_faces, face); }

KVRPixelImage* KVRVizCubicEnvMap::GetSurface(int face, int level) {
    return surfaceOf(m_faces, face, level);
}

KVRVizCubicEnvMapWithMipMap::KVRVizCubicEnvMapWithMipMap(const std::array<Face, 6>& faces)
    : KVRClass(widthOf(*faces[0].Get()), heightOf(*faces[0].Get()), faces[0]->GetFormat(),
               copyOf(*faces[0].Get())),
      m_faces(faces) {}

KVRVizTextureWithMipMap* KVRVizCubicEnvMapWithMipMap::GetFace(int face) const {
    return shared(m_faces, face);
}

KVRPixelImage* KVRVizCubicEnvMapWithMipMap::GetSurface(int face, int level) {
    return surfaceOf(m_faces, face, level);
}
