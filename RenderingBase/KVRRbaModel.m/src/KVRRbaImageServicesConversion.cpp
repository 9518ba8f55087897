// Images and format codes turned into others.

#include "RenderingBase/KVRRbaModel.m/src/KVRRbaTraceLog.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/ToneMapping.h"
#include "RenderingBase/host/base/KVRFatalError.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "RenderingBase/public/openexr_half.h"

#include <new>
#include <span>

namespace {

using Format = KVRPixelImageFormat;
using Image = KVRVar<KVRPixelImage>;
namespace kernels = rb::kernels;

constexpr const char* kSource = RB_TRACE_SOURCE("KVRRbaImageServices");

/// A black image of the size of another; null without memory.
Image sameSize(const KVRPixelImage& image, Format format) try {
    int width = 0, height = 0;
    image.GetSize(width, height);
    return Image::Adopt(new KVRPixelImage(width, height, format));
} catch (const std::bad_alloc&) {
    return {};
}

/// The RGBA image that a conversion fills; null, with a line in the log, without memory.
Image displayableOfSize(const KVRPixelImage& image) {
    Image rgba = sameSize(image, Format::RGBA);
    rb::trace::check(static_cast<bool>(rgba), kSource, __LINE__, "rgba_image");
    return rgba;
}

std::span<std::uint8_t> pixelsOf(KVRPixelImage& rgba) {
    return {rgba.GetPixelsToModify(), rgba.GetRawPixels().size()};
}

/// The channels of one of three formats, grey, colours, colours with alpha; 0 for another one.
std::size_t channelsOf(Format format, Format grey, Format rgb, Format rgba) {
    return format == grey ? 1 : format == rgb ? 3 : format == rgba ? 4 : 0;
}

std::size_t floatCountOf(const KVRPixelImage& image, std::size_t channels) {
    int width = 0, height = 0;
    image.GetSize(width, height);
    return channels * static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

}  // namespace

KVRPixelImage* KVRRbaImageServices::ConvertFloatTextureToRGBA(KVRPixelImage* source) {
    if (!source) return nullptr;
    Image rgba = displayableOfSize(*source);
    if (!rgba) return nullptr;
    const std::size_t channels =
        channelsOf(source->GetFormat(), Format::L_f, Format::RGB_f, Format::RGBA_f);
    if (channels == 0)
        KVRFatalErrorSimple("format == RGBA_f || format == RGB_f || format == L_f", kSource,
                            __LINE__);
    if (const float* const pixels = source->GetFloatingPixelsToModify())
        kernels::toneMap({pixels, floatCountOf(*source, channels)}, channels,
                         kernels::AlphaRange::Wrapped, pixelsOf(*rgba.Get()));
    return rgba.Detach();
}

KVRPixelImage* KVRRbaImageServices::ConvertHalfFloatTextureToRGBA(KVRPixelImage* source) {
    if (!source) return nullptr;
    Image rgba = displayableOfSize(*source);
    if (!rgba) return nullptr;
    const std::size_t channels =
        channelsOf(source->GetFormat(), Format::L_f16, Format::RGB_f16, Format::RGBA_f16);
    if (channels == 0)
        KVRFatalErrorSimple("format == RGBA_f16 || format == RGB_f16 || format == L_f16", kSource,
                            __LINE__);
    KVRMMPIBuffer* const buffer = source->GetPixelsBufferToModify();
    if (buffer && buffer->GetBufferForModify())
        kernels::toneMapHalves(
            {reinterpret_cast<const std::uint16_t*>(buffer->GetBufferForModify()),
             buffer->GetNbElem()},
            channels, pixelsOf(*rgba.Get()));
    return rgba.Detach();
}

void KVRRbaImageServices::ConvertRTextureToRGB(KVRPixelImage* source, KVRPixelImage*& rgb) {
    if (!source || source->GetFormat() != Format::L_f) return;
    Image image = sameSize(*source, Format::RGB_f);
    if (!image) return;
    const float* const values = source->GetFloatingPixelsToRead();
    float* const colors = image->GetFloatingPixelsToModify();
    if (values && colors) {
        const std::size_t count = floatCountOf(*source, 1);
        kernels::repeatForColors({values, count}, {colors, 3 * count});
    }
    rgb = image.Detach();
}

int KVRRbaImageServices::ConvertTextureFormat(IVisTextureFormat::Type format) {
    constexpr int kNone = -1;
    switch (format) {
        case IVisTextureFormat::L:
            return static_cast<int>(Format::L);
        case IVisTextureFormat::LA:
            return static_cast<int>(Format::LA);
        case IVisTextureFormat::RGB:
            return static_cast<int>(Format::RGB);
        case IVisTextureFormat::RGBA:
        case IVisTextureFormat::SRGB_RGBA:
            return static_cast<int>(Format::RGBA);
        case IVisTextureFormat::L_f:
            return static_cast<int>(Format::L_f);
        case IVisTextureFormat::RGB_f:
            return static_cast<int>(Format::RGB_f);
        case IVisTextureFormat::RGBA_f:
            return static_cast<int>(Format::RGBA_f);
        default:
            return kNone;
    }
}
