#include "RenderingBase/host/visu/VisTextureFactory.h"

#include "RenderingBase/host/imaging/KVRLastImageError.h"
#include "RenderingBase/host/imaging/KVRTexturePixelImage.h"
#include "RenderingBase/host/visu/ProcessorTexture.h"
#include "RenderingBase/host/visu/TextureFormats.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>
#include <vector>

const IVisTexturePtr IVisTexturePtr::kNullPtr;

IVisTexturePtr IVisTexturePtr::Adopt(IVisTexture* texture) {
    IVisTexturePtr handle(texture);
    if (texture) texture->Release();
    return handle;
}

namespace {

using rb::visu::ProcessorTexture;
using Surface = ProcessorTexture::Surface;

constexpr const char* kTrace = "VisTextureFactory";

struct Size {
    explicit Size(const KVRPixelImage& image) { image.GetSize(width, height); }
    int width = 0, height = 0;
};

/// Levels down to 1 x 1.
unsigned levelsOf(const Size& size) {
    return static_cast<unsigned>(
        std::bit_width(static_cast<unsigned>(std::max(size.width, size.height))));
}

/// The surfaces of a texture, each in the format of its texels.
class Surfaces {
public:
    /// Shares @p image, which nobody changes any more. False when there are no such texels. Throws
    /// std::bad_alloc.
    bool add(KVRPixelImage& image) {
        const auto [pixels, texels] = rb::visu::texelsFor(image.GetFormat());
        if (pixels == KVRPixelImageFormat::None || Size(image).width == 0) return false;
        m_format = texels;
        Surface surface =
            pixels == image.GetFormat() ? Surface(&image) : Surface::Adopt(image.Duplicate(pixels));
        if (!surface) throw std::bad_alloc();
        m_surfaces.push_back(std::move(surface));
        return true;
    }

    /// @param faces   Of which all surfaces have been added, with as many levels each.
    IVisTexturePtr texture(unsigned faces, bool mipMaps) {
        const auto there = static_cast<unsigned>(m_surfaces.size()) / faces;
        const unsigned levels =
            there == 1 && mipMaps ? levelsOf(Size(*m_surfaces.front().Get())) : there;
        return IVisTexturePtr::Adopt(
            new ProcessorTexture(std::move(m_surfaces), faces, levels, m_format));
    }

private:
    std::vector<Surface> m_surfaces;
    IVisTextureFormat::Type m_format = IVisTextureFormat::L;
};

IVisTexturePtr fromImage(KVRPixelImage& image, bool mipMaps) {
    Surfaces surfaces;
    return surfaces.add(image) ? surfaces.texture(1, mipMaps) : IVisTexturePtr::kNullPtr;
}

IVisTexturePtr fromTextureImage(KVRTexturePixelImage& image, bool mipMaps) {
    Surfaces surfaces;
    const int faces = image.GetFaceCount(), levels = mipMaps ? image.GetLevelCount() : 1;
    for (int face = 0; face < faces; ++face)
        for (int level = 0; level < levels; ++level) {
            const Surface surface = Surface::Adopt(image.GetSurface(face, level));
            if (!surfaces.add(*surface.Get())) return IVisTexturePtr::kNullPtr;
        }
    return surfaces.texture(static_cast<unsigned>(faces), mipMaps);
}

}  // namespace

IVisTexturePtr VisTextureFactory::CreateTextureFromFile(const char* path, bool mipMaps, bool,
                                                        int) try {
    if (!path || !rb::visu::isOnInteractiveThread(kTrace, __FILE__, __LINE__))
        return IVisTexturePtr::kNullPtr;
    const Surface image = Surface::Adopt(CreateTextureOrImageFromFile(path));
    if (auto* const texture = dynamic_cast<KVRTexturePixelImage*>(image.Get()))
        return fromTextureImage(*texture, mipMaps);
    return image ? fromImage(*image.Get(), mipMaps) : IVisTexturePtr::kNullPtr;
} catch (const std::bad_alloc&) {
    KVRSetLastImageError(path, "enough memory", "none left");
    return IVisTexturePtr::kNullPtr;
}

IVisTexturePtr VisTextureFactory::CreateTexture(const KVRPixelImage* image, bool mipMaps,
                                                bool) try {
    if (!image || !rb::visu::isOnInteractiveThread(kTrace, __FILE__, __LINE__))
        return IVisTexturePtr::kNullPtr;
    const Surface copy = Surface::Adopt(new KVRPixelImage(*image));
    return fromImage(*copy.Get(), mipMaps);
} catch (const std::bad_alloc&) {
    return IVisTexturePtr::kNullPtr;
}
