// Texture files into textures.

#include "RenderingBase/host/files/KVRPath.h"
#include "RenderingBase/host/imaging/ImageLoader.h"
#include "RenderingBase/host/imaging/KVRTexturePixelImage.h"
#include "RenderingBase/host/imaging/LastImageError.h"
#include "RenderingBase/host/imaging/TextureLoader.h"

#include <memory>
#include <new>
#include <string>
#include <utility>

using rb::imaging::ByteSource;
using rb::imaging::FileSource;
using rb::imaging::LoadedTexture;
using rb::imaging::PixelStorage;
using rb::imaging::ReadResult;
using rb::imaging::sideOfLevel;
using rb::imaging::TextureFormat;

namespace {

/// Makes the images of a texture from its surfaces.
class TextureMaker {
public:
    explicit TextureMaker(LoadedTexture& loaded) : m_loaded(loaded) {}

    KVRTexturePixelImage* make() {
        const bool hasLevels = m_loaded.header.levels > 1;
        if (m_loaded.header.faces == 1) return hasLevels ? withLevels(0) : picture(0);
        if (!hasLevels) return new KVRVizCubicEnvMap(faces(&TextureMaker::picture));
        return new KVRVizCubicEnvMapWithMipMap(faces(&TextureMaker::withLevels));
    }

private:
    int width(int level) const {
        return static_cast<int>(sideOfLevel(m_loaded.header.width, level));
    }
    int height(int level) const {
        return static_cast<int>(sideOfLevel(m_loaded.header.height, level));
    }
    KVRPixelImageFormat format() const { return m_loaded.header.texels.delivered; }
    PixelStorage take(int face, int level) { return std::move(m_loaded.surface(face, level)); }

    KVRTexturePixelImage* picture(int face) {
        return new KVRTexturePixelImage(width(0), height(0), format(), take(face, 0));
    }

    KVRVizTextureWithMipMap* withLevels(int face) {
        std::vector<KVRVizTextureWithMipMap::Level> smaller;
        for (int level = 1; level < m_loaded.header.levels; ++level)
            smaller.push_back(KVRVizTextureWithMipMap::Level::Adopt(KVRPixelImage::CreateAround(
                width(level), height(level), format(), take(face, level))));
        return new KVRVizTextureWithMipMap(width(0), height(0), format(), take(face, 0),
                                           std::move(smaller));
    }

    template <class Face>
    std::array<KVRVar<Face>, 6> faces(Face* (TextureMaker::*makeFace)(int)) {
        std::array<KVRVar<Face>, 6> all;
        for (int face = 0; face < 6; ++face)
            all[static_cast<std::size_t>(face)] = KVRVar<Face>::Adopt((this->*makeFace)(face));
        return all;
    }

    LoadedTexture& m_loaded;
};

KVRTexturePixelImage* load(ByteSource& source, std::span<const TextureFormat> formats,
                           const KVRUnicodeString& name, ReadResult& refusal) {
    LoadedTexture loaded;
    refusal = rb::imaging::loadTexture(source, formats, loaded);
    if (refusal) return nullptr;
    KVRTexturePixelImage* const texture = TextureMaker(loaded).make();
    texture->SetPath(name);
    return texture;
}

/// What @p read, which gets the open file and a refusal to fill, makes of a file.
template <class Read>
auto fromFile(const KVRUnicodeString& path, Read read)
    -> decltype(read(std::declval<ByteSource&>(), std::declval<ReadResult&>())) try {
    std::string reason;
    ReadResult refusal;
    decltype(read(std::declval<ByteSource&>(), refusal)) image = nullptr;
    if (const auto file = FileSource::open(NativePath(path), reason))
        image = read(*file, refusal);
    else
        refusal = rb::imaging::refuse("a readable file", reason);
    rb::imaging::noteImageResult(path, refusal);
    return image;
} catch (const std::bad_alloc&) {
    rb::imaging::noteLackOfMemory();
    return nullptr;
}

KVRTexturePixelImage* loadFile(const KVRUnicodeString& path,
                               std::span<const TextureFormat> formats) {
    return fromFile(path, [&](ByteSource& file, ReadResult& refusal) {
        return load(file, formats, path, refusal);
    });
}

KVRPixelImage* loadTextureOrImage(ByteSource& file, const KVRUnicodeString& path,
                                  ReadResult& refusal) {
    const auto textures = rb::imaging::textureFormats();
    if (rb::imaging::recogniseTexture(file, textures)) return load(file, textures, path, refusal);
    KVRPixelImage* const image = rb::imaging::loadImage(file, path, refusal);
    if (refusal && refusal->expected == rb::imaging::expectedFile(false))
        refusal->expected = rb::imaging::expectedFile(true);
    return image;
}

}  // namespace

KVRTexturePixelImage* CreateTextureFromDDSFile(const KVRUnicodeString& path, int) {
    return loadFile(path, {&rb::imaging::kDdsFormat, 1});
}

KVRTexturePixelImage* CreateTextureFromKTX2File(const KVRUnicodeString& path, int) {
    return loadFile(path, {&rb::imaging::kKtx2Format, 1});
}

KVRTexturePixelImage* CreateTextureFromFile(const KVRUnicodeString& path, int) {
    return loadFile(path, rb::imaging::textureFormats());
}

KVRPixelImage* CreateTextureOrImageFromFile(const KVRUnicodeString& path) {
    return fromFile(path, [&](ByteSource& file, ReadResult& refusal) {
        return loadTextureOrImage(file, path, refusal);
    });
}

std::string_view KVRTextureContainerOf(const KVRUnicodeString& path) try {
    std::string reason;
    const auto file = FileSource::open(NativePath(path), reason);
    const TextureFormat* const format =
        file ? rb::imaging::recogniseTexture(*file, rb::imaging::textureFormats()) : nullptr;
    return format ? format->name : std::string_view();
} catch (const std::bad_alloc&) {
    return {};
}

KVRTexturePixelImage* CreateTextureFromMemory(std::span<const std::byte> file,
                                              const KVRUnicodeString& name) try {
    rb::imaging::MemorySource source(file);
    ReadResult refusal;
    KVRTexturePixelImage* const texture =
        load(source, rb::imaging::textureFormats(), name, refusal);
    rb::imaging::noteImageResult(name, refusal);
    return texture;
} catch (const std::bad_alloc&) {
    rb::imaging::noteLackOfMemory();
    return nullptr;
}
