#include "tools/rba/tour/ImageFiles.h"

#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/tour/Files.h"

#include <algorithm>
#include <string>
#include <system_error>

namespace rb::cli::tour {

namespace fs = std::filesystem;

std::vector<fs::path> imageFiles(const fs::path& folder) {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::recursive_directory_iterator at(folder, error), end; !error && at != end;
         at.increment(error)) {
        std::error_code ignored;
        if (!at->is_regular_file(ignored)) continue;
        const std::string kind = kindOf(at->path());
        if (kind == "dds") continue;  // in the section of textures
        constexpr int kImages = 1;    // the kind of FindImageInPaths
        KVRUnicodeString place;
        const int status = KVRRbaImageServices::FindImageInPaths(
            kImages, KVRUnicodeString("sample." + kind), place, nullptr);
        constexpr int kNotAccepted = -1;
        if (status != kNotAccepted || kind == "tiff") found.push_back(at->path());
    }
    std::ranges::sort(found);
    return found;
}

}  // namespace rb::cli::tour
