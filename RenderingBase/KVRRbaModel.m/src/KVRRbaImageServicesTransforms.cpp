// Images derived from images.

#include "RenderingBase/KVRRbaModel.m/src/kernels/BumpMap.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/ChannelTransforms.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/MirrorBall.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/public/KVRRbaImageServices.h"

#include <array>
#include <new>
#include <utility>

namespace {

using Image = KVRVar<KVRPixelImage>;
namespace kernels = rb::kernels;

std::size_t bytesPerPixelOf(const KVRPixelImage& image) {
    return static_cast<std::size_t>(image.GetBytesPerPixel());
}

/// The pixels of an 8-bit format.
kernels::Bytes bytesOf(const KVRPixelImage& image) {
    return {image.GetPixelsToRead(), image.GetRawPixels().size()};
}

kernels::BytesToWrite bytesOf(KVRPixelImage& image) {
    return {image.GetPixelsToModify(), image.GetRawPixels().size()};
}

/// A new image that @p change makes of another one: change(bytes, bytes per pixel, target). Images
/// without 8-bit channels are copied.
template <class Change>
Image changed(const KVRPixelImage& source, Change change) {
    if (!source.GetPixelsToRead()) return Image::Adopt(new KVRPixelImage(source));
    Image image = Image::Adopt(KVRPixelImage::CreateUnfilledLike(source));
    change(bytesOf(source), bytesPerPixelOf(source), bytesOf(*image.Get()));
    return image;
}

/// The same, made of the image in another format.
template <class Change>
Image changedAfterConversion(const KVRPixelImage& source, KVRPixelImageFormat format,
                             Change change) {
    if (source.GetFormat() == format || !source.GetPixelsToRead()) return changed(source, change);
    Image image = Image::Adopt(source.Duplicate(format));
    if (!image) throw std::bad_alloc();
    change(bytesOf(std::as_const(*image.Get())), bytesPerPixelOf(*image.Get()),
           bytesOf(*image.Get()));
    return image;
}

/// The image that @p make makes of @p source; null for null and without memory.
template <class Make>
KVRPixelImage* madeOf(const KVRPixelImage* source, Make make) try {
    return source ? make(*source).Detach() : nullptr;
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
    return madeOf(source, [](const KVRPixelImage& image) {
        return changed(image, kernels::greyByLightness);
    });
}

KVRPixelImage* KVRRbaImageServices::ComputeMonochromaImage(const KVRPixelImage* source) {
    return madeOf(source, [](const KVRPixelImage& image) {
        return changedAfterConversion(
            image, KVRPixelImageFormat::RGBA,
            [](auto rgba, std::size_t, auto target) { kernels::blackAndWhite(rgba, target); });
    });
}

KVRPixelImage* KVRRbaImageServices::ComputeNegativeImage(const KVRPixelImage* source) {
    return madeOf(source, [](const KVRPixelImage& image) {
        // A bilevel pixel is 0 or 1, and 255 minus it would be neither.
        return image.GetFormat() == KVRPixelImageFormat::Bilevel
                   ? changedAfterConversion(image, KVRPixelImageFormat::L, kernels::invertColors)
                   : changed(image, kernels::invertColors);
    });
}

KVRPixelImage* KVRRbaImageServices::ComputeAlphaInvertImage(const KVRPixelImage* source) {
    return madeOf(source, [](const KVRPixelImage& image) {
        return changedAfterConversion(
            image, KVRPixelImageFormat::RGBA,
            [](auto rgba, std::size_t, auto target) { kernels::invertAlpha(rgba, target); });
    });
}

KVRPixelImage* KVRRbaImageServices::GenerateMaskFromAlpha(const KVRPixelImage* source) {
    return madeOf(
        source, [](const KVRPixelImage& image) { return changed(image, kernels::maskFromAlpha); });
}

KVRPixelImage* KVRRbaImageServices::GenerateBumpMap(KVRPixelImage* source) {
    if (!source) return nullptr;
    if (source->GetPixelsToRead() && bytesPerPixelOf(*source) != 3 &&
        Failed(source->ChangeFormat(KVRPixelImageFormat::RGB)))
        return nullptr;
    const auto width = static_cast<std::size_t>(sizeOf(*source).width);
    return madeOf(source, [width](const KVRPixelImage& image) {
        return changed(image, [width](auto rgb, std::size_t, auto target) {
            kernels::renderBumpMap(rgb, width, target);
        });
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
