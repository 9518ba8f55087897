// Images derived from images.

#include "RenderingBase/KVRRbaModel.m/src/kernels/BumpMap.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/ChannelTransforms.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/MirrorBall.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/public/KVRRbaImageServices.h"

#include <array>
#include <new>
#include <span>

namespace {

using Image = KVRVar<KVRPixelImage>;
namespace kernels = rb::kernels;

/// The pixels of an 8-bit format; none for the others, which the transforms leave as they are.
std::span<std::uint8_t> pixelsOf(KVRPixelImage& image) {
    std::uint8_t* const pixels = image.GetPixelsToModify();
    return {pixels, pixels ? image.GetRawPixels().size() : 0};
}

std::size_t bytesPerPixelOf(const KVRPixelImage& image) {
    return static_cast<std::size_t>(image.GetBytesPerPixel());
}

Image copyOf(const KVRPixelImage& image) { return Image::Adopt(new KVRPixelImage(image)); }

/// A copy in RGBA; as it is when its channels are not of 8 bits.
Image rgbaCopyOf(const KVRPixelImage& image) {
    Image copy = copyOf(image);
    if (image.GetPixelsToRead() && Failed(copy->ChangeFormat(KVRPixelImageFormat::RGBA)))
        throw std::bad_alloc();
    return copy;
}

/// A changed copy of an image; null for null and without memory.
template <class Copy, class Change>
KVRPixelImage* changedCopy(const KVRPixelImage* source, Copy copyImage, Change change) try {
    if (!source) return nullptr;
    Image copy = copyImage(*source);
    change(*copy.Get());
    return copy.Detach();
} catch (const std::bad_alloc&) {
    return nullptr;
}

struct Size {
    int width = 0, height = 0;
    friend bool operator==(const Size& a, const Size& b) {
        return a.width == b.width && a.height == b.height;
    }
};

Size sizeOf(const KVRPixelImage& image) {
    Size size;
    image.GetSize(size.width, size.height);
    return size;
}

}  // namespace

KVRPixelImage* KVRRbaImageServices::ComputeGreyScaleImage(const KVRPixelImage* source) {
    return changedCopy(source, copyOf, [](KVRPixelImage& image) {
        kernels::greyByLightness(pixelsOf(image),
                                 static_cast<std::size_t>(image.GetbytesPerPixel()));
    });
}

KVRPixelImage* KVRRbaImageServices::ComputeMonochromaImage(const KVRPixelImage* source) {
    return changedCopy(source, rgbaCopyOf,
                       [](KVRPixelImage& image) { kernels::blackAndWhite(pixelsOf(image)); });
}

KVRPixelImage* KVRRbaImageServices::ComputeNegativeImage(const KVRPixelImage* source) {
    const auto copyInBytes = [](const KVRPixelImage& image) {
        // A bilevel pixel is 0 or 1, and 255 minus it would be neither.
        if (image.GetFormat() != KVRPixelImageFormat::Bilevel) return copyOf(image);
        Image grey = Image::Adopt(image.Duplicate(KVRPixelImageFormat::L));
        if (!grey) throw std::bad_alloc();
        return grey;
    };
    return changedCopy(source, copyInBytes, [](KVRPixelImage& image) {
        kernels::invertColors(pixelsOf(image), bytesPerPixelOf(image));
    });
}

KVRPixelImage* KVRRbaImageServices::ComputeAlphaInvertImage(const KVRPixelImage* source) {
    return changedCopy(source, rgbaCopyOf,
                       [](KVRPixelImage& image) { kernels::invertAlpha(pixelsOf(image)); });
}

KVRPixelImage* KVRRbaImageServices::GenerateMaskFromAlpha(const KVRPixelImage* source) {
    return changedCopy(source, copyOf, [](KVRPixelImage& image) {
        kernels::maskFromAlpha(pixelsOf(image), bytesPerPixelOf(image));
    });
}

KVRPixelImage* KVRRbaImageServices::GenerateBumpMap(KVRPixelImage* source) {
    if (!source) return nullptr;
    if (!source->GetPixelsToRead()) return changedCopy(source, copyOf, [](KVRPixelImage&) {});
    if (bytesPerPixelOf(*source) != 3 && Failed(source->ChangeFormat(KVRPixelImageFormat::RGB)))
        return nullptr;
    return changedCopy(source, copyOf, [source](KVRPixelImage& image) {
        kernels::renderBumpMap(pixelsOf(*source), static_cast<std::size_t>(sizeOf(*source).width),
                               pixelsOf(image));
    });
}

KVRPixelImage* KVRRbaImageServices::BuildPixelImageFromAllFaces(
    KVRPixelImage* f1, KVRPixelImage* f2, KVRPixelImage* f3, KVRPixelImage* f4, KVRPixelImage* f5,
    KVRPixelImage* f6) try {
    const std::array<KVRPixelImage*, 6> faces{f1, f2, f3, f4, f5, f6};
    for (const KVRPixelImage* face : faces)
        if (!face) return nullptr;
    for (KVRPixelImage* face : faces)
        if (face->GetFormat() != KVRPixelImageFormat::RGBA &&
            face->ChangeFormat(KVRPixelImageFormat::RGBA) != S_OK)
            return nullptr;
    const Size size = sizeOf(*f5);
    // Low faces of few pixels could ask for a ball of more than there is memory.
    if (!KVRPixelImage::IsWithinPixelLimit(size.width, size.width)) return nullptr;
    rb::kernels::CubePictures cube{
        {}, static_cast<std::size_t>(size.width), static_cast<std::size_t>(size.height)};
    for (std::size_t i = 0; i < faces.size(); ++i) {
        // Another size would be read beyond its end.
        if (!(sizeOf(*faces[i]) == size)) return nullptr;
        cube.faces[i] = faces[i]->GetPixelsToRead();
    }
    auto ball = KVRVar<KVRPixelImage>::Adopt(
        KVRPixelImage::CreateUnfilled(size.width, size.width, KVRPixelImageFormat::RGBA));
    rb::kernels::renderMirrorBall(cube, {ball->GetPixelsToModify(), 4 * cube.width * cube.width});
    return ball.Detach();
} catch (const std::bad_alloc&) {
    return nullptr;
}
