#include "tools/rba/tour/ImageFiles.h"

#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/Profile.h"
#include "tools/rba/tour/Files.h"

#include <algorithm>
#include <string>
#include <system_error>

namespace rb::cli::tour {

namespace fs = std::filesystem;

namespace {

bool isTexture(const std::string& kind) { return kind == "dds" || kind == "ktx2"; }

bool isPhotometric(const std::string& kind) { return kind == "ies"; }

bool isImage(const std::string& kind) {
    if (isTexture(kind)) return false;
    constexpr int kImages = 1, kNotAccepted = -1;  // of FindImageInPaths
    KVRUnicodeString place;
    const int status = measured("KVRRbaImageServices", "FindImageInPaths", [&] {
        return KVRRbaImageServices::FindImageInPaths(kImages, KVRUnicodeString("sample." + kind),
                                                     place, nullptr);
    });
    return status != kNotAccepted || kind == "tiff";
}

std::vector<fs::path> filesOfKind(const fs::path& folder, bool (*isWanted)(const std::string&)) {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::recursive_directory_iterator at(folder, error), end; !error && at != end;
         at.increment(error)) {
        std::error_code ignored;
        if (at->is_regular_file(ignored) && isWanted(kindOf(at->path())))
            found.push_back(at->path());
    }
    std::ranges::sort(found);
    return found;
}

}  // namespace

std::vector<fs::path> imageFiles(const fs::path& folder) { return filesOfKind(folder, isImage); }

std::vector<fs::path> textureFiles(const fs::path& folder) {
    return filesOfKind(folder, isTexture);
}

std::vector<fs::path> photometricFiles(const fs::path& folder) {
    return filesOfKind(folder, isPhotometric);
}

}  // namespace rb::cli::tour
