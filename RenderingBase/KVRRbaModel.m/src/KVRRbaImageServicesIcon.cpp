// Icons: images fitted into a square.

#include "RenderingBase/KVRRbaModel.m/src/KVRRbaTraceLog.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/public/KVRRbaImageServices.h"

#include <array>
#include <cmath>
#include <cstring>
#include <new>

namespace {

using Format = KVRPixelImageFormat;
using Image = KVRVar<KVRPixelImage>;

constexpr const char* kSource = RB_TRACE_SOURCE("KVRRbaImageServices");
constexpr std::array<unsigned char, 4> kBackground{125, 125, 125, 255};

/// A square of the background; null when it would be too large.
Image backgroundOf(int size) try {
    if (!KVRPixelImage::IsWithinPixelLimit(size, size)) return {};
    Image square = Image::Adopt(KVRPixelImage::CreateUnfilled(size, size, Format::RGBA));
    const auto pixels = square->GetRawPixels();
    for (std::size_t i = 0; i < pixels.size(); i += kBackground.size())
        std::memcpy(&pixels[i], kBackground.data(), kBackground.size());
    return square;
} catch (const std::bad_alloc&) {
    return {};
}

/// Where a picture stands in the square.
struct Place {
    int x = 0, y = 0;
    int width = 0, height = 0;
};

int rounded(double length) { return static_cast<int>(std::floor(length + 0.5)); }

/// As large as it fits, in the middle; a side that is less than half a pixel gives 0.
Place placeOf(const KVRPixelImage& image, int size) {
    int width = 0, height = 0;
    image.GetSize(width, height);
    if (width < 1 || height < 1) return {};
    const double ratio =
        static_cast<double>(static_cast<float>(width) / static_cast<float>(height));
    if (ratio >= 1) {
        const int fitted = rounded(size / ratio);
        return {0, (size - fitted) / 2, size, fitted};
    }
    const int fitted = rounded(size * ratio);
    return {(size - fitted) / 2, 0, fitted, size};
}

HRESULT computeDisplayableIcon(const KVRPixelImage& source, int size, KVRPixelImage*& icon) {
    Image square = backgroundOf(size);
    if (!square) return E_FAIL;
    icon = square.Detach();
    const Place place = placeOf(source, size);
    const Image zoomed = Image::Adopt(source.CreateZoomedImage(
        place.width, place.height, static_cast<int>(KVRPixelZoom::Filtered)));
    if (!zoomed) return E_FAIL;
    return icon->InsertPixelImage(zoomed.Get(), place.x, place.y);
}

HRESULT computeIconOfConverted(KVRPixelImage* converted, int size, KVRPixelImage*& icon) {
    const Image image = Image::Adopt(converted);
    if (!rb::trace::check(static_cast<bool>(image), kSource, __LINE__, "converted")) return E_FAIL;
    return computeDisplayableIcon(*image.Get(), size, icon);
}

}  // namespace

HRESULT KVRRbaImageServices::ComputeIconImage(KVRPixelImage* source, int size,
                                              KVRPixelImage*& icon) {
    if (size < 1 || !source) return E_FAIL;
    switch (source->GetFormat()) {
        case Format::L_f16:
        case Format::RGB_f16:
        case Format::RGBA_f16:
            return computeIconOfConverted(ConvertHalfFloatTextureToRGBA(source), size, icon);
        case Format::L_f:
        case Format::RGB_f:
        case Format::RGBA_f:
            return computeIconOfConverted(ConvertFloatTextureToRGBA(source), size, icon);
        case Format::BGR_f16:
        case Format::BGRA_f16:
            return E_NOTIMPL;
        default:
            return computeDisplayableIcon(*source, size, icon);
    }
}
