#pragma once

/// @file  What an image file says about itself, without reading its pixels.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"
#include "RenderingBase/host/imaging/ImageResolution.h"
#include "RenderingBase/host/imaging/KVRPixelImageFormat.h"

/// How the pixels of a file are stored.
struct KVRMMImageProp {
    int channels = 0;        ///< Stored samples of a pixel.
    int bitsPerChannel = 0;  ///< Stored bits of a sample.
    /// In which the image is delivered.
    KVRPixelImageFormat format = KVRPixelImageFormat::None;
    KVRUnicodeString fileFormat;   ///< As in "png": the usual extension of the format.
    bool hasProfile = false;       ///< Whether a colour profile is embedded.
    KVRUnicodeString profileName;  ///< The embedded profile's description; empty without one.
};

/// Size and resolution of a file, as it states them.
class KVRMMImageSize {
public:
    int width = 0;   ///< Pixels.
    int height = 0;  ///< Pixels.
    rb::imaging::Resolution resolution;

    double GetXResolution() const { return resolution.x; }  ///< Pixels to the unit; 0 when unknown.
    double GetYResolution() const { return resolution.y; }
    int GetResolutionUnit() const { return resolution.unit; }  ///< 1 none, 2 inch, 3 centimetre.
};

/// Reads image headers. Threads: any.
class KVR_EXPORT KVRMMRasterAdministrator {
public:
    static KVRMMRasterAdministrator* GetInstance();  ///< The process's only one; borrowed.
    /// Reads the header of the file at @p path; a file with a good header and broken pixels
    /// answers.
    /// @param flag  Kept for compatibility; 0.
    /// Errors: E_FAIL when the header cannot be read (`KVRLastImageError` tells why); outputs are
    ///         untouched.
    HRESULT GetImageInfo(const KVRUnicodeString& path, KVRMMImageProp& prop, KVRMMImageSize& size,
                         int flag);

private:
    KVRMMRasterAdministrator() = default;
};
