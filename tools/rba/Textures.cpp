#include "tools/rba/Textures.h"

#include "tools/rba/Context.h"
#include "tools/rba/Images.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"

#include <utility>

namespace rb::cli {

Texture Texture::load(const std::string& typedPath) {
    constexpr int kDecodeOnProcessor = 1;
    const KVRUnicodeString path = frameworkPath(typedPath);
    std::string container(KVRTextureContainerOf(path));
    auto image = KVRVar<KVRTexturePixelImage>::Adopt(
        measured("KVRTexturePixelImage", "CreateTextureFromFile",
                 [&] { return CreateTextureFromFile(path, kDecodeOnProcessor); }));
    if (!image) throw Failure(typedPath, imageErrorReason());
    return {std::move(container), std::move(image)};
}

const char* Texture::description() const {
    if (isCube()) return levels() > 1 ? "cube map with mip-maps" : "cube map";
    return levels() > 1 ? "picture with mip-maps" : "single picture";
}

}  // namespace rb::cli
