#include "RenderingBase/host/imaging/KVRMMRasterAdministrator.h"

#include "RenderingBase/host/files/KVRPath.h"
#include "RenderingBase/host/imaging/ColorEngine.h"
#include "RenderingBase/host/imaging/ImageLoader.h"
#include "RenderingBase/host/imaging/LastImageError.h"

#include <new>
#include <string>

using rb::imaging::FileSource;
using rb::imaging::IccProfile;
using rb::imaging::ImageHeader;

KVRMMRasterAdministrator* KVRMMRasterAdministrator::GetInstance() {
    static KVRMMRasterAdministrator administrator;
    return &administrator;
}

HRESULT KVRMMRasterAdministrator::GetImageInfo(const KVRUnicodeString& path, KVRMMImageProp& prop,
                                               KVRMMImageSize& size, int) try {
    rb::imaging::OpenImage image;
    std::string reason;
    const auto file = FileSource::open(NativePath(path), reason);
    const rb::imaging::ReadResult refusal =
        file ? rb::imaging::openImage(*file, rb::imaging::imageExtension(path.CastToCharPtr()),
                                      false, image)
             : rb::imaging::refuse("a readable file", reason);
    rb::imaging::noteImageResult(path, refusal);
    if (refusal) return E_FAIL;

    const ImageHeader& header = image.header;
    const auto profile = IccProfile::open(header.profile);
    prop = KVRMMImageProp();
    prop.channels = header.storedChannels;
    prop.bitsPerChannel = header.storedBits;
    prop.format = header.format;
    prop.fileFormat = KVRUnicodeString(std::string(image.format->name).c_str());
    prop.hasProfile = profile != nullptr;
    if (profile) prop.profileName = KVRUnicodeString(profile->description().c_str());
    size.width = static_cast<int>(header.width);
    size.height = static_cast<int>(header.height);
    size.resolution = header.resolution;
    return S_OK;
} catch (const std::bad_alloc&) {
    rb::imaging::noteLackOfMemory();
    return E_FAIL;
}
