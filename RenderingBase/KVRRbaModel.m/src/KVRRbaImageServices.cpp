#include "RenderingBase/public/KVRRbaImageServices.h"

#include "RenderingBase/KVRRbaModel.m/src/DdsImage.h"
#include "RenderingBase/KVRRbaModel.m/src/LoadedFormat.h"
#include "RenderingBase/host/base/KVREnvironment.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr float kMmPerInch = 25.4F;
constexpr int kDrawingDpi = 96;  // of a drawing that is loaded only to be measured

// Halves away from zero. What an int cannot hold becomes the nearest int, no number becomes 0.
int roundedToInt(float value) {
    constexpr float kTwoTo31 = 2147483648.0F;
    if (std::isnan(value)) return 0;
    if (value >= kTwoTo31) return std::numeric_limits<int>::max();
    if (value <= -kTwoTo31) return std::numeric_limits<int>::min();
    return static_cast<int>(std::round(value));
}

bool isDds(const KVRUnicodeString& path) {
    KVRUnicodeString extension = KVRRbaImageServices::ReadExtension(path);
    extension.ToLower();
    return std::strcmp(extension.CastToCharPtr(), "dds") == 0;
}

bool profilesAreApplied() { return KVRGetEnv("KVR_TEXTURE_NO_COLOR_PROFILE") == nullptr; }

void applyOwnProfile(KVRPixelImage& image) {
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(image.GetColorProfile());
    if (profile) image.ApplyColorProfile(nullptr, 0);
}

}  // namespace

KVRPixelImage* KVRRbaImageServices::CreatePixelImageFromFullPath(
    const KVRUnicodeString& path, const KVRListValKVRUnicodeString& /*groups*/, int /*dpi*/) {
    KVRPixelImage* const image =
        isDds(path) ? rb::loadDdsImage(path) : KVRPixelImage::CreateFromFileEx(path, 1, 0);
    if (!image) return nullptr;
    // A profile that does not fit the pixels, or a lack of memory, leaves the picture as it is.
    if (profilesAreApplied()) applyOwnProfile(*image);
    image->ChangeFormat(rb::loadedFormat(image->GetFormat()));
    return image;
}

HRESULT KVRRbaImageServices::GiveImageInfos(KVRPixelImage* image, int& width, int& height,
                                            float& dpi, float& widthMm, float& heightMm) {
    if (!image) return E_FAIL;
    width = 0;
    height = 0;
    image->GetSize(width, height);
    const float pixelMm = image->GetXPixelSize();
    dpi = pixelMm > 0 ? kMmPerInch / pixelMm : 0;
    if (dpi > 0) {
        widthMm = ComputeSizeMM(width, dpi);
        heightMm = ComputeSizeMM(height, dpi);
    }
    return S_OK;
}

HRESULT KVRRbaImageServices::GiveImageInfos(const KVRUnicodeString& path, int& width, int& height,
                                            float& dpi, float& widthMm, float& heightMm) {
    if (path.GetLengthInChar() == 0) return E_FAIL;
    const auto image =
        KVRVar<KVRPixelImage>::Adopt(CreatePixelImageFromFullPath(path, {}, kDrawingDpi));
    return GiveImageInfos(image.Get(), width, height, dpi, widthMm, heightMm);
}

int KVRRbaImageServices::InferDpi(int sizePx, float sizeMm) {
    if (sizeMm == 0) return 0;
    return roundedToInt(static_cast<float>(sizePx) * kMmPerInch / sizeMm);
}

float KVRRbaImageServices::ComputeSizeMM(int sizePx, float dpi) {
    if (dpi == 0) return 0;
    return static_cast<float>(sizePx) * kMmPerInch / dpi;
}

int KVRRbaImageServices::ComputeSizePx(float sizeMm, int dpi) {
    return roundedToInt(static_cast<float>(dpi) * sizeMm / kMmPerInch);
}

float KVRRbaImageServices::DotsPerInchToDotsPerMM(float dpi) {
    if (dpi == 0) return 0;
    return kMmPerInch / dpi;
}

HRESULT KVRRbaImageServices::Compute2DImageRatio(int width, int height, float& ratio) {
    ratio = 1;
    if (width == 0 || height == 0) return E_FAIL;
    ratio = static_cast<float>(width) / static_cast<float>(height);
    return S_OK;
}

HRESULT KVRRbaImageServices::ComputeAdjusted2DTextureCoordinate(float ratio, float& u, float& v) {
    if (ratio <= 0) return E_FAIL;
    if (ratio < 1) {
        u *= ratio;
    } else {
        v /= ratio;
    }
    return S_OK;
}
