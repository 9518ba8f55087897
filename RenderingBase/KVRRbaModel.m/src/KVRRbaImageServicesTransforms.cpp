// Images derived from images.

#include "RenderingBase/KVRRbaModel.m/src/kernels/MirrorBall.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/public/KVRRbaImageServices.h"

#include <array>
#include <new>

namespace {

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
