#include "RenderingBase/public/KVRRbaTextureResult.h"

#include "RenderingBase/KVRRbaModel.m/src/TexturePixels.h"
#include "RenderingBase/host/visu/VisTextureFactory.h"

#include <new>
#include <utility>

namespace {

using Image = KVRVar<KVRPixelImage>;
using Pixels = KVRPixelImageFormat;
using rb::textures::pixelsFor;

/// An image around texels that were read back; it frees them, and so does the lack of memory.
template <class Value>
Image imageAround(int width, int height, Pixels format, Value* texels) {
    if (!texels) return {};
    try {
        return Image::Adopt(
            new KVRPixelImage(width, height, format, texels, KVRPixelDealloc::Adopted));
    } catch (const std::bad_alloc&) {
        delete[] texels;
        return {};
    }
}

Image imageOf(const IVisTexture& texture) {
    const IVisTexture::Description size = texture.GetDescription();
    const Pixels format = pixelsFor(texture.GetFormat());
    if (size.width == 0 || size.height == 0 || format == Pixels::None) return {};
    const int width = static_cast<int>(size.width), height = static_cast<int>(size.height);
    const bool isOfFloats =
        format == Pixels::RGB_f || format == Pixels::RGBA_f || format == Pixels::L_f;
    return isOfFloats ? imageAround(width, height, format, texture.ReadFloatPixels(0, 0))
                      : imageAround(width, height, format, texture.ReadPixels(0, 0));
}

}  // namespace

TextureResult::TextureResult(IVisTexturePtr texture) : m_texture(std::move(texture)) {
    if (m_texture) m_image = imageOf(*m_texture.Get());
}

KVRPixelImage* TextureResult::GetPixelImage() const { return Image(m_image).Detach(); }

IVisTexturePtr TextureResult::CreateVisuTexture() const {
    if (m_texture || !m_image) return m_texture;
    return VisTextureFactory::CreateTexture(m_image.Get(), true, true);
}
