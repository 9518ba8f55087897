#include "RenderingBase/public/KVRRbaTextureLoader.h"

#include "RenderingBase/KVRRbaModel.m/src/TexturePixels.h"
#include "RenderingBase/host/base/KVREnvironment.h"
#include "RenderingBase/host/imaging/KVRLastImageError.h"
#include "RenderingBase/host/imaging/KVRMMRasterAdministrator.h"
#include "RenderingBase/host/modeler/KVRModeler.h"
#include "RenderingBase/host/visu/VisTextureFactory.h"
#include "RenderingBase/public/KVRRbaImageServices.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

namespace {

using Image = KVRVar<KVRPixelImage>;

constexpr int kWritable = 1;
constexpr int kPerCentimetre = 3;
/// In single precision: 2.5399999618530273. Kept for compatibility.
constexpr auto kCentimetresToTheInch = static_cast<double>(2.54F);

constexpr std::string_view kExtensionsWithResolution[] = {"jpg",  "jpeg", "png", "tif",
                                                          "tiff", "bmp",  "tga"};

bool isEmpty(const KVRUnicodeString& path) {
    if (path.GetLengthInChar() > 0) return false;
    KVRSetLastImageError(path, "the path of a file", "an empty one");
    return true;
}

void makeSRGB(KVRPixelImage& image) {
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(image.GetColorProfile());
    if (profile && profile->getProfileModel() != KVRUnicodeString("sRGB"))
        image.ApplyColorProfile(nullptr, 0);
}

bool hasResolutionInHeader(const KVRUnicodeString& path) {
    KVRUnicodeString base, extension;
    KVRRbaImageServices::SplitPath(path, base, extension);
    extension.ToLower();
    const auto& all = kExtensionsWithResolution;
    return std::find(std::begin(all), std::end(all), extension.View()) != std::end(all);
}

/// Dots to the inch that the file states; 0 when it states none.
double resolutionInHeader(const KVRUnicodeString& path) {
    KVRMMRasterAdministrator* const administrator = KVRMMRasterAdministrator::GetInstance();
    KVRMMImageProp properties;
    KVRMMImageSize size;
    if (!administrator || Failed(administrator->GetImageInfo(path, properties, size, 0))) return 0;
    const double resolution = size.GetXResolution();
    return size.GetResolutionUnit() == kPerCentimetre ? resolution * kCentimetresToTheInch
                                                      : resolution;
}

/// @param isTexture  Whether there is no header of an image to be asked.
double resolutionOf(const KVRUnicodeString& path, const KVRPixelImage& image, bool isTexture) {
    if (!isTexture && hasResolutionInHeader(path)) {
        // No number is as good as any other here; kept for compatibility.
        const double resolution = resolutionInHeader(path);
        if (resolution != 0) return resolution;
    }
    const float pixelSizeMm = image.GetXPixelSize();
    if (!(pixelSizeMm > 0)) return KVRRbaTextureLoader::kDefaultResolution;
    return static_cast<double>(KVRRbaImageServices::DotsPerInchToDotsPerMM(pixelSizeMm));
}

/// Not valid when the file is no texture, or one that no image can hold.
TextureResult resultOfTexture(const KVRUnicodeString& path) {
    const IVisTexturePtr texture =
        VisTextureFactory::CreateTextureFromFile(path.CastToCharPtr(), true, true, 0);
    TextureResult result(texture);
    if (!texture || result.IsValid()) return result;
    const IVisTextureFormat::Type format = texture->GetFormat();
    if (rb::textures::pixelsFor(format) == KVRPixelImageFormat::None)
        KVRSetLastImageError(path, "texels of 8 bits, 16 bits or float",
                             IVisTextureFormat::NameOf(format));
    else
        KVRSetLastImageError(path, "enough memory for the image", "too little");
    return result;
}

const KVRComponentRegistration registerLoader("KVRRbaTextureLoader",
                                              &KVRRbaTextureLoader::CreateItself);

}  // namespace

KVRRbaTextureLoader::KVRRbaTextureLoader()
    : m_applyColorProfile(KVRGetEnv("KVR_TEXTURE_NO_COLOR_PROFILE") == nullptr) {}

KVRRbaTextureLoader& KVRRbaTextureLoader::GetInstance() {
    static KVRRbaTextureLoader loader;
    return loader;
}

KVRBaseUnknown* KVRRbaTextureLoader::CreateItself() {
    KVRRbaTextureLoader& loader = GetInstance();
    loader.AddRef();
    return &loader;
}

long KVRRbaTextureLoader::ImportTexture(const KVRUnicodeString& path, TextureResult& out) {
    if (isEmpty(path)) return E_INVALIDARG;
    TextureResult result = ImportTextureInternal(path, m_applyColorProfile, false);
    out.m_metadata = result.m_metadata;
    out.m_texture = std::move(result.m_texture);
    if (result.m_image) out.m_image = std::move(result.m_image);
    return out.IsValid() ? S_OK : E_FAIL;
}

long KVRRbaTextureLoader::ImportTexture(const KVRUnicodeString& path, const OnSuccess& onSuccess,
                                        const OnFailure& onFailure) {
    if (isEmpty(path) || !onSuccess) return E_INVALIDARG;
    const TextureResult result = ImportTextureInternal(path, m_applyColorProfile, false);
    if (result.IsValid()) {
        onSuccess(result);
        return S_OK;
    }
    if (onFailure) onFailure(E_FAIL);
    return E_FAIL;
}

void KVRRbaTextureLoader::EnableAsync(bool /*isEnabled*/) {}

bool KVRRbaTextureLoader::IsAsyncEnabled() const { return false; }

bool KVRRbaTextureLoader::HasPendingCallbacks() { return false; }

void KVRRbaTextureLoader::ProcessPendingCallbacks() {}

void KVRRbaTextureLoader::RequestDelayedDestruction() {}

TextureResult KVRRbaTextureLoader::ImportTextureInternal(const KVRUnicodeString& path,
                                                         bool applyColorProfile,
                                                         bool noTextureFallback) try {
    TextureResult result(Image::Adopt(KVRPixelImage::CreateFromFileEx(path, kWritable, 0)).Get());
    const bool isTexture = !result.IsValid();
    if (isTexture) {
        if (noTextureFallback) return {};
        result = resultOfTexture(path);
        if (!result.IsValid()) return {};
    } else if (applyColorProfile) {
        makeSRGB(*result.m_image.Get());
    }
    result.SetMetadata({resolutionOf(path, *result.m_image.Get(), isTexture)});
    return result;
} catch (const std::bad_alloc&) {
    KVRSetLastImageError(path, "enough memory", "none left");
    return {};
}
