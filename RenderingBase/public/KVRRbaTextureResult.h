#pragma once

/// @file  What the import of a texture gives.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/host/visu/IVisTexture.h"

/// What is known of the source of a texture.
struct TextureMetadata {
    /// Dots to the inch, horizontally; 0 when the texture does not come from an import.
    double xResolution = 0;
};

/// An image to compute with and, when the visualisation made it, a texture to draw with.
///
/// A value: copies share the image and the texture.
/// Threads: as `IVisTexture`; without a texture, as a plain value.
class KVR_EXPORT TextureResult {
public:
    TextureResult() = default;
    /// Shares @p image, which may be null.
    explicit TextureResult(KVRPixelImage* image) : m_image(image) {}
    /// Keeps @p texture and reads its full size, of a cube the first face, into an image. There is
    /// none for a texture without texels, for formats that no image has (sRGB and half ones among
    /// them), and without memory. On the interactive thread only.
    explicit TextureResult(IVisTexturePtr texture);

    bool IsValid() const { return static_cast<bool>(m_image); }  ///< Whether there is an image.

    /// One more reference for the caller; null when there is no image.
    KVRPixelImage* GetPixelImage() const;

    /// The texture that the import made, else a new one of the image with levels below the full
    /// size (`VisTextureFactory::CreateTexture`), which the result does not keep; the null handle
    /// when there is neither. On the interactive thread only.
    IVisTexturePtr CreateVisuTexture() const;

    const TextureMetadata& GetMetadata() const { return m_metadata; }
    void SetMetadata(TextureMetadata metadata) { m_metadata = metadata; }

private:
    friend class KVRRbaTextureLoader;

    TextureMetadata m_metadata;
    KVRVar<KVRPixelImage> m_image;
    IVisTexturePtr m_texture;
};
