#pragma once

/// @file  The one place where texture files become textures.
///
///     TextureResult oak;
///     if (Succeeded(KVRRbaTextureLoader::GetInstance().ImportTexture("textures\\oak.jpg", oak))) {
///         const double dpi = oak.GetMetadata().xResolution;
///         IVisTexturePtr texture = oak.CreateVisuTexture();
///     }

#include "RenderingBase/host/app/KVRCommand.h"
#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"
#include "RenderingBase/public/KVRRbaTextureResult.h"

#include <functional>

/// Imports textures. The process has one loader, which lives until the process ends; the modeler
/// knows it as the component "KVRRbaTextureLoader".
///
/// An import reads the image file (everything that `KVRPixelImage` reads) or, when it is none, has
/// the visualisation make a texture of it (dds and ktx2) and takes the image from there. Pixels
/// stay in the format that it delivers: byte orders are kept. An image with a colour profile other
/// than sRGB is converted to sRGB, unless the environment variable KVR_TEXTURE_NO_COLOR_PROFILE was
/// defined when the loader was made.
///
/// The resolution is the one in the header of jpg, png, tif, bmp and tga files (by the extension),
/// else that of the image, else `kDefaultResolution`.
///
/// Threads: GetInstance any; everything else belongs to the interactive thread.
class KVR_EXPORT KVRRbaTextureLoader : public KVRClass<"KVRRbaTextureLoader", KVRCommand> {
public:
    using OnSuccess = std::function<void(const TextureResult&)>;
    using OnFailure = std::function<void(long)>;  ///< Gets the result code.

    /// Dots to the inch of a file that states no resolution; kept for compatibility.
    static constexpr double kDefaultResolution = 91.3669;

    static KVRRbaTextureLoader& GetInstance();
    /// The loader with one reference for the caller, as the modeler wants it.
    static KVRBaseUnknown* CreateItself();

    /// Imports the file at @p path.
    /// @param out  Gets metadata, texture and image. An image that it has stays when the import
    ///             gives none; callers pass a fresh result.
    /// @return  0 when @p out has an image then. Errors: E_INVALIDARG for an empty path, @p out is
    ///          untouched; E_FAIL, and `KVRLastImageError` tells why.
    long ImportTexture(const KVRUnicodeString& path, TextureResult& out);

    /// The same, told through a call-back before it returns. Passes on what a call-back throws.
    /// @param onFailure  May be empty.
    /// Errors: E_INVALIDARG for an empty path or @p onSuccess, no call-back is called; E_FAIL.
    long ImportTexture(const KVRUnicodeString& path, const OnSuccess& onSuccess,
                       const OnFailure& onFailure);

    /// No effect: imports are always synchronous. Kept for compatibility.
    void EnableAsync(bool isEnabled);
    bool IsAsyncEnabled() const;  ///< Always false.
    /// Whether results wait for ProcessPendingCallbacks; never, as long as imports are synchronous.
    bool HasPendingCallbacks();
    /// Hands the results that wait to their call-backs.
    void ProcessPendingCallbacks();

    /// Nothing to do: the loader stays until the process ends.
    void RequestDelayedDestruction() override;

private:
    KVRRbaTextureLoader();

    /// Touches no member, so that it may run on any thread as long as @p noTextureFallback holds.
    /// @param noTextureFallback  Files that are no image are not tried as textures, which belong to
    ///                           the interactive thread.
    TextureResult ImportTextureInternal(const KVRUnicodeString& path, bool applyColorProfile,
                                        bool noTextureFallback);

    const bool m_applyColorProfile;
};
