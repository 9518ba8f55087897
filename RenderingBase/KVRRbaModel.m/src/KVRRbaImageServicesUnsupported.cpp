// Texture files that renderers do not read, replaced by files that they do.

#include "RenderingBase/host/files/KVRPath.h"
#include "RenderingBase/host/imaging/KVRTexturePixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/public/KVRRbaImageServices.h"

#include <new>
#include <string_view>
#include <utility>

namespace {

/// A path in its parts: directory, name without its last extension, and that in lower case.
struct PathParts {
    KVRUnicodeString directory, base, extension;

    explicit PathParts(const KVRUnicodeString& path) {
        KVRSplitPath(path, directory, base);
        const int dot = base.SearchLast(U'.');
        if (dot < 0) return;
        extension = base.SubString(dot + 1, base.GetLengthInChar());
        extension.ToLower();
        base = base.SubString(0, dot);
    }

    bool hasExtension(std::string_view text) const { return extension.View() == text; }

    /// The same name in the same folder with another extension.
    KVRUnicodeString withExtension(const char* other) const {
        const KVRUnicodeString name = base + "." + other;
        // A name alone stands in the working directory, and a separator would put it into the root.
        const bool joined = directory.GetLengthInChar() == 0 || directory.View().ends_with('/') ||
                            directory.View().ends_with('\\');
        return directory + (joined ? "" : "\\") + name;
    }
};

HRESULT convertToTiff(KVRUnicodeString& path, const PathParts& parts) {
    constexpr int kWritable = 1;
    const auto image =
        KVRVar<KVRTexturePixelImage>::Adopt(KVRTexturePixelImage::GetImage(path, kWritable));
    if (!image) return E_FAIL;
    KVRUnicodeString tiff = parts.withExtension("tif");
    if (image->WriteToFile(tiff, "TIFF") != S_OK) return S_OK;
    image->SetPath(tiff);
    path = std::move(tiff);
    return S_OK;
}

}  // namespace

HRESULT KVRRbaImageServices::ConvertUnsupportedTexture(KVRUnicodeString& path,
                                                       const KVRListValKVRUnicodeString& /*groups*/,
                                                       int /*dpi*/) try {
    const PathParts parts(path);
    return parts.hasExtension("psd") || parts.hasExtension("rgb") ? convertToTiff(path, parts)
                                                                  : S_OK;
} catch (const std::bad_alloc&) {
    return S_OK;  // only a file that cannot be read is an error; the path is as it was
}
